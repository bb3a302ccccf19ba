// Holds values and verdicts of recipes to what docs/accuracy-verdict.md shows. The bounds may be lowered,
// never raised.
#include <gtest/gtest.h>

#include <map>

#include "docs/tools/verdict_accuracy.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace verdict_accuracy;

constexpr int kParts = 16;

// The rows of a few parts on a plane that is known.
std::map<std::string, Row> measureParts() {
    test::TemporaryFolder folder;
    const scenes::PlaneCamera camera = calibration_accuracy::eightPoses().front();
    EXPECT_EQ(orx::writePlaneCalibration(folder / "plane.json", truePlane(camera)), orx::plOk);
    const scenes::PlaneRenderer view(camera);
    const std::vector<Asked> asked = allValues();
    std::map<std::string, std::vector<Sample>> samples;
    for (int i = 0; i < kParts; ++i) {
        const auto seed = static_cast<std::uint64_t>(i) + 1;
        const Part part(seed);
        const auto all =
            measurePart(pictureOf(view, part, Light(), seed), part, asked, "plane.json", folder.name());
        for (std::size_t k = 0; k < asked.size(); ++k) samples[asked[k].row].push_back(all[k]);
    }
    std::map<std::string, Row> rows;
    for (const auto& [name, values] : samples) rows[name] = rowOf(values, 7);
    return rows;
}

TEST(VerdictAccuracy, PicturesOfFewEdgesAreThoseOfAllPixels) {
    const scenes::PlaneRenderer view(calibration_accuracy::eightPoses().front());
    const scenes::PlaneShape shape = Part(3).shape();
    EXPECT_LT(cv::norm(view.levels(shape, {}), view.levelsOfFewEdges(shape, {}), cv::NORM_INF), 1e-3);
}

TEST(VerdictAccuracy, ValuesOfRenderedPlatesAreRightAndSoAreTheirVerdicts) {
    // Of distances and diameters, micrometres; a pixel is 204.
    const std::map<std::string, double> most{
        {"hole to hole", 1.9},     {"hole to edge", 1.8},       {"edge to edge", 1.1},
        {"diameter of 4 mm", 2.6}, {"diameter of 4.8 mm", 2.2}, {"diameter of 6 mm", 2.0},
        {"slot: width", 1.7},      {"oval hole to hole", 2.6},  {"oval diameter of 8 mm", 3.5},
    };
    const std::map<std::string, Row> rows = measureParts();
    double wrong = 0;
    double values = 0;
    for (const std::string& by : methods()) {
        double stated = 0;
        double error = 0;
        for (const auto& [name, bound] : most) {
            SCOPED_TRACE(by + ": " + name);
            const Row& row = rows.at(by + ": " + name);
            EXPECT_EQ(row.lost, 0);
            EXPECT_LT(1000 * row.rms, bound);
            EXPECT_GT(row.stated / row.rms, 0.7);  // chance moves that of 16 values by a sixth
            EXPECT_LT(row.stated / row.rms, name.find("oval") == 0 ? 4.0 : 1.6);
            wrong += row.wrong * row.count;
            values += row.count;
            if (name.find("oval") == 0) continue;
            stated += row.stated * row.stated * row.count;
            error += row.rms * row.rms * row.count;
        }
        EXPECT_GT(std::sqrt(stated / error), 0.9) << by;
        EXPECT_LT(std::sqrt(stated / error), 1.25) << by;
    }
    EXPECT_LT(wrong / values, 0.05);
}

}  // namespace
