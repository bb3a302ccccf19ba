// How far neighbours of an edge chain share pixels.
#ifndef ORXFUNCTIONS_ANALYSIS_EDGE_CHAIN_SMOOTHING_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_EDGE_CHAIN_SMOOTHING_INTERNAL_H

#include <cmath>

namespace orx::edges {

// The variance that the 3 x 3 facet adds to the smoothing along the edge, pixels squared: where the stated
// uncertainties of circles and lines meet the true ones, on rendered disks and half planes of blur 0.5 to 1.5
// and noise 1 to 8 (0.33 at sigma 1, 0.44 at 1.5).
constexpr double kFacetVariance = 0.37;

// Of the errors along an edge that edgesSubPixMetric found with `sigma`: those of two points at the distance
// t are correlated by exp(-t^2 / (4 smoothing^2)), so the chain tells as much as independent points 2
// sqrt(pi) smoothing apart.
inline double chainSmoothing(double sigma) { return std::sqrt(sigma * sigma + kFacetVariance); }

}  // namespace orx::edges

#endif
