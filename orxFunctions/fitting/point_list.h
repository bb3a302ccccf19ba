// Choosing points from lists and removing them. Indices that no point of the list has are passed over.
#ifndef ORXFUNCTIONS_FITTING_POINT_LIST_H
#define ORXFUNCTIONS_FITTING_POINT_LIST_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/foundation/records.h"

namespace orx {

// The points whose distance from the circle's outline is below `tol` pixels (strictly), in input order.
// Reentrant.
ORX_API void getPointOnCircle(std::vector<cv::Point> pts, TCircle circle, std::vector<cv::Point>& out,
                              int tol);

// out = pts[idx[0]], pts[idx[1]], ..., an index may come more than once. Always true. Reentrant.
ORX_API bool getPointListFromIdxList(std::vector<cv::Point> pts, std::vector<int> idx,
                                     std::vector<cv::Point>& out);

// Removes the points at the given distinct indices. Nothing happens when `idx` is empty, or longer than `pts`
// (rcTooMany).
// Each removed point changes places with the last kept one, from the largest index down, so the order of the
// remaining points is deliberately not preserved. Reentrant.
ORX_API void deletePointsInList(std::vector<cv::Point>& pts, std::vector<int> idx);

// Removes the points nearer than `margin` pixels to the border of an image of that size. The order changes as
// in deletePointsInList. Reentrant.
ORX_API void deleteImageSidePoints(std::vector<cv::Point>& pts, cv::Size size, int margin);

// Removes `count` random points when count is at least 1 (rcOption) and at least two points remain
// (rcTooFew); otherwise nothing. Each step draws from all but the last point, which it moves into the gap.
// Draws from rand(), which nothing here seeds: seeded by the host it removes the same points again, while no
// other thread calls rand() or srand(). Reentrant.
ORX_API void deletePartPoints(std::vector<cv::Point>& pts, int count);

}  // namespace orx

#endif
