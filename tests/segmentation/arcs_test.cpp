// How chords grow into arcs and arcs join, step by step.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "orxFunctions/segmentation/splitting/arcs.h"
#include "segment_reference.h"
#include "segment_shapes.h"

namespace {

orx::splitting::ArcSteps steps;  // which keep what has been absorbed

using namespace segment_shapes;
using orx::TSegemetCircle;
using orx::TSegemetLine;
using orx::splitting::generateCircles;
using orx::splitting::mergeCircles2;
using orx::splitting::mergeCirclesAndLines;

const cv::Point2d kCenter(500, 500);

// Chords over consecutive pieces of the circle of radius 100, each from one angle to the next.
std::vector<TSegemetLine> chords(const std::vector<double>& angles) {
    std::vector<TSegemetLine> lines;
    for (std::size_t i = 0; i + 1 < angles.size(); ++i)
        lines.push_back(chordOf(arc(kCenter, 100, angles[i], angles[i + 1])));
    return lines;
}

TSegemetLine chordBetween(cv::Point from, cv::Point to) { return chordOf(straight(from, to)); }

// An accepted arc over the given angles, in two halves.
TSegemetCircle arcOver(cv::Point2d center, double from, double to) {
    const double middle = (from + to) / 2;
    TSegemetLine l1 = chordOf(arc(center, 100, from, middle));
    TSegemetLine l2 = chordOf(arc(center, 100, middle, to));
    return {l1, l2, 300, 60, 3.5};
}

TEST(GrowArcs, ThreeChordsGiveAnArcThatGrows) {
    std::vector<TSegemetLine> lines = chords({0, 40, 80, 120});
    std::vector<TSegemetCircle> circles;
    generateCircles(lines, circles, false, {}, steps);
    ASSERT_EQ(circles.size(), 2U);
    EXPECT_FALSE(circles[0].isCircle) << "absorbed by the larger one";
    EXPECT_TRUE(circles[1].isCircle);
    EXPECT_NEAR(circles[1].radius, 100, 1);
    for (const TSegemetLine& line : lines) EXPECT_TRUE(line.usedByCircle);
}

TEST(GrowArcs, ACornerGivesNoArc) {
    std::vector<TSegemetLine> lines{chordBetween({100, 100}, {300, 100}),
                                    chordBetween({300, 100}, {300, 300})};
    std::vector<TSegemetCircle> circles;
    generateCircles(lines, circles, false, {}, steps);
    EXPECT_TRUE(circles.empty());
    EXPECT_FALSE(lines[0].usedByCircle || lines[1].usedByCircle);
}

TEST(GrowArcs, AfterARejectedGrowthAFreshPairStartsAtTheNextChord) {
    // An arc of two chords, a long straight piece that it can't swallow, and another arc.
    std::vector<TSegemetLine> lines = chords({0, 40, 80});
    const cv::Point end = lines.back().points.back();
    lines.push_back(chordBetween(end, {end.x - 20, end.y + 400}));
    for (TSegemetLine& line : chords({100, 140, 180})) lines.push_back(line);
    std::vector<TSegemetCircle> circles;
    generateCircles(lines, circles, false, {}, steps);
    ASSERT_EQ(circles.size(), 2U);
    EXPECT_TRUE(circles[0].isCircle && circles[1].isCircle);
    EXPECT_FALSE(lines[2].usedByCircle);
}

TEST(GrowArcs, TheSeamJoinsTheLastChordToTheFirst) {
    {
        SCOPED_TRACE("no arc yet: a pair over the seam");
        std::vector<TSegemetLine> lines = chords({0, 40});
        lines.push_back(chordBetween({577, 564}, {900, 560}));
        lines.push_back(chordBetween({900, 560}, {900, 100}));
        lines.push_back(chords({-40, 0})[0]);
        std::vector<TSegemetCircle> circles;
        generateCircles(lines, circles, true, {}, steps);
        ASSERT_EQ(circles.size(), 1U);
        EXPECT_EQ(circles[0].firstPoints, lines.back().points);
        EXPECT_EQ(circles[0].secondPoints, lines.front().points);
    }
    {
        SCOPED_TRACE("the first two chords are an arc: the last chord goes in front of it");
        std::vector<TSegemetLine> lines = chords({0, 40, 80});
        lines.push_back(chordBetween(lines.back().points.back(), {400, 900}));
        lines.push_back(chordBetween({400, 900}, {900, 900}));
        lines.push_back(chords({-40, 0})[0]);
        std::vector<TSegemetCircle> circles;
        generateCircles(lines, circles, true, {}, steps);
        ASSERT_EQ(circles.size(), 2U);
        EXPECT_FALSE(circles[0].isCircle);
        EXPECT_TRUE(circles[1].isCircle);
        EXPECT_EQ(circles[1].firstPoints, lines.back().points);
        EXPECT_EQ(circles[1].secondPoints, circles[0].points);
    }
    {
        SCOPED_TRACE("a run reaches the end: it takes the first chord");
        std::vector<TSegemetLine> lines = chords({0, 40});
        lines.push_back(chordBetween({577, 564}, {900, 900}));
        for (TSegemetLine& line : chords({-80, -40, 0})) lines.push_back(line);
        std::vector<TSegemetCircle> circles;
        generateCircles(lines, circles, true, {}, steps);
        ASSERT_EQ(circles.size(), 2U);
        EXPECT_EQ(circles[1].secondPoints, lines.front().points);
        EXPECT_TRUE(lines.front().usedByCircle);
    }
    {
        SCOPED_TRACE("arcs at both ends: they merge");
        std::vector<TSegemetLine> lines = chords({0, 40, 80});
        lines.push_back(chordBetween(lines.back().points.back(), {400, 900}));
        for (TSegemetLine& line : chords({-80, -40, 0})) lines.push_back(line);
        std::vector<TSegemetCircle> circles;
        generateCircles(lines, circles, true, {}, steps);
        ASSERT_EQ(circles.size(), 3U);
        EXPECT_FALSE(circles[0].isCircle || circles[1].isCircle);
        EXPECT_EQ(circles[2].firstPoints, circles[1].points)
            << "along the contour: the last arc, then the first";
    }
    {
        SCOPED_TRACE("one arc all the way round: nothing is left to join");
        std::vector<TSegemetLine> lines = chords({0, 90, 180, 270, 359});
        std::vector<TSegemetCircle> circles;
        generateCircles(lines, circles, true, {}, steps);
        EXPECT_EQ(circles.size(), 3U);
        EXPECT_TRUE(circles.back().isCircle);
    }
}

TEST(GrowArcs, NoLinesGiveNothing) {
    std::vector<TSegemetLine> lines;
    std::vector<TSegemetCircle> circles;
    generateCircles(lines, circles, true, {}, steps);
    EXPECT_TRUE(circles.empty());
}

TEST(MergeArcs, NeedTouchingEndsAndNearCentres) {
    const auto expectMerged = [&](double gapAngle, bool expected) {
        std::vector<TSegemetCircle> circles{arcOver(kCenter, 0, 90), arcOver(kCenter, 90 + gapAngle, 180)};
        const double gapPixels = cv::norm(circles[0].secondPoints.back() - circles[1].firstPoints.front());
        ASSERT_NEAR(gapPixels, expected ? 7.0 : 9.0, 0.9);
        mergeCircles2(circles, {}, steps);
        EXPECT_EQ(circles.size(), expected ? 3U : 2U);
    };
    expectMerged(3.7, true);
    expectMerged(4.7, false);
    // The second arc shifted along the tangent at the joint: its end stays near, its centre doesn't.
    TSegemetCircle first = arcOver(kCenter, 0, 90);
    TSegemetCircle second = arcOver(kCenter + cv::Point2d(0, 60), 270, 200);
    second.firstPoints.insert(second.firstPoints.begin(), cv::Point(500, 603));
    std::vector<TSegemetCircle> circles{first, second};
    mergeCircles2(circles, {}, steps);
    EXPECT_EQ(circles.size(), 2U) << "centres 60 pixels apart";
}

TEST(MergeArcs, TheMergedPointsRunAlongTheContour) {
    // Given in the wrong order: the second arc runs into the first.
    std::vector<TSegemetCircle> circles{arcOver(kCenter, 91, 180), arcOver(kCenter, 0, 90)};
    const TSegemetCircle later = circles[0];
    const TSegemetCircle earlier = circles[1];
    mergeCircles2(circles, {}, steps);
    ASSERT_EQ(circles.size(), 3U);
    EXPECT_EQ(circles[2].firstPoints, earlier.points);
    EXPECT_EQ(circles[2].secondPoints, later.points);
    EXPECT_FALSE(circles[0].isCircle || circles[1].isCircle);
    EXPECT_TRUE(circles[2].isCircle);
}

TEST(MergeArcs, AMergedArcMergesOn) {
    std::vector<TSegemetCircle> circles{arcOver(kCenter, 0, 80), arcOver(kCenter, 81, 160),
                                        arcOver(kCenter, 161, 240)};
    mergeCircles2(circles, {}, steps);
    const auto live =
        std::count_if(circles.begin(), circles.end(), [](const TSegemetCircle& c) { return c.isCircle; });
    EXPECT_EQ(live, 1);
    EXPECT_EQ(circles.size(), 5U);
}

TEST(SwallowLines, AnArcSwallowsTheChordsThatTouchItOneByOne) {
    std::vector<TSegemetCircle> circles{arcOver(kCenter, 0, 80)};
    std::vector<TSegemetLine> lines = chords({-30, 0});
    for (TSegemetLine& line : chords({80, 110, 140})) lines.push_back(line);
    mergeCirclesAndLines(circles, lines, {}, steps);
    EXPECT_EQ(circles.size(), 4U);
    EXPECT_TRUE(circles.back().isCircle);
    for (const TSegemetLine& line : lines) EXPECT_TRUE(line.usedByCircle);
    EXPECT_NEAR(circles.back().startAngle, -30, 2);
    EXPECT_NEAR(circles.back().endAngle, 140, 2);
}

TEST(SwallowLines, AChordTwoPixelsAwayIsNotSwallowed) {
    for (const int gapPixels : {1, 2}) {
        std::vector<TSegemetCircle> circles{arcOver(kCenter, 0, 80)};
        Points next = arc(kCenter, 100, 80, 110);
        const cv::Point end = circles[0].secondPoints.back();
        while (!next.empty() && cv::norm(next.front() - end) < gapPixels) next.erase(next.begin());
        next.front() = end + cv::Point(-gapPixels, 0);
        std::vector<TSegemetLine> lines{chordOf(next)};
        mergeCirclesAndLines(circles, lines, {}, steps);
        EXPECT_EQ(lines[0].usedByCircle, gapPixels == 1);
    }
}

TEST(SwallowLines, EndsWithoutPointsTouchNothing) {
    TSegemetCircle hollow;
    hollow.isCircle = true;
    std::vector<TSegemetCircle> circles{hollow, hollow};
    std::vector<TSegemetLine> lines(2);
    mergeCirclesAndLines(circles, lines, {}, steps);
    mergeCircles2(circles, {}, steps);
    EXPECT_EQ(circles.size(), 2U);
}

void expectSame(const std::vector<TSegemetCircle>& circles, const std::vector<TSegemetCircle>& expected) {
    ASSERT_EQ(circles.size(), expected.size());
    for (std::size_t i = 0; i < circles.size(); ++i) {
        EXPECT_EQ(circles[i].isCircle, expected[i].isCircle) << i;
        EXPECT_EQ(circles[i].firstPoints, expected[i].firstPoints) << i;
        EXPECT_EQ(circles[i].secondPoints, expected[i].secondPoints) << i;
        EXPECT_EQ(circles[i].radius, expected[i].radius) << i;
    }
}

TEST(Merging, EqualsTheScansOfAllPairsOnRandomLists) {
    std::mt19937 random(5);
    const auto below = [&](unsigned limit) { return static_cast<int>(random() % limit); };
    std::size_t mergers = 0;
    std::size_t swallowed = 0;
    for (int round = 0; round < 8; ++round) {
        // Arcs and chords around a few nearby centres, also left and above the image; many overlap, some
        // touch.
        std::vector<TSegemetCircle> circles;
        std::vector<TSegemetLine> lines;
        for (int piece = 0; piece < 60; ++piece) {
            const cv::Point2d center(300 * below(3) + below(4), -40 * below(2));
            const double from = 15 * below(24) + below(5);
            const double to = from + 30 + 15 * below(3);
            if (piece % 3 == 0) {
                lines.push_back(chordOf(arc(center, 100, from, to)));
                lines.back().usedByCircle = below(8) == 0;
            } else {
                circles.push_back(arcOver(center, from, to));
                if (below(8) == 0) circles.back().isCircle = false;
            }
        }
        const std::size_t before = circles.size();
        std::vector<TSegemetCircle> expected = circles;
        std::vector<TSegemetLine> expectedLines = lines;
        segment_reference::swallowAllPairs(expected, expectedLines, {});
        mergeCirclesAndLines(circles, lines, {}, steps);
        expectSame(circles, expected);
        for (std::size_t l = 0; l < lines.size(); ++l)
            EXPECT_EQ(lines[l].usedByCircle, expectedLines[l].usedByCircle) << l;
        swallowed += circles.size() - before;

        const std::size_t between = circles.size();
        segment_reference::mergeAllPairs(expected, {});
        mergeCircles2(circles, {}, steps);
        expectSame(circles, expected);
        mergers += circles.size() - between;
    }
    EXPECT_GT(mergers, 20U);
    EXPECT_GT(swallowed, 10U);
}

}  // namespace
