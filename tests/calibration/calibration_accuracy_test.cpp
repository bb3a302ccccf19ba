// Holds targets and plane calibration to what docs/accuracy-calibration.md shows. The bounds may be lowered,
// never raised.
#include <gtest/gtest.h>

#include "docs/tools/calibration_accuracy.h"

namespace {

using namespace calibration_accuracy;

TEST(CalibrationAccuracy, OfPointsOfTargets) {
    struct Row {
        orx::TTargetKind kind;
        double pixels;
        double blur;
        double mostError;
    };
    // At a noise of 2, with a sixth above what the page shows for the chance of one picture.
    for (const Row& row : {Row{orx::tkChessboard, 20, 0.7, 0.0067}, Row{orx::tkChessboard, 40, 1.2, 0.0091},
                           Row{orx::tkDotGrid, 20, 0.7, 0.0107}, Row{orx::tkDotGrid, 40, 1.2, 0.0133}}) {
        const Found found = findTargets(row.kind, row.pixels, row.blur, 2, 1);
        EXPECT_EQ(found.lost, 0);
        EXPECT_LT(found.rms, row.mostError) << row.kind << " at " << row.pixels;
        EXPECT_NEAR(found.stated / found.rms, 1, 0.2) << row.kind << " at " << row.pixels;
    }
}

TEST(CalibrationAccuracy, OfMillimetres) {
    const Mapped lens = calibrateRendered(orx::tkDotGrid, Way::raised, 2, 5);
    EXPECT_EQ(lens.lost, 0);
    EXPECT_NEAR(lens.statedOverTrue, 1, 0.3);
    EXPECT_LT(lens.place, 0.52);
    EXPECT_LT(lens.length, 1.5);
    const Mapped flat = calibrateFlat(orx::tkDotGrid, 2, 24);
    EXPECT_EQ(flat.lost, 0);
    EXPECT_NEAR(flat.statedOverTrue, 1, 0.2);
    EXPECT_LT(flat.place, 0.42);
    // Without noise, what the corners' model leaves out shows alone:.
    const Mapped exact = calibrateRendered(orx::tkChessboard, Way::lens, 0, 1);
    EXPECT_LT(exact.place, 0.08);
    EXPECT_LT(exact.length, 0.1);
}

}  // namespace
