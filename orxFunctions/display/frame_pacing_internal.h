// The rule by which a loop holds a rate of frames: its pause grows by a tenth while the rate is reached and
// shrinks by a tenth while it is not. Halves are rounded away from zero. Pure functions; reentrant.
#ifndef ORXFUNCTIONS_DISPLAY_FRAME_PACING_INTERNAL_H
#define ORXFUNCTIONS_DISPLAY_FRAME_PACING_INTERNAL_H

#include <cstdint>

#include "orxFunctions/foundation/rounding_internal.h"

namespace orx::display {

// Frames per second, where `frames` frames (and so one gap less) took that long.
inline std::int32_t measuredRate(std::int32_t frames, double elapsedMs) {
    return roundedAwayInt((frames * 1000.0 - 1000.0) / elapsedMs);
}

inline std::int32_t nextPause(std::int32_t pauseMs, bool isTooSlow) {
    return roundedAwayInt(pauseMs * (isTooSlow ? 0.9 : 1.1));
}

}  // namespace orx::display

#endif
