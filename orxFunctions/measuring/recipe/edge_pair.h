// Widths: pairs of edges across parallel calipers.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_EDGE_PAIR_H
#define ORXFUNCTIONS_MEASURING_RECIPE_EDGE_PAIR_H

#include "orxFunctions/measuring/recipe/edge_points.h"
#include "orxFunctions/measuring/recipe/shape.h"

namespace orx::recipes {

// Both edges of each caliper that shows them, one behind the other.
EdgePoints pairPoints(const Picture& picture, const FeatureSpec& asked, const Frame& frame);

// The mean width over the pairs.
SpaceShape widthOf(const EdgePoints& pairs, const Plane* plane);

}  // namespace orx::recipes

#endif
