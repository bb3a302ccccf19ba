#include "orxFunctions/camera/frames.h"

#include "orxFunctions/camera/camera_number_internal.h"
#include "orxFunctions/camera/frame_queue_internal.h"
#include "orxFunctions/camera/image_thread_internal.h"

namespace orx {
namespace {

// Null, and refused, for a camera that there can't be.
FrameQueue* queueOf(int camera, const char* function) {
    return takesCameraNumber(camera, function) ? &frameQueues[static_cast<std::size_t>(camera)] : nullptr;
}

}  // namespace

bool openFrames(int camera, const TFrameOptions& options) {
    FrameQueue* const queue = queueOf(camera, "openFrames");
    if (queue != nullptr) queue->open(options);
    return queue != nullptr;
}

void closeFrames(int camera) {
    if (FrameQueue* const queue = queueOf(camera, "closeFrames")) queue->close();
}

bool takeFrame(int camera, TFrame& frame, int timeoutMs) {
    FrameQueue* const queue = queueOf(camera, "takeFrame");
    if (queue == nullptr) return false;
    const int waitMs = timeoutMs > 0 && !TImageThread::isInCallback() ? timeoutMs : 0;
    if (queue->take(frame, std::chrono::milliseconds(waitMs))) return true;
    return queue->isOpen()
               ? refuse(rcTimeout, "takeFrame", "no frame of camera %d came within %d ms", camera, waitMs)
               : refuse(rcNotReady, "takeFrame", "camera %d has no queue; openFrames begins one", camera);
}

TFrameCounts frameCounts(int camera) {
    FrameQueue* const queue = queueOf(camera, "frameCounts");
    if (queue == nullptr) return {};
    if (!queue->isOpen())
        refuse(rcNotReady, "frameCounts", "camera %d has no queue; openFrames begins one", camera);
    return queue->counts();
}

bool setFrameCallback(int camera, TFrameCallback callback, void* user) {
    FrameQueue* const queue = queueOf(camera, "setFrameCallback");
    if (queue == nullptr) return false;
    if (TImageThread::isInCallback()) {
        queue->setCallback(callback, user);
    } else {
        // A callback runs under its slot's mutex.
        const zul::LockGuard lock(slotMutexes[static_cast<std::size_t>(camera)]);
        queue->setCallback(callback, user);
    }
    return true;
}

}  // namespace orx
