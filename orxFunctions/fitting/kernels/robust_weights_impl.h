// The losses of kernels/distance.h, four distances at a time. Each tells, for q = weight d^2 with
// t = q / bend2: omega = rho'(u) / u and the slope of psi(u) = u omega(u), u = sqrt(q) in scales.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_ROBUST_WEIGHTS_IMPL_H
#define ORXFUNCTIONS_FITTING_KERNELS_ROBUST_WEIGHTS_IMPL_H

#include "orxFunctions/fitting/kernels/distance.h"
#include "orxFunctions/platform/simd/quads.h"

namespace orx::ORX_SIMD {

struct LossTerms {
    Quad omega;
    Quad slope;
};

struct PlainWeights {
    static constexpr bool kAllAlike = true;
    explicit PlainWeights(const distance_kernels::Loss&) {}
    LossTerms at(const Quad&) const { return {Quad::all(1.0), Quad::all(1.0)}; }
};

struct HuberWeights {
    static constexpr bool kAllAlike = false;
    explicit HuberWeights(const distance_kernels::Loss& loss) : bend2(Quad::all(loss.bend2)) {}
    LossTerms at(const Quad& q) const {
        const Quad one = Quad::all(1.0);
        const QuadMask inside = q <= bend2;
        return {select(inside, one, sqrt(bend2 / select(inside, one, q))),
                select(inside, one, Quad::all(0.0))};
    }
    Quad bend2;
};

struct CauchyWeights {
    static constexpr bool kAllAlike = false;
    explicit CauchyWeights(const distance_kernels::Loss& loss) : inverse(Quad::all(1.0 / loss.bend2)) {}
    LossTerms at(const Quad& q) const {
        const Quad one = Quad::all(1.0);
        const Quad t = q * inverse;
        const Quad omega = one / (one + t);
        return {omega, (one - t) * (omega * omega)};
    }
    Quad inverse;
};

struct TukeyWeights {
    static constexpr bool kAllAlike = false;
    explicit TukeyWeights(const distance_kernels::Loss& loss) : inverse(Quad::all(1.0 / loss.bend2)) {}
    LossTerms at(const Quad& q) const {
        const Quad zero = Quad::all(0.0);
        const Quad one = Quad::all(1.0);
        const Quad t = q * inverse;
        const Quad left = max(zero, one - t);
        return {left * left, left * select(t < one, one - Quad::all(5.0) * t, zero)};
    }
    Quad inverse;
};

struct GemanMcClureWeights {
    static constexpr bool kAllAlike = false;
    explicit GemanMcClureWeights(const distance_kernels::Loss& loss) : inverse(Quad::all(1.0 / loss.bend2)) {}
    LossTerms at(const Quad& q) const {
        const Quad one = Quad::all(1.0);
        const Quad t = q * inverse;
        const Quad root = one / (one + t);
        const Quad omega = root * root;
        return {omega, (one - Quad::all(3.0) * t) * (omega * root)};
    }
    Quad inverse;
};

template <class Weights>
struct LossType {
    using Type = Weights;
};

// visit(LossType<...>) for the kind of the loss.
template <class Visit>
inline auto withLoss(const distance_kernels::Loss& loss, Visit visit) {
    switch (loss.kind) {
        case distance_kernels::lkHuber:
            return visit(LossType<HuberWeights>{});
        case distance_kernels::lkCauchy:
            return visit(LossType<CauchyWeights>{});
        case distance_kernels::lkTukey:
            return visit(LossType<TukeyWeights>{});
        case distance_kernels::lkGemanMcClure:
            return visit(LossType<GemanMcClureWeights>{});
        case distance_kernels::lkLeastSquares:
            break;
    }
    return visit(LossType<PlainWeights>{});
}

}  // namespace orx::ORX_SIMD

#endif
