// Four doubles side by side, of as many vectors as the instruction set needs for them: sums over quads have
// the same bits with each. The rules of simd/vectors.h hold here too.
#ifndef ORXFUNCTIONS_PLATFORM_SIMD_QUADS_H
#define ORXFUNCTIONS_PLATFORM_SIMD_QUADS_H

#include <cstddef>

#include "orxFunctions/platform/simd/vectors.h"

namespace orx::ORX_SIMD {

constexpr std::size_t kQuad = 4;
constexpr std::size_t kQuadParts = kQuad / VecD::kLanes;

struct QuadMask {
    MaskD part[kQuadParts];
};

struct Quad {
    VecD part[kQuadParts];

    static Quad all(double value) {
        Quad result;
        for (VecD& p : result.part) p = VecD::all(value);
        return result;
    }
    static Quad load(const double* from) {
        Quad result;
        for (std::size_t i = 0; i < kQuadParts; ++i) result.part[i] = VecD::load(from + i * VecD::kLanes);
        return result;
    }
    void store(double* to) const {
        for (std::size_t i = 0; i < kQuadParts; ++i) part[i].store(to + i * VecD::kLanes);
    }
};

template <class Operation>
inline Quad eachPart(const Quad& a, const Quad& b, Operation operation) {
    Quad result;
    for (std::size_t i = 0; i < kQuadParts; ++i) result.part[i] = operation(a.part[i], b.part[i]);
    return result;
}
inline Quad operator+(const Quad& a, const Quad& b) {
    return eachPart(a, b, [](VecD p, VecD q) { return p + q; });
}
inline Quad operator-(const Quad& a, const Quad& b) {
    return eachPart(a, b, [](VecD p, VecD q) { return p - q; });
}
inline Quad operator*(const Quad& a, const Quad& b) {
    return eachPart(a, b, [](VecD p, VecD q) { return p * q; });
}
inline Quad operator/(const Quad& a, const Quad& b) {
    return eachPart(a, b, [](VecD p, VecD q) { return p / q; });
}
inline Quad min(const Quad& a, const Quad& b) {
    return eachPart(a, b, [](VecD p, VecD q) { return min(p, q); });
}
inline Quad max(const Quad& a, const Quad& b) {
    return eachPart(a, b, [](VecD p, VecD q) { return max(p, q); });
}
inline Quad sqrt(const Quad& a) {
    Quad result;
    for (std::size_t i = 0; i < kQuadParts; ++i) result.part[i] = sqrt(a.part[i]);
    return result;
}

template <class Operation>
inline QuadMask eachMask(const Quad& a, const Quad& b, Operation operation) {
    QuadMask result;
    for (std::size_t i = 0; i < kQuadParts; ++i) result.part[i] = operation(a.part[i], b.part[i]);
    return result;
}
inline QuadMask operator<(const Quad& a, const Quad& b) {
    return eachMask(a, b, [](VecD p, VecD q) { return p < q; });
}
inline QuadMask operator<=(const Quad& a, const Quad& b) {
    return eachMask(a, b, [](VecD p, VecD q) { return p <= q; });
}
inline QuadMask operator&(const QuadMask& a, const QuadMask& b) {
    QuadMask result;
    for (std::size_t i = 0; i < kQuadParts; ++i) result.part[i] = a.part[i] & b.part[i];
    return result;
}
inline Quad select(const QuadMask& mask, const Quad& a, const Quad& b) {
    Quad result;
    for (std::size_t i = 0; i < kQuadParts; ++i) result.part[i] = select(mask.part[i], a.part[i], b.part[i]);
    return result;
}

inline double sum(const Quad& a) {
    double lanes[kQuad];
    a.store(lanes);
    return (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
}
inline double smallestOf(const Quad& a) {
    double lanes[kQuad];
    a.store(lanes);
    double smallest = lanes[0];
    for (const double lane : lanes) smallest = lane < smallest ? lane : smallest;
    return smallest;
}
inline double largestOf(const Quad& a) {
    double lanes[kQuad];
    a.store(lanes);
    double largest = lanes[0];
    for (const double lane : lanes) largest = largest < lane ? lane : largest;
    return largest;
}

}  // namespace orx::ORX_SIMD

#endif
