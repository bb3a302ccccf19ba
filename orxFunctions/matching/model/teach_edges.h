// Edges of a taught part, on the levels of its pyramid.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_TEACH_EDGES_H
#define ORXFUNCTIONS_MATCHING_MODEL_TEACH_EDGES_H

#include <vector>

#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/model/teach_region.h"

namespace orx::matching {

// Pixels of a level around the region that its edges depend on.
int marginFor(double sigma);

// The outline of the part on the finest level, in pixels of the picture: edges in the region of at least
// `minContrast` grey levels, or of a share of its strong edges where that is 0; without stray short ones.
// Runs the edge finder once, or twice where weak texture must be told from the part.
std::vector<OutlinePoint> findOutline(const TeachPyramid& pyramid, const TeachRegion& region, double sigma,
                                      double minContrast);

// The least contrast of an edge on coarser levels of such an outline.
double leastContrastFor(const std::vector<OutlinePoint>& outline, double minContrast);

// Edges of a coarser level, in pixels of the picture.
std::vector<OutlinePoint> findEdges(const TeachPyramid& pyramid, int level, double sigma, double minContrast);

// A quantile of the contrasts, each counted once. 0 for none.
double contrastQuantile(const std::vector<OutlinePoint>& points, double share);

}  // namespace orx::matching

#endif
