#include "support/part_scene.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "support/synthetic_scene.h"

namespace {

using namespace scenes;
using testing::AllOf;
using testing::Each;
using testing::Field;
using testing::SizeIs;

cv::Mat blank() { return {80, 90, CV_32F, cv::Scalar(0)}; }

double largestDifference(const cv::Mat& a, const cv::Mat& b) { return cv::norm(a, b, cv::NORM_INF); }

Loop circle(cv::Point2d center, double radius) {
    Loop loop;
    for (int i = 0; i < 1440; ++i) {
        const double angle = 2 * CV_PI * i / 1440;
        loop.push_back(center + radius * cv::Point2d(std::cos(angle), std::sin(angle)));
    }
    return loop;
}

TEST(PolygonCoverage, IsThatOfDisksAndBarsOfKnownArea) {
    cv::Mat polygon = blank();
    cv::Mat exact = blank();
    paint(polygon, {circle({40.3, 35.8}, 20)}, 1);
    paint(exact, Disk{{40.3, 35.8}, 20}, 1);
    EXPECT_LT(largestDifference(polygon, exact), 1e-4);

    polygon = blank();
    exact = blank();
    const Bar bar{{44.5, 37.25}, 0, 30.5, 7.75};
    paint(polygon, {{{29.25, 33.375}, {59.75, 33.375}, {59.75, 41.125}, {29.25, 41.125}}}, 1);
    paint(exact, bar, 1);
    EXPECT_LT(largestDifference(polygon, exact), 1e-6);
}

TEST(PolygonCoverage, LeavesHolesAndCutsAtTheBorder) {
    Loop hole = circle({40, 40}, 9);
    std::reverse(hole.begin(), hole.end());
    cv::Mat ring = blank();
    paint(ring, {circle({40, 40}, 20), hole}, 1);
    EXPECT_EQ(ring.at<float>(40, 40), 0);
    EXPECT_NEAR(cv::sum(ring)[0], CV_PI * (400 - 81), 0.05);

    for (const cv::Point2d center : {cv::Point2d(-3, 40), cv::Point2d(92, 40), cv::Point2d(45, -4.3),
                                     cv::Point2d(45, 85.1), cv::Point2d(-300, 40)}) {
        cv::Mat polygon = blank();
        cv::Mat exact = blank();
        paint(polygon, {circle(center, 20)}, 1);
        paint(exact, Disk{center, 20}, 1);
        EXPECT_LT(largestDifference(polygon, exact), 1e-4) << center;
    }
}

TEST(PartShapes, FillTheirCircleAndLookTheSameAsOftenAsTheySay) {
    for (const PartKind kind : {PartKind::plate, PartKind::gear, PartKind::bracket, PartKind::key,
                                PartKind::notchedRing, PartKind::keyedGear}) {
        const PartShape& shape = partShape(kind);
        double radius = 0;
        for (const cv::Point2d& p : shape.loops.front()) radius = std::max(radius, cv::norm(p));
        EXPECT_NEAR(radius, kPartRadius, 2) << partName(kind);
        const auto rendered = [&](double angle) {
            cv::Mat image(130, 130, CV_32F, cv::Scalar(0));
            std::vector<Loop> loops = shape.loops;
            for (Loop& loop : loops)
                for (cv::Point2d& p : loop) p = placed({64.6, 65.2, angle, 1}, p);
            paint(image, loops, 1);
            return image;
        };
        EXPECT_LT(largestDifference(rendered(0), rendered(360.0 / shape.symmetry)), 1e-4) << partName(kind);
        for (int turn = 2; turn <= 24; ++turn) {
            if (shape.symmetry % turn == 0) continue;
            EXPECT_GT(largestDifference(rendered(0), rendered(360.0 / turn)), 0.5)
                << partName(kind) << ", 1/" << turn;
        }
    }
}

// The centroid of a part's area, in the picture and by the pose.
TEST(PartScene, HasItsPartWhereItSays) {
    PartSceneSettings settings;
    settings.noiseSigma = 0;
    for (const PartKind kind : kFiveParts) {
        settings.kind = kind;
        for (const std::uint64_t seed : {1, 2, 3}) {
            settings.seed = seed;
            const PartScene scene = renderParts(settings);
            ASSERT_THAT(scene.parts, SizeIs(1));
            cv::Point2d sum;
            double area = 0;
            for (const Loop& loop : partShape(kind).loops) {
                for (std::size_t i = 0; i < loop.size(); ++i) {
                    const cv::Point2d a = loop[i];
                    const cv::Point2d b = loop[(i + 1) % loop.size()];
                    const double twice = a.x * b.y - a.y * b.x;
                    area += twice / 2;
                    sum += (a + b) * (twice / 6);
                }
            }
            const cv::Point2d centroid = placed(scene.parts[0].pose, sum / area);
            const cv::Moments moments = cv::moments(scene.image - settings.ground);
            EXPECT_NEAR(moments.m00 / (100 * std::abs(area)), 1, 3e-4) << partName(kind);
            EXPECT_NEAR(moments.m10 / moments.m00, centroid.x, 0.005) << partName(kind);
            EXPECT_NEAR(moments.m01 / moments.m00, centroid.y, 0.005) << partName(kind);
        }
    }
}

TEST(PartScene, HidesAndCutsTheShareAskedForAndKeepsPartsApart) {
    PartSceneSettings settings;
    settings.count = 5;
    settings.minScale = 0.9;
    settings.maxScale = 1.1;
    for (const PartKind kind : kFiveParts) {
        settings.kind = kind;
        settings.hidden = 0.4;
        const PartScene scene = renderParts(settings);
        EXPECT_THAT(scene.parts,
                    AllOf(SizeIs(5), Each(Field(&PlacedPart::hidden, testing::DoubleNear(0.4, 0.02)))));
        for (std::size_t i = 0; i < scene.parts.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                const ScenePose& a = scene.parts[i].pose;
                const ScenePose& b = scene.parts[j].pose;
                EXPECT_GT(std::hypot(a.x - b.x, a.y - b.y), kPartRadius * (a.scale + b.scale));
            }
        }
        settings.hidden = 0;
        settings.cut = 0.3;
        EXPECT_NEAR(renderParts(settings).parts[0].hidden, 0.3, 0.02);
        settings.cut = 0;
    }
}

TEST(PartScene, IsTheSameForTheSameSeedAndAnotherForAnother) {
    PartSceneSettings settings;
    settings.clutter = 30;
    settings.threads = 10;
    settings.texture = 8;
    settings.otherParts = 2;
    const PartScene scene = renderParts(settings);
    EXPECT_EQ(cv::norm(scene.image, renderParts(settings).image, cv::NORM_INF), 0);
    EXPECT_THAT(scene.others, SizeIs(2));
    settings.seed = 2;
    EXPECT_GT(cv::norm(scene.image, renderParts(settings).image, cv::NORM_INF), 50);
}

}  // namespace
