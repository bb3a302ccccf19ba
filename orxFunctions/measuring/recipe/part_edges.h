// The edges of a picture that a recipe is proposed from, and which of them are the part's.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_PART_EDGES_H
#define ORXFUNCTIONS_MEASURING_RECIPE_PART_EDGES_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "orxFunctions/measuring/recipe/picture.h"
#include "orxFunctions/measuring/recipe_proposal.h"

namespace orx::recipes {

struct PartEdges {
    std::vector<ORXEdge::TMetricContour> edges;  // pixels of the picture
    double sigma = 1.0;                          // they were found by
};

// Of `minPoints` points or more, in a part of the picture. Smoothed as little as the picture bears: where
// noise breaks edges into pieces, or makes some, they are found at twice the smoothing.
PartEdges findPartEdges(const Picture& picture, const cv::Rect& region, int minPoints);

// The largest thing that edges show: one within the picture goes before one that its border cuts.
TPartRegion mainPart(const PartEdges& found, cv::Size picture);

// Leaves out what the border of a region around a part cuts, unless that cuts the part itself.
void dropCutEdges(PartEdges& found, const cv::Rect& region);

// Whether most of an edge lies within a polygon.
bool liesWithin(const ORXEdge::TMetricContour& edge, const std::vector<cv::Point2f>& polygon);

}  // namespace orx::recipes

#endif
