#include "orxFunctions/fitting/geometric/fit_points.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace orx::geometric {
namespace {

bool inRange(double value, double low, double high) { return value >= low && value <= high; }

bool optionsFit(const TFitOptions& options) {
    if (options.loss < flLeastSquares || options.loss > flGemanMcClure) return false;
    if (options.noise < pnIndependent || options.noise > pnEdgeChain) return false;
    if (options.tuning != 0.0 && !inRange(options.tuning, 0.1, 100.0)) return false;
    if (!inRange(options.scale, 0.0, std::numeric_limits<double>::max())) return false;
    if (options.noise == pnEdgeChain && !inRange(options.smoothing, 0.3, 50.0)) return false;
    if (options.absoluteDeviations && options.deviations.empty()) return false;
    return options.maxIterations >= 1 && options.maxIterations <= 1000;
}

bool deviationsFit(const std::vector<double>& deviations, std::size_t count) {
    if (deviations.empty()) return true;
    if (deviations.size() != count) return false;
    return std::all_of(deviations.begin(), deviations.end(),
                       [](double d) { return d >= 0.0 && std::isfinite(d); });
}

struct Extent {
    double sumX = 0.0;
    double sumY = 0.0;
    double left = std::numeric_limits<double>::infinity();
    double top = left;
    double right = -left;
    double bottom = -left;
};

// Sums in four parts, so that the compiler may keep them apart.
template <class Point>
Extent extentOf(const Point* points, std::size_t count) {
    Extent parts[4];
    const auto add = [&](Extent& part, const Point& point) {
        const auto x = static_cast<double>(point.x);
        const auto y = static_cast<double>(point.y);
        part.sumX += x;
        part.sumY += y;
        part.left = x < part.left ? x : part.left;
        part.right = x > part.right ? x : part.right;
        part.top = y < part.top ? y : part.top;
        part.bottom = y > part.bottom ? y : part.bottom;
    };
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        for (std::size_t k = 0; k < 4; ++k) add(parts[k], points[i + k]);
    }
    for (; i < count; ++i) add(parts[0], points[i]);
    Extent all;
    for (const Extent& part : parts) {
        all.sumX += part.sumX;
        all.sumY += part.sumY;
        all.left = std::min(all.left, part.left);
        all.right = std::max(all.right, part.right);
        all.top = std::min(all.top, part.top);
        all.bottom = std::max(all.bottom, part.bottom);
    }
    return all;
}

template <class Point>
bool allFinite(const Point* points, std::size_t count) {
    return std::all_of(points, points + count, [](const Point& p) {
        return std::isfinite(static_cast<double>(p.x)) && std::isfinite(static_cast<double>(p.y));
    });
}

}  // namespace

template <class Point>
TFitStatus FitPoints::take(const std::vector<Point>& points, const TFitOptions& options, std::size_t least) {
    givenCount_ = points.size();
    if (!optionsFit(options)) return fsBadOptions;
    if (givenCount_ > kMostPoints) return fsTooLarge;
    if (!deviationsFit(options.deviations, givenCount_)) return fsBadDeviations;
    if (options.deviations.empty()) return copy(points.data(), givenCount_, least);

    if (!allFinite(points.data(), givenCount_)) return fsNotFinite;
    std::vector<Point> kept;
    for (std::size_t i = 0; i < givenCount_; ++i) {
        if (options.deviations[i] == 0.0) continue;
        kept.push_back(points[i]);
        given_.push_back(static_cast<int>(i));
    }
    const TFitStatus status = copy(kept.data(), kept.size(), least);
    if (status == fsOk) weigh(options.deviations);
    return status;
}

template <class Point>
TFitStatus FitPoints::copy(const Point* points, std::size_t count, std::size_t least) {
    const Extent extent = extentOf(points, count);
    if (!std::isfinite(extent.sumX) || !std::isfinite(extent.sumY)) {
        return allFinite(points, count) ? fsTooLarge : fsNotFinite;
    }
    const double farthest = std::max({-extent.left, -extent.top, extent.right, extent.bottom});
    if (farthest > kLargestCoordinate) return fsTooLarge;
    if (count < least) return fsTooFewPoints;
    center_ = cv::Point2d(extent.sumX, extent.sumY) / static_cast<double>(count);
    const double reach = std::max({center_.x - extent.left, extent.right - center_.x, center_.y - extent.top,
                                   extent.bottom - center_.y});
    constexpr double kOnePlace = 1e-100;
    if (extent.right - extent.left < kOnePlace && extent.bottom - extent.top < kOnePlace) return fsCoincident;

    int exponent = 0;
    std::frexp(reach, &exponent);
    scale_ = std::ldexp(1.0, exponent);
    rounding_ = std::numeric_limits<double>::epsilon() / 2.0 * std::max(1.0, std::abs(farthest) / scale_);
    size_ = count;
    columns_.reset(new double[2 * count]);
    const double factor = 1.0 / scale_;
    double* x = columns_.get();
    double* y = x + count;
    for (std::size_t i = 0; i < count; ++i) {
        x[i] = (static_cast<double>(points[i].x) - center_.x) * factor;
        y[i] = (static_cast<double>(points[i].y) - center_.y) * factor;
    }
    return fsOk;
}

// Relative to the smallest deviation nothing overflows.
void FitPoints::weigh(const std::vector<double>& deviations) {
    weights_.reset(new double[size_]);
    double smallest = std::numeric_limits<double>::infinity();
    for (const int i : given_) smallest = std::min(smallest, deviations[static_cast<std::size_t>(i)]);
    double sum = 0.0;
    for (std::size_t k = 0; k < size_; ++k) {
        const double ratio = smallest / deviations[static_cast<std::size_t>(given_[k])];
        weights_[k] = ratio * ratio;
        sum += weights_[k];
    }
    const double mean = sum / static_cast<double>(size_);
    for (std::size_t k = 0; k < size_; ++k) weights_[k] /= mean;
    unitDeviation_ = smallest / std::sqrt(mean);
}

void FitPoints::leaveOut(const std::vector<unsigned char>& keep) {
    if (weights_ == nullptr) {
        weights_.reset(new double[size_]);
        std::fill_n(weights_.get(), size_, 1.0);
    }
    for (std::size_t i = 0; i < size_; ++i) weights_[i] = keep[i] != 0 ? weights_[i] : 0.0;
}

FitPoints FitPoints::only(const std::vector<unsigned char>& keep) const {
    std::vector<int> entries(size_);
    std::size_t count = 0;
    for (std::size_t i = 0; i < size_; ++i) {
        // Written always, kept when wanted: no branch to mispredict.
        entries[count] = static_cast<int>(i);
        count += keep[i] != 0 ? 1 : 0;
    }
    entries.resize(count);
    FitPoints kept;
    const auto copy = [&](const double* from, double* to) {
        for (const int i : entries) *to++ = from[i];
    };
    kept.size_ = count;
    kept.others_ = others_ + size_ - count;
    kept.columns_.reset(new double[2 * count]);
    copy(columns_.get(), kept.columns_.get());
    copy(columns_.get() + size_, kept.columns_.get() + count);
    if (weights_ != nullptr) {
        kept.weights_.reset(new double[count]);
        copy(weights_.get(), kept.weights_.get());
    }
    if (!given_.empty()) {
        for (int& i : entries) i = given_[static_cast<std::size_t>(i)];
    }
    kept.given_ = std::move(entries);
    kept.givenCount_ = givenCount_;
    kept.center_ = center_;
    kept.scale_ = scale_;
    kept.rounding_ = rounding_;
    kept.unitDeviation_ = unitDeviation_;
    return kept;
}

void FitPoints::markUsed(const std::vector<unsigned char>& hasSay, TFitReport& report) const {
    const auto said = std::count(hasSay.begin(), hasSay.end(), 1);
    report.usedPoints = static_cast<int>(hasSay.empty() ? size_ : static_cast<std::size_t>(said));
    if (given_.empty()) {
        report.used = hasSay;
        if (hasSay.empty()) report.used.assign(givenCount_, 1);
        return;
    }
    report.used.assign(givenCount_, 0);
    for (std::size_t k = 0; k < given_.size(); ++k) {
        report.used[static_cast<std::size_t>(given_[k])] = hasSay.empty() ? 1 : hasSay[k];
    }
}

template TFitStatus FitPoints::take(const std::vector<cv::Point2d>&, const TFitOptions&, std::size_t);
template TFitStatus FitPoints::take(const std::vector<cv::Point2f>&, const TFitOptions&, std::size_t);

}  // namespace orx::geometric
