// What a target may be.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_TARGET_CHECK_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_TARGET_CHECK_H

#include "orxFunctions/calibration/plane_target.h"
#include "orxFunctions/foundation/option_range_internal.h"

namespace orx::plane {

// Whether its options are within their ranges; else rcOption, refused in the name of the public function.
inline bool isTarget(const TTarget& target, const char* function) {
    constexpr double kMost = 200;
    const double share = target.kind == tkDotGrid ? target.diameter / target.pitch : 0.5;
    return takesOptions(function, {{"kind", static_cast<double>(target.kind), tkChessboard, tkDotGrid},
                                   {"columns", static_cast<double>(target.columns), 3, kMost},
                                   {"rows", static_cast<double>(target.rows), 3, kMost},
                                   {"pitch", target.pitch, 0.001, 10000},
                                   {"diameter over pitch", share, 0.1, 0.9}});
}

}  // namespace orx::plane

#endif
