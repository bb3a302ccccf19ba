// The texts that the camera functions show to the user.
#ifndef ORXFUNCTIONS_CAMERA_CAMERA_MESSAGES_H
#define ORXFUNCTIONS_CAMERA_CAMERA_MESSAGES_H

#include "orxFunctions/api.h"

namespace orx {

// Fills the twelve messages, in code page 936. Done once while the library is being loaded, before any camera
// function can be called; calling it again changes nothing. Thread-safe after that.
ORX_API void LoadORXdriverLanguageStr();

}  // namespace orx

#endif
