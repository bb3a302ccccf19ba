// Sub-pixel refinement of edge chains by a facet of the gradient magnitude.
#ifndef ORXFUNCTIONS_ANALYSIS_EDGE_REFINEMENT_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_EDGE_REFINEMENT_INTERNAL_H

#include <vector>

#include "orxFunctions/analysis/edges/blocks.h"
#include "orxFunctions/analysis/subpixel_edges.h"

namespace orx::edges {

// One contour a chain, one point a pixel; `contours` is resized to fit.
void refineChains(const GradientImage& gradient, const std::vector<PixelChain>& chains,
                  std::vector<ORXEdge::TContour>& contours);

}  // namespace orx::edges

#endif
