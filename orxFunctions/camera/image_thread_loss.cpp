// What a grab thread does about a camera that gives no pictures.
#include "orxFunctions/camera/image_thread_internal.h"

#include <algorithm>

#include "orxFunctions/camera/camera_messages_internal.h"
#include "orxFunctions/camera/camera_states_internal.h"
#include "orxFunctions/foundation/host_bridge.h"

namespace orx {

using Clock = std::chrono::steady_clock;

// What others may have changed since the last turn.
void TImageThread::reportTurn() {
    reconnect_ = cameraStates.reconnect(cameraIdx);
    const bool isReady = zul::APPgetParamBool(kCameraReady);
    cameraStates.report(cameraIdx, [&](CameraFacts& facts) {
        facts.isReady = isReady;
        if (cameras_ != nullptr) cameras_->state(cameraIdx, facts.isOpen, facts.isWorking);
    });
}

void TImageThread::tell(CameraMessage message) {
    const std::string text = withNumber(textOf(message), cameraIdx + 1);
    zul::APPshowMessage(name_.empty() ? text : text + " (" + name_ + ")", kReconnectColor);
}

// Six fetches in a row have failed.
void TImageThread::lose() {
    failCount_ = 0;
    // What failed was not what the host has opened since.
    if (reconnect_.policy != lpAllWait && cameras_->hostChanges(cameraIdx) != hostChanges_) return;
    if (reconnect_.policy == lpAllWait) {
        zul::APPshowMessage(textOf(CameraMessage::kEmptyImage), kReconnectColor);
        zul::APPaddOrSetParamBool(kCameraReady, false);
    } else {
        tell(reconnect_.policy == lpReconnect ? CameraMessage::kLostAndSought : CameraMessage::kLost);
    }
    isLost_ = true;
    isReopened_ = false;
    mayAllFetch_ = reconnect_.policy == lpAllWait;
    waitMs_ = reconnect_.firstWaitMs;
    nextAttempt_ = Clock::now() + std::chrono::milliseconds(waitMs_);
    cameraStates.report(cameraIdx, [this](CameraFacts& facts) {
        facts.loss = Loss::kLost;
        facts.lossReason = lastFailure_;
        facts.attempts = 0;
    });
}

void TImageThread::endLoss(bool hasReturned) {
    if (!isLost_) return;
    isLost_ = false;
    failCount_ = 0;
    if (hasReturned && !mayAllFetch_) tell(CameraMessage::kReturned);
    cameraStates.report(cameraIdx, [=](CameraFacts& facts) {
        facts.loss = Loss::kNone;
        facts.hasReturned = hasReturned;
    });
}

// True while the camera is this thread's to bring back, or the host's, and not to be fetched from as usual.
bool TImageThread::isKeptLost() {
    if (!isLost_) return false;
    // Closed, opened, started or stopped by the host: it is the host's again.
    if (cameras_->hostChanges(cameraIdx) != hostChanges_) {
        endLoss(false);
        return false;
    }
    if (mayAllFetch_) return false;
    mayAllFetch_ = reconnect_.policy == lpAllWait;  // changed meanwhile
    if (reconnect_.policy == lpReconnect) tryToReturn();
    return !mayAllFetch_;
}

// Where a loss is this camera's alone, one that the host has stopped is not lost.
bool TImageThread::isAtRest() const {
    if (reconnect_.policy == lpAllWait || cameras_ == nullptr) return false;
    bool isOpen = false;
    bool isWorking = false;
    cameras_->state(cameraIdx, isOpen, isWorking);
    return isOpen && !isWorking;
}

void TImageThread::tryToReturn() {
    if (!threadWork || !camUpdateImg || !zul::APPgetParamBool(kCameraReady)) return;
    if (!isReopened_) {
        if (Clock::now() < nextAttempt_) return;
        cameraStates.report(cameraIdx, [](CameraFacts& facts) {
            facts.loss = Loss::kReconnecting;
            ++facts.attempts;
        });
    }
    if (fetch()) {
        endLoss(true);
        handOver();
        return;
    }
    if (isReopened_ && ++failCount_ < kMostFailures) return;  // the first picture may take its time
    failCount_ = 0;
    const bool mayReopen = !isReopened_ && !origin_.returns;
    isReopened_ = mayReopen && cameras_->reopen(cameraIdx, hostChanges_);
    if (isReopened_) return;
    const TCameraReason reason = mayReopen ? crRefused : lastFailure_;
    cameraStates.report(cameraIdx, [=](CameraFacts& facts) { facts.lossReason = reason; });
    waitMs_ = std::min(2 * std::int64_t{waitMs_}, std::int64_t{reconnect_.longestWaitMs});
    nextAttempt_ = Clock::now() + std::chrono::milliseconds(waitMs_);
}

}  // namespace orx
