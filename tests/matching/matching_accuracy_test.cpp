// Holds the part finder to what docs/accuracy-matching.md shows, with a few scenes of each row. The bounds
// may be lowered, never raised.
#include <gtest/gtest.h>

#include <algorithm>

#include "docs/tools/matching_accuracy.h"

namespace {

using namespace matching_accuracy;

constexpr int kScenes = 10;  // two for each part

// For so few scenes: a lost part or a false find is one too many, and errors may be twice those of many
// scenes.
struct Bounds {
    const char* row;
    int lost;
    double place;  // pixels; 0 where it is not told
    double angle;  // degrees
    double scale = 0;
};

void expectWithin(const Row& row, const Bounds& bounds) {
    SCOPED_TRACE(row.label);
    const Result result = sumOf(measure(row, kScenes));
    EXPECT_GE(result.found, result.parts - bounds.lost);
    EXPECT_EQ(result.falseFinds, 0);
    EXPECT_EQ(result.wrongPolarity, 0);
    if (bounds.place == 0) return;
    EXPECT_LT(result.place.rms(), bounds.place);
    EXPECT_LT(result.angle.rms(), bounds.angle);
    for (const Spread* spread : {&result.place, &result.angle}) {
        EXPECT_GT(spread->statedOverTrue(), 0.6);
        EXPECT_LT(spread->statedOverTrue(), 1.6);
    }
    if (bounds.scale > 0) {
        EXPECT_GT(result.scale.count, 0);
        EXPECT_LT(result.scale.rms(), bounds.scale);
    }
}

Row rowNamed(const std::string& label) {
    for (const GoalRow& goal : goalRows())
        if (goal.row.label == label) return goal.row;
    for (const Row& row : furtherRows())
        if (row.label == label) return row;
    ADD_FAILURE() << "no row " << label;
    return {};
}

TEST(MatchingAccuracy, IsWhatThePageShows) {
    for (const Bounds& bounds : {
             Bounds{"clean, noise 2", 0, 0.006, 0.02},
             Bounds{"clean, noise 8", 0, 0.022, 0.05},
             Bounds{"inverted, polarity either", 0, 0.006, 0.02},
             Bounds{"scale 0.9 to 1.1", 0, 0.006, 0.02, 2e-4},
             Bounds{"contrast 20, noise 2", 0, 0.03, 0.07},
         })
        expectWithin(rowNamed(bounds.row), bounds);
}

TEST(MatchingAccuracy, PartsAreFoundWhereItGetsHard) {
    for (const Bounds& bounds : {
             Bounds{"clutter", 0, 0, 0},
             Bounds{"uneven light, half in the corner", 0, 0, 0},
             Bounds{"40 % hidden", 1, 0, 0},
             Bounds{"rough ground, deviation 12", 0, 0, 0},
             Bounds{"threads", 0, 0, 0},
             Bounds{"blur 2", 0, 0, 0},
             Bounds{"plane tilted by 5°", 0, 0, 0},
             Bounds{"gear with a keyway", 0, 0, 0},
         })
        expectWithin(rowNamed(bounds.row), bounds);
}

TEST(MatchingAccuracy, NothingIsFoundWhereNothingIs) {
    for (const char* label :
         {"clutter, part absent", "clutter, part absent, score 0.45",
          "four parts of other kinds, part absent", "rough ground, deviation 12, part absent"})
        expectWithin(rowNamed(label), {label, 0, 0, 0});
}

// A part that hides what tells its angle is found, and says so.
TEST(MatchingAccuracy, WhatIsHiddenIsNotTold) {
    Row row = plainRow("ring, notch hidden", 0.45);
    row.kinds = {scenes::PartKind::notchedRing};
    row.scene.hidden = 0.4;
    int hidden = 0;
    const auto watch = [&](const auto&, const scenes::PartScene&, const orx::TFindResult& finds,
                           const Result& result) {
        if (result.undetermined == 0) return;
        ++hidden;
        const orx::TFoundPart& part = finds.parts.front();
        EXPECT_TRUE(std::isinf(part.deviationAngle));
        EXPECT_LT(part.deviationX, 0.05);
        EXPECT_LT(part.deviationY, 0.05);
    };
    const Result result = sumOf(measure(row, 12, watch));
    EXPECT_EQ(result.found, result.parts);
    EXPECT_GE(hidden, 3);
    EXPECT_LE(hidden, 9);
}

}  // namespace
