#include "orxFunctions/camera/frames.h"

#include "orxFunctions/camera/camera_number_internal.h"
#include "orxFunctions/camera/frame_queue_internal.h"
#include "orxFunctions/camera/image_thread_internal.h"

namespace orx {
namespace {

// Null for a camera that there can't be.
FrameQueue* queueOf(int camera) {
    return isCameraNumber(camera) ? &frameQueues[static_cast<std::size_t>(camera)] : nullptr;
}

}  // namespace

bool openFrames(int camera, const TFrameOptions& options) {
    FrameQueue* const queue = queueOf(camera);
    if (queue != nullptr) queue->open(options);
    return queue != nullptr;
}

void closeFrames(int camera) {
    if (FrameQueue* const queue = queueOf(camera)) queue->close();
}

bool takeFrame(int camera, TFrame& frame, int timeoutMs) {
    FrameQueue* const queue = queueOf(camera);
    const bool mayWait = timeoutMs > 0 && !TImageThread::isInCallback();
    return queue != nullptr && queue->take(frame, std::chrono::milliseconds(mayWait ? timeoutMs : 0));
}

TFrameCounts frameCounts(int camera) {
    FrameQueue* const queue = queueOf(camera);
    return queue == nullptr ? TFrameCounts() : queue->counts();
}

bool setFrameCallback(int camera, TFrameCallback callback, void* user) {
    FrameQueue* const queue = queueOf(camera);
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
