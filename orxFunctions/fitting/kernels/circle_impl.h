// The loops of kernels/circle.h, compiled once for each instruction set.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_CIRCLE_IMPL_H
#define ORXFUNCTIONS_FITTING_KERNELS_CIRCLE_IMPL_H

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "orxFunctions/fitting/kernels/circle.h"
#include "orxFunctions/platform/simd/narrow_vectors.h"
#include "orxFunctions/platform/simd/vectors.h"

namespace orx::circle_kernels::ORX_SIMD {

using namespace orx::ORX_SIMD;

constexpr std::size_t kLanes = VecD::kLanes;

// Calls visit(x, y, first) for vectors of points. The last vector, when not full, is filled up with zeros.
template <class Visit>
void forEachVector(PixelSpan points, Visit visit) {
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

// Values of so many points are kept at a time between the vectors that give them and the sums in the order of
// the points, whose last additions then wait in registers.
constexpr std::size_t kBlock = 32;

// Calls visit(points of the block, index of its first) for blocks of up to kBlock points.
template <class Visit>
void forEachBlock(PixelSpan points, Visit visit) {
    for (std::size_t first = 0; first < points.count; first += kBlock) {
        const std::size_t left = points.count - first;
        visit(PixelSpan{points.xy + 2 * first, left < kBlock ? left : kBlock}, first);
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

// a * b + c, in whichever of the two ways is faster: for numbers of which none needs rounding.
inline VecD exactProductSum(VecD a, VecD b, VecD c) {
#if defined(__AVX2__) && defined(__FMA__)
    return {_mm256_fmadd_pd(a.v, b.v, c.v)};
#else
    return a * b + c;
#endif
}

inline bool exactPowerSums(PixelSpan points, PowerSums& sums) {
    const VecD zero = VecD::all(0);
    VecD x1 = zero, y1 = zero, xx1 = zero, yy1 = zero, xxx1 = zero, yyy1 = zero, xy1 = zero, xyy1 = zero,
         xxy1 = zero, largestSquare = zero;
    // Zeros that fill up the last vector add nothing.
    forEachVector(points, [&](VecD x, VecD y, std::size_t) {
        const VecD xx = x * x;
        const VecD yy = y * y;
        largestSquare = max(largestSquare, max(xx, yy));
        x1 = x1 + x;
        y1 = y1 + y;
        xx1 = xx1 + xx;
        yy1 = yy1 + yy;
        xxx1 = exactProductSum(xx, x, xxx1);
        yyy1 = exactProductSum(yy, y, yyy1);
        xy1 = exactProductSum(x, y, xy1);
        xyy1 = exactProductSum(x, yy, xyy1);
        xxy1 = exactProductSum(xx, y, xxy1);
    });
    // Integers up to 2^53 are exact in a double, and no partial sum exceeds count * extent^3.
    constexpr double kExact = 9007199254740992.0;
    const auto count = static_cast<double>(points.count);
    const double square = largestLane(largestSquare);
    if (!(count * square * std::sqrt(square) < kExact)) return false;
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

inline PowerSums weightedPowerSums(PixelSpan points, const double* weights) {
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

// Calls visit(x, y) for vectors of points in no order. The last vector, when not full, is filled up with the
// filler.
template <class Visit>
void forEachIntegerVector(PixelSpan points, std::int32_t fillX, std::int32_t fillY, Visit visit) {
    VecI x;
    VecI y;
    std::size_t i = 0;
    for (; i + VecI::kLanes <= points.count; i += VecI::kLanes) {
        loadPairsInAnyOrder(points.xy + 2 * i, x, y);
        visit(x, y);
    }
    if (i == points.count) return;
    std::int32_t rest[2 * VecI::kLanes];
    for (std::size_t j = 0; j < VecI::kLanes; ++j) {
        const bool isPoint = i + j < points.count;
        rest[2 * j] = isPoint ? points.xy[2 * (i + j)] : fillX;
        rest[2 * j + 1] = isPoint ? points.xy[2 * (i + j) + 1] : fillY;
    }
    loadPairsInAnyOrder(rest, x, y);
    visit(x, y);
}

inline std::int32_t smallestLane(VecI v) {
    std::int32_t lanes[VecI::kLanes];
    v.store(lanes);
    std::int32_t smallest = lanes[0];
    for (const std::int32_t lane : lanes) smallest = lane < smallest ? lane : smallest;
    return smallest;
}

inline std::int32_t largestLane(VecI v) {
    std::int32_t lanes[VecI::kLanes];
    v.store(lanes);
    std::int32_t largest = lanes[0];
    for (const std::int32_t lane : lanes) largest = lane > largest ? lane : largest;
    return largest;
}

inline Extents extents(PixelSpan points) {
    const std::int32_t x0 = points.xy[0];
    const std::int32_t y0 = points.xy[1];
    VecI lowX = VecI::all(x0), highX = lowX, lowY = VecI::all(y0), highY = lowY;
    forEachIntegerVector(points, x0, y0, [&](VecI x, VecI y) {
        lowX = min(lowX, x);
        lowY = min(lowY, y);
        highX = max(highX, x);
        highY = max(highY, y);
    });
    return {smallestLane(lowX), smallestLane(lowY), largestLane(highX), largestLane(highY)};
}

inline PowerSums wrappedPowerSums(PixelSpan points, std::int32_t offsetX, std::int32_t offsetY) {
    const VecI ox = VecI::all(offsetX);
    const VecI oy = VecI::all(offsetY);
    LaneSum x1, y1, xx1, yy1, xxx1, yyy1, xy1, xyy1, xxy1;
    // Points at the offset, which fill up the last vector, add nothing.
    forEachIntegerVector(points, offsetX, offsetY, [&](VecI px, VecI py) {
        const VecI x = px - ox;
        const VecI y = py - oy;
        const VecI xx = x * x;
        const VecI yy = y * y;
        x1.add(x);
        y1.add(y);
        xx1.add(xx);
        yy1.add(yy);
        xxx1.add(xx * x);
        yyy1.add(yy * y);
        xy1.add(x * y);
        xyy1.add(x * yy);
        xxy1.add(xx * y);
    });
    const auto total = [](const LaneSum& sum) { return static_cast<double>(sum.total()); };
    return {static_cast<double>(points.count),
            total(x1),
            total(y1),
            total(xx1),
            total(yy1),
            total(xxx1),
            total(yyy1),
            total(xy1),
            total(xyy1),
            total(xxy1)};
}

inline std::size_t keepInRing(std::int32_t* xy, std::size_t count, Ring ring) {
    const VecD nearest = VecD::all(ring.nearest);
    const VecD farthest = VecD::all(ring.farthest);
    std::size_t kept = 0;
    forEachVector({xy, count}, [&](VecD x, VecD y, std::size_t first) {
        const VecD dx = x - VecD::all(ring.x);
        const VecD dy = y - VecD::all(ring.y);
        const VecD squared = dx * dx + dy * dy;
        const unsigned lanes = ((nearest <= squared) & (squared <= farthest)).lanes();
        const auto move = [&](std::size_t lane) {
            // Moved always, kept when the lane is set: no branch to mispredict.
            xy[2 * kept] = xy[2 * (first + lane)];
            xy[2 * kept + 1] = xy[2 * (first + lane) + 1];
            kept += (lanes >> lane) & 1U;
        };
        if (count - first >= kLanes) {
            for (std::size_t lane = 0; lane < kLanes; ++lane) move(lane);
        } else {
            for (std::size_t lane = 0; lane < count - first; ++lane) move(lane);
        }
    });
    return kept;
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

inline double circleResiduals(PixelSpan points, Circle circle, double* residuals) {
    double sum = 0;
    forEachBlock(points, [&](PixelSpan block, std::size_t begin) {
        double terms[kBlock];
        forEachVector(block, [&](VecD x, VecD y, std::size_t first) {
            abs(CircleDistance(x, y, circle).value).store(terms + first);
        });
        double total = sum;
        for (std::size_t i = 0; i < block.count; ++i) total += terms[i];
        sum = total;
        if (residuals == nullptr) return;
        for (std::size_t i = 0; i < block.count; ++i) residuals[begin + i] = terms[i];
    });
    return sum;
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

inline GradientSums circleGradient(PixelSpan points, Circle circle, Loss loss) {
    const LossVectors functions(loss);
    const VecD r = VecD::all(circle.r);
    GradientSums sums = {};
    forEachBlock(points, [&](PixelSpan block, std::size_t) {
        double moveX[kBlock], moveY[kBlock], moveR[kBlock], cost[kBlock];
        forEachVector(block, [&](VecD x, VecD y, std::size_t first) {
            const CircleDistance e(x, y, circle);
            const VecD influence = functions.influence(e.value);
            (e.dx * influence / r).store(moveX + first);
            (e.dy * influence / r).store(moveY + first);
            influence.store(moveR + first);
            functions.cost(e.value).store(cost + first);
        });
        GradientSums total = sums;
        for (std::size_t i = 0; i < block.count; ++i) {
            total.x += moveX[i];
            total.y += moveY[i];
            total.r -= moveR[i];
            total.loss += cost[i];
        }
        sums = total;
    });
    return sums;
}

inline constexpr Kernels kKernels = {exactPowerSums, weightedPowerSums, extents,       wrappedPowerSums,
                                     keepInRing,     circleResiduals,   circleGradient};

}  // namespace orx::circle_kernels::ORX_SIMD

#endif
