#include "drivers/TQVisionDriver/frame_counters.h"

#include <gtest/gtest.h>

namespace {

using vision::framesBetween;

TEST(FrameCounters, GapsInTheNumbersAreLostFrames) {
    EXPECT_EQ(framesBetween(7, 8), 0U);
    EXPECT_EQ(framesBetween(7, 11), 3U);
    EXPECT_EQ(framesBetween(65535, 1), 0U) << "0 is left out";
    EXPECT_EQ(framesBetween(65534, 3), 3U);
    EXPECT_EQ(framesBetween(65536, 65538), 1U) << "long numbers";
    EXPECT_EQ(framesBetween(5000, 1), 0U) << "a restarted camera";
    EXPECT_EQ(framesBetween(0, 900), 0U) << "the first one";
    EXPECT_EQ(framesBetween(1, 4000000000U), 0U) << "nonsense";
}

TEST(FrameCounters, CountEachFrameOnce) {
    vision::FrameCounters counters;
    counters.beginStream();
    EXPECT_EQ(counters.complete(10, 100), 1U);
    counters.incomplete(11);
    EXPECT_EQ(counters.complete(14, 100), 5U) << "the second came incomplete, 12 and 13 not at all";
    counters.unusable();
    EXPECT_EQ(counters.counts().complete, 2U);
    EXPECT_EQ(counters.counts().lost, 4U) << "11, 12, 13 and one that was unusable";
    EXPECT_EQ(counters.counts().bytes, 200.0);
    counters.beginStream();
    EXPECT_EQ(counters.complete(900, 1), 6U);
    EXPECT_EQ(counters.counts().lost, 4U) << "a new stream counts from anywhere";
    counters.reset();
    EXPECT_EQ(counters.counts().complete, 0U);
}

}  // namespace
