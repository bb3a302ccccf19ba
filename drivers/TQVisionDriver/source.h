// Where the pictures of a slot come from: a camera, or a source inside the module.
#ifndef DRIVERS_TQVISIONDRIVER_SOURCE_H
#define DRIVERS_TQVISIONDRIVER_SOURCE_H

#include <chrono>
#include <limits>

#include "drivers/vision_driver.h"

namespace vision {

using Clock = std::chrono::steady_clock;

struct PictureFormat {
    int width = 0;
    int height = 0;
    int channels = 1;
};

constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();

// How long VDGetImage may wait for a newer picture: the library calls it for all cameras under one lock.
constexpr std::chrono::milliseconds kLongestFetch{5};

// For how long after its start a source that runs freely has its first picture on the way.
constexpr std::chrono::seconds kLongestStart{1};

inline unsigned long long nanosecondsSince(Clock::time_point moment) {
    const auto passed = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - moment).count();
    return passed > 0 ? static_cast<unsigned long long>(passed) : 0;
}

// For how long the last picture is given again before its source must be taken for lost. A source that makes
// a picture only when it is triggered is not lost because none was taken.
inline std::chrono::duration<double> patience(double secondsPerPicture) {
    return std::chrono::duration<double>(secondsPerPicture > 1.0 / 3.0 ? 3.0 * secondsPerPicture : 1.0);
}

// The calls follow those of vision_driver.h, with the states already checked by the slot (slots.h): open
// before start, start before fetch. One thread at a time.
class Source {
  public:
    Source() = default;
    virtual ~Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    virtual bool open() = 0;
    virtual void close() = 0;
    virtual bool start(PictureFormat& format) = 0;
    virtual void stop() = 0;
    virtual bool fetch(VDImage& image) = 0;
    // Of the picture that fetch gave last.
    virtual VDFrameInfo frameInfo() = 0;
    virtual bool setParameter(int id, long value) = 0;
    virtual float parameter(int id) = 0;  // kNoValue when it can't be read
};

}  // namespace vision

#endif
