// The parameters of vision_driver.h as features of a camera.
#ifndef DRIVERS_TQVISIONDRIVER_CAMERA_PARAMETERS_H
#define DRIVERS_TQVISIONDRIVER_CAMERA_PARAMETERS_H

#include <arv.h>

#include <map>
#include <optional>

namespace vision {

// By the identifiers of enum VDParameter.
using ParameterValues = std::map<int, double>;

// False when the camera refuses the value, lacks the feature, or the identifier is none that can be set.
bool setCameraParameter(ArvCamera* camera, int id, double value);

std::optional<double> cameraParameter(ArvCamera* camera, int id);

// Everything that a camera forgets when it loses power. Left out is what the camera adjusts by itself.
ParameterValues readCameraParameters(ArvCamera* camera);

// In an order in which no value is refused because of another.
void restoreCameraParameters(ArvCamera* camera, const ParameterValues& values);

}  // namespace vision

#endif
