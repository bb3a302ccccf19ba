// Camera brands: is a vendor's runtime installed, and which brand is connected?
#ifndef ORXFUNCTIONS_CAMERA_CAMERA_BRANDS_INTERNAL_H
#define ORXFUNCTIONS_CAMERA_CAMERA_BRANDS_INTERNAL_H

#include <string>

namespace orx {

// As TMultiCamera::CheckCameraDriverValid; `message` may be null.
bool checkCameraDriver(int type, std::string* message);

// As TCamera::getCameraType.
int detectCameraType();

// What the answer of detectCameraType means where it is not the type that was asked for.
const char* cameraTypeText(int type);

}  // namespace orx

#endif
