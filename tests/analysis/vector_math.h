// The elementary functions of vectors, called for lists of numbers; one set for each instruction set.
#ifndef TESTS_ANALYSIS_VECTOR_MATH_H
#define TESTS_ANALYSIS_VECTOR_MATH_H

#include <cstddef>

namespace vector_math {

// results[i] = f(a[i]) for i < count, a multiple of eight.
using Function = void (*)(const double* a, std::size_t count, double* results);
using Function2 = void (*)(const double* a, const double* b, std::size_t count, double* results);

struct Functions {
    Function arcTangent;
    Function coarseArcTangent;
    Function logarithm;
    Function exponential;
    Function2 fullAngle;
};

extern const Functions kBaseline;
extern const Functions kAvx2;

}  // namespace vector_math

#endif
