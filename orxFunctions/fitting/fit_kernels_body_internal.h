// The kernels of fit_kernels_internal.h, compiled once for each instruction set.
#ifndef ORXFUNCTIONS_FITTING_FIT_KERNELS_BODY_INTERNAL_H
#define ORXFUNCTIONS_FITTING_FIT_KERNELS_BODY_INTERNAL_H

#include <cstddef>
#include <cstdint>

#include "orxFunctions/fitting/fit_kernels_internal.h"
#include "orxFunctions/platform/simd_internal.h"

namespace orx::ORX_SIMD::fits {

using fit_kernels::Circle;
using fit_kernels::Contest;
using fit_kernels::GradientSums;
using fit_kernels::Loss;
using fit_kernels::PointSpan;
using fit_kernels::PowerSums;
using fit_kernels::Ring;
using fit_kernels::Strip;

constexpr std::size_t kLanes = VecD::kLanes;
// Points whose terms are kept before they are summed in order, and points between two looks at a contest.
constexpr std::size_t kTermBlock = 64;
constexpr std::size_t kContestBlock = 256;

// Calls visit(x, y, first) for vectors of points. The last vector, when not full, is filled up with zeros.
template <class Visit>
void forEachVector(PointSpan points, Visit visit) {
    VecD x;
    VecD y;
    std::size_t i = 0;
    for (; i + kLanes <= points.count; i += kLanes) {
        loadPairs(points.xy + 2 * i, x, y);
        visit(x, y, i);
    }
    if (i == points.count) return;
    std::int32_t rest[2 * kLanes] = {};
    for (std::size_t j = 0; j < 2 * (points.count - i); ++j) rest[j] = points.xy[2 * i + j];
    loadPairs(rest, x, y);
    visit(x, y, i);
}

// Calls visit(block, first) for blocks of at most `size` points.
template <class Visit>
void forEachBlock(PointSpan points, std::size_t size, Visit visit) {
    for (std::size_t first = 0; first < points.count; first += size) {
        const std::size_t left = points.count - first;
        if (!visit(PointSpan{points.xy + 2 * first, left < size ? left : size}, first)) return;
    }
}

inline double sumOfLanes(VecD v) {
    double lanes[kLanes];
    v.store(lanes);
    double sum = 0;
    for (const double lane : lanes) sum += lane;
    return sum;
}

inline double largestLane(VecD v) {
    double lanes[kLanes];
    v.store(lanes);
    double largest = lanes[0];
    for (const double lane : lanes) largest = lane > largest ? lane : largest;
    return largest;
}

inline bool exactPowerSums(PointSpan points, PowerSums& sums) {
    const VecD zero = VecD::all(0);
    VecD x1 = zero, y1 = zero, xx1 = zero, yy1 = zero, xxx1 = zero, yyy1 = zero, xy1 = zero, xyy1 = zero,
         xxy1 = zero, extent = zero;
    // Zeros that fill up the last vector add nothing.
    forEachVector(points, [&](VecD x, VecD y, std::size_t) {
        const VecD xx = x * x;
        const VecD yy = y * y;
        extent = max(extent, max(abs(x), abs(y)));
        x1 = x1 + x;
        y1 = y1 + y;
        xx1 = xx1 + xx;
        yy1 = yy1 + yy;
        xxx1 = xxx1 + xx * x;
        yyy1 = yyy1 + yy * y;
        xy1 = xy1 + x * y;
        xyy1 = xyy1 + x * yy;
        xxy1 = xxy1 + xx * y;
    });
    // Integers up to 2^53 are exact in a double, and no partial sum exceeds count * extent^3.
    constexpr double kExact = 9007199254740992.0;
    const auto count = static_cast<double>(points.count);
    const double largest = largestLane(extent);
    if (!(count * largest * largest * largest < kExact)) return false;
    sums = {count,
            sumOfLanes(x1),
            sumOfLanes(y1),
            sumOfLanes(xx1),
            sumOfLanes(yy1),
            sumOfLanes(xxx1),
            sumOfLanes(yyy1),
            sumOfLanes(xy1),
            sumOfLanes(xyy1),
            sumOfLanes(xxy1)};
    return true;
}

inline PowerSums weightedPowerSums(PointSpan points, const double* weights) {
    PowerSums sums = {};
    for (std::size_t i = 0; i < points.count; ++i) {
        const double x = points.xy[2 * i];
        const double y = points.xy[2 * i + 1];
        const double w = weights[i];
        const double xx = x * x;
        const double yy = y * y;
        sums.w += w;
        sums.x += w * x;
        sums.y += w * y;
        sums.xx += w * xx;
        sums.yy += w * yy;
        sums.xxx += w * (xx * x);
        sums.yyy += w * (yy * y);
        sums.xy += w * (x * y);
        sums.xyy += w * (x * yy);
        sums.xxy += w * (xx * y);
    }
    return sums;
}

// The distance of points from the circle, outside positive; dx and dy run from the points to the centre.
struct CircleDistance {
    CircleDistance(VecD x, VecD y, Circle circle)
        : dx(VecD::all(circle.x) - x),
          dy(VecD::all(circle.y) - y),
          value(sqrt(dx * dx + dy * dy) - VecD::all(circle.r)) {}

    VecD dx;
    VecD dy;
    VecD value;
};

inline double circleResiduals(PointSpan points, Circle circle, double* residuals) {
    double sum = 0;
    forEachBlock(points, kTermBlock, [&](PointSpan block, std::size_t first) {
        double terms[kTermBlock];
        forEachVector(block, [&](VecD x, VecD y, std::size_t i) {
            abs(CircleDistance(x, y, circle).value).store(terms + i);
        });
        for (std::size_t i = 0; i < block.count; ++i) {
            residuals[first + i] = terms[i];
            sum += terms[i];
        }
        return true;
    });
    return sum;
}

// Counts the points for which inside(x, y) holds.
template <class Inside>
std::size_t countPoints(PointSpan points, Contest contest, Inside inside) {
    const VecD zero = VecD::all(0);
    const VecD one = VecD::all(1);
    std::size_t found = 0;
    forEachBlock(points, kContestBlock, [&](PointSpan block, std::size_t first) {
        VecD counts = zero;
        const std::size_t whole = block.count - block.count % kLanes;
        forEachVector(PointSpan{block.xy, whole}, [&](VecD x, VecD y, std::size_t) {
            counts = counts + select(inside(x, y), one, zero);
        });
        found += static_cast<std::size_t>(sumOfLanes(counts));
        forEachVector(PointSpan{block.xy + 2 * whole, block.count - whole}, [&](VecD x, VecD y, std::size_t) {
            unsigned lanes = inside(x, y).lanes();
            for (std::size_t i = whole; i < block.count; ++i, lanes >>= 1) found += lanes & 1U;
        });
        const std::size_t left = points.count - first - block.count;
        return found < contest.enough || found + left > contest.best;
    });
    return found;
}

inline std::size_t countInRing(PointSpan points, Ring ring, Contest contest) {
    const VecD cx = VecD::all(ring.x);
    const VecD cy = VecD::all(ring.y);
    const VecD low = VecD::all(ring.low);
    const VecD high = VecD::all(ring.high);
    return countPoints(points, contest, [&](VecD x, VecD y) {
        const VecD dx = cx - x;
        const VecD dy = cy - y;
        const VecD q = dx * dx + dy * dy;
        return (low <= q) & (q < high);
    });
}

inline std::size_t countInStrip(PointSpan points, Strip strip, Contest contest) {
    const VecD k = VecD::all(strip.k);
    const VecD b = VecD::all(strip.b);
    const VecD limit = VecD::all(strip.limit);
    return countPoints(points, contest, [&](VecD x, VecD y) { return abs(k * x - y + b) < limit; });
}

// Huber's and Tukey's functions, a vector at a time.
class LossVectors {
  public:
    explicit LossVectors(Loss loss) : loss_(loss), c_(VecD::all(loss.c)) {}

    VecD influence(VecD e) const {
        const VecD zero = VecD::all(0);
        if (loss_.huberInfluence) {
            const VecD sign = select(zero < e, VecD::all(1), select(e < zero, VecD::all(-1), zero));
            return select(abs(e) <= c_, e, c_ * sign);
        }
        const VecD t = e / c_;
        const VecD u = VecD::all(1) - t * t;
        return select(abs(e) < c_, e * (u * u), zero);
    }

    VecD cost(VecD e) const {
        const VecD two = VecD::all(2);
        const VecD ee = e * e;
        const VecD cc = c_ * c_;
        if (loss_.huberLoss) return select(abs(e) <= c_, ee / two, c_ * abs(e) - cc / two);
        const VecD inner = ee / two * (VecD::all(1) - ee / cc + ee * ee / (VecD::all(3) * (cc * cc)));
        return select(abs(e) <= c_, inner, cc / VecD::all(6));
    }

  private:
    Loss loss_;
    VecD c_;
};

inline GradientSums circleGradient(PointSpan points, Circle circle, Loss loss) {
    const LossVectors functions(loss);
    const VecD r = VecD::all(circle.r);
    GradientSums sums = {};
    forEachBlock(points, kTermBlock, [&](PointSpan block, std::size_t) {
        double moveX[kTermBlock], moveY[kTermBlock], moveR[kTermBlock], cost[kTermBlock];
        forEachVector(block, [&](VecD x, VecD y, std::size_t i) {
            const CircleDistance e(x, y, circle);
            const VecD influence = functions.influence(e.value);
            (e.dx * influence / r).store(moveX + i);
            (e.dy * influence / r).store(moveY + i);
            influence.store(moveR + i);
            functions.cost(e.value).store(cost + i);
        });
        for (std::size_t i = 0; i < block.count; ++i) {
            sums.x += moveX[i];
            sums.y += moveY[i];
            sums.r -= moveR[i];
            sums.loss += cost[i];
        }
        return true;
    });
    return sums;
}

inline constexpr fit_kernels::Kernels kKernels = {exactPowerSums, weightedPowerSums, circleResiduals,
                                                  countInRing,    countInStrip,      circleGradient};

}  // namespace orx::ORX_SIMD::fits

#endif
