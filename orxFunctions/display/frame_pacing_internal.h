// The rule by which a loop holds a rate of frames: its pause grows by a tenth while the rate is reached and
// shrinks by a tenth while it is not. Halves are rounded away from zero. Reentrant.
#ifndef ORXFUNCTIONS_DISPLAY_FRAME_PACING_INTERNAL_H
#define ORXFUNCTIONS_DISPLAY_FRAME_PACING_INTERNAL_H

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <limits>
#include <opencv2/core/utility.hpp>

#include "orxFunctions/foundation/rounding_internal.h"

namespace orx::display {

// What the rule knows of a loop. A picture box has the same, by these names, as public data of its own.
struct FramePace {
    std::int32_t sleepMs = 50;  // pause before each turn
    const std::int32_t measureFrames = 8;
    std::atomic<std::int32_t> measuredFps{0};  // frames per second; other threads may read it
    std::int32_t frameCounter = 0;             // frames since the last measurement, which the loop counts
    double startTick = 0.0;                    // tick count at the first frame of a measurement
    double elapsedMs = 0.0;                    // duration of the last measurement
    // The rate aimed at, as last taken; at first none that is asked for.
    std::int32_t appliedFps = std::numeric_limits<std::int32_t>::min();
};

// Frames per second, where `frames` frames (and so one gap less) took that long.
inline std::int32_t measuredRate(std::int32_t frames, double elapsedMs) {
    return roundedAwayInt((frames * 1000.0 - 1000.0) / elapsedMs);
}

inline std::int32_t nextPause(std::int32_t pauseMs, bool isTooSlow) {
    return roundedAwayInt(pauseMs * (isTooSlow ? 0.9 : 1.1));
}

// One step of the rule, after each frame, towards a rate of `wantedFps`. True when that is a new rate: it is
// applied, one below 1 as 1, and nothing is measured.
template <typename Pace>
bool keepPace(Pace& pace, std::int32_t wantedFps) {
    if (wantedFps != pace.appliedFps) {
        const std::int32_t rate = std::max<std::int32_t>(wantedFps, 1);
        pace.appliedFps = rate;
        pace.measuredFps = rate;
        pace.sleepMs = 1000 / rate;
        return true;
    }
    const auto now = static_cast<double>(cv::getTickCount());
    if (pace.frameCounter == 1) pace.startTick = now;
    if (pace.frameCounter != pace.measureFrames) return false;
    pace.elapsedMs = (now - pace.startTick) * 1000.0 / cv::getTickFrequency();
    pace.measuredFps = measuredRate(pace.measureFrames, pace.elapsedMs);
    pace.sleepMs = nextPause(pace.sleepMs, pace.measuredFps < pace.appliedFps);
    pace.frameCounter = 0;
    return false;
}

}  // namespace orx::display

#endif
