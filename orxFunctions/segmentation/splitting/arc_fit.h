// Circles fitted to the parts of arcs, and whether they stand: TSegemetCircle without the reasons of
// refusals, which thousands of candidates would only spend time on.
#ifndef ORXFUNCTIONS_SEGMENTATION_SPLITTING_ARC_FIT_H
#define ORXFUNCTIONS_SEGMENTATION_SPLITTING_ARC_FIT_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/segmentation/segment_circle.h"
#include "orxFunctions/segmentation/segment_line.h"

namespace orx::splitting {

// As the constructors of TSegemetCircle take them.
struct ArcBounds {
    double maxRadius;
    double minRadius;
    double error;
};
void setBounds(TSegemetCircle& arc, const ArcBounds& bounds);

// What the constructions of TSegemetCircle do with the same parts. The arc may be one of its own parts.
// Reentrant.
void fitArc(TSegemetCircle& arc, TSegemetLine& line);
void fitArc(TSegemetCircle& arc, TSegemetLine& l1, TSegemetLine& l2);
void fitArc(TSegemetCircle& arc, TSegemetCircle& c1, TSegemetCircle& c2);
void fitArc(TSegemetCircle& arc, TSegemetCircle& c, TSegemetLine& l, bool reversed);

double outlineDistance(const TSegemetCircle& arc, cv::Point2d p);
// The largest distance; 0 for no points, not-a-number where one is.
double largestDeviation(const TSegemetCircle& arc, const std::vector<cv::Point>& points);

}  // namespace orx::splitting

#endif
