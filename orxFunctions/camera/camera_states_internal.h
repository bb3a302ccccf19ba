// What is known of each camera, the state that follows from it, and who is told.
#ifndef ORXFUNCTIONS_CAMERA_CAMERA_STATES_INTERNAL_H
#define ORXFUNCTIONS_CAMERA_CAMERA_STATES_INTERNAL_H

#include <array>
#include <condition_variable>
#include <deque>
#include <new>
#include <string>
#include <thread>

#include "ZULLib/sync_internal.h"
#include "orxFunctions/camera/camera_number_internal.h"
#include "orxFunctions/camera/camera_state.h"
#include "orxFunctions/camera/multi_camera.h"

namespace orx {

enum class Loss { kNone, kLost, kReconnecting };

struct CameraFacts {
    std::string name;
    bool isOpen = false;
    bool isWorking = false;  // acquires
    bool hasThread = false;
    bool isWanted = true;  // no pause
    bool isReady = false;  // the host's parameter, as the grab thread saw it last
    Loss loss = Loss::kNone;
    TCameraReason lossReason = crNoPicture;
    TCameraReason closedReason = crAsked;
    bool hasReturned = false;
    std::int32_t attempts = 0;
};

// Thread-safe. Its mutex is not held while the host's callback runs; nothing else is locked under it.
class CameraStates {
  public:
    TCameraStatus status(int camera);
    void setCallback(TCameraStateCallback callback, void* user);
    void setReconnect(int camera, const TReconnect& options);
    TReconnect reconnect(int camera);

    // Calls change(facts) under the mutex, so that what it reads there is not older than what others report.
    // Other cameras than there can be are left out. Never throws: where there is no memory to make the status
    // of the facts, the next report makes it.
    template <typename Change>
    void report(int camera, const Change& change) {
        note(camera, change);
        deliver();
    }
    // As report, but the host hears of it with the next deliver: for callers that hold a lock which the
    // host's callback may need.
    template <typename Change>
    void note(int camera, const Change& change) {
        if (!isCameraNumber(camera)) return;
        const zul::LockGuard lock(mutex_);
        Camera& known = cameras_[static_cast<std::size_t>(camera)];
        try {
            change(known.facts);
            update(camera, known);
        } catch (const std::bad_alloc&) {
        }
    }
    // Tells the host what is new.
    void deliver();

  private:
    struct Camera {
        CameraFacts facts;
        TCameraStatus status;
        TReconnect reconnect;
    };

    void update(int camera, Camera& known) ZUL_REQUIRES(mutex_);

    zul::Mutex mutex_;
    std::condition_variable_any delivered_;
    std::array<Camera, MAXCameraNum> cameras_ ZUL_GUARDED_BY(mutex_);
    std::uint64_t changes_ ZUL_GUARDED_BY(mutex_) = 0;
    TCameraStateCallback callback_ ZUL_GUARDED_BY(mutex_) = nullptr;
    void* user_ ZUL_GUARDED_BY(mutex_) = nullptr;
    std::deque<TCameraStatus> news_ ZUL_GUARDED_BY(mutex_);
    std::thread::id deliverer_ ZUL_GUARDED_BY(mutex_);  // who calls at this moment
};

// Defined in orxfunctions.cpp, before the threads that use it.
extern CameraStates cameraStates;

}  // namespace orx

#endif
