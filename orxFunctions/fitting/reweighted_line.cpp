#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <opencv2/core.hpp>

#include "orxFunctions/fitting/fit_weights_internal.h"
#include "orxFunctions/fitting/reweighted_line_internal.h"

namespace orx {
namespace {

constexpr float kAccuracy = 0.01F;  // of the offset in pixels and of the direction in radians
constexpr int kRestarts = 20;
constexpr int kPasses = 30;
constexpr std::size_t kStartPoints = 10;

// Weighted sums of a line's normal equations: products in single precision, sums in double, in the order of
// the points.
struct LineSums {
    double w = 0, x = 0, y = 0, xx = 0, yy = 0, xy = 0;

    void add(float px, float py, float weight) {
        const float wx = weight * px;
        const float wy = weight * py;
        x += static_cast<double>(wx);
        y += static_cast<double>(wy);
        xx += static_cast<double>(wx * px);
        yy += static_cast<double>(wy * py);
        xy += static_cast<double>(wx * py);
        w += static_cast<double>(weight);
    }

    // The line with the least weighted sum of squared distances.
    DirectedLine line() const {
        const double mx = x / w;
        const double my = y / w;
        const double dxx = xx / w - mx * mx;
        const double dyy = yy / w - my * my;
        const double dxy = xy / w - mx * my;
        const float angle = static_cast<float>(std::atan2(2 * dxy, dxx - dyy)) / 2;
        return {std::cos(angle), std::sin(angle), static_cast<float>(mx), static_cast<float>(my)};
    }
};

bool nearlyEqual(const DirectedLine& a, const DirectedLine& b) {
    const double cosine = std::clamp(static_cast<double>(a.vx * b.vx + a.vy * b.vy), -1.0, 1.0);
    if (!(std::fabs(std::acos(cosine)) < static_cast<double>(kAccuracy))) return false;
    return std::max(std::fabs(a.x - b.x), std::fabs(a.y - b.y)) < kAccuracy;
}

struct L1Weights {
    void operator()(const float* residuals, std::size_t count, float* weights) const {
        for (std::size_t i = 0; i < count; ++i) {
            weights[i] = static_cast<float>(1.0 / std::max(static_cast<double>(residuals[i]), 1e-6));
        }
    }
};

template <class Weights>
class ReweightedLineFit {
  public:
    ReweightedLineFit(const cv::Point* points, std::size_t count, Weights weigh)
        : count_(count), weigh_(weigh), memory_(4 * count) {
        xs_ = memory_.data();
        ys_ = xs_ + count;
        residuals_ = ys_ + count;
        weights_ = residuals_ + count;
        for (std::size_t i = 0; i < count; ++i) {
            xs_[i] = static_cast<float>(points[i].x);
            ys_[i] = static_cast<float>(points[i].y);
        }
        exact_ = static_cast<double>(static_cast<float>(count) * FLT_EPSILON);
    }

    DirectedLine fit() {
        if (count_ == 0) return {};
        // Up to ten points every restart begins with all of them: one tells all.
        const int restarts = count_ <= kStartPoints ? 1 : kRestarts;
        for (int restart = 0; restart < restarts; ++restart) refine(randomStart());
        return best_;
    }

  private:
    // The line through ten different random points, or through all when there are no more.
    DirectedLine randomStart() {
        std::array<std::size_t, kStartPoints> chosen{};
        const std::size_t wanted = std::min(count_, kStartPoints);
        for (std::size_t found = 0; found < wanted;) {
            const std::size_t candidate =
                count_ <= kStartPoints
                    ? found
                    : static_cast<std::size_t>(random_.uniform(0, static_cast<int>(count_)));
            const auto end = chosen.begin() + static_cast<std::ptrdiff_t>(found);
            if (std::find(chosen.begin(), end, candidate) == end) chosen[found++] = candidate;
        }
        std::sort(chosen.begin(), chosen.begin() + static_cast<std::ptrdiff_t>(wanted));
        LineSums sums;
        for (std::size_t i = 0; i < wanted; ++i) sums.add(xs_[chosen[i]], ys_[chosen[i]], 1.0F);
        return sums.line();
    }

    // Reweights until the line stands still, and keeps the best line met on the way.
    void refine(DirectedLine line) {
        DirectedLine previous;
        for (int pass = 0; pass < kPasses; ++pass) {
            if (pass > 0 && nearlyEqual(line, previous)) return;
            const double total = measure(line);
            if (total < leastTotal_) {
                leastTotal_ = total;
                best_ = line;
                if (total < exact_) return;
            }
            previous = line;
            line = reweightedLine();
        }
    }

    // Fills the list of distances from the line and returns their sum.
    double measure(const DirectedLine& line) {
        const float nx = line.vy;
        const float ny = -line.vx;
        for (std::size_t i = 0; i < count_; ++i) {
            residuals_[i] = std::fabs(nx * (xs_[i] - line.x) + ny * (ys_[i] - line.y));
        }
        double total = 0;
        for (std::size_t i = 0; i < count_; ++i) total += static_cast<double>(residuals_[i]);
        return total;
    }

    DirectedLine reweightedLine() {
        weigh_(residuals_, count_, weights_);
        double sum = 0;
        for (std::size_t i = 0; i < count_; ++i) sum += static_cast<double>(weights_[i]);
        LineSums sums;
        if (std::fabs(sum) > static_cast<double>(FLT_EPSILON)) {
            const double scale = 1.0 / sum;
            for (std::size_t i = 0; i < count_; ++i) {
                sums.add(xs_[i], ys_[i], static_cast<float>(static_cast<double>(weights_[i]) * scale));
            }
        } else {
            for (std::size_t i = 0; i < count_; ++i) sums.add(xs_[i], ys_[i], 1.0F);
        }
        return sums.line();
    }

    std::size_t count_;
    Weights weigh_;
    cv::AutoBuffer<float, 256> memory_;
    float* xs_ = nullptr;
    float* ys_ = nullptr;
    float* residuals_ = nullptr;
    float* weights_ = nullptr;
    double exact_ = 0;
    cv::RNG random_{static_cast<std::uint64_t>(-1)};
    double leastTotal_ = DBL_MAX;
    DirectedLine best_;
};

}  // namespace

DirectedLine fitLineByWeights(const cv::Point* points, std::size_t count, int weightType, float parameter) {
    return ReweightedLineFit<WeightFunction<float>>(points, count, {weightType, parameter}).fit();
}

DirectedLine fitLineL1(const cv::Point* points, std::size_t count) {
    return ReweightedLineFit<L1Weights>(points, count, {}).fit();
}

DirectedLine fitLineHuber(const cv::Point* points, std::size_t count) {
    return fitLineByWeights(points, count, kWeightHuber, 0);
}

}  // namespace orx
