#include "orxFunctions/fitting/kernels/geometric_kernels_impl.h"
#include "orxFunctions/platform/simd/choose_kernels.h"

namespace orx::geometric {

const GeometricKernels kBaselineGeometricKernels = ORX_SIMD::geometric_fits::kKernels;

const GeometricKernels& geometricKernels() {
    return platform::chooseKernels(kBaselineGeometricKernels, kAvx2GeometricKernels);
}

}  // namespace orx::geometric
