// How a public function says why it refuses.
#ifndef ORXFUNCTIONS_FOUNDATION_REFUSAL_INTERNAL_H
#define ORXFUNCTIONS_FOUNDATION_REFUSAL_INTERNAL_H

#include <cstdio>
#include <opencv2/core.hpp>

#include "orxFunctions/foundation/refusal.h"

// What std::vsnprintf takes, for the compiler's check. MinGW has two kinds, of which C++ uses the standard
// one.
#ifdef __MINGW_PRINTF_FORMAT
#define ORX_PRINTF_FORMAT __MINGW_PRINTF_FORMAT
#else
#define ORX_PRINTF_FORMAT printf
#endif

namespace orx {

// Keeps the refusal for lastRefusal() and answers false. `function` is the public function's name, a literal.
// The text becomes "function: " and what the code says, or what the format says instead: in words that tell
// the value that came and what is taken, file names as UTF-8. Neither throws nor takes memory.
[[gnu::cold]] bool refuse(TRefusalCode code, const char* function) noexcept;
[[gnu::cold, gnu::format(ORX_PRINTF_FORMAT, 3, 4)]] bool refuse(TRefusalCode code, const char* function,
                                                                const char* format, ...) noexcept;

// What functions ask of an image; where it is not so, false and the refusal is kept.

// Not empty, two-dimensional.
bool takesImage(const cv::Mat& img, const char* function) noexcept;
// And 8-bit with one channel.
bool takesBytes(const cv::Mat& img, const char* function) noexcept;
// And 8- or 16-bit unsigned with 1 to 4 channels.
bool takesPicture(const cv::Mat& img, const char* function) noexcept;

}  // namespace orx

#endif
