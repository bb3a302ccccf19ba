#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <ostream>
#include <random>
#include <set>

#include "orxFunctions/orxfunctions.h"
#include "tests/fitting/ransac_reference.h"

namespace {

using Points = std::vector<cv::Point>;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Points of all sorts, one sort a seed: uniform ones, a noisy line or circle among others, a lattice full of
// repeated points and of distances that lie exactly at thresholds, coordinates near the ends of 32 bits.
class RandomPoints {
  public:
    explicit RandomPoints(unsigned seed) : generator_(seed), sort_(seed % 6) {}

    Points make() {
        static const int sizes[] = {1, 2, 3, 4, 7, 8, 9, 31, 64, 255, 256, 257, 700};
        Points points(static_cast<std::size_t>(sizes[generator_() % std::size(sizes)]));
        for (cv::Point& p : points) p = point();
        return points;
    }

    int between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(generator_); }

  private:
    cv::Point point() {
        switch (sort_) {
            case 0:
                return {between(-50, 800), between(-50, 600)};
            case 1: {  // 3/4 is a slope with many distances that are whole numbers
                const int t = between(0, 150);
                if (between(0, 2) > 0) return {4 * t + between(-1, 1), 3 * t + between(-1, 1)};
                return {between(0, 600), between(0, 450)};
            }
            case 2: {
                const double angle = between(0, 6283) / 1000.0;
                const double r = between(0, 2) > 0 ? 100 + between(-1, 1) : between(0, 200);
                return {static_cast<int>(300 + r * std::cos(angle)),
                        static_cast<int>(250 + r * std::sin(angle))};
            }
            case 3:
                return {5 * between(0, 4), 5 * between(0, 4)};
            case 4: {  // nearly level and nearly upright lines: extreme slopes
                const int t = between(-3000, 3000);
                return between(0, 1) == 0 ? cv::Point(t, between(0, 3)) : cv::Point(between(0, 3), t);
            }
            default:
                return {between(std::numeric_limits<int>::min(), std::numeric_limits<int>::max()),
                        between(std::numeric_limits<int>::min(), std::numeric_limits<int>::max())};
        }
    }

    std::mt19937 generator_;
    unsigned sort_;
};

reference::Search randomSearch(unsigned seed) {
    static const double thresholds[] = {0, -1, 0.5, 1, 1.7, 2, 5, 25, 1e6, 3e9, kInfinity, std::nan("")};
    static const int caps[] = {-1, 0, 1, 5, 40, 1000, std::numeric_limits<int>::max()};
    static const int iterations[] = {-3, 0, 1, 2, 60, 60, 200};
    static const double angles[] = {-90, -45, -10, 0, 30, 45, 90, 135, 180};
    static const int radii[] = {std::numeric_limits<int>::min(), -5, 0, 5, 50, 100, 101, 1000, 100000,
                                std::numeric_limits<int>::max()};
    RandomPoints random(seed);
    const auto any = [&](const auto& values) {
        return values[random.between(0, int(std::size(values)) - 1)];
    };
    reference::Search s{random.make(), any(iterations), any(caps), any(thresholds)};
    s.angleType = random.between(0, 5) == 0 ? 7 : random.between(0, 3);
    s.minAngle = any(angles);
    s.maxAngle = any(angles);
    if (random.between(0, 1) == 0) {
        s.minRadius = any(radii);
        s.maxRadius = any(radii);
    }
    return s;
}

orx::TRansacLine lineSearch(const reference::Search& s) {
    orx::TRansacLine search(s.points, s.iterations, s.cap, s.threshold);
    search.setAngleLimit(s.minAngle, s.maxAngle, static_cast<orx::TAngleType>(s.angleType));
    return search;
}

orx::TRansacCircle circleSearch(const reference::Search& s) {
    orx::TRansacCircle search(s.points, s.iterations, s.cap, s.threshold);
    search.setRLimit(s.minRadius, s.maxRadius);
    return search;
}

template <class Search>
std::vector<int> indicesOf(Search& search) {
    std::vector<int> indices{-7};
    if constexpr (std::is_same_v<Search, orx::TRansacLine>) {
        search.getIdxList(indices);
    } else {
        search.getCircleIdxList(indices);
    }
    return indices;
}

// Each test of the comparisons runs with the fastest instructions and with the baseline.
class Searches : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override { cv::setUseOptimized(GetParam()); }
    void TearDown() override { cv::setUseOptimized(true); }
};
INSTANTIATE_TEST_SUITE_P(Instructions, Searches, testing::Bool(),
                         [](const auto& test) { return test.param ? "Fastest" : "Baseline"; });

TEST_P(Searches, LineEqualsTheLiteralSearchIndexByIndex) {
    int found = 0;
    for (unsigned seed = 0; seed < 1200; ++seed) {
        SCOPED_TRACE(seed);
        const reference::Search s = randomSearch(seed);
        std::srand(seed);
        const std::vector<int> expected = reference::line(s);
        const int nextExpected = std::rand();
        std::srand(seed);
        orx::TRansacLine search = lineSearch(s);
        ASSERT_EQ(search.doRansac(), !expected.empty());
        ASSERT_EQ(std::rand(), nextExpected) << "another number of draws";
        ASSERT_EQ(indicesOf(search), expected);
        found += expected.empty() ? 0 : 1;
    }
    EXPECT_GT(found, 300);
}

TEST_P(Searches, CircleEqualsTheLiteralSearchIndexByIndex) {
    int found = 0;
    for (unsigned seed = 0; seed < 1200; ++seed) {
        SCOPED_TRACE(seed);
        const reference::Search s = randomSearch(seed);
        std::srand(seed);
        const reference::Circle expected = reference::circle(s);
        const int nextExpected = std::rand();
        std::srand(seed);
        orx::TRansacCircle search = circleSearch(s);
        const orx::TCircle circle = search.doRansac();
        ASSERT_EQ(std::rand(), nextExpected) << "another number of draws";
        ASSERT_EQ(circle.valid, expected.found);
        ASSERT_EQ(cv::Point3d(circle.x, circle.y, circle.r), expected.circle);
        ASSERT_EQ(indicesOf(search), expected.indices);
        found += expected.found ? 1 : 0;
    }
    EXPECT_GT(found, 300);
}

// More candidates than are judged at a time: the last that beats the first may be in any batch.
TEST_P(Searches, ManyCandidatesAreJudgedAsOneList) {
    for (unsigned seed = 0; seed < 6; ++seed) {
        reference::Search s{RandomPoints(2 + 6 * seed).make(), 15000, 100000, 0.75};
        s.points.resize(30, {1, 2});
        std::srand(seed);
        const reference::Circle expected = reference::circle(s);
        std::srand(seed);
        orx::TRansacCircle search = circleSearch(s);
        search.doRansac();
        EXPECT_EQ(indicesOf(search), expected.indices) << seed;
    }
}

struct Scene {
    const char* name;
    double outliers;
};
void PrintTo(const Scene& scene, std::ostream* out) { *out << scene.name; }

class Accuracy : public testing::TestWithParam<Scene> {};
INSTANTIATE_TEST_SUITE_P(Outliers, Accuracy,
                         testing::Values(Scene{"Third", 0.3}, Scene{"Half", 0.5}, Scene{"Most", 0.6}),
                         [](const auto& test) { return test.param.name; });

TEST_P(Accuracy, LineIsFoundWithinAQuarterOfAPixel) {
    const double k = 0.4, b = 100;  // the truth
    std::mt19937 generator(4);
    std::uniform_int_distribution<int> anywhere(0, 999);
    std::normal_distribution<double> noise(0, 0.7);
    Points points;
    for (int i = 0; i < 1000; ++i) {
        const int x = anywhere(generator);
        const bool outlier = i < 1000 * GetParam().outliers;
        points.emplace_back(
            x, outlier ? anywhere(generator) : static_cast<int>(std::lround(k * x + b + noise(generator))));
    }
    std::srand(1);
    orx::TRansacLine search(points, 300, 300, 2.0);
    ASSERT_TRUE(search.doRansac());
    const orx::TLine line = search.getResultLine();
    ASSERT_TRUE(line.valid);
    for (const double x : {0.0, 500.0, 999.0}) EXPECT_NEAR(line.k * x + line.b, k * x + b, 0.25) << x;
    EXPECT_NEAR(static_cast<double>(indicesOf(search).size()), 1000 * (1 - GetParam().outliers), 60);
}

// The 36 pixels that lie on a circle of radius 65 exactly.
Points exactCircle(cv::Point center) {
    Points points;
    for (int y = -65; y <= 65; ++y) {
        for (int x = -65; x <= 65; ++x) {
            if (x * x + y * y == 65 * 65) points.push_back(center + cv::Point(x, y));
        }
    }
    return points;
}

TEST_P(Accuracy, CircleThroughPixelsIsFoundExactly) {
    Points points = exactCircle({150, 130});
    ASSERT_EQ(points.size(), 36U);
    std::mt19937 generator(9);
    std::uniform_int_distribution<int> anywhere(0, 299);
    const auto outliers = static_cast<int>(36 * GetParam().outliers / (1 - GetParam().outliers));
    for (int i = 0; i < outliers; ++i) points.emplace_back(anywhere(generator), anywhere(generator));
    std::srand(3);
    orx::TRansacCircle search(points, 2000, 2000, 0.25);
    search.setRLimit(65, 65);
    const orx::TCircle circle = search.doRansac();
    ASSERT_TRUE(circle.valid);
    EXPECT_EQ(cv::Point3d(circle.x, circle.y, circle.r), cv::Point3d(150, 130, 65));
    EXPECT_EQ(circle.pointCount, 0);
    const std::vector<int> indices = indicesOf(search);
    for (int i = 0; i < 36; ++i) EXPECT_THAT(indices, testing::Contains(i));
}

struct WinnerRule {
    const char* name;
    std::array<int, 3> counts;  // inliers of the three candidates
    std::size_t winner;
};
void PrintTo(const WinnerRule& winnerRule, std::ostream* out) { *out << winnerRule.name; }

class CircleWinner : public testing::TestWithParam<WinnerRule> {};
INSTANTIATE_TEST_SUITE_P(Rule, CircleWinner,
                         testing::Values(WinnerRule{"FirstWhenNoneBeatsIt", {10, 5, 8}, 0},
                                         WinnerRule{"LastThatBeatsTheFirst", {5, 9, 7}, 2},
                                         WinnerRule{"LaterOnesThatDoNotBeatItAreNothing", {7, 9, 5}, 1}),
                         [](const auto& test) { return test.param.name; });

// Three far circles of radius 65 with so many points each; the radius limits let only their own samples pass.
// A seed is looked for whose first three samples within one circle come from the circles in order.
TEST_P(CircleWinner, IsTheLastThatBeatsTheFirst) {
    Points points;
    std::vector<std::size_t> circleOf;
    for (std::size_t c = 0; c < 3; ++c) {
        const Points all = exactCircle({100 + 400 * int(c), 100});
        // Every third point: no two of a circle's points lie opposite to each other all the time.
        for (int i = 0; i < GetParam().counts[c]; ++i) points.push_back(all[3 * std::size_t(i)]);
        circleOf.resize(points.size(), c);
    }
    const auto samplesComeInOrder = [&](unsigned seed) {
        std::srand(seed);
        for (std::size_t next = 0; next < 3;) {
            std::array<std::size_t, 3> s{};
            for (std::size_t& index : s) index = std::size_t(std::rand()) % points.size();
            if (s[0] == s[1] || s[1] == s[2] || s[0] == s[2]) continue;
            if (circleOf[s[0]] != circleOf[s[1]] || circleOf[s[1]] != circleOf[s[2]]) continue;
            if (circleOf[s[0]] != next++) return false;
        }
        return true;
    };
    unsigned seed = 0;
    while (!samplesComeInOrder(seed)) ++seed;
    std::srand(seed);
    orx::TRansacCircle search(points, 10000, 2, 0.01);
    search.setRLimit(65, 65);
    const orx::TCircle circle = search.doRansac();
    EXPECT_EQ(circle.x, 100 + 400 * double(GetParam().winner));
    EXPECT_EQ(indicesOf(search).size(), std::size_t(GetParam().counts[GetParam().winner]));
}

TEST(TRansacLine, SamplePointsCountTwice) {
    std::srand(5);
    orx::TRansacLine search({{3, 4}, {30, 11}}, 100, 100, 0.5);
    ASSERT_TRUE(search.doRansac());
    const std::vector<int> indices = indicesOf(search);
    EXPECT_THAT(indices, testing::AnyOf(ElementsAre(0, 1, 0, 1), ElementsAre(1, 0, 0, 1)));
    Points points;
    search.getLineList(points);
    EXPECT_THAT(points, testing::UnorderedElementsAre(cv::Point(3, 4), cv::Point(3, 4), cv::Point(30, 11),
                                                      cv::Point(30, 11)));
}

TEST(TRansacLine, CapOfZeroStoresOneCandidate) {
    RandomPoints random(0);
    Points points(50);
    for (cv::Point& p : points) p = {random.between(0, 500), random.between(0, 500)};
    for (unsigned seed = 0; seed < 20; ++seed) {
        std::srand(seed);
        int i = 0, j = 0;
        while (i == j) {
            i = std::rand() % 50;
            j = std::rand() % 50;
        }
        std::srand(seed);
        orx::TRansacLine search(points, 1000, 0, 3);
        ASSERT_TRUE(search.doRansac());
        const std::vector<int> indices = indicesOf(search);
        EXPECT_EQ(indices[0], i);
        EXPECT_EQ(indices[1], j);
    }
}

TEST(TRansacLine, FailureLeavesTheEarlierResult) {
    orx::TRansacLine search({{0, 0}, {10, 10}, {20, 20}, {30, 30}}, 50, 50, 1);
    EXPECT_FALSE(search.getResultLine().valid);
    EXPECT_THAT(indicesOf(search), IsEmpty());
    ASSERT_TRUE(search.doRansac());
    const std::vector<int> before = indicesOf(search);
    search.setAngleLimit(50, 80, orx::ANGLE_ABS);
    EXPECT_FALSE(search.doRansac());
    EXPECT_EQ(indicesOf(search), before);
    search.setAngleLimit(45, 45, orx::ANGLE_ABS);  // the limits are inclusive
    EXPECT_TRUE(search.doRansac());
}

TEST(TRansacLine, FewerThanTwoPointsFindNothing) {
    EXPECT_FALSE(orx::TRansacLine({}, 100, 100, 1).doRansac());
    EXPECT_FALSE(orx::TRansacLine({{5, 5}}, 100, 100, 1).doRansac());
    EXPECT_FALSE(orx::TRansacLine({{5, 5}, {6, 7}}, 0, 100, 1).doRansac());
    EXPECT_FALSE(orx::TRansacLine({{5, 5}, {6, 7}}, 100, -1, 1).doRansac());
}

TEST(TRansacLine, ResultIsTheHuberFitInSinglePrecision) {
    Points points;
    for (int x = 0; x < 40; ++x) points.emplace_back(x * 10, 7 + x * 3 + x % 2);
    orx::TRansacLine search(points, 200, 200, 3);
    std::srand(2);
    ASSERT_TRUE(search.doRansac());
    Points inliers;
    search.getLineList(inliers);
    cv::Vec4f fit;
    cv::fitLine(inliers, fit, cv::DIST_HUBER, 0, 0.01, 0.01);
    const orx::TLine line = search.getResultLine();
    const double slope = static_cast<double>(fit[1] / fit[0]);
    EXPECT_EQ(line.k, slope);
    EXPECT_EQ(line.b, static_cast<double>(fit[3]) - static_cast<double>(fit[2]) * slope);

    orx::TRansacLine upright({{4, 0}, {4, 50}, {4, 100}}, 50, 50, 1);
    ASSERT_TRUE(upright.doRansac());
    EXPECT_GT(std::abs(upright.getResultLine().k), 1e6);
}

TEST(TRansacCircle, FailureIsAllZeroAndLeavesTheEarlierResult) {
    const auto expectNothing = [](const orx::TCircle& circle) {
        EXPECT_FALSE(circle.valid);
        EXPECT_EQ(cv::Point3d(circle.x, circle.y, circle.r), cv::Point3d());
    };
    expectNothing(orx::TRansacCircle({{0, 0}, {9, 9}}, 100, 100, 1).doRansac());
    expectNothing(orx::TRansacCircle({{0, 0}, {9, 9}, {18, 18}}, 100, 100, 1).doRansac());

    orx::TRansacCircle search(exactCircle({100, 100}), 100, 100, 0.1);
    ASSERT_TRUE(search.doRansac().valid);
    const std::vector<int> before = indicesOf(search);
    EXPECT_EQ(before.size(), 36U);
    search.setRLimit(66, 1000);
    expectNothing(search.doRansac());
    EXPECT_EQ(indicesOf(search), before);
}

TEST(TRansacCircle, EqualSeedsGiveEqualResultsAndCopiesToo) {
    RandomPoints random(2);
    Points points(300);
    for (cv::Point& p : points) p = {random.between(0, 200), random.between(0, 200)};
    std::set<std::vector<int>> results;
    for (unsigned seed = 0; seed < 5; ++seed) {
        orx::TRansacCircle search(points, 20, 20, 1);
        orx::TRansacCircle copy(search);
        std::srand(seed);
        search.doRansac();
        std::srand(seed);
        copy.doRansac();
        EXPECT_EQ(indicesOf(search), indicesOf(copy));
        results.insert(indicesOf(search));
    }
    EXPECT_GT(results.size(), 1U) << "other seeds, other samples";
}

}  // namespace
