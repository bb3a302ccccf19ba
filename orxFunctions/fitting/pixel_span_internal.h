// A list of points as the kernels read it.
#ifndef ORXFUNCTIONS_FITTING_PIXEL_SPAN_INTERNAL_H
#define ORXFUNCTIONS_FITTING_PIXEL_SPAN_INTERNAL_H

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/fitting/kernels/circle.h"

namespace orx {

inline circle_kernels::PixelSpan spanOf(const std::vector<cv::Point>& points) {
    static_assert(sizeof(cv::Point) == 2 * sizeof(std::int32_t), "kernels read points as pairs of integers");
    return {points.empty() ? nullptr : &points.front().x, points.size()};
}

}  // namespace orx

#endif
