// Which logical numbers cameras can have.
#ifndef ORXFUNCTIONS_CAMERA_CAMERA_NUMBER_INTERNAL_H
#define ORXFUNCTIONS_CAMERA_CAMERA_NUMBER_INTERNAL_H

#include "orxFunctions/camera/multi_camera.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {

constexpr bool isCameraNumber(int number) { return number >= 0 && number < MAXCameraNum; }

// The same; what is no such number is refused in the name of the public function.
inline bool takesCameraNumber(int number, const char* function) {
    return isCameraNumber(number) ||
           refuse(rcNoCamera, function, "there can't be a camera %d; they are 0 to %d", number,
                  MAXCameraNum - 1);
}

}  // namespace orx

#endif
