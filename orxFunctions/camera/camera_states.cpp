#include "orxFunctions/camera/camera_states_internal.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "orxFunctions/camera/camera_messages_internal.h"
#include "orxFunctions/foundation/host_bridge.h"

namespace orx {
namespace {

std::pair<TCameraState, TCameraReason> stateOf(const CameraFacts& facts) {
    if (facts.loss == Loss::kReconnecting) return {csReconnecting, facts.lossReason};
    if (facts.loss == Loss::kLost) return {csLost, facts.lossReason};
    if (!facts.isOpen) return {csClosed, facts.closedReason};
    if (!facts.hasThread) return {csOpen, crNoThread};
    if (!facts.isWanted) return {csPaused, crAsked};
    if (!facts.isReady) return {csOpen, crNotReady};
    if (!facts.isWorking) return {csOpen, crStopped};
    return {csGrabbing, facts.hasReturned ? crReturned : crAsked};
}

void call(TCameraStateCallback callback, const TCameraStatus& status, void* user) {
    std::string problem;
    try {
        callback(status, user);
        return;
    } catch (const std::exception& error) {
        problem = error.what();
    } catch (...) {
        problem = "?";
    }
    zul::APPshowMessage(withNumber(textOf(CameraMessage::kStateCallbackFailed), status.camera + 1) + problem,
                        kErrorColor);
}

// Whoever delivers goes on with the next change, whatever became of this one.
void callSafely(TCameraStateCallback callback, const TCameraStatus& status, void* user) {
    try {
        call(callback, status, user);
    } catch (const std::exception&) {  // no memory for the message
    }
}

}  // namespace

TCameraStatus CameraStates::status(int camera) {
    TCameraStatus status;
    if (isCameraNumber(camera)) {
        const zul::LockGuard lock(mutex_);
        status = cameras_[static_cast<std::size_t>(camera)].status;
    }
    status.camera = camera;
    return status;
}

void CameraStates::setCallback(TCameraStateCallback callback, void* user) {
    const zul::LockGuard lock(mutex_);
    while (deliverer_ != std::thread::id() && deliverer_ != std::this_thread::get_id()) {
        delivered_.wait(mutex_);
    }
    callback_ = callback;
    user_ = user;
    if (deliverer_ == std::thread::id()) news_.clear();
}

void CameraStates::setReconnect(int camera, const TReconnect& options) {
    const zul::LockGuard lock(mutex_);
    TReconnect& known = cameras_[static_cast<std::size_t>(camera)].reconnect;
    known = options;
    known.firstWaitMs = std::max(known.firstWaitMs, 1);
    known.longestWaitMs = std::max(known.longestWaitMs, known.firstWaitMs);
}

TReconnect CameraStates::reconnect(int camera) {
    const zul::LockGuard lock(mutex_);
    return cameras_[static_cast<std::size_t>(camera)].reconnect;
}

// All or nothing: without memory the status and the host's news of it wait for the next report.
void CameraStates::update(int camera, Camera& known) {
    TCameraStatus status = known.status;
    status.name = known.facts.name;
    status.attempts = known.facts.attempts;
    const auto [state, reason] = stateOf(known.facts);
    if (state != status.state || reason != status.reason) {
        status.camera = camera;
        status.state = state;
        status.reason = reason;
        status.since = std::chrono::system_clock::now();
        status.change = changes_ + 1;
        if (callback_ != nullptr) news_.push_back(status);
        changes_ = status.change;
    }
    known.status = std::move(status);
}

// By one thread at a time, so that the host hears of changes in their order.
void CameraStates::deliver() {
    const zul::LockGuard lock(mutex_);
    if (news_.empty() || deliverer_ != std::thread::id()) return;
    deliverer_ = std::this_thread::get_id();
    while (!news_.empty() && callback_ != nullptr) {
        const TCameraStatus status = std::move(news_.front());
        news_.pop_front();
        const TCameraStateCallback callback = callback_;
        void* const user = user_;
        mutex_.unlock();
        callSafely(callback, status, user);
        mutex_.lock();
    }
    news_.clear();
    deliverer_ = std::thread::id();
    delivered_.notify_all();
}

const char* cameraStateText(TCameraState state) {
    switch (state) {
        case csClosed:
            return "closed";
        case csOpen:
            return "open";
        case csGrabbing:
            return "grabbing";
        case csPaused:
            return "paused";
        case csLost:
            return "lost";
        case csReconnecting:
            return "reconnecting";
    }
    return "?";
}

const char* cameraReasonText(TCameraReason reason) {
    switch (reason) {
        case crAsked:
            return "as the host asked";
        case crRefused:
            return "the driver could not open or start it";
        case crNoThread:
            return "no grab thread runs";
        case crNotReady:
            return "cameraReady is false";
        case crStopped:
            return "acquisition was stopped";
        case crNoPicture:
            return "six fetches in a row failed";
        case crEmptyPicture:
            return "six fetches in a row failed, the last with an empty picture";
        case crCallbackFailed:
            return "six fetches in a row failed, the last in the callback";
        case crReturned:
            return "it was lost and is back";
    }
    return "?";
}

TCameraStatus cameraStatus(int camera) {
    takesCameraNumber(camera, "cameraStatus");
    return cameraStates.status(camera);
}

void setCameraStateCallback(TCameraStateCallback callback, void* user) {
    cameraStates.setCallback(callback, user);
}

bool setReconnect(int camera, const TReconnect& options) {
    if (!takesCameraNumber(camera, "setReconnect")) return false;
    cameraStates.setReconnect(camera, options);
    return true;
}

}  // namespace orx
