// The kernels of kernels/foot.h, compiled once for each instruction set.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_FOOT_IMPL_H
#define ORXFUNCTIONS_FITTING_KERNELS_FOOT_IMPL_H

#include <cstddef>

#include "orxFunctions/fitting/kernels/distance_impl.h"
#include "orxFunctions/fitting/kernels/foot.h"

namespace orx::foot_kernels::ORX_SIMD {

using namespace orx::ORX_SIMD;
using distance_kernels::ORX_SIMD::DistanceTally;
using distance_kernels::ORX_SIMD::forEachQuad;
using distance_kernels::ORX_SIMD::storeFilled;

inline Quad abs(const Quad& a) { return max(a, Quad::all(0.0) - a); }

inline bool all(const QuadMask& mask) {
    constexpr unsigned kAllLanes = (1U << VecD::kLanes) - 1U;
    bool every = true;
    for (const MaskD& part : mask.part) every = every && part.lanes() == kAllLanes;
    return every;
}

// Four points in an ellipse's own frame, and their feet (a c, b s).
struct Feet {
    Quad x, y, c, s;
};

// The foot of |x|, |y| is (a c, b s) with c = a |x| / (t + a^2 - b^2), s = b |y| / t and c^2 + s^2 = 1. One
// over the length of (c, s) is concave in t and nearly straight, so that Newton's method climbs to the root
// from below, and gets below from anywhere in one step (J. J. More and D. C. Sorensen, SIAM J. Sci. Stat.
// Comput. 4 (1983)). t from 0 instead of the usual t - b^2 keeps all digits for points near the major axis.
class FootFinder {
  public:
    explicit FootFinder(const Ellipse& e)
        : cx_(Quad::all(e.x)),
          cy_(Quad::all(e.y)),
          cosine_(Quad::all(e.cosine)),
          sine_(Quad::all(e.sine)),
          a_(Quad::all(e.a)),
          b_(Quad::all(e.b)),
          gap_(Quad::all((e.a - e.b) * (e.a + e.b))),
          onOutline_(Quad::all(e.b * e.b)) {}

    void toFrame(Quad x, Quad y, Feet& feet) const {
        const Quad dx = x - cx_;
        const Quad dy = y - cy_;
        feet.x = cosine_ * dx + sine_ * dy;
        feet.y = cosine_ * dy - sine_ * dx;
    }

    Feet at(Quad x, Quad y) const {
        // A step this small, of t, has squared itself away.
        const Quad settled = Quad::all(1e-7);
        const Quad zero = Quad::all(0.0);
        const Quad one = Quad::all(1.0);
        const Quad tiny = Quad::all(1e-300);
        Feet feet;
        toFrame(x, y, feet);
        const Quad ax = a_ * abs(feet.x);
        const Quad by = b_ * abs(feet.y);
        const Quad low = max(by, ax - gap_);
        Quad t = onOutline_;
        constexpr int kMostSteps = 64;
        for (int i = 0; i < kMostSteps; ++i) {
            const Quad inverseX = one / max(t + gap_, tiny);
            const Quad inverseY = one / max(t, tiny);
            const Quad c = ax * inverseX;
            const Quad s = by * inverseY;
            const Quad cc = c * c;
            const Quad ss = s * s;
            const Quad square = cc + ss;
            const Quad slope = cc * inverseX + ss * inverseY;
            const Quad step = (sqrt(square) - one) * (square / max(slope, tiny));
            // In the center all slope vanishes, and the foot is where t is least.
            const Quad next = max(low, select(tiny < slope, t + step, low));
            const Quad change = abs(next - t);
            t = next;
            if (all(change <= settled * t)) break;
        }
        Quad c = ax / max(t + gap_, tiny);
        // On the major axis between the foci's feet t is 0.
        Quad s = select(tiny < t, by / max(t, tiny), sqrt(max(zero, one - c * c)));
        const Quad inverse = one / sqrt(c * c + s * s);
        c = c * inverse;
        s = s * inverse;
        feet.c = select(feet.x < zero, zero - c, c);
        feet.s = select(feet.y < zero, zero - s, s);
        return feet;
    }

    Quad a() const { return a_; }
    Quad b() const { return b_; }

  private:
    Quad cx_, cy_, cosine_, sine_, a_, b_, gap_, onOutline_;
};

// The outline at four feet, and the signed distances from them.
struct Outline {
    Quad speed;   // of the foot with the eccentric angle
    Quad nx, ny;  // outward normal
    Quad d;

    Outline(const FootFinder& finder, const Feet& f) {
        const Quad bc = finder.b() * f.c;
        const Quad as = finder.a() * f.s;
        speed = sqrt(bc * bc + as * as);
        const Quad inverse = Quad::all(1.0) / speed;
        nx = bc * inverse;
        ny = as * inverse;
        d = nx * (f.x - finder.a() * f.c) + ny * (f.y - finder.b() * f.s);
    }
};

// How far the outline moves along (x, y) at the foot u = (c, s) with each parameter.
inline void moves(Quad x, Quad y, const Feet& f, Quad* row) {
    const Quad xc = x * f.c;
    const Quad ys = y * f.s;
    row[0] = x;
    row[1] = y;
    row[2] = xc + ys;
    row[3] = xc - ys;
    row[4] = x * f.s + y * f.c;
}

template <class Weights>
EllipseSums ellipseSumsUnder(const Columns& points, const Ellipse& ellipse, const Loss& loss) {
    const FootFinder finder(ellipse);
    DistanceTally<Weights, true> tally(loss);
    Quad rows[kEllipsePairs];
    Quad rowDistances[kEllipseParameters];
    for (Quad& r : rows) r = Quad::all(0.0);
    for (Quad& r : rowDistances) r = Quad::all(0.0);
    forEachQuad(points, [&](Quad x, Quad y, Quad weight, std::size_t) {
        const Feet feet = finder.at(x, y);
        const Outline outline(finder, feet);
        const Quad w = tally.add(outline.d, weight);
        Quad row[kEllipseParameters];
        moves(outline.nx, outline.ny, feet, row);
        for (int i = 0, k = 0; i < kEllipseParameters; ++i) {
            const Quad wr = w * row[i];
            rowDistances[i] = rowDistances[i] + wr * outline.d;
            for (int j = 0; j <= i; ++j, ++k) rows[k] = rows[k] + wr * row[j];
        }
    });
    EllipseSums sums;
    sums.distances = tally.sums();
    for (int k = 0; k < kEllipsePairs; ++k) sums.rows[k] = sum(rows[k]);
    for (int i = 0; i < kEllipseParameters; ++i) sums.rowDistances[i] = sum(rowDistances[i]);
    return sums;
}

// With the foot F(t), the eccentric angle t, F_i its derivative with parameter i, n the normal and T the
// tangent: H_ij = kappa T.F_i T.F_j + (T.F_i n.F_ti + T.F_j n.F_ti) / |F_t| on the outline.
template <class Weights>
EllipseBiasSums ellipseBiasSumsUnder(const Columns& points, const Ellipse& ellipse, const Loss& loss,
                                     const double* covariance) {
    const FootFinder finder(ellipse);
    const Quad zero = Quad::all(0.0);
    const Quad one = Quad::all(1.0);
    const Quad ab = finder.a() * finder.b();
    DistanceTally<Weights, false> tally(loss);
    Quad parameters[kEllipseParameters];
    Quad outlineSums[kEllipseParameters];
    for (Quad& p : parameters) p = zero;
    for (Quad& o : outlineSums) o = zero;
    forEachQuad(points, [&](Quad x, Quad y, Quad weight, std::size_t) {
        const Feet feet = finder.at(x, y);
        const Outline outline(finder, feet);
        const Quad w = tally.add(outline.d, weight);
        const Quad omega = w / select(zero < weight, weight, one);
        const Quad inverse = one / outline.speed;
        const Quad kappa = ab * inverse * inverse * inverse;
        Quad row[kEllipseParameters];
        Quad along[kEllipseParameters];
        moves(outline.nx, outline.ny, feet, row);
        moves(zero - outline.ny, outline.nx, feet, along);
        const Feet turned{feet.x, feet.y, zero - feet.s, feet.c};
        Quad turning[kEllipseParameters];
        moves(outline.nx, outline.ny, turned, turning);
        turning[0] = turning[1] = zero;
        Quad trace = zero;
        for (int i = 0, k = 0; i < kEllipseParameters; ++i) {
            const Quad left = kappa * along[i] + inverse * turning[i];
            for (int j = 0; j <= i; ++j, ++k) {
                const Quad h = left * along[j] + inverse * (along[i] * turning[j]);
                trace = trace + Quad::all(i == j ? covariance[k] : 2.0 * covariance[k]) * h;
            }
        }
        const Quad wTrace = w * trace;
        const Quad curved = omega * kappa;
        for (int i = 0; i < kEllipseParameters; ++i) {
            parameters[i] = parameters[i] + wTrace * row[i];
            outlineSums[i] = outlineSums[i] + curved * row[i];
        }
    });
    EllipseBiasSums sums;
    for (int i = 0; i < kEllipseParameters; ++i) {
        sums.parameters[i] = sum(parameters[i]);
        sums.outline[i] = sum(outlineSums[i]);
    }
    return sums;
}

inline EllipseSums ellipseSums(const Columns& points, const Ellipse& ellipse, const Loss& loss) {
    return withLoss(loss, [&](auto weights) {
        return ellipseSumsUnder<typename decltype(weights)::Type>(points, ellipse, loss);
    });
}

inline EllipseBiasSums ellipseBiasSums(const Columns& points, const Ellipse& ellipse, const Loss& loss,
                                       const double* covariance) {
    return withLoss(loss, [&](auto weights) {
        return ellipseBiasSumsUnder<typename decltype(weights)::Type>(points, ellipse, loss, covariance);
    });
}

inline void ellipseDistances(const Columns& points, const Ellipse& ellipse, double* distances) {
    const FootFinder finder(ellipse);
    forEachQuad(points, [&](Quad x, Quad y, Quad, std::size_t first) {
        storeFilled(Outline(finder, finder.at(x, y)).d, first, points.count, distances);
    });
}

// With rho the point's distance from the center in units of the outline's on the same ray, (rho - 1) rho over
// the gradient of rho^2 / 2.
inline void ellipseNearDistances(const Columns& points, const Ellipse& ellipse, double* distances) {
    const FootFinder finder(ellipse);
    const Quad one = Quad::all(1.0);
    const Quad inverseA = Quad::all(1.0 / ellipse.a);
    const Quad inverseB = Quad::all(1.0 / ellipse.b);
    const Quad tiny = Quad::all(1e-300);
    forEachQuad(points, [&](Quad x, Quad y, Quad, std::size_t first) {
        Feet feet;
        finder.toFrame(x, y, feet);
        const Quad u = feet.x * inverseA;
        const Quad v = feet.y * inverseB;
        const Quad square = max(u * u + v * v, tiny);
        const Quad gx = u * inverseA;
        const Quad gy = v * inverseB;
        const Quad gradient = max(gx * gx + gy * gy, tiny);
        storeFilled((sqrt(square) - one) * sqrt(square / gradient), first, points.count, distances);
    });
}

inline void ellipseFeet(const Columns& points, const Ellipse& ellipse, double* cosines, double* sines) {
    const FootFinder finder(ellipse);
    forEachQuad(points, [&](Quad x, Quad y, Quad, std::size_t first) {
        const Feet feet = finder.at(x, y);
        storeFilled(feet.c, first, points.count, cosines);
        storeFilled(feet.s, first, points.count, sines);
    });
}

inline constexpr Kernels kKernels = {ellipseSums, ellipseBiasSums, ellipseDistances, ellipseNearDistances,
                                     ellipseFeet};

}  // namespace orx::foot_kernels::ORX_SIMD

#endif
