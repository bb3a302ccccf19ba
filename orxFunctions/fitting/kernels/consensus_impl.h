// The loops of kernels/consensus.h, compiled once for each instruction set.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_CONSENSUS_IMPL_H
#define ORXFUNCTIONS_FITTING_KERNELS_CONSENSUS_IMPL_H

#include "orxFunctions/fitting/kernels/consensus.h"
#include "orxFunctions/platform/simd/quads.h"

namespace orx::consensus_kernels::ORX_SIMD {

using namespace orx::ORX_SIMD;

static_assert(kPointsPerStep == kQuad);

// Gains are compared with the best after this many points.
constexpr std::size_t kBlock = 16 * kPointsPerStep;

struct LineDistance {
    explicit LineDistance(const distance_kernels::Line& line)
        : px(Quad::all(line.x)), py(Quad::all(line.y)), nx(Quad::all(line.nx)), ny(Quad::all(line.ny)) {}
    Quad squared(Quad x, Quad y) const {
        const Quad d = (x - px) * nx + (y - py) * ny;
        return d * d;
    }
    Quad px, py, nx, ny;
};

struct CircleDistance {
    explicit CircleDistance(const distance_kernels::Circle& circle)
        : cx(Quad::all(circle.x)), cy(Quad::all(circle.y)), r(Quad::all(circle.r)) {}
    Quad squared(Quad x, Quad y) const {
        const Quad dx = x - cx;
        const Quad dy = y - cy;
        const Quad d = sqrt(dx * dx + dy * dy) - r;
        return d * d;
    }
    Quad cx, cy, r;
};

struct EllipseDistance {
    explicit EllipseDistance(const Conic& conic)
        : cx(Quad::all(conic.x)),
          cy(Quad::all(conic.y)),
          a(Quad::all(conic.a)),
          halfB(Quad::all(conic.b / 2.0)),
          c(Quad::all(conic.c)) {}
    // In the centre the quotient is infinite, which gains nothing.
    Quad squared(Quad x, Quad y) const {
        const Quad dx = x - cx;
        const Quad dy = y - cy;
        const Quad gx = a * dx + halfB * dy;  // half of the gradient
        const Quad gy = halfB * dx + c * dy;
        const Quad value = dx * gx + dy * gy - Quad::all(1.0);
        return value * value / (Quad::all(4.0) * (gx * gx + gy * gy));
    }
    Quad cx, cy, a, halfB, c;
};

template <class Distance>
Support support(const PointSpan& points, const Distance& distance, const Bar& bar) {
    const Quad zero = Quad::all(0.0);
    const Quad one = Quad::all(1.0);
    const Quad perTolerance2 = Quad::all(bar.perTolerance2);
    const double share = bar.best / static_cast<double>(points.size);
    Quad gains = zero;
    Quad within = zero;
    for (std::size_t begin = 0; begin < points.size;) {
        const std::size_t end = points.size - begin < kBlock ? points.size : begin + kBlock;
        for (std::size_t i = begin; i < end; i += kQuad) {
            const Quad d2 = distance.squared(Quad::load(points.x + i), Quad::load(points.y + i));
            const Quad gain = one - d2 * perTolerance2;
            const QuadMask gains1 = zero < gain;
            gains = gains + select(gains1, gain, zero);
            within = within + select(gains1, one, zero);
        }
        begin = end;
        const double sofar = sum(gains);
        if (sofar + static_cast<double>(points.size - end) <= bar.best) return {sofar, 0.0};
        if (end > points.mixed) continue;
        const double expected = share * static_cast<double>(end);
        const double less = expected - sofar;
        if (less > 0.0 && less * less > bar.doubt * expected) return {sofar, 0.0};
    }
    return {sum(gains), sum(within)};
}

inline Support ofLine(const PointSpan& points, const distance_kernels::Line& line, const Bar& bar) {
    return support(points, LineDistance(line), bar);
}

inline Support ofCircle(const PointSpan& points, const distance_kernels::Circle& circle, const Bar& bar) {
    return support(points, CircleDistance(circle), bar);
}

inline Support ofEllipse(const PointSpan& points, const Conic& conic, const Bar& bar) {
    return support(points, EllipseDistance(conic), bar);
}

inline constexpr Kernels kKernels = {ofLine, ofCircle, ofEllipse};

}  // namespace orx::consensus_kernels::ORX_SIMD

#endif
