// What happened to the frames of a camera since VDStart, across reconnections.
#ifndef DRIVERS_TQVISIONDRIVER_FRAME_COUNTERS_H
#define DRIVERS_TQVISIONDRIVER_FRAME_COUNTERS_H

#include <cstdint>

#include "ZULLib/sync_internal.h"
#include "drivers/TQVisionDriver/source.h"

namespace vision {

struct FrameCounts {
    std::uint64_t frames = 0;  // that the camera is known to have sent: the number of the last one
    std::uint64_t complete = 0;
    std::uint64_t lost = 0;  // incomplete, and those of which nothing arrived
    double bytes = 0.0;
    Clock::time_point lastSign;       // of life: a frame, complete or not
    Clock::duration lastInterval{0};  // between complete frames
};

// Thread-safe.
class FrameCounters {
  public:
    void reset();
    // A stream begins: frame numbers may start anywhere.
    void beginStream();
    // A frame with this number (0: it has none) has come out of the stream. A complete one gets a number
    // without gaps but for the frames that were lost.
    std::uint64_t complete(std::uint64_t number, std::size_t bytes);
    void incomplete(std::uint64_t number);
    // A complete frame turned out to be unusable.
    void unusable();
    FrameCounts counts();

  private:
    void follow(std::uint64_t number) ZUL_REQUIRES(mutex_);

    zul::Mutex mutex_;
    FrameCounts counts_ ZUL_GUARDED_BY(mutex_);
    std::uint64_t lastNumber_ ZUL_GUARDED_BY(mutex_) = 0;
    Clock::time_point lastComplete_ ZUL_GUARDED_BY(mutex_);
    bool hasComplete_ ZUL_GUARDED_BY(mutex_) = false;
};

// How many frames lie between two numbers that followed each other. GigE Vision counts from 1 to 65,535 and
// then from 1 again; a number that goes back otherwise is that of a restarted camera.
std::uint64_t framesBetween(std::uint64_t last, std::uint64_t number);

}  // namespace vision

#endif
