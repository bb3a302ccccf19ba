// Outlines of drawings as points, and which of them the edge finder sees where they are drawn.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_OUTLINE_SAMPLES_H
#define ORXFUNCTIONS_MATCHING_MODEL_OUTLINE_SAMPLES_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/part_outline.h"

namespace orx::matching {

// A drawing in pixels: y down, the origin where the drawing has it.
std::vector<TOutline> inPixels(const std::vector<TOutline>& drawing, double pixelsPerUnit, bool yIsUp);

// msOk, msBadOutline or msTooLarge, for a drawing in pixels.
TMatchStatus checkOutlines(const std::vector<TOutline>& outlines);

// One outline as points about a pixel apart, however short its pieces are. Normals point to the left of the
// walking direction, or to the right.
std::vector<OutlinePoint> samplesOf(const TOutline& outline, bool normalsToTheLeft);

// The corners of a polygon that runs along the outline.
std::vector<cv::Point2d> polygonOf(const TOutline& outline);

// Whether every piece begins where the one before ends, the first where the last does.
bool isClosed(const TOutline& outline);

// The points of `samples` that smoothing by `sigma` pixels leaves where they are. A chain of which something
// in between falls away is two.
std::vector<OutlinePoint> undisturbed(const std::vector<OutlinePoint>& samples, double sigma);

}  // namespace orx::matching

#endif
