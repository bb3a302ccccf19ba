#include "orxFunctions/fitting/reweighted_line_internal.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/core/hal/intrin.hpp>

#include "orxFunctions/fitting/fit_weights_internal.h"

namespace orx {
namespace {

constexpr float kAccuracy = 0.01F;  // of the offset in pixels and of the direction in radians
constexpr std::size_t kRestarts = 20;
constexpr std::size_t kPasses = 30;
constexpr std::size_t kStartPoints = 10;

// Restarts refined side by side, one in each lane of a vector: their sums run in the order of the points, so
// that a single one would wait for each addition.
constexpr std::size_t kLanes = 4;

// OpenCV's vectors, not a family of kernels: the four lanes are in the baseline already, and the code around
// them belongs to this search alone.
using Floats = cv::v_float32x4;

struct Doubles {
    cv::v_float64x2 low = cv::v_setzero_f64();
    cv::v_float64x2 high = cv::v_setzero_f64();

    void add(const Floats& v) {
        low = low + cv::v_cvt_f64(v);
        high = high + cv::v_cvt_f64_high(v);
    }
    std::array<double, kLanes> lanes() const {
        std::array<double, kLanes> values{};
        cv::v_store(values.data(), low);
        cv::v_store(values.data() + 2, high);
        return values;
    }
};

// Weighted sums of a line's normal equations: products in single precision, sums in double, in the order of
// the points.
struct LineSums {
    double w = 0, x = 0, y = 0, xx = 0, yy = 0, xy = 0;

    void add(float px, float py) {
        x += static_cast<double>(px);
        y += static_cast<double>(py);
        xx += static_cast<double>(px * px);
        yy += static_cast<double>(py * py);
        xy += static_cast<double>(px * py);
        w += 1.0;
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
    // The angle is below kAccuracy when its cosine is above this by more than the rounding of both.
    constexpr double kCosine = 0.9999500004189;
    constexpr double kRounding = 1e-9;
    const double cosine = std::clamp(static_cast<double>(a.vx * b.vx + a.vy * b.vy), -1.0, 1.0);
    if (!(cosine > kCosine - kRounding)) return false;
    if (!(cosine > kCosine + kRounding || std::acos(cosine) < static_cast<double>(kAccuracy))) return false;
    return std::max(std::fabs(a.x - b.x), std::fabs(a.y - b.y)) < kAccuracy;
}

struct L1Weights {
    void operator()(const float* residuals, std::size_t count, float* weights) const {
        for (std::size_t i = 0; i < count; ++i) {
            weights[i] = static_cast<float>(1.0 / std::max(static_cast<double>(residuals[i]), 1e-6));
        }
    }
};

// The row of the table with its default constant, four at once; the count is a multiple of four.
struct HuberWeights {
    void operator()(const float* residuals, std::size_t count, float* weights) const {
        const Floats constant = cv::v_setall_f32(1.345F);
        const Floats one = cv::v_setall_f32(1.0F);
        for (std::size_t i = 0; i < count; i += kLanes) {
            const Floats d = cv::v_load(residuals + i);
            cv::v_store(weights + i, cv::v_select(d < constant, one, constant / d));
        }
    }
};

template <class Weights>
class ReweightedLineFit {
  public:
    ReweightedLineFit(const cv::Point* points, std::size_t count, Weights weigh)
        : count_(count), weigh_(weigh), memory_((2 + 2 * kLanes) * count), taken_(count) {
        xs_ = memory_.data();
        ys_ = xs_ + count;
        residuals_ = ys_ + count;
        weights_ = residuals_ + kLanes * count;
        for (std::size_t i = 0; i < count; ++i) {
            xs_[i] = static_cast<float>(points[i].x);
            ys_[i] = static_cast<float>(points[i].y);
            extent_ = std::max({extent_, std::fabs(xs_[i]), std::fabs(ys_[i])});
        }
        std::fill_n(taken_.data(), count, false);
        exact_ = static_cast<double>(static_cast<float>(count) * FLT_EPSILON);
    }

    DirectedLine fit() {
        if (count_ == 0) return {};
        // Up to ten points every restart begins with all of them: one tells all.
        const std::size_t restarts = count_ <= kStartPoints ? 1 : kRestarts;
        refineAll(restarts);
        return best(restarts);
    }

  private:
    // A restart under way.
    struct Refinement {
        std::size_t restart = 0;
        DirectedLine line;
        bool done = true;
    };

    // The lines that a restart met, with the sums of the distances from them.
    struct Track {
        struct Step {
            DirectedLine line;
            double total;
        };
        std::array<Step, kPasses> steps;
        std::size_t length = 0;
    };

    // The line through ten different random points, or through all when there are no more.
    DirectedLine randomStart() {
        LineSums sums;
        if (count_ <= kStartPoints) {
            for (std::size_t i = 0; i < count_; ++i) sums.add(xs_[i], ys_[i]);
            return sums.line();
        }
        std::array<std::size_t, kStartPoints> chosen{};
        for (std::size_t found = 0; found < kStartPoints;) {
            const auto candidate = static_cast<std::size_t>(random_.uniform(0, static_cast<int>(count_)));
            if (taken_[candidate]) continue;
            taken_[candidate] = true;
            chosen[found++] = candidate;
        }
        for (const std::size_t i : chosen) taken_[i] = false;
        // Sums run in the order of the points. Up to here they are sums of integers below 2^53, which no
        // order rounds.
        constexpr float kExact = 16777216.0F;
        if (!(extent_ <= kExact)) std::sort(chosen.begin(), chosen.end());
        for (const std::size_t i : chosen) sums.add(xs_[i], ys_[i]);
        return sums.line();
    }

    // Reweights every restart's line until it stands still, and records the lines met on the way. A lane that
    // is done takes the next restart.
    void refineAll(std::size_t restarts) {
        std::array<Refinement, kLanes> lanes;
        std::size_t started = 0;
        for (;;) {
            bool busy = false;
            for (Refinement& lane : lanes) {
                if (lane.done && started < restarts) {
                    lane = {started++, randomStart(), false};
                }
                busy = busy || !lane.done;
            }
            if (!busy) return;
            const std::array<double, kLanes> totals = measure(lanes);
            weigh_(residuals_, kLanes * count_, weights_);
            const std::array<LineSums, kLanes> sums = weightedSums();
            for (std::size_t l = 0; l < kLanes; ++l) {
                Refinement& lane = lanes[l];
                if (lane.done) continue;
                Track& track = tracks_[lane.restart];
                track.steps[track.length++] = {lane.line, totals[l]};
                const DirectedLine previous = lane.line;
                lane.line = sums[l].line();
                lane.done = track.length == kPasses || nearlyEqual(lane.line, previous);
            }
        }
    }

    // The best line of all restarts, taken one after the other. A restart ends with a line that beats all
    // before and leaves nothing over.
    DirectedLine best(std::size_t restarts) const {
        DirectedLine best;
        double least = DBL_MAX;
        for (std::size_t restart = 0; restart < restarts; ++restart) {
            const Track& track = tracks_[restart];
            for (std::size_t i = 0; i < track.length; ++i) {
                if (!(track.steps[i].total < least)) continue;
                least = track.steps[i].total;
                best = track.steps[i].line;
                if (least < exact_) break;
            }
        }
        return best;
    }

    // Fills the list of distances from each lane's line and returns their sums.
    std::array<double, kLanes> measure(const std::array<Refinement, kLanes>& lanes) {
        const auto gather = [&](float DirectedLine::*field) {
            return Floats(lanes[0].line.*field, lanes[1].line.*field, lanes[2].line.*field,
                          lanes[3].line.*field);
        };
        const Floats nx = gather(&DirectedLine::vy);
        const Floats ny = cv::v_setall_f32(-0.0F) ^ gather(&DirectedLine::vx);
        const Floats px = gather(&DirectedLine::x);
        const Floats py = gather(&DirectedLine::y);
        Doubles totals;
        for (std::size_t i = 0; i < count_; ++i) {
            const Floats distance =
                cv::v_abs(nx * (cv::v_setall_f32(xs_[i]) - px) + ny * (cv::v_setall_f32(ys_[i]) - py));
            cv::v_store(residuals_ + kLanes * i, distance);
            totals.add(distance);
        }
        return totals.lanes();
    }

    // With the weights scaled to the sum 1; weights that sum up to nothing count 1 each.
    std::array<LineSums, kLanes> weightedSums() const {
        Doubles total;
        for (std::size_t i = 0; i < count_; ++i) total.add(cv::v_load(weights_ + kLanes * i));
        const cv::v_float64x2 least = cv::v_setall_f64(static_cast<double>(FLT_EPSILON));
        const cv::v_float64x2 one = cv::v_setall_f64(1.0);
        const cv::v_float64x2 lowIsScaled = cv::v_abs(total.low) > least;
        const cv::v_float64x2 highIsScaled = cv::v_abs(total.high) > least;
        const cv::v_float64x2 lowScale = one / total.low;
        const cv::v_float64x2 highScale = one / total.high;

        Doubles w, x, y, xx, yy, xy;
        for (std::size_t i = 0; i < count_; ++i) {
            const Floats raw = cv::v_load(weights_ + kLanes * i);
            const Floats weight =
                cv::v_cvt_f32(cv::v_select(lowIsScaled, cv::v_cvt_f64(raw) * lowScale, one),
                              cv::v_select(highIsScaled, cv::v_cvt_f64_high(raw) * highScale, one));
            const Floats px = cv::v_setall_f32(xs_[i]);
            const Floats py = cv::v_setall_f32(ys_[i]);
            const Floats wx = weight * px;
            const Floats wy = weight * py;
            x.add(wx);
            y.add(wy);
            xx.add(wx * px);
            yy.add(wy * py);
            xy.add(wx * py);
            w.add(weight);
        }
        std::array<LineSums, kLanes> sums{};
        for (std::size_t l = 0; l < kLanes; ++l) {
            sums[l] = {w.lanes()[l], x.lanes()[l], y.lanes()[l], xx.lanes()[l], yy.lanes()[l], xy.lanes()[l]};
        }
        return sums;
    }

    std::size_t count_;
    Weights weigh_;
    cv::AutoBuffer<float, 1024> memory_;
    cv::AutoBuffer<bool, 1024> taken_;  // by the random start that is being drawn
    float* xs_ = nullptr;
    float* ys_ = nullptr;
    float* residuals_ = nullptr;
    float* weights_ = nullptr;
    float extent_ = 0;
    double exact_ = 0;
    cv::RNG random_{static_cast<std::uint64_t>(-1)};
    std::array<Track, kRestarts> tracks_;
};

}  // namespace

DirectedLine fitLineByWeights(const cv::Point* points, std::size_t count, int weightType, float parameter) {
    return ReweightedLineFit<WeightFunction<float>>(points, count, {weightType, parameter}).fit();
}

DirectedLine fitLineL1(const cv::Point* points, std::size_t count) {
    return ReweightedLineFit<L1Weights>(points, count, {}).fit();
}

DirectedLine fitLineHuber(const cv::Point* points, std::size_t count) {
    return ReweightedLineFit<HuberWeights>(points, count, {}).fit();
}

}  // namespace orx
