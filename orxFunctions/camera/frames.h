// Frames from the grab threads, each accounted for.
#ifndef ORXFUNCTIONS_CAMERA_FRAMES_H
#define ORXFUNCTIONS_CAMERA_FRAMES_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>

#include "orxFunctions/api.h"

namespace orx {

// A picture that a grab thread fetched, and which one it is.
//
// Each frame that a camera is known to have sent since it was started has a number: 1, 2, 3 ... For frames
// that follow each other out of a queue, and come from the same start,
//
//     number == number of the one before + 1 + lostBefore + droppedBefore
//
// With a driver module that does not number its pictures (isNumbered false) each fetch counts as a frame: a
// picture that the driver gave twice is then two, and one that it never gave is none.
struct TFrame {
    cv::Mat image;                // scaled and turned as the camera's settings say
    std::int32_t camera = 0;      // the logical number
    std::uint64_t start = 0;      // of the camera it comes from; a later start has a higher number
    std::uint64_t number = 0;     // from 1 since that start
    bool isNumbered = false;      // by the driver
    std::int64_t deviceTime = 0;  // nanoseconds by the camera's clock; 0 when it has none
    std::chrono::system_clock::time_point hostTime;  // when it arrived in this computer
    std::uint64_t lostBefore = 0;  // frames that went to nobody: overwritten in the driver, lost on the way,
                                   // or fetched while the host paused or closed the camera
    std::uint64_t droppedBefore = 0;  // frames that were fetched and pushed out of the full queue
};

enum TFramePolicy {
    // For hosts that want to be up to date: the queue holds one frame, a newer one takes its place. The grab
    // thread fetches at the pace of TCameraConfig::frameRate.
    fpNewest,
    // For hosts that must see all: the queue holds TFrameOptions::capacity frames, beyond which the oldest is
    // dropped. The grab thread fetches each frame as soon as the driver has it, whatever frameRate says,
    // where
    // the driver can tell; it has to come by once in the time of a frame.
    fpEveryOne
};

struct TFrameOptions {
    TFramePolicy policy = fpNewest;
    std::int32_t capacity = 8;  // 1 to 64, for fpEveryOne; other values count as the nearest of these
};

// What became of the frames of a camera since openFrames. At any moment
//
//     delivered == taken + waiting + dropped + lost
//
// Counting begins with frame 1 where the camera was started after openFrames, else with the first that is
// fetched. A frame sent after the last that was fetched is not counted yet.
struct TFrameCounts {
    std::uint64_t delivered = 0;  // by the camera, up to the last that was fetched
    std::uint64_t taken = 0;      // by takeFrame
    std::uint64_t waiting = 0;    // in the queue
    std::uint64_t dropped = 0;    // pushed out of the full queue
    std::uint64_t lost = 0;       // gone to nobody: see TFrame::lostBefore
    std::uint64_t repeated = 0;   // fetches that gave the last picture again; they are no frames
};

// The functions below are thread-safe and take a camera's logical number, which is also its slot in
// imgThreadManager (image_thread_manager.h); for another number (below 0 or above 8) they answer false or
// nothing (rcNoCamera). They may be called before the camera is opened and before its thread is started, and
// a queue stays while the camera comes and goes.

// Begins a queue of frames, empty and with all counts at 0, also where there is one. False for a camera that
// there can't be.
ORX_API bool openFrames(int camera, const TFrameOptions& options = {});
// Ends it; whoever waits in takeFrame gets false.
ORX_API void closeFrames(int camera);

// Takes the oldest frame out of the queue, and waits for one up to `timeoutMs` (0 and below: not at all; on a
// grab thread, in a callback, never). False, with `frame` untouched, when none came (rcTimeout) or there is
// no queue (rcNotReady).
//
// The image is the caller's alone, unless a frame callback keeps the same frame.
ORX_API bool takeFrame(int camera, TFrame& frame, int timeoutMs);

// All 0 without a queue (rcNotReady).
ORX_API TFrameCounts frameCounts(int camera);

// Called on the grab thread with each new frame, before the callback of setDrawImgCallbackFunc, and with
// `user` as it was given. No queue is needed; where there is one it gets the same frame. A copy of the frame
// may be kept; its pixels are not to be changed, as others see them, too (cv::Mat::clone). Pictures that the
// driver gives again are no frames and come to no frame callback. lostBefore counts from the frame of the
// call before; droppedBefore is 0.
//
// It should be short, and must not throw: what it throws is told to the user, and the fetch counts as failed.
using TFrameCallback = void (*)(const TFrame& frame, void* user);

// Sets the callback of a camera; null ends it. When the call returns on a thread other than a grab thread in
// a callback, the former one has ended and is not called again. False for a camera that there can't be.
ORX_API bool setFrameCallback(int camera, TFrameCallback callback, void* user);

}  // namespace orx

#endif
