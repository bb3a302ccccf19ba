// The kernels of kernels/distance.h, compiled once for each instruction set.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_DISTANCE_IMPL_H
#define ORXFUNCTIONS_FITTING_KERNELS_DISTANCE_IMPL_H

#include <cstddef>
#include <limits>

#include "orxFunctions/fitting/kernels/distance.h"
#include "orxFunctions/fitting/kernels/robust_weights_impl.h"
#include "orxFunctions/platform/simd/quads.h"

namespace orx::distance_kernels::ORX_SIMD {

using namespace orx::ORX_SIMD;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Calls visit(x, y, weight, first) for each four points. Weights fill up the last four with 0; their
// coordinates are those of the last point.
template <class Visit>
inline void forEachQuad(const Columns& points, Visit visit) {
    const Quad one = Quad::all(1.0);
    std::size_t i = 0;
    if (points.weights == nullptr) {
        for (; i + kQuad <= points.count; i += kQuad) {
            visit(Quad::load(points.x + i), Quad::load(points.y + i), one, i);
        }
    } else {
        for (; i + kQuad <= points.count; i += kQuad) {
            visit(Quad::load(points.x + i), Quad::load(points.y + i), Quad::load(points.weights + i), i);
        }
    }
    if (i == points.count) return;
    double x[kQuad];
    double y[kQuad];
    double w[kQuad];
    for (std::size_t k = 0; k < kQuad; ++k) {
        const bool filled = i + k < points.count;
        const std::size_t at = filled ? i + k : points.count - 1;
        x[k] = points.x[at];
        y[k] = points.y[at];
        w[k] = !filled ? 0.0 : points.weights == nullptr ? 1.0 : points.weights[at];
    }
    visit(Quad::load(x), Quad::load(y), Quad::load(w), i);
}

inline Moments moments(const Columns& points) {
    const Quad zero = Quad::all(0.0);
    Quad w1 = zero, x1 = zero, y1 = zero, xx1 = zero, xy1 = zero, yy1 = zero, xz1 = zero, yz1 = zero,
         zz1 = zero;
    forEachQuad(points, [&](Quad x, Quad y, Quad w, std::size_t) {
        const Quad wx = w * x;
        const Quad wy = w * y;
        const Quad wxx = wx * x;
        const Quad wyy = wy * y;
        const Quad z = x * x + y * y;
        w1 = w1 + w;
        x1 = x1 + wx;
        y1 = y1 + wy;
        xx1 = xx1 + wxx;
        xy1 = xy1 + wx * y;
        yy1 = yy1 + wyy;
        xz1 = xz1 + wx * z;
        yz1 = yz1 + wy * z;
        zz1 = zz1 + (wxx + wyy) * z;
    });
    return {sum(w1), sum(x1), sum(y1), sum(xx1), sum(xy1), sum(yy1), sum(xz1), sum(yz1), sum(zz1)};
}

// Collects DistanceSums under one kind of loss; without kAll those alone that steps need.
template <class Weights, bool kAll>
class DistanceTally {
  public:
    explicit DistanceTally(const Loss& loss) : weights_(loss), reach2_(Quad::all(loss.reach2)) {}

    // Points of weight 0 count nowhere. Returns the point's weight times omega.
    Quad add(Quad d, Quad weight) {
        const QuadMask counts = zero_ < weight;
        const Quad one = Quad::all(1.0);
        if constexpr (Weights::kAllAlike) {
            const Quad wd = weight * d;
            w_ = w_ + weight;
            d_ = d_ + wd;
            dd_ = dd_ + wd * d;
            used_ = used_ + select(counts, one, zero_);
            usedSquares_ = usedSquares_ + select(counts, d * d, zero_);
            least_ = min(least_, select(counts, d, least_));
            largest_ = max(largest_, select(counts, d, largest_));
            return weight;
        } else {
            const Quad q = weight * (d * d);
            const LossTerms terms = weights_.at(q);
            const Quad w = weight * terms.omega;
            const Quad wd = w * d;
            w_ = w_ + w;
            d_ = d_ + wd;
            dd_ = dd_ + wd * d;
            omega_ = omega_ + select(counts, terms.omega, zero_);
            slope_ = slope_ + select(counts, terms.slope, zero_);
            if constexpr (kAll) {
                const QuadMask used = counts & (q <= reach2_);
                used_ = used_ + select(used, one, zero_);
                slope2_ = slope2_ + select(counts, terms.slope * terms.slope, zero_);
                influence2_ = influence2_ + terms.omega * terms.omega * q;
                usedSquares_ = usedSquares_ + select(used, d * d, zero_);
                least_ = min(least_, select(used, d, least_));
                largest_ = max(largest_, select(used, d, largest_));
            }
            return w;
        }
    }

    DistanceSums sums() const {
        const double used = sum(used_);
        const double dd = sum(dd_);
        const double least = smallestOf(least_);
        const double largest = largestOf(largest_);
        if constexpr (Weights::kAllAlike) {
            return {used, sum(w_), sum(d_), dd, used, used, used, dd, sum(usedSquares_), least, largest};
        } else {
            return {used,         sum(w_),          sum(d_),           dd,    sum(omega_), sum(slope_),
                    sum(slope2_), sum(influence2_), sum(usedSquares_), least, largest};
        }
    }

  private:
    Weights weights_;
    Quad reach2_;
    Quad zero_ = Quad::all(0.0);
    Quad w_ = zero_, d_ = zero_, dd_ = zero_, used_ = zero_, omega_ = zero_, slope_ = zero_, slope2_ = zero_,
         influence2_ = zero_, usedSquares_ = zero_;
    Quad least_ = Quad::all(kInfinity);
    Quad largest_ = Quad::all(-kInfinity);
};

template <class Weights, bool kAll>
CircleSums circleSumsUnder(const Columns& points, const Circle& circle, const Loss& loss) {
    const Quad zero = Quad::all(0.0);
    const Quad one = Quad::all(1.0);
    const Quad cx = Quad::all(circle.x);
    const Quad cy = Quad::all(circle.y);
    const Quad r = Quad::all(circle.r);
    DistanceTally<Weights, kAll> tally(loss);
    Quad u1 = zero, v1 = zero, uu1 = zero, uv1 = zero, ud1 = zero, vd1 = zero, uuu1 = zero, uuv1 = zero;
    forEachQuad(points, [&](Quad x, Quad y, Quad weight, std::size_t) {
        const Quad dx = x - cx;
        const Quad dy = y - cy;
        const Quad rho = sqrt(dx * dx + dy * dy);
        // A point in the centre has no direction; any will do.
        const Quad inverse = one / select(zero < rho, rho, one);
        const Quad u = dx * inverse;
        const Quad v = dy * inverse;
        const Quad d = rho - r;
        const Quad w = tally.add(d, weight);
        const Quad wu = w * u;
        const Quad wv = w * v;
        const Quad wuu = wu * u;
        u1 = u1 + wu;
        v1 = v1 + wv;
        uu1 = uu1 + wuu;
        uv1 = uv1 + wu * v;
        ud1 = ud1 + wu * d;
        vd1 = vd1 + wv * d;
        if constexpr (kAll) {
            uuu1 = uuu1 + wuu * u;
            uuv1 = uuv1 + wuu * v;
        }
    });
    return {tally.sums(), sum(u1), sum(v1), sum(uu1), sum(uv1), sum(ud1), sum(vd1), sum(uuu1), sum(uuv1)};
}

template <class Weights, bool kAll>
LineSums lineSumsUnder(const Columns& points, const Line& line, const Loss& loss) {
    const Quad zero = Quad::all(0.0);
    const Quad px = Quad::all(line.x);
    const Quad py = Quad::all(line.y);
    const Quad nx = Quad::all(line.nx);
    const Quad ny = Quad::all(line.ny);
    const Quad reach2 = Quad::all(loss.reach2);
    DistanceTally<Weights, kAll> tally(loss);
    Quad x1 = zero, y1 = zero, xx1 = zero, xy1 = zero, yy1 = zero;
    Quad from = Quad::all(kInfinity);
    Quad to = Quad::all(-kInfinity);
    forEachQuad(points, [&](Quad x, Quad y, Quad weight, std::size_t) {
        const Quad dx = x - px;
        const Quad dy = y - py;
        const Quad d = dx * nx + dy * ny;
        const Quad along = dx * ny - dy * nx;
        const Quad w = tally.add(d, weight);
        const Quad wx = w * dx;
        const Quad wy = w * dy;
        x1 = x1 + wx;
        y1 = y1 + wy;
        xx1 = xx1 + wx * dx;
        xy1 = xy1 + wx * dy;
        yy1 = yy1 + wy * dy;
        if constexpr (kAll) {
            const QuadMask used = (zero < weight) & (weight * (d * d) <= reach2);
            from = min(from, select(used, along, from));
            to = max(to, select(used, along, to));
        }
    });
    return {tally.sums(), sum(x1), sum(y1), sum(xx1), sum(xy1), sum(yy1), smallestOf(from), largestOf(to)};
}

template <bool kAll>
CircleSums circlePass(const Columns& points, const Circle& circle, const Loss& loss) {
    return withLoss(loss, [&](auto weights) {
        return circleSumsUnder<typename decltype(weights)::Type, kAll>(points, circle, loss);
    });
}

template <bool kAll>
LineSums linePass(const Columns& points, const Line& line, const Loss& loss) {
    return withLoss(loss, [&](auto weights) {
        return lineSumsUnder<typename decltype(weights)::Type, kAll>(points, line, loss);
    });
}

// Stores the lanes of four distances that are points.
inline void storeFilled(Quad d, std::size_t first, std::size_t count, double* distances) {
    if (first + kQuad <= count) {
        d.store(distances + first);
        return;
    }
    double lanes[kQuad];
    d.store(lanes);
    for (std::size_t k = 0; first + k < count; ++k) distances[first + k] = lanes[k];
}

inline void circleDistances(const Columns& points, const Circle& circle, double* distances) {
    const Quad cx = Quad::all(circle.x);
    const Quad cy = Quad::all(circle.y);
    const Quad r = Quad::all(circle.r);
    forEachQuad(points, [&](Quad x, Quad y, Quad, std::size_t first) {
        const Quad dx = x - cx;
        const Quad dy = y - cy;
        storeFilled(sqrt(dx * dx + dy * dy) - r, first, points.count, distances);
    });
}

inline void lineDistances(const Columns& points, const Line& line, double* distances) {
    const Quad px = Quad::all(line.x);
    const Quad py = Quad::all(line.y);
    const Quad nx = Quad::all(line.nx);
    const Quad ny = Quad::all(line.ny);
    forEachQuad(points, [&](Quad x, Quad y, Quad, std::size_t first) {
        storeFilled((x - px) * nx + (y - py) * ny, first, points.count, distances);
    });
}

inline constexpr Kernels kKernels = {moments,         circlePass<true>, circlePass<false>, linePass<true>,
                                     linePass<false>, circleDistances,  lineDistances};

}  // namespace orx::distance_kernels::ORX_SIMD

#endif
