// Points as two columns of doubles, the form in which the point kernels read them.
#ifndef ORXFUNCTIONS_FITTING_POINT_COLUMNS_INTERNAL_H
#define ORXFUNCTIONS_FITTING_POINT_COLUMNS_INTERNAL_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "orxFunctions/fitting/kernels/inlier.h"

namespace orx {

// Made once per list of cv::Point, cv::Point2f or cv::Point2d, which it does not keep. Read-only afterwards.
class PointColumns {
  public:
    template <class Point>
    explicit PointColumns(const std::vector<Point>& points) : size_(points.size()) {
        constexpr double kPadding = std::numeric_limits<double>::quiet_NaN();
        constexpr std::size_t kStep = inlier_kernels::kPointsPerStep;
        const std::size_t padded = (size_ + kStep - 1) / kStep * kStep;
        x_.resize(padded, kPadding);
        y_.resize(padded, kPadding);
        for (std::size_t i = 0; i < size_; ++i) {
            x_[i] = static_cast<double>(points[i].x);
            y_[i] = static_cast<double>(points[i].y);
            extent_ = std::max({extent_, std::abs(x_[i]), std::abs(y_[i])});
        }
    }

    inlier_kernels::PointSpan span() const { return {x_.data(), y_.data(), x_.size()}; }
    std::size_t size() const { return size_; }
    // The largest absolute coordinate.
    double extent() const { return extent_; }

  private:
    std::vector<double> x_;
    std::vector<double> y_;
    std::size_t size_;
    double extent_ = 0;
};

}  // namespace orx

#endif
