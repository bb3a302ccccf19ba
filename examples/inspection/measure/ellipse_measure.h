// Ellipses through the edge points of a contour.
#ifndef EXAMPLES_INSPECTION_ELLIPSE_MEASURE_H
#define EXAMPLES_INSPECTION_ELLIPSE_MEASURE_H

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "inspection/measure/contour_edges.h"

namespace inspection {

struct Ellipse {
    cv::Point2d center;
    double longer = 0.0;   // half axes, pixels
    double shorter = 0.0;  // above 0
    double angle = 0.0;    // of the longer axis: degrees in [0, 180), from the x axis towards the y axis

    // From the outline, to first order: exact for circles and near the outline.
    double distance(cv::Point2d p) const;
    // The unit normal of the concentric ellipse through p; any direction in the centre.
    cv::Point2d outward(cv::Point2d p) const;
    // On the outline, at a parameter in radians.
    cv::Point2d at(double parameter) const;
};

// Fits with the library's estimator that the settings name: once to the contour's pixels, then to the edges
// that are found across that ellipse. The random search takes ellipses that the least inlier ratio supports;
// where there are none, the one with the least mean error. Nothing where no ellipse fits into one and a half
// times the contour's extent. Draws from rand(): one thread at a time.
std::optional<Feature> measureEllipse(const std::vector<cv::Point>& points, const EdgeContext& context);

}  // namespace inspection

#endif
