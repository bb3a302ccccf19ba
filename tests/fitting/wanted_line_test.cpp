#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <random>

#include "orxFunctions/orxfunctions.h"

namespace {

using Points = std::vector<cv::Point>;

// The edge points of a part: a rectangle of 400 x 320 pixels whose sides are off by up to a pixel, a tilted
// line through its middle, and stray points; in random order.
class Part {
  public:
    Part() {
        for (int x = 50; x <= 450; x += 2) {
            side(x, 40, 0, 1);
            side(x, 360, 0, 1);
        }
        for (int y = 42; y < 360; y += 2) {
            side(50, y, 1, 0);
            side(450, y, 1, 0);
        }
        for (int x = 150; x <= 350; x += 2) side(x, 200 + (x - 250) / 4, 0, 1);
        std::uniform_int_distribution<int> anywhere(0, 499);
        for (int i = 0; i < 200; ++i) points.emplace_back(anywhere(generator_), anywhere(generator_));
        std::shuffle(points.begin(), points.end(), generator_);
    }

    Points points;

  private:
    void side(int x, int y, int noiseX, int noiseY) {
        std::uniform_int_distribution<int> noise(-1, 1);
        points.emplace_back(x + noiseX * noise(generator_), y + noiseY * noise(generator_));
    }

    std::mt19937 generator_{12};
};

bool comesBefore(cv::Point a, cv::Point b) { return a.x != b.x ? a.x < b.x : a.y < b.y; }

Points sorted(Points points) {
    std::sort(points.begin(), points.end(), comesBefore);
    return points;
}

struct Side {
    const char* name;
    orx::TWantLineType type;
    double a, b, c;  // |a x + b y + c| is the distance from the true line
    std::size_t count;
};
void PrintTo(const Side& side, std::ostream* out) { *out << side.name; }

class GetWantedLine : public testing::TestWithParam<Side> {};
INSTANTIATE_TEST_SUITE_P(Sides, GetWantedLine,
                         testing::Values(Side{"Left", orx::wlLeft, 1, 0, -50, 159},
                                         Side{"Right", orx::wlRight, 1, 0, -450, 159},
                                         Side{"Top", orx::wlTop, 0, 1, -40, 201},
                                         Side{"Bottom", orx::wlBottom, 0, 1, -360, 201},
                                         Side{"Center", orx::wlCenter, 0.242536, -0.970143, 133.395, 101}),
                         [](const auto& test) { return test.param.name; });

TEST_P(GetWantedLine, FindsTheSideOfThePart) {
    const Points points = Part().points;
    for (const bool refine : {false, true}) {
        Points line = {{1, 1}};
        Points rest = {{1, 1}};
        ASSERT_TRUE(orx::getWantedLine(points, line, rest, GetParam().type, 60, refine));
        EXPECT_NEAR(static_cast<double>(line.size()), static_cast<double>(GetParam().count), 14);
        for (const cv::Point& p : line) {
            EXPECT_LE(std::abs(GetParam().a * p.x + GetParam().b * p.y + GetParam().c), refine ? 3.0 : 5.0)
                << p;
        }
        // Every point is in one list, in its order.
        Points both = line;
        both.insert(both.end(), rest.begin(), rest.end());
        EXPECT_EQ(sorted(both), sorted(points));
        auto next = line.begin();
        for (const cv::Point& p : points) {
            if (next != line.end() && *next == p) ++next;
        }
        EXPECT_EQ(next, line.end());
    }
}

TEST(GetWantedLineLists, RestLeadsToTheNextLine) {
    Points points = Part().points;
    for (const double column : {50.0, 450.0}) {
        Points line;
        ASSERT_TRUE(orx::getWantedLine(points, line, points, orx::wlLeft, 60, true));
        EXPECT_NEAR(line.front().x, column, 3);
    }
    Points line;
    EXPECT_FALSE(orx::getWantedLine(points, line, points, orx::wlLeft, 60, true)) << "no third upright line";
}

TEST(GetWantedLineLists, CrossingPointsComeBackByRefinement) {
    // The level line is stronger and takes (100, 49) too.
    Points points;
    for (int x = 1; x < 400; x += 2) points.emplace_back(x, 50);
    for (int y = 4; y < 200; y += 5) points.emplace_back(100, y);
    Points line, rest;
    ASSERT_TRUE(orx::getWantedLine(points, line, rest, orx::wlLeft, 10, false));
    EXPECT_EQ(line.size(), 39U);
    ASSERT_TRUE(orx::getWantedLine(points, line, rest, orx::wlLeft, 10, true));
    EXPECT_EQ(line.size(), 42U) << "all of its own, (99, 50) and (101, 50)";
}

TEST(GetWantedLineLists, NothingWantedLeavesAllPoints) {
    const Points points = {{0, 10}, {5, 10}, {10, 10}, {15, 10}, {20, 10}};
    const auto expectNone = [](const Points& given, orx::TWantLineType type, int minPoints) {
        Points line = {{1, 1}};
        Points rest;
        EXPECT_FALSE(orx::getWantedLine(given, line, rest, type, minPoints, true));
        EXPECT_TRUE(line.empty());
        EXPECT_EQ(rest, given);
    };
    expectNone(points, orx::wlLeft, 3);
    expectNone(points, orx::wlTop, 6);
    expectNone(points, static_cast<orx::TWantLineType>(9), 3);
    expectNone({}, orx::wlTop, 3);
    expectNone({{1, 1}, {9, 1}}, orx::wlTop, -5);
    expectNone(Points(50, {4, 4}), orx::wlCenter, 3);
    Points line, rest;
    EXPECT_TRUE(orx::getWantedLine(points, line, rest, orx::wlTop, 5, false));
}

TEST(GetWantedLineLists, IsRepeatableAndLeavesRandAlone) {
    const Points points = Part().points;
    Points line[2], rest[2];
    std::srand(77);
    const int next = std::rand();
    std::srand(77);
    ASSERT_TRUE(orx::getWantedLine(points, line[0], rest[0], orx::wlCenter, 40, true));
    EXPECT_EQ(std::rand(), next);
    ASSERT_TRUE(orx::getWantedLine(points, line[1], rest[1], orx::wlCenter, 40, true));
    EXPECT_EQ(line[0], line[1]);
    EXPECT_EQ(rest[0], rest[1]);
}

}  // namespace
