#include "inspection/measure/measurement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <tuple>

#include "inspection/measure/methods.h"
#include "inspection/measure/truth_check.h"
#include "support/synthetic_scene.h"

namespace {

using inspection::Feature;
using inspection::Settings;
using inspection::Shape;

std::vector<Feature> measureAll(const cv::Mat& grey, const Settings& settings) {
    std::string problem;
    const auto prepared = inspection::prepare(grey, settings, problem);
    EXPECT_TRUE(prepared) << problem;
    return prepared ? inspection::measure(grey, *prepared, settings) : std::vector<Feature>();
}

cv::Mat paintDisk(const scenes::Disk& disk, double ground, double level, cv::Size size = {200, 160}) {
    cv::Mat ideal(size, CV_32F, cv::Scalar(ground));
    scenes::paint(ideal, disk, level);
    return scenes::expose(ideal, {0.0, 0.8, 1.0, 3});
}

class SceneAccuracy : public testing::TestWithParam<std::tuple<int, std::string>> {};

TEST_P(SceneAccuracy, EveryPartIsFoundWithinAFewHundredthsOfAPixel) {
    scenes::SceneSettings scene;
    scene.seed = static_cast<std::uint64_t>(std::get<0>(GetParam()));
    Settings settings;
    settings.method = std::get<1>(GetParam());
    const scenes::Scene rendered = scenes::renderScene(scene);
    const auto features = measureAll(rendered.image, settings);
    EXPECT_EQ(features.size(), rendered.disks.size() + rendered.bars.size());
    const auto errors = inspection::compareWithTruth(features, rendered);
    ASSERT_EQ(errors.size(), features.size());
    for (const auto& error : errors) {
        ASSERT_GE(error.feature, 0) << "missed at " << error.center;
        EXPECT_LT(error.centerError, 0.06);
        EXPECT_LT(std::abs(error.radiusError), 0.06);
        EXPECT_LT(std::abs(error.angleError), 0.1);
        EXPECT_LT(error.offsetError, 0.06);
        EXPECT_LT(std::abs(error.widthError), 0.08);
    }
}

INSTANTIATE_TEST_SUITE_P(Scenes, SceneAccuracy,
                         testing::Values(std::tuple(1, "otsu"), std::tuple(2, "otsu"),
                                         std::tuple(3, "iterative"), std::tuple(4, "isodata")));

// Parts are not ideal: what is drawn on a coin comes near its edge.
TEST(Measurement, StatedUncertaintiesAreThoseOfTheErrors) {
    using inspection::EllipseEstimator;
    for (const auto estimator :
         {EllipseEstimator::kNone, EllipseEstimator::kNorm, EllipseEstimator::kRansac}) {
        double squares[3] = {0.0, 0.0, 0.0};
        int counts[3] = {0, 0, 0};
        const auto add = [&](int kind, double error, double deviation) {
            ASSERT_GT(deviation, 0.0);
            squares[kind] += std::pow(error / deviation, 2);
            ++counts[kind];
        };
        for (const std::uint64_t seed : {5U, 6U, 7U}) {
            scenes::SceneSettings scene;
            scene.seed = seed;
            const scenes::Scene rendered = scenes::renderScene(scene);
            Settings settings;
            settings.ellipse = estimator;
            const auto features = measureAll(rendered.image, settings);
            for (const auto& error : inspection::compareWithTruth(features, rendered)) {
                ASSERT_GE(error.feature, 0);
                const auto& found = features[static_cast<std::size_t>(error.feature)].deviations;
                if (error.shape == Shape::kCircle) {
                    add(0, error.centerError, std::hypot(found.x, found.y));
                    add(1, error.radiusError, found.radius);
                    EXPECT_EQ(found.angle > 0.0, estimator != EllipseEstimator::kNone);
                } else {
                    add(2, error.angleError, found.angle);
                    EXPECT_GT(found.offset, 0.0);
                    EXPECT_GT(found.width, found.offset);
                }
            }
        }
        for (int kind = 0; kind < 3; ++kind) {
            const double ratio = std::sqrt(squares[kind] / counts[kind]);
            EXPECT_GT(ratio, 0.7) << kind;
            EXPECT_LT(ratio, 1.8) << kind;
        }
    }
}

TEST(Measurement, DarkObjectsAreFoundAsWellAsBrightOnes) {
    const scenes::Disk disk{{90.3, 71.6}, 33.4};
    for (const auto& [ground, level] : {std::pair(40.0, 180.0), std::pair(200.0, 60.0)}) {
        for (const auto polarity :
             {inspection::Polarity::kAuto,
              level > ground ? inspection::Polarity::kBright : inspection::Polarity::kDark}) {
            Settings settings;
            settings.polarity = polarity;
            const auto features = measureAll(paintDisk(disk, ground, level), settings);
            ASSERT_EQ(features.size(), 1U);
            EXPECT_NEAR(features[0].center.x, disk.center.x, 0.03);
            EXPECT_NEAR(features[0].center.y, disk.center.y, 0.03);
            EXPECT_NEAR(features[0].radius, disk.radius, 0.03);
            EXPECT_GT(features[0].inlierRatio, 0.99);
            EXPECT_LT(features[0].meanResidual, 0.1);
            EXPECT_FALSE(features[0].weak);
        }
    }
}

TEST(Measurement, WithoutSubPixelEdgesTheRadiusIsStillRightToAFractionOfAPixel) {
    const scenes::Disk disk{{90.3, 71.6}, 33.4};
    Settings settings;
    settings.subPixel = false;
    const auto features = measureAll(paintDisk(disk, 40.0, 180.0), settings);
    ASSERT_EQ(features.size(), 1U);
    EXPECT_NEAR(features[0].radius, disk.radius, 0.25);
    EXPECT_GT(std::abs(features[0].radius - disk.radius), 0.0);
}

TEST(Measurement, ADentDoesNotPullTheCircle) {
    cv::Mat ideal(200, 200, CV_32F, cv::Scalar(40.0));
    const scenes::Disk disk{{100.2, 99.7}, 50.0};
    scenes::paint(ideal, disk, 180.0);
    scenes::paint(ideal, scenes::Disk{{150.0, 99.7}, 18.0}, 40.0);
    const auto features = measureAll(scenes::expose(ideal, {0.0, 0.8, 1.0, 3}), Settings());
    ASSERT_EQ(features.size(), 1U);
    EXPECT_NEAR(features[0].center.x, disk.center.x, 0.08);
    EXPECT_NEAR(features[0].radius, disk.radius, 0.08);
    // The bite of radius 18 takes about 36 of 314 pixels off the circle and adds its own outline.
    EXPECT_LT(features[0].inlierRatio, 0.92);
    EXPECT_GT(features[0].inlierRatio, 0.75);
    EXPECT_GT(features[0].meanResidual, 4.0 * features[0].inlierResidual);
}

TEST(Measurement, FarCornersOfALargePictureMeasureAsTheOrigin) {
    const scenes::Disk disk{{5200.4, 3900.7}, 900.25};
    cv::Mat ideal(4900, 6200, CV_32F, cv::Scalar(40.0));
    scenes::paint(ideal, disk, 180.0);
    cv::Mat grey;
    ideal.convertTo(grey, CV_8U);
    const auto features = measureAll(grey, Settings());
    ASSERT_EQ(features.size(), 1U);
    EXPECT_NEAR(features[0].center.x, disk.center.x, 0.05);
    EXPECT_NEAR(features[0].center.y, disk.center.y, 0.05);
    EXPECT_NEAR(features[0].radius, disk.radius, 0.05);
}

TEST(Measurement, PixelsOnTheBorderAreNotTakenForEdges) {
    const scenes::Disk disk{{-10.0, 80.0}, 60.0};
    const auto features = measureAll(paintDisk(disk, 40.0, 180.0), Settings());
    ASSERT_EQ(features.size(), 1U);
    EXPECT_NEAR(features[0].center.x, disk.center.x, 0.5);
    EXPECT_NEAR(features[0].radius, disk.radius, 0.5);
    EXPECT_GT(features[0].inlierRatio, 0.95);
}

TEST(Measurement, ShapeAndAreaOptionsDecideWhatIsReported) {
    cv::Mat ideal(160, 240, CV_32F, cv::Scalar(40.0));
    scenes::paint(ideal, scenes::Bar{{60.0, 80.0}, 30.0, 90.0, 30.0}, 180.0);
    scenes::paint(ideal, scenes::Disk{{180.0, 80.0}, 30.0}, 180.0);
    scenes::paint(ideal, scenes::Disk{{180.0, 20.0}, 5.0}, 180.0);  // area 79
    const cv::Mat grey = scenes::expose(ideal, {0.0, 0.8, 1.0, 3});
    const auto shapes = [&](Settings settings) {
        std::vector<Shape> found;
        for (const auto& feature : measureAll(grey, settings)) found.push_back(feature.shape);
        return found;
    };
    Settings settings;
    EXPECT_EQ(shapes(settings), (std::vector<Shape>{Shape::kLine, Shape::kCircle}));
    settings.shape = inspection::ShapeChoice::kCircle;
    EXPECT_EQ(shapes(settings), (std::vector<Shape>{Shape::kCircle, Shape::kCircle}));
    settings.shape = inspection::ShapeChoice::kLine;
    EXPECT_EQ(shapes(settings), (std::vector<Shape>{Shape::kLine, Shape::kLine}));
    settings.minArea = 20;
    EXPECT_EQ(shapes(settings).size(), 3U);
}

TEST(Measurement, ABadFitIsMarkedWeak) {
    cv::Mat ideal(200, 200, CV_32F, cv::Scalar(40.0));
    scenes::paint(ideal, scenes::Bar{{100.0, 100.0}, 0.0, 90.0, 85.0}, 180.0);  // nearly a square: not round
    Settings settings;
    settings.minInliers = 0.9;
    const auto features = measureAll(scenes::expose(ideal, {0.0, 0.8, 1.0, 3}), settings);
    ASSERT_EQ(features.size(), 1U);
    EXPECT_TRUE(features[0].weak);
    EXPECT_LT(features[0].inlierRatio, 0.9);
}

TEST(Measurement, FlatteningRescuesObjectsThatUnevenLightSwallows) {
    // The light falls so far that the tray at the left is brighter than the disks at the right.
    cv::Mat ideal(240, 720, CV_32F, cv::Scalar(110.0));
    std::vector<scenes::Disk> disks;
    for (int i = 0; i < 6; ++i) disks.push_back({{60.3 + 119.7 * i, 119.6}, 35.0});
    for (const auto& disk : disks) scenes::paint(ideal, disk, 200.0);
    const cv::Mat grey = scenes::expose(ideal, {0.75, 0.8, 1.0, 3});
    Settings settings;
    settings.polarity = inspection::Polarity::kBright;
    const auto count = [&](const std::vector<Feature>& features) {
        int good = 0;
        for (const auto& disk : disks)
            for (const auto& feature : features)
                good += cv::norm(feature.center - disk.center) < 0.3 && std::abs(feature.radius - 35.0) < 0.3
                            ? 1
                            : 0;
        return good;
    };
    EXPECT_LT(count(measureAll(grey, settings)), 6);
    settings.background = 121;
    EXPECT_EQ(count(measureAll(grey, settings)), 6);
}

TEST(Measurement, EqualSeedsGiveEqualResults) {
    const scenes::Scene scene = scenes::renderScene({{500, 400}, 9});
    Settings settings;
    settings.trials = 5;
    const auto first = measureAll(scene.image, settings);
    const auto again = measureAll(scene.image, settings);
    ASSERT_EQ(first.size(), again.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(first[i].center, again[i].center);
        EXPECT_EQ(first[i].radius, again[i].radius);
        EXPECT_EQ(first[i].meanResidual, again[i].meanResidual);
    }
}

TEST(Measurement, PicturesWithoutObjectsOrSmallerThanAWindowAreHarmless) {
    std::string problem;
    Settings settings;
    settings.background = 301;
    settings.close = 31;
    for (const cv::Size size :
         {cv::Size(1, 1), cv::Size(2, 1), cv::Size(1, 40), cv::Size(3, 3), cv::Size(40, 30)}) {
        for (const double level : {0.0, 128.0, 255.0}) {
            const cv::Mat grey(size, CV_8U, cv::Scalar(level));
            for (const std::string& method : inspection::methodNames()) {
                settings.method = method;
                const auto prepared = inspection::prepare(grey, settings, problem);
                if (prepared) {
                    EXPECT_LE(inspection::measure(grey, *prepared, settings).size(), 1U);
                } else {
                    EXPECT_NE(problem.find(method), std::string::npos);
                }
            }
        }
    }
}

TEST(Measurement, MethodNamesChooseElevenDifferentMethods) {
    std::vector<int> methods;
    for (const std::string& name : inspection::methodNames())
        methods.push_back(inspection::methodByName(name));
    EXPECT_EQ(methods, (std::vector<int>{0, 1, 2, 3, 4, 5, 7, 8, 9, 10, 11}));
    EXPECT_EQ(inspection::methodByName("max-entropy"), orx::tmMaxEntropy);
}

}  // namespace
