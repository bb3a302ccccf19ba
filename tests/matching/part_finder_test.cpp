#include "orxFunctions/matching/part_finder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

#include "found_parts.h"

namespace {

using found_parts::errorOf;
using found_parts::taught;
using orx::findParts;
using orx::TFindOptions;
using orx::TFindResult;
using orx::TFoundPart;
using scenes::PartKind;

scenes::PartSceneSettings crowded(PartKind kind) {
    scenes::PartSceneSettings settings;
    settings.kind = kind;
    settings.count = 4;
    settings.otherParts = 3;
    settings.clutter = 8;
    settings.seed = 11;
    return settings;
}

// How many of the parts of a scene are found within a hundredth of a pixel or a few; whatever else is found
// is counted in `others`.
int countFound(const TFindResult& result, const scenes::PartScene& scene, int& others) {
    int found = 0;
    for (const scenes::PlacedPart& truth : scene.parts) {
        found += std::any_of(result.parts.begin(), result.parts.end(), [&](const TFoundPart& part) {
            const found_parts::PoseError error = errorOf(part.pose, truth);
            return std::hypot(error.x, error.y) < 0.1 && std::abs(error.angle) < 0.3;
        });
    }
    others = static_cast<int>(result.parts.size()) - found;
    return found;
}

TEST(PartFinder, FindsPartsInACrowd) {
    for (const PartKind kind : scenes::kFiveParts) {
        SCOPED_TRACE(scenes::partName(kind));
        const scenes::PartScene scene = scenes::renderParts(crowded(kind));
        TFindOptions options;
        options.maxParts = 10;
        const TFindResult result = findParts(scene.image, taught(kind), options);
        ASSERT_TRUE(result.valid());
        int others = 0;
        EXPECT_EQ(countFound(result, scene, others), static_cast<int>(scene.parts.size()));
        EXPECT_EQ(others, 0);
        for (std::size_t i = 1; i < result.parts.size(); ++i) {
            EXPECT_LE(result.parts[i].score, result.parts[i - 1].score);
        }
    }
}

TEST(PartFinder, TheBestComeFirstAndNoMoreThanAskedFor) {
    const scenes::PartScene scene = scenes::renderParts(crowded(PartKind::gear));
    const orx::TPartModel model = taught(PartKind::gear);
    TFindOptions options;
    options.maxParts = 10;
    const TFindResult all = findParts(scene.image, model, options);
    ASSERT_GT(all.parts.size(), 2U);
    options.maxParts = 2;
    const TFindResult two = findParts(scene.image, model, options);
    ASSERT_EQ(two.parts.size(), 2U);
    EXPECT_NEAR(two.parts[0].score, all.parts[0].score, 0.02);
    options.minScore = 1;
    options.maxParts = 10;
    for (const TFoundPart& part : findParts(scene.image, model, options).parts) EXPECT_EQ(part.score, 1);
}

TEST(PartFinder, NothingIsFoundWhereThePartIsNot) {
    scenes::PartSceneSettings settings;
    settings.count = 0;
    settings.otherParts = 4;
    settings.clutter = 25;
    const scenes::PartScene scene = scenes::renderParts(settings);  // without plates
    const TFindResult absent = findParts(scene.image, taught(PartKind::plate));
    EXPECT_TRUE(absent.valid());
    EXPECT_TRUE(absent.parts.empty());
    const TFindResult blank = findParts(cv::Mat(200, 200, CV_8UC1, cv::Scalar(7)), taught(PartKind::plate));
    EXPECT_TRUE(blank.valid());
    EXPECT_TRUE(blank.parts.empty());
    // Smaller than the part, down to a single pixel.
    for (const int side : {1, 2, 7, 30}) {
        const TFindResult small =
            findParts(cv::Mat(side, side, CV_8UC1, cv::Scalar(7)), taught(PartKind::plate));
        EXPECT_TRUE(small.valid());
        EXPECT_TRUE(small.parts.empty());
    }
}

TEST(PartFinder, APictureTooSmallForThePartHoldsNone) {
    const scenes::PartPicture alone = scenes::renderPartAlone(PartKind::bracket, 1);
    const cv::Rect middle(alone.image.cols / 2, alone.image.rows / 2, 1, 1);
    TFindOptions options;
    options.minScore = 0.9;
    for (const int margin : {0, 1, 8, 15}) {
        const cv::Rect part(middle.x - margin, middle.y - margin, 2 * margin + 1, 2 * margin + 1);
        const TFindResult result = findParts(alone.image(part), taught(PartKind::bracket), options);
        EXPECT_TRUE(result.valid()) << margin;
        EXPECT_TRUE(result.parts.empty()) << margin;
    }
}

TEST(PartFinder, ThreadsChangeNothing) {
    const scenes::PartScene scene = scenes::renderParts(crowded(PartKind::key));
    const orx::TPartModel model = taught(PartKind::key);
    TFindOptions options;
    options.maxParts = 10;
    const int before = cv::getNumThreads();
    cv::setNumThreads(1);
    const TFindResult one = findParts(scene.image, model, options);
    cv::setNumThreads(4);
    const TFindResult four = findParts(scene.image, model, options);
    cv::setNumThreads(before);
    ASSERT_EQ(one.parts.size(), four.parts.size());
    ASSERT_FALSE(one.parts.empty());
    for (std::size_t i = 0; i < one.parts.size(); ++i) {
        const TFoundPart& a = one.parts[i];
        const TFoundPart& b = four.parts[i];
        EXPECT_EQ(a.pose.x, b.pose.x);
        EXPECT_EQ(a.pose.y, b.pose.y);
        EXPECT_EQ(a.pose.angle, b.pose.angle);
        EXPECT_EQ(a.score, b.score);
        EXPECT_EQ(a.covariance, b.covariance);
        EXPECT_EQ(a.seen, b.seen);
    }
}

TEST(PartFinder, PicturesMayBeDeepOrColoured) {
    const scenes::PartScene scene = scenes::renderParts(crowded(PartKind::bracket));
    const orx::TPartModel model = taught(PartKind::bracket);
    TFindOptions options;
    options.maxParts = 4;
    const TFindResult grey = findParts(scene.image, model, options);
    ASSERT_EQ(grey.parts.size(), 4U);
    cv::Mat deep;
    scene.image.convertTo(deep, CV_16U, 257);
    cv::Mat colour;
    cv::cvtColor(scene.image, colour, cv::COLOR_GRAY2BGR);
    cv::Mat framed(scene.image.rows + 9, scene.image.cols + 13, CV_8UC1, cv::Scalar(255));
    cv::Mat window = framed(cv::Rect(5, 3, scene.image.cols, scene.image.rows));
    scene.image.copyTo(window);
    for (const cv::Mat& image : {deep, colour, window}) {
        const TFindResult result = findParts(image, model, options);
        ASSERT_EQ(result.parts.size(), grey.parts.size());
        for (std::size_t i = 0; i < grey.parts.size(); ++i) {
            EXPECT_EQ(result.parts[i].pose.x, grey.parts[i].pose.x);
            EXPECT_EQ(result.parts[i].pose.angle, grey.parts[i].pose.angle);
        }
    }
}

TEST(PartFinder, SymmetricPartsAreToldOnceAndInTheirRange) {
    scenes::PartSceneSettings settings;
    settings.kind = PartKind::gear;  // looks the same after a twelfth of a turn
    settings.count = 3;
    const scenes::PartScene scene = scenes::renderParts(settings);
    const orx::TPartModel model = taught(PartKind::gear);
    TFindOptions options;
    options.maxParts = 20;
    for (const double start : {0.0, -15.0, 400.0}) {
        options.startAngle = start;
        const TFindResult result = findParts(scene.image, model, options);
        int others = 0;
        EXPECT_EQ(countFound(result, scene, others), 3);
        EXPECT_EQ(others, 0);
        for (const TFoundPart& part : result.parts) {
            EXPECT_GE(part.pose.angle, start);
            EXPECT_LT(part.pose.angle, start + 30);
        }
    }
}

TEST(PartFinder, AnglesPlacesAndScalesStayInTheirRanges) {
    scenes::PartSceneSettings settings;
    settings.kind = PartKind::bracket;
    settings.seed = 3;
    const scenes::PartScene scene = scenes::renderParts(settings);
    const scenes::ScenePose truth = scene.parts.at(0).pose;
    const orx::TPartModel model = taught(PartKind::bracket);
    const auto finds = [&](const TFindOptions& options) {
        const TFindResult result = findParts(scene.image, model, options);
        EXPECT_TRUE(result.valid());
        return !result.parts.empty();
    };
    TFindOptions options;
    options.angleRange = 40;
    options.startAngle = truth.angle - 20;
    EXPECT_TRUE(finds(options));
    EXPECT_GE(findParts(scene.image, model, options).parts.at(0).pose.angle, options.startAngle);
    options.startAngle = truth.angle + 20;
    EXPECT_FALSE(finds(options));
    options.startAngle = truth.angle + 360;
    options.angleRange = 0;
    EXPECT_TRUE(finds(options));

    options = {};
    options.region = {static_cast<int>(truth.x) - 15, static_cast<int>(truth.y) - 15, 30, 30};
    EXPECT_TRUE(finds(options));
    options.region.x = options.region.x > 320 ? options.region.x - 40 : options.region.x + 40;
    EXPECT_FALSE(finds(options));

    options = {};
    options.minScale = 0.8;
    options.maxScale = 1.2;
    const TFindResult scaled = findParts(scene.image, model, options);
    ASSERT_EQ(scaled.parts.size(), 1U);
    EXPECT_NEAR(scaled.parts[0].pose.scale, 1, 5e-4);
    options.maxScale = 0.9;
    EXPECT_FALSE(finds(options));
}

TEST(PartFinder, ReversedPartsAreFoundWhereTheyMayBe) {
    scenes::PartSceneSettings settings;
    settings.kind = PartKind::key;
    settings.ground = 180;
    settings.contrast = -100;
    const scenes::PartScene scene = scenes::renderParts(settings);
    const orx::TPartModel model = taught(PartKind::key);
    TFindOptions options;
    EXPECT_TRUE(findParts(scene.image, model, options).parts.empty());
    for (const orx::TPartPolarity polarity : {orx::ppReversed, orx::ppEither}) {
        options.polarity = polarity;
        const TFindResult result = findParts(scene.image, model, options);
        ASSERT_EQ(result.parts.size(), 1U);
        EXPECT_TRUE(result.parts[0].reversed);
        EXPECT_LT(std::abs(errorOf(result.parts[0].pose, scene.parts[0]).x), 0.02);
    }
}

TEST(PartFinder, PartsMayCoverOneAnotherAsFarAsAllowed) {
    // Two gears of which the second lies over a third of the first.
    const scenes::PartPicture gear = scenes::renderPartAlone(PartKind::gear);
    cv::Mat image(220, 260, CV_8UC1, cv::Scalar(80));
    const cv::Size size = gear.image.size();
    gear.image.copyTo(image(cv::Rect({10, 20}, size)));
    cv::Mat over = image(cv::Rect({75, 20}, size));
    cv::max(over, gear.image, over);
    const orx::TPartModel model = taught(PartKind::gear);
    TFindOptions options;
    options.maxParts = 5;
    options.minScore = 0.4;
    EXPECT_EQ(findParts(image, model, options).parts.size(), 2U);
    options.maxOverlap = 0.1;
    EXPECT_EQ(findParts(image, model, options).parts.size(), 1U);
}

TEST(PartFinder, RefusesWhatItCanNotSearch) {
    const orx::TPartModel model = taught(PartKind::plate);
    const cv::Mat image(200, 220, CV_8UC1, cv::Scalar(80));
    const auto statusOf = [&](const cv::Mat& img, const orx::TPartModel& part, const TFindOptions& options) {
        const TFindResult result = findParts(img, part, options);
        EXPECT_EQ(result.valid(), result.status == orx::msOk);
        EXPECT_TRUE(result.parts.empty());
        return result.status;
    };
    EXPECT_EQ(statusOf(image, model, {}), orx::msOk);
    EXPECT_EQ(statusOf(image, orx::TPartModel(), {}), orx::msBadModel);
    EXPECT_EQ(statusOf(cv::Mat(), model, {}), orx::msBadImage);
    EXPECT_EQ(statusOf(cv::Mat(20, 20, CV_32FC1), model, {}), orx::msBadImage);
    EXPECT_EQ(statusOf(cv::Mat(20, 20, CV_8SC1), model, {}), orx::msBadImage);
    EXPECT_EQ(statusOf(cv::Mat(20, 20, CV_8UC(5)), model, {}), orx::msBadImage);

    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    const std::vector<std::function<void(TFindOptions&)>> bad = {
        [&](TFindOptions& o) { o.startAngle = nan; },
        [&](TFindOptions& o) { o.startAngle = infinite; },
        [&](TFindOptions& o) { o.angleRange = -1; },
        [&](TFindOptions& o) { o.angleRange = 361; },
        [&](TFindOptions& o) { o.angleRange = nan; },
        [&](TFindOptions& o) { o.minScale = 0.1; },
        [&](TFindOptions& o) { o.minScale = nan; },
        [&](TFindOptions& o) { o.maxScale = 5.1; },
        [&](TFindOptions& o) { o.maxScale = 0.9; },
        [&](TFindOptions& o) { o.maxScale = nan; },
        [&](TFindOptions& o) { o.polarity = static_cast<orx::TPartPolarity>(3); },
        [&](TFindOptions& o) { o.polarity = static_cast<orx::TPartPolarity>(-1); },
        [&](TFindOptions& o) { o.minScore = 0.05; },
        [&](TFindOptions& o) { o.minScore = 1.01; },
        [&](TFindOptions& o) { o.minScore = nan; },
        [&](TFindOptions& o) { o.maxParts = 0; },
        [&](TFindOptions& o) { o.maxParts = 10001; },
        [&](TFindOptions& o) { o.maxOverlap = -0.1; },
        [&](TFindOptions& o) { o.maxOverlap = nan; },
        [&](TFindOptions& o) { o.greediness = 1.1; },
        [&](TFindOptions& o) { o.greediness = nan; },
        [&](TFindOptions& o) { o.minContrast = 256; },
        [&](TFindOptions& o) { o.minContrast = nan; },
        [&](TFindOptions& o) { o.noise = -1; },
        [&](TFindOptions& o) { o.noise = nan; }};
    for (std::size_t i = 0; i < bad.size(); ++i) {
        TFindOptions options;
        bad[i](options);
        EXPECT_EQ(statusOf(image, model, options), orx::msBadOptions) << i;
    }
    const int most = std::numeric_limits<int>::max();
    for (const cv::Rect& region :
         {cv::Rect(0, 0, 0, 5), cv::Rect(0, 0, -3, -3), cv::Rect(-1, 0, 10, 10), cv::Rect(0, 0, 221, 10),
          cv::Rect(0, 195, 10, 6), cv::Rect(most, most, most, most), cv::Rect(5, 5, most, 3)}) {
        TFindOptions options;
        options.region = region;
        EXPECT_EQ(statusOf(image, model, options), orx::msBadRegion) << region;
    }
}

}  // namespace
