// Included by one source for each instruction set: kernel headers only, as in the library.
#ifndef TESTS_ANALYSIS_VECTOR_MATH_BODY_H
#define TESTS_ANALYSIS_VECTOR_MATH_BODY_H

#include "orxFunctions/platform/simd/vector_math.h"
#include "vector_math.h"

namespace orx::ORX_SIMD {

template <VecD (*Function)(VecD)>
void each(const double* a, std::size_t count, double* results) {
    for (std::size_t i = 0; i < count; i += VecD::kLanes) Function(VecD::load(a + i)).store(results + i);
}

template <VecD (*Function)(VecD, VecD)>
void eachPair(const double* a, const double* b, std::size_t count, double* results) {
    for (std::size_t i = 0; i < count; i += VecD::kLanes) {
        Function(VecD::load(a + i), VecD::load(b + i)).store(results + i);
    }
}

inline constexpr vector_math::Functions kFunctions = {
    each<arcTangent>, each<coarseArcTangent>, each<logarithm>, each<exponential>, eachPair<fullAngle>};

}  // namespace orx::ORX_SIMD

#endif
