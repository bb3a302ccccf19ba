// What a calibration must fulfil to be kept in a file.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_PLAUSIBLE_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_PLAUSIBLE_H

#include <string>

#include "orxFunctions/calibration/plane_calibration.h"

namespace orx::plane {

// What no calibration can be, in English; empty where all is well. The status is not looked at.
std::string flawOf(const TPlaneCalibration& calibration);

}  // namespace orx::plane

#endif
