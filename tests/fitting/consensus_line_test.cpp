// findLine and findLines on scenes whose lines are known.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/fitting/consensus_scenes.h"

namespace {

using consensus_scenes::Scene;

struct Segment {
    cv::Point2d from, to;
};

orx::TConsensusOptions seeded(unsigned seed) {
    orx::TConsensusOptions options;
    options.seed = seed;
    return options;
}

// The found line passes both ends within so many pixels.
bool near(const orx::TMeasuredLine& found, const Segment& segment, double within) {
    return found.valid() && std::abs(found.signedDistance(segment.from)) < within &&
           std::abs(found.signedDistance(segment.to)) < within;
}

TEST(FindLine, FindsTheLineAmongManyOutliers) {
    const Segment kSegments[] = {{{0, 200}, {1000, 510}}, {{500, 0}, {500, 1000}}, {{0, 700}, {1000, 700}}};
    for (const Segment& segment : kSegments) {
        for (const double outliers : {0.3, 0.6, 0.8}) {
            for (unsigned seed = 0; seed < 20; ++seed) {
                SCOPED_TRACE(std::to_string(outliers) + ", seed " + std::to_string(seed));
                const auto strewn = static_cast<int>(1000 * outliers);
                Scene scene(seed);
                scene.segment(segment.from, segment.to, 1000 - strewn, 0.5).strewn(strewn);
                const orx::TMeasuredLine found = orx::findLine(scene.points, seeded(seed));
                // At an end a line is known half as well as in its middle.
                ASSERT_TRUE(near(found, segment, 5 * 2 * 0.5 / std::sqrt(1000 - strewn)));
                EXPECT_NEAR(found.to - found.from, cv::norm(segment.to - segment.from), 40);
            }
        }
    }
}

TEST(FindLine, IsAsGoodAsTheLinesOwnPointsAllow) {
    constexpr int kScenes = 500;
    double squares = 0.0;
    int within68 = 0;
    int within95 = 0;
    for (unsigned seed = 0; seed < kScenes; ++seed) {
        Scene scene(seed);
        scene.segment({100, 300}, {900, 700}, 300, 0.3).strewn(200);
        const orx::TMeasuredLine found = orx::findLine(scene.points, seeded(seed));
        ASSERT_EQ(found.status, orx::fsOk);
        // Of a line with evenly spread points; the scatter of their mean adds a few hundredths.
        const double length = cv::norm(cv::Point2d(800, 400));
        const double angle = found.angle > 90    ? found.angle - 180
                             : found.angle < -90 ? found.angle + 180
                                                 : found.angle;
        const double error = angle - std::atan2(400, 800) * 180 / CV_PI;
        const double bound = 0.3 / (length / std::sqrt(12.0) * std::sqrt(300.0)) * 180 / CV_PI;
        squares += error * error / (bound * bound);
        within68 +=
            std::abs(error) < found.angleDeviation * orx::coverageFactor(0.683, found.degreesOfFreedom) ? 1
                                                                                                        : 0;
        within95 +=
            std::abs(error) < found.angleDeviation * orx::coverageFactor(0.954, found.degreesOfFreedom) ? 1
                                                                                                        : 0;
    }
    // 500 values: the spread is known to 3 %, the shares to 2 and 1 %.
    EXPECT_LE(std::sqrt(squares / kScenes), 1.1);
    EXPECT_NEAR(within68 / double(kScenes), 0.683, 0.06);
    EXPECT_NEAR(within95 / double(kScenes), 0.954, 0.03);
}

TEST(FindLines, FindsEachLineOnce) {
    const std::vector<Segment> kSegments = {{{100, 100}, {900, 130}},
                                            {{50, 600}, {950, 500}},
                                            {{500, 20}, {503, 920}},
                                            {{100, 900}, {800, 100}},
                                            {{0, 300}, {1000, 301}}};
    for (unsigned seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        Scene scene(seed);
        for (std::size_t i = 0; i < kSegments.size(); ++i) {
            scene.segment(kSegments[i].from, kSegments[i].to, 250 + 40 * static_cast<int>(i), 0.5);
        }
        scene.strewn(500);
        orx::TConsensusOptions options = seeded(seed);
        options.minSupport = 0.05;
        const auto found = orx::findLines(scene.points, options);
        ASSERT_EQ(found.size(), kSegments.size());
        std::vector<int> supported(scene.points.size());
        for (const orx::TMeasuredLine& line : found) {
            EXPECT_EQ(std::count_if(kSegments.begin(), kSegments.end(),
                                    [&](const Segment& s) { return near(line, s, 0.5); }),
                      1);
            for (std::size_t k = 0; k < supported.size(); ++k) supported[k] += line.used[k];
        }
        EXPECT_LE(*std::max_element(supported.begin(), supported.end()), 1);
        EXPECT_TRUE(std::is_sorted(found.begin(), found.end(),
                                   [](const auto& a, const auto& b) { return a.usedPoints > b.usedPoints; }));
    }
}

TEST(FindLines, TellsParallelEdgesApart) {
    Scene scene(3);
    scene.segment({0, 100}, {1000, 200}, 400, 0.3).segment({0, 106}, {1000, 206}, 300, 0.3);
    orx::TConsensusOptions options;
    options.tolerance = 1.0;
    const auto found = orx::findLines(scene.points, options);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_TRUE(near(found[0], {{0, 100}, {1000, 200}}, 0.2));
    EXPECT_TRUE(near(found[1], {{0, 106}, {1000, 206}}, 0.2));
}

TEST(FindLine, StaysWithinTheAnglesAskedFor) {
    Scene scene(9);
    const Segment flat{{0, 500}, {1000, 500}};
    const Segment steep{{400, 0}, {600, 1000}};  // at 78.7 degrees
    scene.segment(flat.from, flat.to, 500, 0.5).segment(steep.from, steep.to, 300, 0.5).strewn(200);
    orx::TConsensusOptions options;
    EXPECT_TRUE(near(orx::findLine(scene.points, options), flat, 0.3));
    options.angleTolerance = 5.0;
    for (const double angle : {0.0, 180.0, -176.0, 364.0}) {
        options.angle = angle;
        EXPECT_TRUE(near(orx::findLine(scene.points, options), flat, 0.3)) << angle;
    }
    for (const double angle : {80.0, -100.0, 75.0}) {
        options.angle = angle;
        EXPECT_TRUE(near(orx::findLine(scene.points, options), steep, 0.3)) << angle;
    }
    options.angle = 45.0;
    EXPECT_EQ(orx::findLine(scene.points, options).status, orx::fsNoConsensus);
    EXPECT_TRUE(orx::findLines(scene.points, options).empty());
}

TEST(FindLine, StrewnPointsHoldNone) {
    int found = 0;
    for (unsigned seed = 0; seed < 20; ++seed) {
        for (const int count : {10, 20, 60, 200, 2000}) {
            found += orx::findLine(Scene(seed).strewn(count, 100).points, seeded(seed)).valid() ? 1 : 0;
        }
    }
    EXPECT_LE(found, 3);
}

TEST(FindLines, FindsTheRowsOfAGrid) {
    // Twenty points in two hundred lie in a row of 20, ten in a column.
    consensus_scenes::Points grid;
    for (int i = 0; i < 200; ++i) grid.emplace_back(50 * (i % 20), 50 * (i / 20));
    orx::TConsensusOptions options;
    options.minPoints = 20;
    options.tolerance = 1.0;
    const auto rows = orx::findLines(grid, options);
    ASSERT_EQ(rows.size(), 10U);
    for (const orx::TMeasuredLine& row : rows) {
        EXPECT_EQ(row.usedPoints, 20);
        EXPECT_NEAR(std::abs(row.direction.x), 1.0, 1e-12);
        EXPECT_NEAR(row.point.y, 50 * std::round(row.point.y / 50), 1e-9);
    }
}

}  // namespace
