// Which logical numbers cameras can have.
#ifndef ORXFUNCTIONS_CAMERA_CAMERA_NUMBER_INTERNAL_H
#define ORXFUNCTIONS_CAMERA_CAMERA_NUMBER_INTERNAL_H

#include "orxFunctions/camera/multi_camera.h"

namespace orx {

constexpr bool isCameraNumber(int number) { return number >= 0 && number < MAXCameraNum; }

}  // namespace orx

#endif
