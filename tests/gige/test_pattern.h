// The bytes that the software camera sends.
#ifndef ORX_TESTS_GIGE_TEST_PATTERN_H
#define ORX_TESTS_GIGE_TEST_PATTERN_H

#include <cstddef>

namespace gige {

// Even pictures have so many levels.
constexpr unsigned kLevels = 251;

// Frames repeat after this many.
constexpr unsigned kPatterns = 8;

// Byte `i` of frame `frame`; the first eight of a frame hold the exposure and the gain instead.
inline unsigned char patternByte(unsigned frame, std::size_t i) {
    return static_cast<unsigned char>((i * 37U + (i >> 8U) * 11U + (frame % kPatterns) * 29U) & 0xFFU);
}

}  // namespace gige

#endif
