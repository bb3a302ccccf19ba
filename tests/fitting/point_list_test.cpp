#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

using Points = std::vector<cv::Point>;
using testing::ElementsAre;
using testing::IsEmpty;

// Points that tell their place: (0, 0), (1, 10), (2, 20) ...
Points numbered(int count) {
    Points points;
    for (int i = 0; i < count; ++i) points.emplace_back(i, 10 * i);
    return points;
}

std::vector<int> numbersOf(const Points& points) {
    std::vector<int> numbers;
    for (const cv::Point& p : points) numbers.push_back(p.x);
    return numbers;
}

TEST(GetPointOnCircle, IsStrictAndKeepsTheOrder) {
    orx::TCircle circle;
    circle.x = 10;
    circle.y = 20;
    circle.r = 5;
    // Distances from the centre: 7 (off by exactly 2), 6, 5, 4, 3 (off by exactly 2), 0.
    Points out = {{99, 99}};
    orx::getPointOnCircle({{17, 20}, {10, 26}, {13, 24}, {6, 20}, {10, 17}, {10, 20}}, circle, out, 2);
    EXPECT_EQ(out, (Points{{10, 26}, {13, 24}, {6, 20}}));
    orx::getPointOnCircle({{13, 24}}, circle, out, 0);
    EXPECT_THAT(out, IsEmpty());
}

// On each processor's way, with radii and tolerances that no list should have, too.
TEST(GetPointOnCircle, KeepsWhatThePlainTestKeeps) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    std::mt19937 random(12);
    std::uniform_int_distribution<int> at(-60, 60);
    for (std::size_t count = 0; count < 40; ++count) {
        Points points(count);
        for (cv::Point& p : points) p = {at(random), at(random)};
        for (const double r : {0.0, 5.0, 42.5, -3.0, none, infinite}) {
            for (const double x : {0.0, -7.25, none, infinite}) {
                for (const int tol : {-1, 0, 1, 5, 20, std::numeric_limits<int>::max()}) {
                    const auto isNear = [&](const cv::Point& p) {
                        return std::abs(std::sqrt((p.x - x) * (p.x - x) + (p.y - 3.0) * (p.y - 3.0)) - r) <
                               tol;
                    };
                    Points expected;
                    std::copy_if(points.begin(), points.end(), std::back_inserter(expected), isNear);
                    orx::TCircle circle;
                    circle.x = x;
                    circle.y = 3;
                    circle.r = r;
                    for (const bool optimized : {true, false}) {
                        Points out = {{99, 99}};
                        cv::setUseOptimized(optimized);
                        orx::getPointOnCircle(points, circle, out, tol);
                        cv::setUseOptimized(true);
                        EXPECT_EQ(out, expected)
                            << count << " points, x " << x << ", r " << r << ", tol " << tol;
                    }
                }
            }
        }
    }
}

TEST(GetPointListFromIdxList, FollowsTheIndicesAndPassesOverStrangeOnes) {
    Points out = {{99, 99}};
    EXPECT_TRUE(orx::getPointListFromIdxList(numbered(5), {3, 0, 3, 4}, out));
    EXPECT_THAT(numbersOf(out), ElementsAre(3, 0, 3, 4));
    EXPECT_TRUE(orx::getPointListFromIdxList(numbered(5), {-1, 2, 5, std::numeric_limits<int>::min()}, out));
    EXPECT_THAT(numbersOf(out), ElementsAre(2));
}

TEST(DeletePointsInList, SwapsFromTheLargestIndexDown) {
    Points points = numbered(6);
    // 4 changes places with 5, then 1 with what is now at place 4, then 0 with what is at place 3.
    orx::deletePointsInList(points, {1, 4, 0});
    EXPECT_THAT(numbersOf(points), ElementsAre(3, 5, 2));
    orx::deletePointsInList(points, {2, 1, 0});
    EXPECT_THAT(points, IsEmpty());
}

// The order as it is stated: ascending indices, from the last one on a swap with the end of what is kept.
Points swappedOut(Points points, std::vector<int> indices) {
    std::sort(indices.begin(), indices.end());
    std::size_t end = points.size();
    for (auto index = indices.rbegin(); index != indices.rend(); ++index)
        std::swap(points[static_cast<std::size_t>(*index)], points[--end]);
    points.resize(end);
    return points;
}

TEST(DeletePointsInList, ManyAreRemovedInTheOrderOfFew) {
    std::mt19937 random(3);
    for (const std::size_t removed : {20U, 64U, 65U, 300U, 999U, 1000U}) {
        std::vector<int> indices(1000);
        std::iota(indices.begin(), indices.end(), 0);
        std::shuffle(indices.begin(), indices.end(), random);
        indices.resize(removed);
        Points points = numbered(1000);
        orx::deletePointsInList(points, indices);
        ASSERT_EQ(points, swappedOut(numbered(1000), indices)) << removed;

        // One twice, and one that no point has.
        indices.back() = indices.front();
        points = numbered(1000);
        const Points expected = swappedOut(points, indices);
        if (removed < 1000) indices.push_back(4711);
        orx::deletePointsInList(points, indices);
        ASSERT_EQ(points, expected) << removed;
    }
}

TEST(DeletePointsInList, DoesNothingForNoOrTooManyIndices) {
    Points points = numbered(3);
    orx::deletePointsInList(points, {});
    orx::deletePointsInList(points, {0, 1, 2, 0});
    EXPECT_THAT(numbersOf(points), ElementsAre(0, 1, 2));
    orx::deletePointsInList(points, {-1, 3, 1});
    EXPECT_THAT(numbersOf(points), ElementsAre(0, 2)) << "only index 1 is one of the list's";
}

TEST(DeleteImageSidePoints, RemovesInTheOrderOfAList) {
    std::mt19937 random(4);
    for (int round = 0; round < 50; ++round) {
        Points points(static_cast<std::size_t>(random() % 300));
        for (cv::Point& p : points)
            p = cv::Point(static_cast<int>(random() % 100), static_cast<int>(random() % 80));
        std::vector<int> outside;
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (!cv::Rect(20, 20, 60, 40).contains(points[i])) outside.push_back(static_cast<int>(i));
        }
        const Points expected = swappedOut(points, outside);
        orx::deleteImageSidePoints(points, {100, 80}, 20);
        ASSERT_EQ(points, expected) << round;
    }
}

TEST(DeleteImageSidePoints, KeepsPointsAtTheMargin) {
    // In 100 x 80 with a margin of 10 the columns 10 to 89 and the rows 10 to 69 stay.
    Points points = {{9, 40}, {10, 10}, {89, 69}, {90, 40}, {40, 9}, {40, 70}, {50, 40}};
    orx::deleteImageSidePoints(points, {100, 80}, 10);
    // Places 5, 4, 3, 0 go: (50, 40) fills 5, is moved on to 4 and to 3, and then to 0.
    EXPECT_EQ(points, (Points{{50, 40}, {10, 10}, {89, 69}}));
    orx::deleteImageSidePoints(points, {100, 80}, std::numeric_limits<int>::max());
    EXPECT_THAT(points, IsEmpty());
}

TEST(DeletePartPoints, LeavesAtLeastTwoPoints) {
    for (const int count : {4, 5, 6, 0, -3, std::numeric_limits<int>::max()}) {
        Points points = numbered(5);
        orx::deletePartPoints(points, count);
        EXPECT_EQ(points, numbered(5)) << count;
    }
    Points points = numbered(5);
    orx::deletePartPoints(points, 3);
    EXPECT_EQ(points.size(), 2U);
    Points empty;
    orx::deletePartPoints(empty, 1);
    EXPECT_THAT(empty, IsEmpty());
}

TEST(DeletePartPoints, MovesTheLastPointIntoTheGap) {
    for (unsigned seed = 0; seed < 50; ++seed) {
        std::srand(seed);
        const auto first = static_cast<std::size_t>(std::rand() % 9);
        const auto second = static_cast<std::size_t>(std::rand() % 8);
        std::vector<int> expected = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
        expected[first] = 9;
        expected.pop_back();
        expected[second] = expected[8];
        expected.pop_back();
        std::srand(seed);
        Points points = numbered(10);
        orx::deletePartPoints(points, 2);
        EXPECT_EQ(numbersOf(points), expected);
    }
}

TEST(RandomNumbers, AreDrawnFromTheRuntime) {
    std::srand(7);
    const int first = std::rand();
    const int second = std::rand();
    EXPECT_EQ(orx::getSrandNum(-3, 8, 7), -3 + first % 12);
    EXPECT_EQ(orx::getRandNum(100, 100), 100);
    std::srand(7);
    std::rand();
    EXPECT_EQ(orx::getRandNum(0, 999), second % 1000);
}

TEST(RandomNumbers, AnyBoundsAreSafe) {
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    EXPECT_EQ(orx::getSrandNum(5, 4, 7), 5);
    EXPECT_EQ(orx::getSrandNum(5, -100, 7), 5);
    std::srand(7);
    std::rand();
    const int next = std::rand();
    EXPECT_EQ(orx::getSrandNum(kHighest, kLowest, 7), kHighest);
    EXPECT_EQ(std::rand(), next) << "a number is drawn all the same";
    std::srand(7);
    EXPECT_EQ(orx::getSrandNum(kLowest, kHighest, 7), kLowest + std::int64_t{(std::srand(7), std::rand())});
}

}  // namespace
