// The rendered lot of plates: its truth, and the recipe for it.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <set>

#include "orxFunctions/orxfunctions.h"
#include "support/plate_scene.h"
#include "tests/examples/batch_fixture.h"

namespace {

namespace fs = std::filesystem;

Json::Value recipeOfPlates() {
    Json::Value recipe;
    std::istringstream text(test::textOf(std::string(ORX_SOURCE_FOLDER) + "/examples/plates/plate.json"));
    text >> recipe;
    return recipe;
}

bool isWithin(const scenes::Plate& plate) {
    const auto drawn = scenes::plateValues({});
    const auto made = scenes::plateValues(plate);
    for (std::size_t i = 0; i < made.size(); ++i) {
        if (std::abs(made[i].value - drawn[i].value) > made[i].tolerance) return false;
    }
    return true;
}

TEST(PlateLot, IsThatOfTheRecipe) {
    const Json::Value values = recipeOfPlates()["values"];
    const auto drawn = scenes::plateValues({});
    ASSERT_EQ(values.size(), drawn.size());
    for (std::size_t i = 0; i < drawn.size(); ++i) {
        const Json::Value& value = values[static_cast<Json::ArrayIndex>(i)];
        EXPECT_EQ(value["name"].asString(), drawn[i].name);
        EXPECT_NEAR(value["nominal"].asDouble(), drawn[i].value, 1e-6);
        EXPECT_EQ(value["tolerance"].asDouble(), drawn[i].tolerance);
    }
}

TEST(PlateLot, HasItsShareOfFaultsAndNoOthers) {
    scenes::PlateLotSettings settings;
    settings.seed = 5;
    const auto lot = scenes::plateLot(settings);
    const auto again = scenes::plateLot(settings);
    ASSERT_EQ(lot.size(), 200U);
    std::set<std::string> faults;
    int bad = 0;
    for (std::size_t i = 0; i < lot.size(); ++i) {
        EXPECT_EQ(isWithin(lot[i].plate), lot[i].fault.empty()) << lot[i].fault;
        bad += lot[i].fault.empty() ? 0 : 1;
        faults.insert(lot[i].fault);
        EXPECT_EQ(lot[i].pose.angle, again[i].pose.angle);
        EXPECT_EQ(lot[i].plate.right, again[i].plate.right);
    }
    EXPECT_EQ(bad, 10);
    EXPECT_GE(faults.size(), 6U);  // none, and five kinds
    settings.seed = 6;
    EXPECT_NE(scenes::plateLot(settings)[0].pose.angle, lot[0].pose.angle);
    // All of each is seen.
    const scenes::PlaneCamera camera = scenes::plateCamera();
    for (const scenes::PlatePart& part : lot) {
        const double turn = part.pose.angle * CV_PI / 180;
        for (const double x : {part.plate.left, part.plate.right}) {
            for (const double y : {part.plate.top, part.plate.bottom}) {
                const cv::Point2d place(std::cos(turn) * x - std::sin(turn) * y,
                                        std::sin(turn) * x + std::cos(turn) * y);
                const cv::Point2d seen = camera.project(part.pose.origin + place);
                EXPECT_TRUE(cv::Rect2d(6, 6, 628, 468).contains(seen)) << seen;
            }
        }
    }
}

class PlateProgram : public test::BatchProgram {
  protected:
    // The camera as it truly is.
    static orx::TPlaneCalibration calibration() {
        const scenes::PlaneCamera camera = scenes::plateCamera();
        orx::TPlaneCalibration c;
        c.status = orx::plOk;
        c.imageSize = camera.size;
        c.camera = {camera.fx, 0, camera.cx, 0, camera.fy, camera.cy, 0, 0, 1};
        c.distortion = {camera.k1, camera.k2, camera.p1, camera.p2, camera.k3};
        cv::Rodrigues(camera.rotation, c.rotation);
        c.translation = camera.translation;
        c.degreesOfFreedom = 1000;
        return c;
    }

    void writePlate(const std::string& name, const scenes::Plate& plate,
                    const scenes::PlatePose& pose) const {
        scenes::PlaneExposure exposure;
        exposure.seed = name.size();
        cv::imwrite(path(name), scenes::withNoise(renderer_.levels(scenes::plateShape(plate, pose), exposure),
                                                  exposure.noiseSigma, exposure.seed));
    }

    const scenes::PlaneRenderer renderer_{scenes::plateCamera()};
};

TEST_F(PlateProgram, TheRecipeTellsGoodPlatesFromBadOnes) {
    for (const char* name : {"parts", "calibration", "model"}) fs::create_directory(path(name));
    fs::copy_file(fs::path(ORX_SOURCE_FOLDER) / "examples/plates/plate.json", path("plate.json"));
    ASSERT_EQ(orx::writePlaneCalibration(path("calibration/camera.yml"), calibration()), orx::plOk);
    writePlate("good.png", {}, scenes::plateToTeach());
    const cv::Rect r = scenes::kPlateRegion;
    std::ostringstream region;
    region << r.x << "," << r.y << "," << r.width << "," << r.height;
    ASSERT_EQ(run({"--teach-part", region.str(), path("good.png"), "-o", path("model")}).exitCode, 0);

    scenes::PlateLotSettings settings;
    settings.count = 3;
    settings.badShare = 0.34;
    std::string truth = "picture";
    for (const scenes::PlateValue& value : scenes::plateValues({})) truth += std::string(",") + value.name;
    std::vector<std::string> verdicts;
    for (const scenes::PlatePart& part : scenes::plateLot(settings)) {
        const std::string name = std::to_string(verdicts.size()) + ".png";
        writePlate("parts/" + name, part.plate, part.pose);
        truth += "\n" + name;
        for (const scenes::PlateValue& value : scenes::plateValues(part.plate))
            truth += "," + std::to_string(value.value);
        verdicts.emplace_back(part.fault.empty() ? "pass" : "fail");
    }
    EXPECT_EQ(std::count(verdicts.begin(), verdicts.end(), "fail"), 1);
    test::writeBytes(path("truth.csv"), truth + "\n");
    const test::Outcome outcome =
        run({path("parts"), "--recipe", path("plate.json"), "--truth", path("truth.csv"), "-o", path("out")});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    for (std::size_t i = 0; i < verdicts.size(); ++i)
        EXPECT_EQ(results()[i]["verdict"].asString(), verdicts[i]) << i;
    for (const Json::Value& value : statistics()["values"]) {
        EXPECT_EQ(value["truth"]["count"].asInt(), 3) << value["name"].asString();
        EXPECT_LT(value["truth"]["largestError"].asDouble(), 0.015) << value["name"].asString();
        EXPECT_LT(value["truth"]["rmsErrorOverStated"].asDouble(), 2.5) << value["name"].asString();
    }
}

}  // namespace
