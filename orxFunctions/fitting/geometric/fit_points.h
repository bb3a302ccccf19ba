// The points of a fit as columns of doubles about their centre, checked, and what goes back into the report.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_FIT_POINTS_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_FIT_POINTS_H

#include <algorithm>
#include <cstddef>
#include <memory>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/fitting/fit_report.h"
#include "orxFunctions/fitting/kernels/distance.h"

namespace orx::geometric {

using namespace distance_kernels;

constexpr std::size_t kMostPoints = 20'000'000;
constexpr double kLargestCoordinate = 1e9;

// The number of points for a report, also where it is too large for one.
inline int countOf(std::size_t points) { return static_cast<int>(std::min<std::size_t>(points, 2147483647)); }

// pixel = center + scale * column. The scale is a power of two, so that scaling rounds nothing; columns reach
// to between 0.5 and 1. Points whose deviation is 0 are left out.
class FitPoints {
  public:
    // fsOk, or why these points can't be fitted with these options, looked for in this order: options, number
    // of points, deviations, finite coordinates, their size, fewer than `least` points left, all in one
    // place.
    template <class Point>
    TFitStatus take(const std::vector<Point>& points, const TFitOptions& options, std::size_t least);

    // Those of the points whose entry is not 0, in the same units. The report still counts all points given.
    FitPoints only(const std::vector<unsigned char>& keep) const;

    std::size_t size() const { return size_; }
    // The reciprocal of each squared deviation is a point's weight, in units of their mean.
    Columns columns() const { return {columns_.get(), columns_.get() + size_, weights_.get(), size_}; }
    double weight(std::size_t i) const { return weights_ == nullptr ? 1.0 : weights_[i]; }
    cv::Point2d at(std::size_t i) const { return {columns_[i], columns_[size_ + i]}; }
    // How many only() has left behind.
    std::size_t others() const { return others_; }
    // Its index among the points given.
    std::size_t given(std::size_t i) const {
        return given_.empty() ? i : static_cast<std::size_t>(given_[i]);
    }

    cv::Point2d center() const { return center_; }
    double scale() const { return scale_; }
    cv::Point2d toPixels(cv::Point2d p) const { return center_ + scale_ * p; }
    cv::Point2d fromPixels(cv::Point2d p) const { return (p - center_) / scale_; }
    // What the coordinates' own rounding may move a point by, in columns: distances below tell nothing.
    double rounding() const { return rounding_; }
    // The deviation of a point of weight 1 in pixels, as the deviations given say; 1 without deviations.
    double unitDeviation() const { return unitDeviation_; }

    // Takes away the weight of every point whose entry is 0.
    void leaveOut(const std::vector<unsigned char>& keep);

    // Sets report.usedPoints and used: `hasSay` names the entries of the columns that had a say; empty means
    // all.
    void markUsed(const std::vector<unsigned char>& hasSay, TFitReport& report) const;

  private:
    template <class Point>
    TFitStatus copy(const Point* points, std::size_t count, std::size_t least);
    void weigh(const std::vector<double>& deviations);

    std::unique_ptr<double[]> columns_;  // x, then y
    std::unique_ptr<double[]> weights_;  // null where all are 1
    std::size_t size_ = 0;
    std::size_t others_ = 0;
    // Where points are left out: the index of each among the points given.
    std::vector<int> given_;
    std::size_t givenCount_ = 0;
    cv::Point2d center_;
    double scale_ = 1.0;
    double rounding_ = 0.0;
    double unitDeviation_ = 1.0;
};

}  // namespace orx::geometric

#endif
