// The queue of frames of one camera (camera/frames.h).
#ifndef ORXFUNCTIONS_CAMERA_FRAME_QUEUE_INTERNAL_H
#define ORXFUNCTIONS_CAMERA_FRAME_QUEUE_INTERNAL_H

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>

#include "ZULLib/sync_internal.h"
#include "orxFunctions/camera/frame_origin_internal.h"
#include "orxFunctions/camera/frames.h"
#include "orxFunctions/camera/multi_camera.h"

namespace orx {

// How many frames are missing before the one that comes.
class FrameGap {
  public:
    // Frames of starts up to this one were on their way before: the first of them that comes is where
    // counting begins.
    void begin(std::uint64_t startsBefore);
    // False for the picture that came last, and for one that is none yet.
    bool isNew(const FrameOrigin& origin) const;
    // Goes on to a new one; answers how many were lost before it.
    std::uint64_t follow(const FrameOrigin& origin);

  private:
    std::uint64_t startsBefore_ = 0;
    std::uint64_t start_ = 0;  // starts have numbers above that
    std::uint64_t last_ = 0;
};

// Thread-safe. Its mutex is taken last, and nothing is called under it.
class FrameQueue {
  public:
    void open(const TFrameOptions& options);
    void close();
    bool take(TFrame& frame, std::chrono::milliseconds timeout);
    TFrameCounts counts();
    bool isOpen() const { return isOpen_; }
    void setCallback(TFrameCallback callback, void* user);

    // For the grab thread.

    // Whether anybody wants frames.
    bool isWanted() const { return isOpen_ || hasCallback_; }
    bool wantsEveryOne() const { return wantsEveryOne_; }
    // How many buffers the queue may hold.
    std::size_t capacity() const { return capacity_; }
    // Whether it is no frame that was there before.
    bool isNew(const FrameOrigin& origin);
    // Appends a new frame to the queue and hands it to the callback, as far as there is either; counts one
    // that is not new.
    void add(int camera, const cv::Mat& image, const FrameOrigin& origin);
    // Counts a new frame that is fetched and goes nowhere as lost; the next one in the queue tells it.
    void skip(const FrameOrigin& origin);

  private:
    struct Callback {
        TFrameCallback function = nullptr;
        void* user = nullptr;
        FrameGap gap;
    };

    void append(const TFrame& frame, const FrameOrigin& origin) ZUL_REQUIRES(mutex_);

    std::atomic<bool> isOpen_{false};
    std::atomic<bool> hasCallback_{false};
    std::atomic<bool> wantsEveryOne_{false};
    std::atomic<std::size_t> capacity_{0};

    zul::Mutex mutex_;
    std::condition_variable_any changed_;
    std::deque<TFrame> frames_ ZUL_GUARDED_BY(mutex_);
    TFrameCounts counts_ ZUL_GUARDED_BY(mutex_);
    FrameGap gap_ ZUL_GUARDED_BY(mutex_);
    std::uint64_t skipped_ ZUL_GUARDED_BY(mutex_) = 0;  // and what was lost before those, not told yet
    std::uint64_t opened_ ZUL_GUARDED_BY(mutex_) = 0;   // changes with open and close
    Callback callback_ ZUL_GUARDED_BY(mutex_);
};

// By camera. Defined in orxfunctions.cpp, before the threads that use them.
extern std::array<FrameQueue, MAXCameraNum> frameQueues;

}  // namespace orx

#endif
