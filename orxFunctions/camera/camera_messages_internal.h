// The message table of the cameras, and how its messages are shown.
#ifndef ORXFUNCTIONS_CAMERA_CAMERA_MESSAGES_INTERNAL_H
#define ORXFUNCTIONS_CAMERA_CAMERA_MESSAGES_INTERNAL_H

#include <array>
#include <cstddef>
#include <string>

#include "orxFunctions/camera/camera_messages.h"
#include "orxFunctions/foundation/message_colours_internal.h"

namespace orx {

// In the order of the table. The first twelve are public knowledge; what follows is shown or traced by grab
// threads, which must not convert texts themselves (see platform/worker_thread_internal.h).
enum class CameraMessage : std::size_t {
    kNoServer,
    kCannotConnect,  // %d: camera, from 1
    kMixedBrands,
    kWrongBrand,
    kNoDriver,
    kIndexTooLarge,
    kIndexNegative,
    kTooManyCameras,  // %d: the most
    kInitFailed,
    kPaused,   // %d: camera, from 1
    kResumed,  // %d: camera, from 1
    kEmptyImage,
    kCallbackFailed,  // %d: camera, from 1
    kThreadEnded,
    kLost,                 // %d: camera, from 1
    kLostAndSought,        // likewise
    kReturned,             // likewise
    kStateCallbackFailed,  // likewise
    kCount
};

using CameraMessages = std::array<std::string, static_cast<std::size_t>(CameraMessage::kCount)>;

// Defined in orxfunctions.cpp, filled by LoadORXdriverLanguageStr.
extern CameraMessages cameraMessages;

inline const std::string& textOf(CameraMessage message) {
    return cameraMessages[static_cast<std::size_t>(message)];
}

// The text with its first %d replaced.
std::string withNumber(const std::string& text, long long number);

void showError(CameraMessage message);
void showError(CameraMessage message, long long number);
// In the colour of the companion library.
void showPlain(const std::string& text);

}  // namespace orx

#endif
