#include <gtest/gtest.h>

#include "orxFunctions/orxfunctions.h"

namespace {

TEST(AngleFrom2Points, EqualColumnsComeBeforeEqualRows) {
    for (const auto type : {orx::ANGLE_ABS, orx::ANGLE_0_180, orx::ANGLE_SIGNED}) {
        EXPECT_EQ(orx::angleFrom2Points({5, 3}, {5, 9}, type), 90.0);
        EXPECT_EQ(orx::angleFrom2Points({5, 5}, {5, 5}, type), 90.0);
        EXPECT_EQ(orx::angleFrom2Points({1, 4}, {7, 4}, type), 0.0);
    }
}

}  // namespace
