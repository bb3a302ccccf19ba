// Whole contours with known geometry.
#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "orxFunctions/foundation/refusal.h"
#include "segment_shapes.h"
#include "tests/support/thread_counts.h"

namespace {

using namespace segment_shapes;
using orx::TSegemetCircle;
using orx::TSegemetLine;
using orx::TSegemetParams;
using orx::TSegmentContour;

double gap(cv::Vec2i p, cv::Point q) { return std::hypot(p[0] - q.x, p[1] - q.y); }

// Every true corner is the start of exactly one line and the end of exactly one line.
void expectCorners(const std::vector<TSegemetLine>& lines, const Points& corners, double tolerance) {
    ASSERT_EQ(lines.size(), corners.size());
    for (const cv::Point& corner : corners) {
        const auto starts = std::count_if(lines.begin(), lines.end(), [&](const TSegemetLine& l) {
            return gap(l.startPoint, corner) <= tolerance;
        });
        const auto ends = std::count_if(lines.begin(), lines.end(), [&](const TSegemetLine& l) {
            return gap(l.endPoint, corner) <= tolerance;
        });
        EXPECT_EQ(starts, 1) << corner;
        EXPECT_EQ(ends, 1) << corner;
    }
}

TEST(TSegmentContour, ASquareHasFourSidesWhereverItBegins) {
    const Points corners{{50, 50}, {250, 50}, {250, 250}, {50, 250}};
    const Points contour = polygon(corners);
    for (std::size_t start = 0; start < contour.size(); start += 37) {
        SCOPED_TRACE(start);
        const auto [lines, circles] = TSegmentContour().segmentContour(startedAt(contour, start), {});
        EXPECT_TRUE(circles.empty());
        // The splitter may keep the contour's first point as a corner of its own in the first pass; the
        // second pass sees the same points, so that nothing but the true corners may remain when it starts at
        // one.
        if (start == 0) expectCorners(lines, corners, 2.0);
        EXPECT_GE(lines.size(), 4U);
        EXPECT_LE(lines.size(), 6U);
        for (const cv::Point& corner : corners) {
            EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [&](const TSegemetLine& l) {
                return gap(l.startPoint, corner) <= 2.0 || gap(l.endPoint, corner) <= 2.0;
            })) << corner;
        }
    }
}

TEST(TSegmentContour, AnOpenPolylineHasNoClosingLine) {
    Points contour = straight({20, 20}, {220, 40});
    append(contour, straight({220, 40}, {200, 260}));
    contour.emplace_back(200, 260);
    TSegemetParams params;
    params.useSecondPass = false;
    const auto [lines, circles] = TSegmentContour().segmentContour(contour, params);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].startPoint, cv::Vec2i(20, 20));
    EXPECT_LE(gap(lines[0].endPoint, {220, 40}), 1.0);
    EXPECT_EQ(lines[1].startPoint, lines[0].endPoint);
    EXPECT_EQ(lines[1].endPoint, cv::Vec2i(200, 260));
    EXPECT_TRUE(circles.empty());
}

TEST(TSegmentContour, EndsUpToADiagonalStepApartClose) {
    const Points square = polygon({{50, 50}, {150, 50}, {150, 150}, {50, 150}});
    TSegemetParams params;
    params.useSecondPass = false;
    const auto sides = [&](std::size_t dropped) {
        Points contour(square.begin(), square.end() - static_cast<std::ptrdiff_t>(dropped));
        return TSegmentContour().segmentContour(contour, params).first.size();
    };
    // The last point is (50, 51), then (50, 52): one pixel and two pixels from the first one.
    EXPECT_EQ(sides(0), 4U);
    EXPECT_EQ(sides(1), 4U) << "open now, but its last chord still runs up to the end";
    Points diagonal = square;
    diagonal.pop_back();
    diagonal.emplace_back(51, 51);
    const auto [lines, circles] = TSegmentContour().segmentContour(diagonal, params);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines.back().endPoint, lines.front().startPoint)
        << "closed by a chord back to the first key point";
    Points open = square;
    open.pop_back();
    const auto openLines = TSegmentContour().segmentContour(open, params).first;
    EXPECT_NE(openLines.back().endPoint, openLines.front().startPoint);
}

TEST(TSegmentContour, CirclesWithinTheBoundsAreFoundWithTheirRadius) {
    for (const double radius : {70.0, 100.0, 180.0, 280.0}) {
        cv::Mat picture = cv::Mat::zeros(700, 700, CV_8UC1);
        cv::circle(picture, {350, 350}, cvRound(radius), 255, cv::FILLED);
        const auto [lines, circles] = TSegmentContour().segmentContour(outlineOf(picture), {});
        ASSERT_FALSE(circles.empty()) << radius;
        std::size_t covered = 0;
        for (const TSegemetCircle& circle : circles) {
            EXPECT_NEAR(circle.radius, radius, 3.0);
            EXPECT_NEAR(circle.center.x, 350, 3.0);
            EXPECT_NEAR(circle.center.y, 350, 3.0);
            covered += circle.points.size();
        }
        EXPECT_GT(static_cast<double>(covered), 0.8 * static_cast<double>(outlineOf(picture).size()))
            << radius;
    }
}

TEST(TSegmentContour, CirclesBeyondTheBoundsStayLines) {
    for (const int radius : {40, 400}) {
        cv::Mat picture = cv::Mat::zeros(900, 900, CV_8UC1);
        cv::circle(picture, {450, 450}, radius, 255, cv::FILLED);
        const auto [lines, circles] = TSegmentContour().segmentContour(outlineOf(picture), {});
        EXPECT_TRUE(circles.empty()) << radius;
        EXPECT_FALSE(lines.empty()) << radius;
    }
}

TEST(TSegmentContour, ASlotIsTwoArcsAndTwoLinesWhereverItBegins) {
    const Points contour = slot({400, 300}, 100, 300);
    for (std::size_t start = 0; start < contour.size(); start += 31) {
        SCOPED_TRACE(start);
        const auto [lines, circles] = TSegmentContour().segmentContour(startedAt(contour, start), {});
        ASSERT_GE(circles.size(), 2U);
        bool left = false;
        bool right = false;
        for (const TSegemetCircle& circle : circles) {
            EXPECT_NEAR(circle.radius, 100, 8);
            EXPECT_NEAR(circle.center.y, 300, 8);
            left = left || std::abs(circle.center.x - 250) < 8;
            right = right || std::abs(circle.center.x - 550) < 8;
        }
        EXPECT_TRUE(left && right);
        double top = 0;
        double bottom = 0;
        for (const TSegemetLine& line : lines) {
            const double length = std::abs(line.endPoint[0] - line.startPoint[0]);
            const auto liesAt = [&](int y) {
                return std::abs(line.startPoint[1] - y) <= 3 && std::abs(line.endPoint[1] - y) <= 3;
            };
            if (liesAt(200)) top += length;
            if (liesAt(400)) bottom += length;
        }
        EXPECT_GT(top, 200);
        EXPECT_GT(bottom, 200);
    }
}

TEST(TSegmentContour, ARoundedRectangleHasFourArcsOfItsCornerRadius) {
    const int r = 80;
    Points contour = straight({180, 100}, {520, 100});
    append(contour, arc({520, 180}, r, -90, 0));
    append(contour, straight({600, 181}, {600, 420}));
    append(contour, arc({520, 420}, r, 0, 90));
    append(contour, straight({519, 500}, {180, 500}));
    append(contour, arc({180, 420}, r, 90, 180));
    append(contour, straight({100, 419}, {100, 180}));
    append(contour, arc({180, 180}, r, 180, 270));
    TSegemetParams params;
    params.firstEpsilon = 3.0;
    const auto [lines, circles] = TSegmentContour().segmentContour(contour, params);
    ASSERT_EQ(circles.size(), 4U);
    for (const cv::Point2d truth : {cv::Point2d(520, 180), {520, 420}, {180, 420}, {180, 180}}) {
        EXPECT_TRUE(std::any_of(circles.begin(), circles.end(), [&](const TSegemetCircle& c) {
            return cv::norm(c.center - truth) < 8 && std::abs(c.radius - r) < 8;
        })) << truth;
    }
}

TEST(TSegmentContour, AKeyholeIsOneArcAndItsSlit) {
    cv::Mat picture = cv::Mat::zeros(600, 600, CV_8UC1);
    cv::circle(picture, {300, 250}, 120, 255, cv::FILLED);
    cv::rectangle(picture, {270, 250}, {330, 560}, 255, cv::FILLED);
    const auto [lines, circles] = TSegmentContour().segmentContour(outlineOf(picture), {});
    ASSERT_FALSE(circles.empty());
    const auto largest = std::max_element(
        circles.begin(), circles.end(),
        [](const TSegemetCircle& a, const TSegemetCircle& b) { return a.points.size() < b.points.size(); });
    EXPECT_NEAR(largest->radius, 120, 5);
    EXPECT_LT(cv::norm(largest->center - cv::Point2d(300, 250)), 6);
    int sides = 0;
    for (const TSegemetLine& line : lines) {
        if (std::abs(line.startPoint[1] - line.endPoint[1]) > 150 && line.points.size() > 150) ++sides;
    }
    EXPECT_EQ(sides, 2);
}

TEST(TSegmentContour, AGearHasALineForEveryFlank) {
    // Ten rectangular teeth: twenty corners at radius 200 and twenty at 160.
    Points corners;
    for (int tooth = 0; tooth < 10; ++tooth) {
        const double a = 36.0 * tooth;
        corners.push_back(toPixel(onCircle({300, 300}, 160, a)));
        corners.push_back(toPixel(onCircle({300, 300}, 200, a)));
        corners.push_back(toPixel(onCircle({300, 300}, 200, a + 18)));
        corners.push_back(toPixel(onCircle({300, 300}, 160, a + 18)));
    }
    TSegemetParams params;
    params.firstEpsilon = 2.0;
    params.useCircles = false;
    params.useSecondPass = false;
    const auto [lines, circles] = TSegmentContour().segmentContour(polygon(corners), params);
    EXPECT_TRUE(circles.empty());
    expectCorners(lines, corners, 2.0);
}

TEST(TSegmentContour, TheSecondPassIsFiner) {
    // A flat roof: its ridge rises 5 pixels, between the two accuracies.
    Points contour = straight({100, 200}, {200, 195});
    append(contour, straight({200, 195}, {300, 200}));
    append(contour, straight({300, 200}, {300, 400}));
    contour.emplace_back(300, 400);
    TSegemetParams params;
    params.useSecondPass = false;
    EXPECT_EQ(TSegmentContour().segmentContour(contour, params).first.size(), 2U);
    params.useSecondPass = true;
    EXPECT_EQ(TSegmentContour().segmentContour(contour, params).first.size(), 3U);
}

TEST(TSegmentContour, ResultsAccumulateButEmptyContoursAddNothing) {
    const Points square = polygon({{50, 50}, {150, 50}, {150, 150}, {50, 150}});
    TSegmentContour splitter;
    splitter.segmentContour(std::vector<Points>{square, {}, square, slot({400, 300}, 100, 300)}, {});
    EXPECT_EQ(splitter.getLines().size(), 3U);
    EXPECT_EQ(splitter.getCircles().size(), 3U);
    const auto [lines, circles] = splitter.segmentContour(Points{}, {});
    EXPECT_TRUE(lines.empty() && circles.empty());
    EXPECT_EQ(splitter.getLines().size(), 3U);
    const auto [again, none] = splitter.segmentContour(square, {});
    EXPECT_EQ(splitter.getLines().size(), 4U);
    EXPECT_EQ(splitter.getLines().back().size(), again.size());
}

TEST(TSegmentContour, DegenerateContoursGiveNothing) {
    for (const Points& contour :
         {Points{{5, 5}}, Points{{5, 5}, {5, 5}}, Points{{5, 5}, {6, 6}}, Points(100, {9, 9})}) {
        const auto [lines, circles] = TSegmentContour().segmentContour(contour, {});
        EXPECT_TRUE(lines.empty());
        EXPECT_TRUE(circles.empty());
    }
    // Accuracies that no polygon can have.
    for (const double accuracy : {-1.0, 1e30, std::numeric_limits<double>::quiet_NaN()}) {
        TSegemetParams params;
        params.firstEpsilon = accuracy;
        TSegmentContour splitter;
        EXPECT_TRUE(splitter.segmentContour(slot({400, 300}, 100, 300), params).first.empty());
        EXPECT_EQ(splitter.getLines().size(), 1U);
    }
    // A closed double line: two key points of a closed contour.
    Points thin = straight({10, 10}, {110, 10});
    append(thin, straight({110, 10}, {10, 10}));
    const auto [lines, circles] = TSegmentContour().segmentContour(thin, {});
    EXPECT_TRUE(lines.empty());
}

TEST(TSegmentContour, RandomContoursOfAllKindsAreSurvived) {
    std::mt19937 random(11);
    for (int round = 0; round < 60; ++round) {
        Points contour;
        const int length = 1 + static_cast<int>(random() % 400);
        const int range = 1 + static_cast<int>(random() % 500);
        for (int i = 0; i < length; ++i) {
            contour.emplace_back(static_cast<int>(random()) % range, static_cast<int>(random()) % range);
        }
        TSegemetParams params;
        params.firstEpsilon = static_cast<double>(random() % 20);
        params.secondEpsilon = static_cast<double>(random() % 5);
        params.minRadius = static_cast<double>(random() % 50);
        params.errThreshold = static_cast<double>(random() % 30);
        TSegmentContour splitter;
        const auto [lines, circles] = splitter.segmentContour(contour, params);
        for (const TSegemetLine& line : lines) EXPECT_FALSE(line.usedByCircle);
        for (const TSegemetCircle& circle : circles) {
            EXPECT_TRUE(circle.isCircle);
            EXPECT_LT(circle.radius, 300);
            EXPECT_LE(circle.startAngle, circle.endAngle);
        }
    }
}

// Lines and arcs of all contours, in numbers that tell any difference.
std::vector<double> numbersOf(TSegmentContour& splitter) {
    std::vector<double> numbers;
    const auto add = [&](std::initializer_list<double> more) {
        numbers.insert(numbers.end(), more.begin(), more.end());
    };
    for (const std::vector<TSegemetLine>& lines : splitter.getLines()) {
        add({static_cast<double>(lines.size())});
        for (const TSegemetLine& line : lines) {
            add({line.fitA, line.fitB, line.fitC, line.maxDist, static_cast<double>(line.points.size()),
                 static_cast<double>(line.startPoint[0]), static_cast<double>(line.endPoint[1])});
        }
    }
    for (const std::vector<TSegemetCircle>& circles : splitter.getCircles()) {
        add({static_cast<double>(circles.size())});
        for (const TSegemetCircle& circle : circles) {
            add({circle.center.x, circle.center.y, circle.radius, circle.startAngle, circle.endAngle,
                 static_cast<double>(circle.points.size())});
        }
    }
    return numbers;
}

TEST(TSegmentContour, ManyContoursAreSplitLikeOneAfterTheOtherOnAnyNumberOfThreads) {
    // Squares and rings, among them empty contours and such as give no piece: refused in their order.
    std::vector<Points> contours;
    for (int i = 0; i < 24; ++i) {
        const int size = 40 + 7 * i;
        contours.push_back(polygon({{5, i}, {5 + size, 5}, {5 + size, 5 + size}, {5, 5 + size}}));
        contours.push_back(arc({300.0 + i, 310}, 65 + i, 0, 200 + i));
        if (i % 10 == 4) contours.emplace_back();
        if (i % 10 == 5) contours.push_back({{5, 5}, {6, 6}});
    }
    TSegmentContour oneByOne;
    orx::clearLastRefusal();
    for (const Points& contour : contours) oneByOne.segmentContour(contour, {});
    const orx::TRefusal told = orx::lastRefusal();
    ASSERT_EQ(told.code, orx::rcNoResult);
    const std::vector<double> expected = numbersOf(oneByOne);
    ASSERT_EQ(oneByOne.getLines().size(), contours.size() - 2);

    EXPECT_TRUE(orx::test::madeAlike(
        expected,
        [&] {
            TSegmentContour splitter;
            orx::clearLastRefusal();
            splitter.segmentContour(contours, {});
            EXPECT_EQ(orx::lastRefusal().text, told.text);
            return numbersOf(splitter);
        },
        [](const std::vector<double>& a, const std::vector<double>& b) { return a == b; }));

    TSegmentContour none;
    none.segmentContour(std::vector<Points>(), {});
    EXPECT_TRUE(none.getLines().empty());
}

}  // namespace
