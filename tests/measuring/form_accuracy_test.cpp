// Holds form freed from noise, and edges across outlines, to what docs/accuracy-form.md shows. The bounds may
// be lowered, never raised. Relations are held to it by relations_test.cpp.
#include <gtest/gtest.h>

#include "docs/tools/form_accuracy.h"

namespace {

using namespace form_accuracy;

// In noises, and how far what is stated is from the errors: of two dozen scenes a bias of an eighth of the
// noise is chance, and a seventh of the ratio; of perfect zones, half of which are 0, far more of the ratio.
struct Bounds {
    double bias;
    double spread;
    double least;  // of stated over true
    double most;
};

void expectWithin(const FormTask& task, const Bounds& bounds) {
    constexpr int kScenes = 24;
    const FormResult result = measureForm(task, kScenes);
    SCOPED_TRACE(testing::Message() << "zone " << static_cast<int>(task.zone) << ", form " << task.height
                                    << ", noise " << task.noise << ", chain " << task.chain);
    EXPECT_EQ(result.refused, 0);
    const bool isRadius = task.zone == Zone::kAround || task.zone == Zone::kWithin;
    EXPECT_GT(std::abs(result.shown), (isRadius ? 1.0 : 2.5) * task.noise);  // what is to be taken off
    EXPECT_LT(std::abs(result.freed.bias()), bounds.bias * task.noise);
    EXPECT_LT(result.freed.spread(), bounds.spread * task.noise);
    const double ratio = result.freed.stated() / result.freed.rms();
    EXPECT_GT(ratio, bounds.least);
    EXPECT_LT(ratio, bounds.most);
}

TEST(FormAccuracy, PerfectOutlinesLoseTheShareOfTheNoise) {
    for (const bool chain : {false, true}) {  // the noise is but a scale here
        expectWithin({Zone::kRing, 0, 0.06, chain}, {0.35, 0.5, 0.9, 2.0});
        expectWithin({Zone::kStrip, 0, 0.06, chain}, {0.35, 0.5, 0.85, 2.0});
        expectWithin({Zone::kAround, 0, 0.06, chain}, {0.15, 0.45, 0.65, 1.5});
        expectWithin({Zone::kWithin, 0, 0.06, chain}, {0.15, 0.4, 0.75, 1.6});
    }
}

TEST(FormAccuracy, FormAboveTheNoiseIsLeftAsItIs) {
    for (const bool chain : {false, true}) {
        for (const double height : {0.05, 0.2}) {
            expectWithin({Zone::kRing, height, 0.02, chain}, {0.25, 0.85, 0.75, 1.25});
        }
        expectWithin({Zone::kStrip, 0.05, 0.02, chain}, {0.35, 0.95, 0.7, 1.25});
        expectWithin({Zone::kAround, 0.05, 0.02, chain}, {0.15, 0.5, 0.75, 1.3});
        expectWithin({Zone::kWithin, 0.05, 0.02, chain}, {0.15, 0.5, 0.75, 1.3});
        // As large as the noise: of a chain a part is taken for noise.
        expectWithin({Zone::kRing, 0.2, 0.2, chain}, {0.45, 0.9, 0.55, 1.3});
    }
}

TEST(FormAccuracy, EdgesAcrossOutlinesLieWithinTheirDeviations) {
    const struct {
        AcrossTask task;
        double rms;  // pixels, at the most
        double least;
        double most;  // stated over true
    } kRows[] = {
        {{15, 0.5, 0}, 0.02, 0.8, 1.1},    {{40, 1, 0}, 0.007, 0.9, 1.15},   {{0, 1.5, 0}, 0.006, 0.9, 1.15},
        {{40, 0.7, 2}, 0.024, 0.95, 1.15}, {{15, 1, 4}, 0.052, 0.9, 1.1},    {{40, 1.5, 8}, 0.14, 0.9, 1.1},
        {{0, 0.5, 4}, 0.042, 0.87, 1.1},   {{0, 0.7, 1}, 0.0165, 0.87, 1.1}, {{0, 1.5, 8}, 0.13, 0.93, 1.17},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(testing::Message() << "radius " << row.task.radius << ", blur " << row.task.blur
                                        << ", noise " << row.task.noise);
        const AcrossResult result = measureAcross(row.task, 4);
        EXPECT_EQ(result.found.count(), result.asked);
        EXPECT_LT(std::abs(result.found.bias()), 0.003 + 0.04 * row.rms);
        EXPECT_LT(result.found.rms(), row.rms);
        EXPECT_GT(result.found.stated() / result.found.rms(), row.least);
        EXPECT_LT(result.found.stated() / result.found.rms(), row.most);
    }
}

}  // namespace
