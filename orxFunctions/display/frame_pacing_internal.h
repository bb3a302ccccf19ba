// The rule by which a loop holds a rate of frames: its pause grows by a tenth while the rate is reached and
// shrinks by a tenth while it is not. Pure functions; reentrant.
#ifndef ORXFUNCTIONS_DISPLAY_FRAME_PACING_INTERNAL_H
#define ORXFUNCTIONS_DISPLAY_FRAME_PACING_INTERNAL_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace orx::display {

// Ties to even; what lies outside the integers becomes the nearest one, and what is no number 0.
inline std::int32_t roundedInt(double value) {
    if (std::isnan(value)) return 0;
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::lrint(
        std::clamp(value, static_cast<double>(Limits::min()), static_cast<double>(Limits::max()))));
}

// Frames per second, where `frames` frames (and so one gap less) took that long.
inline std::int32_t measuredRate(std::int32_t frames, double elapsedMs) {
    return roundedInt((frames * 1000.0 - 1000.0) / elapsedMs);
}

inline std::int32_t nextPause(std::int32_t pauseMs, bool isTooSlow) {
    return roundedInt(pauseMs * (isTooSlow ? 0.9 : 1.1));
}

}  // namespace orx::display

#endif
