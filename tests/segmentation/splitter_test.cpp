// The steps that split a contour, and all of them against the plain definition.
#include "orxFunctions/segmentation/splitting/splitter.h"

#include <gtest/gtest.h>

#include <random>

#include "orxFunctions/segmentation/splitting/drawn_steps.h"
#include "segment_reference.h"
#include "segment_shapes.h"

namespace {

using namespace segment_shapes;
using orx::TSegemetCircle;
using orx::TSegemetLine;
using orx::TSegemetParams;
using orx::TSegmentContour;

TEST(Splitter, RunsAreTheStretchesThatNoArcCovers) {
    const auto chord = [](cv::Point from, cv::Point to, bool used) {
        TSegemetLine line = chordOf(straight(from, to));
        line.startPoint = {from.x, from.y};
        line.endPoint = {to.x, to.y};
        line.usedByCircle = used;
        return line;
    };
    std::vector<TSegemetLine> lines{chord({0, 0}, {10, 0}, false), chord({10, 0}, {10, 10}, false),
                                    chord({10, 10}, {0, 10}, true), chord({0, 10}, {0, 20}, false),
                                    chord({50, 50}, {60, 50}, false)};
    const auto runs = orx::splitting::getSecondContours(lines);
    ASSERT_EQ(runs.size(), 3U);
    EXPECT_EQ(runs[0].size(), 20U);
    EXPECT_EQ(runs[0].front(), cv::Point(0, 0));
    EXPECT_EQ(runs[0].back(), cv::Point(10, 9));
    EXPECT_EQ(runs[1].front(), cv::Point(0, 10));
    EXPECT_EQ(runs[2].front(), cv::Point(50, 50));
}

void expectSame(const TSegemetLine& line, const TSegemetLine& expected) {
    EXPECT_EQ(line.startPoint, expected.startPoint);
    EXPECT_EQ(line.endPoint, expected.endPoint);
    EXPECT_EQ(line.fitStartPoint, expected.fitStartPoint);
    EXPECT_EQ(line.fitEndPoint, expected.fitEndPoint);
    EXPECT_EQ(cv::Vec3d(line.chordA, line.chordB, line.chordC),
              cv::Vec3d(expected.chordA, expected.chordB, expected.chordC));
    EXPECT_EQ(cv::Vec3d(line.fitA, line.fitB, line.fitC),
              cv::Vec3d(expected.fitA, expected.fitB, expected.fitC));
    EXPECT_EQ(line.points, expected.points);
    EXPECT_EQ(line.fitPoints, expected.fitPoints);
    EXPECT_EQ(line.maxDist, expected.maxDist);
}

void expectSame(const TSegemetCircle& arc, const TSegemetCircle& expected) {
    EXPECT_EQ(arc.center, expected.center);
    EXPECT_EQ(arc.radius, expected.radius);
    EXPECT_EQ(cv::Vec2d(arc.startAngle, arc.endAngle), cv::Vec2d(expected.startAngle, expected.endAngle));
    EXPECT_EQ(arc.fitError, expected.fitError);
    EXPECT_EQ(cv::Vec3d(arc.partMaxDist, arc.firstMaxDist, arc.secondMaxDist),
              cv::Vec3d(expected.partMaxDist, expected.firstMaxDist, expected.secondMaxDist));
    EXPECT_EQ(cv::Vec3d(arc.errThreshold, arc.maxRadius, arc.minRadius),
              cv::Vec3d(expected.errThreshold, expected.maxRadius, expected.minRadius));
    EXPECT_EQ(arc.points, expected.points);
    EXPECT_EQ(arc.firstPoints, expected.firstPoints);
    EXPECT_EQ(arc.secondPoints, expected.secondPoints);
}

template <typename Pieces>
void expectAllSame(const Pieces& pieces, const Pieces& expected) {
    ASSERT_EQ(pieces.size(), expected.size());
    for (std::size_t i = 0; i < pieces.size(); ++i) expectSame(pieces[i], expected[i]);
}

TEST(Splitter, ADevelopmentRunChoosesItsParametersByFourNumbers) {
    const TSegemetParams plain = orx::splitting::developmentParams(7, 6.0, 0.0, 0.0);
    EXPECT_EQ(plain.smoothSize, 7);
    EXPECT_EQ(plain.firstEpsilon, 6.0);
    EXPECT_EQ(plain.secondEpsilon, 2.0);
    EXPECT_EQ(plain.maxRadius, 300.0);
    EXPECT_FALSE(plain.useSecondPass);
    EXPECT_TRUE(plain.useCircles);
    const TSegemetParams sentinel = orx::splitting::developmentParams(5, 8.0, 1.0, 5.0);
    EXPECT_FALSE(sentinel.useCircles);
    EXPECT_TRUE(sentinel.useSecondPass);
    EXPECT_EQ(sentinel.maxRadius, 5.0);
}

TEST(Splitter, DrawnStepsShowTheLastPassAndChangeNoResult) {
    const Points contour = slot({400, 300}, 100, 300);
    const cv::Mat background = cv::Mat::zeros(600, 800, CV_8UC1);
    TSegemetParams params;
    params.useSecondPass = false;
    orx::splitting::DrawnSteps steps;
    const auto drawn = orx::splitting::splitDrawn({{}, contour}, params, background, steps);
    ASSERT_EQ(drawn.size(), 1U) << "nothing for the empty contour";
    const auto [lines, circles] = TSegmentContour().segmentContour(contour, params);
    expectAllSame(drawn[0].lines, lines);
    expectAllSame(drawn[0].circles, circles);

    // All key points, and their indices, as the display of the finished contour has them.
    TSegmentContour finished;
    finished.segmentContour(contour, params);
    cv::Mat keyPoints = background.clone();
    finished.disPlayKeyPoints(keyPoints, true);
    EXPECT_GT(cv::countNonZero(keyPoints.reshape(1)), 0);
    EXPECT_EQ(cv::norm(steps.keyPoints, keyPoints, cv::NORM_INF), 0.0);
    EXPECT_GT(cv::countNonZero(steps.circles(cv::Rect(645, 280, 12, 40)).clone().reshape(1)), 0);
    const Points square = polygon({{50, 50}, {150, 50}, {150, 150}, {50, 150}});
    orx::splitting::splitDrawn({contour, square}, params, background, steps);
    EXPECT_NE(steps.lines.at<cv::Vec3b>(50, 100), cv::Vec3b()) << "on the upper side";
    EXPECT_EQ(cv::countNonZero(steps.circles.reshape(1)), 0) << "a square has no arc";
    EXPECT_EQ(cv::countNonZero(background), 0);
}

// Outlines of parts of all sizes that overlap: sides, corners, arcs, strokes that run back along themselves.
std::vector<Points> outlinesOfRandomParts(std::mt19937& random) {
    const auto below = [&](unsigned limit) { return static_cast<int>(random() % limit); };
    cv::Mat picture = cv::Mat::zeros(400, 400, CV_8UC1);
    for (int part = 0; part < 12; ++part) {
        const cv::Point at(below(400), below(400));
        if (part % 3 == 0) cv::circle(picture, at, 5 + below(90), 255 * below(2), cv::FILLED);
        if (part % 3 == 1) cv::line(picture, at, {below(400), below(400)}, 255, 1 + below(4));
        if (part % 3 == 2)
            cv::ellipse(picture, at, {20 + below(80), 20 + below(80)}, below(180), 0, 270, 255, 2);
    }
    std::vector<Points> outlines;
    cv::findContours(picture, outlines, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
    return outlines;
}

TEST(Splitter, GivesTheVeryResultsOfThePlainSteps) {
    std::mt19937 random(3);
    std::size_t lineCount = 0;
    std::size_t arcCount = 0;
    for (int round = 0; round < 12; ++round) {
        SCOPED_TRACE(round);
        TSegemetParams params;
        if (round % 3 != 0) {
            params = {5, 2.0 + round % 2, 1.0, 200.0, 4.0, 6.0, 1.5, true, true};
            params.useSecondPass = round % 4 != 0;
        }
        for (const Points& outline : outlinesOfRandomParts(random)) {
            const auto expected = segment_reference::split(outline, params);
            const auto [lines, arcs] = TSegmentContour().segmentContour(outline, params);
            expectAllSame(lines, expected.first);
            expectAllSame(arcs, expected.second);
            lineCount += lines.size();
            arcCount += arcs.size();
        }
    }
    EXPECT_GT(lineCount, 200U);
    EXPECT_GT(arcCount, 50U);
}

}  // namespace
