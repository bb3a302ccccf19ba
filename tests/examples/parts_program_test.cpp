// The inspection program as it teaches parts and finds them.
#include <gmock/gmock.h>

#include <cmath>

#include "orxFunctions/orxfunctions.h"
#include "support/part_scene.h"
#include "tests/examples/program_fixture.h"

namespace {

namespace fs = std::filesystem;
using test::Outcome;
using test::textOf;
using testing::HasSubstr;

class PartsProgram : public test::Program {
  protected:
    std::string write(const std::string& name, const cv::Mat& picture) const {
        cv::imwrite(path(name), picture);
        return path(name);
    }

    Outcome teach(const std::string& picture, const std::string& region) const {
        return run({picture, "--teach-part", region, "-o", path("out")});
    }

    Outcome find(const std::string& picture, const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{picture, "--find", path("out/lesson.part"), "-o", path("out")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(arguments);
    }
};

TEST_F(PartsProgram, FindsWhatItWasTaughtAndTellsItInEveryReport) {
    const scenes::PartPicture lesson = scenes::renderPartAlone(scenes::PartKind::bracket);
    const Outcome taught = teach(write("lesson.png", lesson.image), "5,5,150,150");
    EXPECT_EQ(taught.exitCode, 0) << taught.errors;
    EXPECT_THAT(taught.output, HasSubstr("Part taught: model written to " + path("out/lesson.part")));
    EXPECT_THAT(taught.output, HasSubstr("levels of the pyramid"));
    EXPECT_THAT(taught.output, HasSubstr("looks different at every angle"));
    EXPECT_FALSE(cv::imread(path("out/lesson-model.png")).empty());
    const Json::Value model = report()["images"][0]["taughtPart"];
    EXPECT_EQ(model["status"].asString(), "ok");
    EXPECT_EQ(model["symmetry"].asInt(), 1);

    scenes::PartSceneSettings settings;
    settings.kind = scenes::PartKind::bracket;
    settings.count = 3;
    const scenes::PartScene scene = scenes::renderParts(settings);
    const Outcome outcome = find(write("scene.png", scene.image), {"--max-parts", "5"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr("Parts: 3 found"));
    EXPECT_FALSE(cv::imread(path("out/scene-parts.png")).empty());
    EXPECT_THAT(textOf(path("out/report.html")), HasSubstr("<h3>Parts</h3>"));

    const Json::Value parts = report()["images"][0]["parts"];
    EXPECT_EQ(parts["status"].asString(), "ok");
    ASSERT_EQ(parts["found"].size(), 3U);
    const orx::TPartPose origin{lesson.pose.x, lesson.pose.y, lesson.pose.angle, 1};
    const orx::TPartPose reference{model["pose"]["x"].asDouble(), model["pose"]["y"].asDouble(), 0, 1};
    for (const scenes::PlacedPart& part : scene.parts) {
        const orx::TPartPose truth{part.pose.x, part.pose.y, part.pose.angle, part.pose.scale};
        const orx::TPartPose expected = composePoses(truth, composePoses(invertPose(origin), reference));
        int there = 0;
        for (const Json::Value& found : parts["found"]) {
            const bool isNear = std::abs(found["x"].asDouble() - expected.x) < 0.03 &&
                                std::abs(found["y"].asDouble() - expected.y) < 0.03;
            if (!isNear) continue;
            ++there;
            EXPECT_NEAR(std::remainder(found["angle"].asDouble() - expected.angle, 360), 0, 0.05);
            EXPECT_GT(found["score"].asDouble(), 0.9);
            EXPECT_GT(found["deviations"]["x"].asDouble(), 0.0005);
            EXPECT_LT(found["deviations"]["x"].asDouble(), 0.02);
            EXPECT_FALSE(found["reversed"].asBool());
        }
        EXPECT_EQ(there, 1) << expected.x << ", " << expected.y;
    }
}

TEST_F(PartsProgram, APartThatIsNotThereIsAnAnswer) {
    const scenes::PartPicture lesson = scenes::renderPartAlone(scenes::PartKind::bracket);
    ASSERT_EQ(teach(write("lesson.png", lesson.image), "5,5,150,150").exitCode, 0);
    const Outcome outcome = find(writeDisk("disk.png"));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr("Parts: 0 found"));
    EXPECT_EQ(report()["images"][0]["parts"]["found"].size(), 0U);

    const cv::Mat reversed = 255 - lesson.image;
    const std::string picture = write("reversed.png", reversed);
    EXPECT_THAT(find(picture).output, HasSubstr("Parts: 0 found"));
    const Outcome either = find(picture, {"--part-polarity", "either"});
    EXPECT_THAT(either.output, HasSubstr("Parts: 1 found"));
    EXPECT_TRUE(report()["images"][0]["parts"]["found"][0]["reversed"].asBool());
}

TEST_F(PartsProgram, SaysWhyNothingCanBeTaughtOrFound) {
    const Outcome empty = teach(writeDisk("disk.png"), "0,0,20,20");
    EXPECT_EQ(empty.exitCode, 1);
    EXPECT_THAT(empty.errors, HasSubstr("the part can't be taught"));
    EXPECT_FALSE(fs::exists(path("out/disk.part")));
    EXPECT_THAT(teach(path("disk.png"), "100,100,300,300").errors, HasSubstr("the part can't be taught"));

    const Outcome missing = find(path("disk.png"));
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.errors, HasSubstr("lesson.part can't be used"));
    fs::copy(path("disk.png"), path("out/lesson.part"));
    EXPECT_THAT(find(path("disk.png")).errors, HasSubstr("lesson.part can't be used"));
}

TEST_F(PartsProgram, ARenderedTrayIsComparedWithItsTruth) {
    const Outcome outcome = run({"--synthetic-parts", "3", "-o", path("out")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr("20 of 20 found, 0 missed, 0 false"));
    const Json::Value truth = report()["images"][0]["parts"]["truth"];
    ASSERT_EQ(truth.size(), 20U);
    for (const Json::Value& part : truth) {
        EXPECT_LT(std::hypot(part["xError"].asDouble(), part["yError"].asDouble()), 0.06);
        EXPECT_LT(std::abs(part["angleError"].asDouble()), 0.1);
    }
    for (const char* file : {"parts-3.png", "parts-3-parts.png"})
        EXPECT_FALSE(cv::imread(path(std::string("out/") + file)).empty()) << file;
}

}  // namespace
