// What state each camera is in, and what happens when one is lost.
#ifndef ORXFUNCTIONS_CAMERA_CAMERA_STATE_H
#define ORXFUNCTIONS_CAMERA_CAMERA_STATE_H

#include <chrono>
#include <cstdint>
#include <string>

#include "orxFunctions/api.h"

namespace orx {

enum TCameraState {
    csClosed,        // not open
    csOpen,          // open, and no grab thread fetches from it
    csGrabbing,      // its grab thread fetches
    csPaused,        // its grab thread was told to pause
    csLost,          // it gives no pictures any more
    csReconnecting,  // it is lost, and its grab thread tries to connect to it again
};

// Why it is in that state.
enum TCameraReason {
    crAsked,           // the host wants it so (any state)
    crRefused,         // csClosed, csReconnecting: the driver could not open or start it
    crNoThread,        // csOpen: no grab thread runs for it
    crNotReady,        // csOpen: the host's parameter kCameraReady is false
    crStopped,         // csOpen: the host stopped acquisition
    crNoPicture,       // csLost, csReconnecting: six fetches in a row failed
    crEmptyPicture,    // likewise, and the last gave a picture of no size
    crCallbackFailed,  // likewise, and the last picture's callback threw (lpAllWait)
    crReturned,        // csGrabbing: it was lost and is back
};

struct TCameraStatus {
    std::int32_t camera = 0;  // the logical number
    std::string name;         // TCameraConfig::name, as it was when the grab thread was started; or ""
    TCameraState state = csClosed;
    TCameraReason reason = crAsked;
    std::chrono::system_clock::time_point since;
    std::int32_t attempts = 0;  // to connect again, since it was lost
    std::uint64_t change = 0;   // counts the changes of all cameras; 0 before the first of this one
};

// English words for them, such as "lost" and "six fetches in a row failed".
ORX_API const char* cameraStateText(TCameraState state);
ORX_API const char* cameraReasonText(TCameraReason reason);

// The functions below are thread-safe and take a camera's logical number, which is also its slot in
// imgThreadManager (image_thread_manager.h). States are those of the cameras of one TMultiCamera: they follow
// its operations at once, and everything else (operations of a TCamera of its own, kCameraReady, a loss) with
// the next turn of the grab thread, whose pause is at most a second.

// The state as it is now; closed for a camera that there can't be (rcNoCamera).
ORX_API TCameraStatus cameraStatus(int camera);

// Called with each change of state or reason of any camera, in order and one after another, on the thread
// that brought it about or on one that is calling at that moment: a host's or a grab thread. It should be
// short, must not wait for a grab thread, and must not throw (what it throws is told to the user). It may
// call anything else, also what changes a state.
using TCameraStateCallback = void (*)(const TCameraStatus& status, void* user);

// Sets the one callback of the process, with a pointer for it; null ends it. When the call returns on a
// thread other than one in the callback, the former one has ended and is not called again.
ORX_API void setCameraStateCallback(TCameraStateCallback callback, void* user);

// What a grab thread does after six failed fetches in a row.
enum TLossPolicy {
    // The user is asked to reconnect, and kCameraReady becomes false: all cameras wait until the host has
    // reconnected and sets it again.
    lpAllWait,
    // The user is told which camera is lost, and it alone waits, until the host closes and opens it. A
    // callback that throws is told and does not count as a failed fetch.
    lpThisOneWaits,
    // The same, and the thread connects again: it looks for a picture, and where there is none it closes the
    // camera, opens it, sets it as it was (what SetParam had set since it was opened, in that order), and
    // starts it. A driver module that says that it reconnects by itself is only asked for pictures. A camera
    // that the host closes or opens meanwhile is the host's again.
    //
    // The other cameras wait only for the driver's own procedures, which must not take long
    // (drivers/vision_driver.h).
    lpReconnect,
};

struct TReconnect {
    TLossPolicy policy = lpAllWait;
    // Milliseconds from the loss to the first attempt. They double with each that fails, up to the longest.
    // Below 1 counts as 1.
    std::int32_t firstWaitMs = 200;
    std::int32_t longestWaitMs = 5000;
};

// Settles it for a camera, also while its thread runs. False for a camera that there can't be (rcNoCamera).
ORX_API bool setReconnect(int camera, const TReconnect& options);

}  // namespace orx

#endif
