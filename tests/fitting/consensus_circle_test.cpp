// findCircle and findCircles on scenes whose circles are known.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/fitting/consensus_scenes.h"

namespace {

using consensus_scenes::kStrewn;
using consensus_scenes::Points;
using consensus_scenes::Scene;

const cv::Point3d kCircle{480, 510, 320};

orx::TConsensusOptions seeded(unsigned seed) {
    orx::TConsensusOptions options;
    options.seed = seed;
    return options;
}

// Standard deviations of centre and radius that no unbiased fit of the circle's own points can go below: the
// inverse of Fisher's information about them.
cv::Vec3d bounds(const Scene& scene, cv::Point3d circle, double noise) {
    cv::Matx33d information = cv::Matx33d::zeros();
    for (std::size_t i = 0; i < scene.points.size(); ++i) {
        if (scene.shapeOf[i] == kStrewn) continue;
        const cv::Point2d arm = scene.points[i] - cv::Point2d(circle.x, circle.y);
        const cv::Vec3d row(arm.x / cv::norm(arm), arm.y / cv::norm(arm), 1.0);
        information += row * row.t();
    }
    const cv::Matx33d inverse = information.inv();
    return noise * cv::Vec3d(std::sqrt(inverse(0, 0)), std::sqrt(inverse(1, 1)), std::sqrt(inverse(2, 2)));
}

cv::Vec3d errors(const orx::TMeasuredCircle& found, cv::Point3d circle) {
    return {found.center.x - circle.x, found.center.y - circle.y, found.radius - circle.z};
}

bool near(const orx::TMeasuredCircle& found, cv::Point3d circle, double within) {
    return found.valid() && cv::norm(errors(found, circle), cv::NORM_INF) < within;
}

TEST(FindCircle, FindsTheCircleAmongManyOutliers) {
    const double kOutliers[] = {0.3, 0.6, 0.8};
    for (const double outliers : kOutliers) {
        for (unsigned seed = 0; seed < 60; ++seed) {
            SCOPED_TRACE(std::to_string(outliers) + ", seed " + std::to_string(seed));
            const auto strewn = static_cast<int>(1000 * outliers);
            Scene scene(seed);
            scene.circle(kCircle, 1000 - strewn, 0.5).strewn(strewn);
            const orx::TMeasuredCircle found = orx::findCircle(scene.points, seeded(seed));
            ASSERT_EQ(found.status, orx::fsOk);
            const cv::Vec3d error = errors(found, kCircle);
            const cv::Vec3d bound = bounds(scene, kCircle, 0.5);
            for (int i = 0; i < 3; ++i) EXPECT_LT(std::abs(error[i]), 5 * bound[i]);
            int supporting = 0;
            int strays = 0;
            for (std::size_t i = 0; i < found.used.size(); ++i) {
                if (found.used[i] != 0) ++(scene.shapeOf[i] == kStrewn ? strays : supporting);
            }
            EXPECT_EQ(supporting + strays, found.usedPoints);
            EXPECT_GE(supporting, 0.98 * (1000 - strewn));
            // The band of 4.7 deviations on both sides covers a hundredth of the image.
            EXPECT_LE(strays, 0.03 * strewn);
        }
    }
}

TEST(FindCircle, IsAsGoodAsTheCirclesOwnPointsAllow) {
    constexpr int kScenes = 400;
    constexpr int kCount = 500;
    double squares = 0.0;
    double sum = 0.0;
    int within68 = 0;
    int within95 = 0;
    for (unsigned seed = 0; seed < kScenes; ++seed) {
        Scene scene(seed);
        scene.circle({500, 500, 300}, kCount * 6 / 10, 0.3).strewn(kCount * 4 / 10);
        const orx::TMeasuredCircle found = orx::findCircle(scene.points, seeded(seed));
        ASSERT_EQ(found.status, orx::fsOk);
        const cv::Vec3d error = errors(found, {500, 500, 300});
        const cv::Vec3d bound = bounds(scene, {500, 500, 300}, 0.3);
        const double deviations[] = {found.xDeviation, found.yDeviation, found.radiusDeviation};
        for (int i = 0; i < 3; ++i) {
            squares += error[i] * error[i] / (bound[i] * bound[i]);
            sum += error[i] / bound[i];
            const double ratio = std::abs(error[i]) / deviations[i];
            within68 += ratio < orx::coverageFactor(0.683, found.degreesOfFreedom) ? 1 : 0;
            within95 += ratio < orx::coverageFactor(0.954, found.degreesOfFreedom) ? 1 : 0;
        }
    }
    // 1,200 values: the spread is known to 2 %, the shares to 1.3 and 0.6 %.
    EXPECT_LE(std::sqrt(squares / (3 * kScenes)), 1.08);
    EXPECT_LE(std::abs(sum) / (3 * kScenes), 0.09);
    EXPECT_NEAR(within68 / (3.0 * kScenes), 0.683, 0.045);
    EXPECT_NEAR(within95 / (3.0 * kScenes), 0.954, 0.02);
}

// The tolerance only leads the search: the noise is found from the points.
TEST(FindCircle, FindsTheNoiseUnderAnyTolerance) {
    const double kTolerances[] = {0.5, 1.0, 2.0, 5.0, 15.0};
    for (const double tolerance : kTolerances) {
        SCOPED_TRACE(tolerance);
        Scene scene(7);
        scene.circle(kCircle, 1000, 0.5).strewn(400);
        orx::TConsensusOptions options;
        options.tolerance = tolerance;
        const orx::TMeasuredCircle found = orx::findCircle(scene.points, options);
        EXPECT_NEAR(found.noise, 0.5, 0.05);
        EXPECT_TRUE(near(found, kCircle, 0.12));
    }
}

TEST(FindCircles, FindsEachCircleOnce) {
    const std::vector<cv::Point3d> kCircles = {
        {150, 300, 60}, {400, 400, 80}, {650, 300, 100}, {850, 500, 120}};
    for (unsigned seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        Scene scene(seed);
        for (std::size_t i = 0; i < 4; ++i) scene.circle(kCircles[i], 250 + 50 * static_cast<int>(i), 0.5);
        scene.strewn(500);
        orx::TConsensusOptions options = seeded(seed);
        options.minSupport = 0.05;
        const auto found = orx::findCircles(scene.points, options);
        ASSERT_EQ(found.size(), 4U);
        std::vector<int> supported(scene.points.size());
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_TRUE(near(found[i], kCircles[3 - i], 0.3));
            EXPECT_EQ(found[i].points, static_cast<int>(scene.points.size()));
            ASSERT_EQ(found[i].used.size(), scene.points.size());
            for (std::size_t k = 0; k < supported.size(); ++k) supported[k] += found[i].used[k];
        }
        EXPECT_LE(*std::max_element(supported.begin(), supported.end()), 1);
        EXPECT_EQ(orx::findCircles(scene.points, options, 2).size(), 2U);
    }
}

TEST(FindCircles, TellsNeighboursApart) {
    struct Case {
        const char* name;
        cv::Point3d first, second;
    };
    const Case kCases[] = {{"side by side", {300, 500, 100}, {700, 500, 100}},
                           {"overlapping", {450, 500, 100}, {520, 500, 100}},
                           {"concentric", {500, 500, 100}, {500, 500, 106}}};
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.name);
        Scene scene(3);
        scene.circle(c.first, 400, 0.3).circle(c.second, 400, 0.3).strewn(200);
        orx::TConsensusOptions options;
        options.tolerance = 1.0;
        const auto found = orx::findCircles(scene.points, options);
        ASSERT_EQ(found.size(), 2U);
        const bool inOrder = near(found[0], c.first, 0.2) && near(found[1], c.second, 0.2);
        const bool turned = near(found[0], c.second, 0.2) && near(found[1], c.first, 0.2);
        EXPECT_TRUE(inOrder || turned);
    }
}

// Heavier tails than Gaussian noise leave points beyond the reach of the first fit.
TEST(FindCircles, StragglersMakeNoSecondCircle) {
    Scene scene(5);
    scene.circle(kCircle, 900, 0.2).circle(kCircle, 100, 0.6);
    orx::TConsensusOptions options;
    options.minSupport = 0.005;
    EXPECT_EQ(orx::findCircles(scene.points, options).size(), 1U);
}

TEST(FindCircle, StaysWithinTheRadiiAskedFor) {
    Scene scene(9);
    scene.circle({500, 500, 300}, 600, 0.5).circle({500, 500, 100}, 300, 0.5).strewn(100);
    orx::TConsensusOptions options;
    EXPECT_TRUE(near(orx::findCircle(scene.points, options), {500, 500, 300}, 0.3));
    options.maxRadius = 299;  // within the leeway of the search, but not allowed
    EXPECT_TRUE(near(orx::findCircle(scene.points, options), {500, 500, 100}, 0.3));
    options.minRadius = 110;
    EXPECT_EQ(orx::findCircle(scene.points, options).status, orx::fsNoConsensus);
    options.maxRadius = 301;
    EXPECT_TRUE(near(orx::findCircle(scene.points, options), {500, 500, 300}, 0.3));
}

TEST(FindCircle, NeedsTheSupportAskedFor) {
    Scene scene(4);
    scene.circle(kCircle, 300, 0.5).strewn(700);
    orx::TConsensusOptions options;
    options.minSupport = 0.28;
    EXPECT_EQ(orx::findCircle(scene.points, options).status, orx::fsOk);
    options.minSupport = 0.35;
    EXPECT_EQ(orx::findCircle(scene.points, options).status, orx::fsNoConsensus);
    options.minSupport = 0.0;
    options.minPoints = 280;
    EXPECT_EQ(orx::findCircle(scene.points, options).status, orx::fsOk);
    options.minPoints = 350;
    EXPECT_EQ(orx::findCircle(scene.points, options).status, orx::fsNoConsensus);
}

// However dense: what a circle supports there, any would.
TEST(FindCircle, StrewnPointsHoldNone) {
    int found = 0;
    for (unsigned seed = 0; seed < 20; ++seed) {
        for (const int count : {10, 20, 60, 200, 2000}) {
            found += orx::findCircle(Scene(seed).strewn(count, 100).points, seeded(seed)).valid() ? 1 : 0;
        }
    }
    EXPECT_LE(found, 3);
    Points grid;
    for (int i = 0; i < 400; ++i) grid.emplace_back(10 * (i % 20), 10 * (i / 20));
    EXPECT_EQ(orx::findCircle(grid).status, orx::fsNoConsensus);
    EXPECT_TRUE(orx::findCircles(grid).empty());
}

TEST(FindCircle, FewPointsAreEnoughWhereTheyAgree) {
    int found = 0;
    for (unsigned seed = 0; seed < 50; ++seed) {
        Scene scene(seed);
        scene.circle({50, 50, 40}, 10, 0.2).strewn(4, 100);
        found += near(orx::findCircle(scene.points, seeded(seed)), {50, 50, 40}, 0.8) ? 1 : 0;
    }
    EXPECT_GE(found, 48);
}

TEST(FindCircle, StraightEdgesAreNoCircles) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        Scene scene(seed);
        scene.segment({0, 50}, {1000, 350}, 1000, 0.5);
        EXPECT_FALSE(near(orx::findCircle(scene.points, seeded(seed)), {}, 1e300));
        scene.circle({500, 700, 100}, 400, 0.5);
        EXPECT_TRUE(near(orx::findCircle(scene.points, seeded(seed)), {500, 700, 100}, 0.3));
    }
}

TEST(FindCircle, FindsArcsWithTheirEnds) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        Scene scene(seed);
        scene.circle({300, 300, 300}, 300, 0.3, 60.0).strewn(300);
        const orx::TMeasuredCircle found = orx::findCircle(scene.points, seeded(seed));
        ASSERT_EQ(found.status, orx::fsOk);
        EXPECT_LT(std::abs(found.radius - 300), 5 * found.radiusDeviation);
        EXPECT_LT(found.radiusDeviation, 1.0);
        EXPECT_NEAR(found.sweep, 60.0, 3.0);
    }
}

TEST(FindCircle, NoiseFreePointsAreFoundToRounding) {
    for (const double offset : {0.0, 1e6}) {
        SCOPED_TRACE(offset);
        Scene scene(2);
        scene.circle({500, 500, 300}, 200, 0.0).strewn(200);
        for (cv::Point2d& p : scene.points) p += cv::Point2d(offset, offset);
        const orx::TMeasuredCircle found = orx::findCircle(scene.points);
        ASSERT_EQ(found.status, orx::fsOk);
        EXPECT_NEAR(found.radius, 300.0, 1e-8);
        EXPECT_EQ(found.usedPoints, 200);
    }
}

}  // namespace
