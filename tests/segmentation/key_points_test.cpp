#include "orxFunctions/segmentation/splitting/key_points.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "orxFunctions/segmentation/splitting/splitter.h"
#include "tests/segmentation/segment_shapes.h"
#include "tests/support/refusal_check.h"

namespace {

using orx::splitting::keyPointsOf;
using orx::splitting::Work;
using segment_shapes::Points;

Points byOpenCV(const Points& contour, double epsilon, bool closed) {
    Points keys;
    cv::approxPolyDP(contour, keys, epsilon, closed);
    return keys;
}

void expectSame(const Points& contour, const char* what) {
    for (const double epsilon : {0.0, 0.7, 2.0, 8.0, 60.0}) {
        for (const bool closed : {false, true}) {
            Work work;
            ASSERT_EQ(keyPointsOf(contour, epsilon, closed, work), byOpenCV(contour, epsilon, closed))
                << what << " of " << contour.size() << " points, accuracy " << epsilon << ", closed "
                << closed;
        }
    }
}

// One step in any direction, or none, after another.
Points walk(std::mt19937& random, std::size_t size, int stride) {
    Points points{{0, 0}};
    const auto step = [&] { return (static_cast<int>(random() % 3) - 1) * stride; };
    while (points.size() < size) points.push_back(points.back() + cv::Point(step(), step()));
    return points;
}

Points cloud(std::mt19937& random, std::size_t size, unsigned side) {
    Points points;
    while (points.size() < size)
        points.emplace_back(static_cast<int>(random() % side), static_cast<int>(random() % side));
    return points;
}

Points zigzag(int size, int height) {
    Points points;
    for (int i = 0; i < size; ++i) points.emplace_back(10 * i, i % 2 * height);
    return points;
}

TEST(KeyPoints, AreThoseOfOpenCVsPolygon) {
    std::mt19937 random(4);
    for (std::size_t size = 1; size < 40; ++size) {
        expectSame(cloud(random, size, 4), "crowd");
        expectSame(walk(random, size, 1), "short walk");
    }
    for (int round = 0; round < 40; ++round) {
        expectSame(walk(random, 1 + random() % 3000, 1 + round % 3 * 20), "walk");
        expectSame(cloud(random, 1 + random() % 2000, static_cast<unsigned>(3 + random() % 300)), "cloud");
        cv::Mat blot = cv::Mat::zeros(120, 150, CV_8UC1);
        for (int i = 0; i < 9; ++i) {
            const cv::Point at(static_cast<int>(random() % 150), static_cast<int>(random() % 120));
            cv::circle(blot, at, static_cast<int>(random() % 40), cv::Scalar(255), cv::FILLED);
        }
        expectSame(segment_shapes::outlineOf(blot), "outline");
    }
    expectSame(zigzag(3000, 100), "zigzag");
    expectSame(Points(50, {7, 7}), "one place");
    Points large = cloud(random, 500, 1000);
    for (cv::Point& p : large) p *= 200000;  // differences whose products leave 32 bits
    expectSame(large, "large");
}

TEST(KeyPoints, OfAZigzagAndASpiralCostLittleMoreThanItsPoints) {
    Points spiral;
    for (int i = 0; i < 100000; ++i) {
        const double angle = std::sqrt(0.5 * i);
        spiral.emplace_back(cvRound(20 * angle * std::cos(angle)), cvRound(20 * angle * std::sin(angle)));
    }
    for (const Points& contour : {zigzag(100000, 100), spiral}) {
        Work work;
        EXPECT_GT(keyPointsOf(contour, 8, false, work).size(), 1000U);
        // With a look at each point for each key point it would be more than a thousand.
        EXPECT_LT(work.spent(), 300 * contour.size());
    }
}

TEST(Splitter, StopsWhereItBecomesTooMuchWork) {
    std::mt19937 random(9);
    const Points tangle = cloud(random, 3000, 60);  // each chord runs through most of it
    const Points rectangle = segment_shapes::polygon({{0, 0}, {900, 0}, {900, 500}, {0, 500}});
    const auto isTooMuch = [](const Points& contour, std::size_t looks) {
        const auto pieces = orx::splitting::split(contour, {}, nullptr, Work(looks));
        EXPECT_TRUE(!pieces.isTooMuchWork || (pieces.lines.empty() && pieces.circles.empty()));
        return pieces.isTooMuchWork;
    };
    EXPECT_TRUE(isTooMuch(tangle, 1000 * tangle.size()));
    EXPECT_FALSE(isTooMuch(rectangle, 400 * rectangle.size()));
    EXPECT_TRUE(isTooMuch(rectangle, 10));
}

// Their looks grow with the 1.5th power of their points: what a circle of a million may take, scaled down.
TEST(Splitter, AffordsCirclesOfAMillionPoints) {
    constexpr double kPoints = 20000;
    const Points circle = segment_shapes::arc({0, 0}, kPoints / (2 * CV_PI), 0, 360);
    orx::TSegemetParams params;
    params.maxRadius = 1e9;
    const double share = std::pow(kPoints / 1e6, 1.5);
    const auto looks = static_cast<std::size_t>(share * static_cast<double>(Work::kLimit));
    const auto pieces = orx::splitting::split(circle, params, nullptr, Work(looks));
    ASSERT_EQ(pieces.circles.size(), 1U);
    EXPECT_NEAR(pieces.circles.front().radius, kPoints / (2 * CV_PI), 0.1);
}

TEST(Splitter, EmptiesAbsorbedArcsWithoutAnObserver) {
    const Points circle = segment_shapes::arc({500, 500}, 200, 0, 359);
    std::size_t absorbed = 0;
    const auto watched = orx::splitting::split(circle, {}, [&](const orx::splitting::Pieces& pieces) {
        for (const orx::TSegemetCircle& arc : pieces.circles) {
            if (arc.isCircle) continue;
            ++absorbed;
            EXPECT_FALSE(arc.points.empty()) << "would not be drawn";
        }
    });
    EXPECT_GT(absorbed, 3U);
    orx::splitting::ArcSteps steps;
    steps.absorbed = orx::splitting::Absorbed::kEmptied;
    std::size_t live = 0;
    for (const orx::TSegemetCircle& arc : orx::splitting::segment(circle, 8, {}, steps).circles) {
        EXPECT_EQ(arc.points.empty() && arc.firstPoints.empty() && arc.secondPoints.empty(), !arc.isCircle);
        live += arc.isCircle ? 1U : 0U;
    }
    EXPECT_EQ(live, watched.circles.size());
}

TEST(TSegmentContour, SaysWhyItGivesNothing) {
    orx::TSegmentContour splitter;
    EXPECT_TRUE(orx::test::refusedWith(orx::rcTooMany, "segmentContour", [&] {
        const auto pieces = splitter.segmentContour(Points(10000001), {});
        EXPECT_TRUE(pieces.first.empty() && pieces.second.empty());
    }));
    EXPECT_TRUE(splitter.getLines().empty());
    EXPECT_TRUE(orx::test::notRefused([&] {
        EXPECT_EQ(
            splitter.segmentContour(segment_shapes::polygon({{0, 0}, {900, 0}, {900, 500}}), {}).first.size(),
            3U);
    }));
    EXPECT_TRUE(orx::test::refusedWith(orx::rcTooFew, "segmentContour",
                                       [&] { splitter.segmentContour(Points(), {}); }));
    orx::TSegemetParams negative;
    negative.firstEpsilon = -1;
    EXPECT_TRUE(orx::test::refusedWith(orx::rcNoResult, "segmentContour", [&] {
        splitter.segmentContour(segment_shapes::polygon({{0, 0}, {900, 0}, {900, 500}}), negative);
    }));
    EXPECT_EQ(splitter.getLines().size(), 2U);
}

}  // namespace
