// Which instruction sets the processor offers beyond the baseline.
#ifndef ORXFUNCTIONS_PLATFORM_CPU_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_CPU_INTERNAL_H

#include <opencv2/core/utility.hpp>

namespace orx::platform {

// True when AVX2 kernels are part of this build and may run. Asked at each call, not remembered, so that
// cv::setUseOptimized(false) or OPENCV_CPU_DISABLE=AVX2 selects the baseline: tests compare the two that way.
inline bool useAvx2() {
#if defined(ORX_HAS_AVX2_KERNELS)
    return cv::checkHardwareSupport(CV_CPU_AVX2);
#else
    return false;
#endif
}

}  // namespace orx::platform

#endif
