// Compiled for AVX2: includes kernel headers only.
#include "orxFunctions/fitting/kernels/ellipse_grading_impl.h"

namespace orx {

void radialErrorsAvx2(const CentredConic& conic, const float* xy, std::size_t count, double* errors);

void radialErrorsAvx2(const CentredConic& conic, const float* xy, std::size_t count, double* errors) {
    ORX_SIMD::radialErrors(conic, xy, count, errors);
}

}  // namespace orx
