// Why there is no plane calibration, or no place on it, for lastRefusal().
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_PLANE_REFUSAL_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_PLANE_REFUSAL_H

#include "orxFunctions/calibration/plane_calibration.h"

namespace orx::plane {

// Each is refused in the name of the public function, and answers false where it refuses.

// A status that is not plOk, and what in particular is wrong, which may be empty.
bool refuseStatus(TPlaneStatus status, const std::string& problem, const char* function);

// A calibration that was made, unless it is valid.
bool tellResult(const TPlaneCalibration& result, const char* function);

// One that was handed in: rcNotReady unless it is valid.
bool takesCalibration(const TPlaneCalibration& calibration, const char* function);

// A place that the calibration does not know, or its being not valid.
bool refusePlace(const TPlaneCalibration& calibration, const char* function);

}  // namespace orx::plane

#endif
