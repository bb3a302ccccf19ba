// The outline on the coarser levels of the pyramid.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_TEACH_LEVELS_H
#define ORXFUNCTIONS_MATCHING_MODEL_TEACH_LEVELS_H

#include <vector>

#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/model/model_limits.h"

namespace orx::matching {

// Levels on which an outline of this size, from end to end in pixels, may be told; 1 at the least.
int levelsFor(double extent);

// The points of `edges` that belong to the outline: they lie near it. Fine detail looks otherwise on a coarse
// level, teeth like the circle that they stand on, so normals need not agree.
std::vector<OutlinePoint> edgesOfOutline(const std::vector<OutlinePoint>& edges,
                                         const std::vector<OutlinePoint>& outline, int level);

// Whether a level of that number still tells the part: enough of the outline is there, in directions as
// different as on the finest level.
bool tellsThePart(const std::vector<OutlinePoint>& points, const std::vector<OutlinePoint>& outline,
                  int level);

// The same points in the model's plane.
ModelLevel levelOf(const std::vector<OutlinePoint>& points);

}  // namespace orx::matching

#endif
