// The upright box around an outline.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_BOUNDS_H
#define ORXFUNCTIONS_MATCHING_MODEL_BOUNDS_H

#include <algorithm>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/matching/model/model_data.h"

namespace orx::matching {

struct Bounds {
    cv::Point2d low;
    cv::Point2d high;

    cv::Point2d middle() const { return (low + high) * 0.5; }
    double extent() const { return std::max(high.x - low.x, high.y - low.y); }
};

// Of points that are there; all 0 for none.
inline Bounds boundsOf(const std::vector<OutlinePoint>& points) {
    if (points.empty()) return {};
    Bounds bounds{points.front().position, points.front().position};
    for (const OutlinePoint& point : points) {
        bounds.low = {std::min(bounds.low.x, point.position.x), std::min(bounds.low.y, point.position.y)};
        bounds.high = {std::max(bounds.high.x, point.position.x), std::max(bounds.high.y, point.position.y)};
    }
    return bounds;
}

}  // namespace orx::matching

#endif
