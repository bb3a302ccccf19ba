// What a target may be.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_TARGET_CHECK_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_TARGET_CHECK_H

#include "orxFunctions/calibration/plane_target.h"

namespace orx::plane {

// Whether its options are within their ranges.
inline bool isTarget(const TTarget& target) {
    constexpr int kMost = 200;
    const bool isDots = target.kind == tkDotGrid;
    const double share = target.diameter / target.pitch;
    return (target.kind == tkChessboard || isDots) && target.columns >= 3 && target.columns <= kMost &&
           target.rows >= 3 && target.rows <= kMost && target.pitch >= 0.001 && target.pitch <= 10000.0 &&
           (!isDots || (share >= 0.1 && share <= 0.9));
}

}  // namespace orx::plane

#endif
