// The fast collection of chord points against a plain walk over the contour.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

using Points = std::vector<cv::Point>;

struct Collected {
    Points points;
    double maxDist = 0;
};

// The chord's points as they are defined: two walks from the contour's first point.
Collected collectPlainly(cv::Point start, cv::Point end, const Points& contour, double tolerance) {
    orx::TSegemetLine chord;
    chord.generateLine({start.x, start.y}, {end.x, end.y});
    const double a = chord.chordA;
    const double b = chord.chordB;
    const double c = chord.chordC;
    Collected result;
    const auto offer = [&](cv::Point q) {
        const double d = std::abs(a * q.x + b * q.y + c) / std::sqrt(a * a + b * b);
        const double n = a * a + b * b;
        const double footX = (b * b * q.x - a * b * q.y - a * c) / n;
        const double footY = (a * a * q.y - a * b * q.x - b * c) / n;
        if (d <= tolerance && footX >= std::min(start.x, end.x) && footX <= std::max(start.x, end.x) &&
            footY >= std::min(start.y, end.y) && footY <= std::max(start.y, end.y)) {
            result.points.push_back(q);
            result.maxDist = std::max(result.maxDist, d);
        }
    };
    bool started = false;
    for (const cv::Point& q : contour) {
        started = started || q == start;
        if (!started) continue;
        if (q == end) return result;
        offer(q);
    }
    for (const cv::Point& q : contour) {
        if (q == end) break;
        offer(q);
    }
    return result;
}

void expectSame(cv::Point start, cv::Point end, const Points& contour, double tolerance) {
    const Collected expected = collectPlainly(start, end, contour, tolerance);
    const orx::TSegemetLine line({start.x, start.y}, {end.x, end.y}, contour, tolerance);
    ASSERT_EQ(line.points, expected.points) << start << " to " << end << ", tolerance " << tolerance;
    ASSERT_EQ(line.maxDist, expected.maxDist);
}

// A walk of unit steps that meets itself often.
Points wander(std::mt19937& random, int length, int range) {
    std::uniform_int_distribution<int> step(-1, 1);
    Points contour;
    cv::Point at(range / 2, range / 2);
    for (int i = 0; i < length; ++i) {
        contour.push_back(at);
        at.x = std::clamp(at.x + step(random), 0, range);
        at.y = std::clamp(at.y + step(random), 0, range);
    }
    return contour;
}

TEST(ChordPoints, EqualAPlainWalkOnContoursThatMeetThemselves) {
    std::mt19937 random(7);
    for (int round = 0; round < 400; ++round) {
        const int length = 1 + static_cast<int>(random() % 900);
        const Points contour = wander(random, length, 5 + static_cast<int>(random() % 60));
        const auto any = [&] { return contour[random() % contour.size()]; };
        for (const double tolerance : {0.0, 0.5, 2.0, 8.0}) expectSame(any(), any(), contour, tolerance);
    }
}

TEST(ChordPoints, EqualAPlainWalkForPointsThatAreNotThere) {
    std::mt19937 random(8);
    for (int round = 0; round < 100; ++round) {
        const Points contour = wander(random, 300, 40);
        const cv::Point outside(static_cast<int>(random() % 60) - 10, 41);
        const cv::Point inside = contour[random() % contour.size()];
        expectSame(outside, inside, contour, 4.0);
        expectSame(inside, outside, contour, 4.0);
        expectSame(outside, outside, contour, 4.0);
    }
    expectSame({1, 1}, {2, 2}, {}, 3.0);
}

TEST(ChordPoints, OddTolerancesCollectWhatTheyMean) {
    std::mt19937 random(9);
    const Points contour = wander(random, 500, 40);
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double tolerance : {-1.0, infinity, std::numeric_limits<double>::quiet_NaN(), 1e300}) {
        expectSame(contour[40], contour[300], contour, tolerance);
    }
}

TEST(ChordPoints, HugeCoordinatesStayExact) {
    const int far = std::numeric_limits<int>::max();
    expectSame({far - 9, far}, {far, far - 7},
               {{far - 9, far}, {far - 5, far - 3}, {far - 1, far - 6}, {far, far - 7}}, 8.0);
    expectSame({-far, -far}, {far, far}, {{-far, -far}, {0, 0}, {far, far - 1}, {far, far}}, 8.0);
}

TEST(ChordPoints, APieceMayRunOverTheContoursEnd) {
    // A square walked clockwise, beginning in the middle of its top side.
    Points contour;
    for (int x = 10; x <= 20; ++x) contour.emplace_back(x, 0);
    for (int y = 1; y <= 20; ++y) contour.emplace_back(20, y);
    for (int x = 19; x >= 0; --x) contour.emplace_back(x, 20);
    for (int y = 19; y >= 0; --y) contour.emplace_back(0, y);
    for (int x = 1; x <= 9; ++x) contour.emplace_back(x, 0);
    const orx::TSegemetLine top({0, 0}, {20, 0}, contour, 2.0);
    ASSERT_EQ(top.points.size(), 20U) << "the end itself is not collected";
    EXPECT_EQ(top.points.front(), cv::Point(0, 0));
    EXPECT_EQ(top.points[10], cv::Point(10, 0)) << "the tail of the contour comes first, then its head";
    EXPECT_EQ(top.points.back(), cv::Point(19, 0));
}

}  // namespace
