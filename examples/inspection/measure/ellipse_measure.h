// Ellipses through the edge points of a contour.
#ifndef EXAMPLES_INSPECTION_ELLIPSE_MEASURE_H
#define EXAMPLES_INSPECTION_ELLIPSE_MEASURE_H

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "inspection/measure/contour_edges.h"
#include "orxFunctions/fitting/ellipse_geometric.h"

namespace inspection {

// Fits an ellipse to the contour's pixels, with kRansac to those that agree best, and then to the edges that
// are found across it, with kRansac to those within the tolerance. Nothing where either fit is refused.
std::optional<Feature> measureEllipse(const std::vector<cv::Point>& points, const EdgeContext& context);

// Of a feature that is one: its place and shape alone.
orx::TMeasuredEllipse ellipseOf(const Feature& feature);

}  // namespace inspection

#endif
