// Families of kernels: the loops of one subject, compiled once for each instruction set, in a table.
//
// A family is a namespace, orx::circle_kernels say, in four files:
// - circle.h: `Kernels`, which is the table, the records that its functions take, `kAvx2`, which is a column,
//   and `chosen()`, the column that runs here;
// - circle_impl.h: the functions and the filled table `kKernels`, written once, in circle_kernels::ORX_SIMD;
// - circle.cpp: compiles them for the baseline, and chooses;
// - circle_avx2.cpp: compiles them for AVX2.
// A further instruction set is one more column: a branch in the headers of vectors, a constant and a source
// in each family, a parameter here, and a source with its flags in orx_kernels (CMake).
//
// A column is compiled for a processor that may not be there, and an inline function that it shared with
// other sources could be the copy that the linker keeps. So circle_avx2.cpp includes nothing but its family's
// two headers, and these nothing but vectors (simd/vectors.h, simd/narrow_vectors.h, simd/vector_math.h) and
// what C has: no OpenCV, no container, not this header. The records are aggregates without constructors.
#ifndef ORXFUNCTIONS_PLATFORM_SIMD_CHOOSE_KERNELS_H
#define ORXFUNCTIONS_PLATFORM_SIMD_CHOOSE_KERNELS_H

#include <opencv2/core/utility.hpp>

namespace orx::platform {

// The fastest column that the processor allows. Asked at each call, not remembered, so that
// cv::setUseOptimized(false) or OPENCV_CPU_DISABLE=AVX2 selects the baseline: tests compare the two that way.
// The column of AVX2 is compiled for FMA3, too; nearly every processor has both or neither. Thread-safe.
template <class Kernels>
const Kernels& chooseKernels(const Kernels& baseline, const Kernels& avx2) {
    const bool hasAvx2 = cv::checkHardwareSupport(CV_CPU_AVX2) && cv::checkHardwareSupport(CV_CPU_FMA3);
    return hasAvx2 ? avx2 : baseline;
}

}  // namespace orx::platform

#endif
