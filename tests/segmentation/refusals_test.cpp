// Why contours are not split, lines and circles not fitted and nothing is drawn, as lastRefusal() tells it.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "segment_shapes.h"
#include "tests/support/refusal_check.h"

namespace {

using namespace segment_shapes;
using orx::TSegemetCircle;
using orx::TSegemetLine;
using orx::TSegmentContour;
using orx::test::notRefused;
using orx::test::refusedWith;

const Points kRow = straight({0, 0}, {9, 0});
const Points kQuarter = arc({100, 100}, 80, 0, 90);

TEST(SegmentationRefusals, OfContours) {
    TSegmentContour splitter;
    const auto split = [&](const Points& contour, double accuracy) {
        return [&splitter, contour, accuracy] {
            orx::TSegemetParams params;
            params.firstEpsilon = accuracy;
            splitter.segmentContour(contour, params);
        };
    };
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "segmentContour", split({}, 8)));
    EXPECT_TRUE(refusedWith(orx::rcTooMany, "segmentContour", split(Points(10'000'001), 8)));
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "segmentContour", split({{5, 5}, {6, 6}}, 8)));
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "segmentContour", split(kQuarter, -1)));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "segmentContour", [&] {
        splitter.segmentContour({kRow, Points()}, {});
    }));
    // Some of their chords collect too few points for a line, some pairs lie in a row: no concern of the
    // caller's.
    EXPECT_TRUE(notRefused(split(slot({400, 300}, 100, 300), 8)));
    EXPECT_TRUE(notRefused(split(polygon({{0, 0}, {90, 0}, {90, 90}, {0, 90}}), 0)));
    EXPECT_TRUE(notRefused(split({{0, 0}, {50, 40}, {100, 0}, {150, 40}}, 1)));
}

TEST(SegmentationRefusals, OfLines) {
    Points none;
    Points row = kRow;
    TSegemetLine line;
    line.endPoint = {8, 0};
    line.generateLine({0, 0}, {8, 0});
    const auto findWithin = [&](Points& contour, double tolerance) {
        return [&line, &contour, tolerance] { line.findLinePoints(contour, tolerance); };
    };
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "findLinePoints", findWithin(none, 1)));
    EXPECT_TRUE(refusedWith(orx::rcOption, "findLinePoints", findWithin(row, -1)));
    EXPECT_EQ(orx::lastRefusal().text, "findLinePoints: the tolerance is -1; 0 pixels and more are taken");
    EXPECT_TRUE(refusedWith(orx::rcOption, "findLinePoints", findWithin(row, std::nan(""))));
    line.points = {{0, 0}, {1, 0}};
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "fitLineWithContoursWithTurkey",
                            [&] { line.fitLineWithContoursWithTurkey(); }));
    EXPECT_EQ(orx::lastRefusal().text, "fitLineWithContoursWithTurkey: 2 points; at least 3 are taken");
    EXPECT_EQ(cv::Vec3d(line.fitA, line.fitB, line.fitC), cv::Vec3d());

    const Points two{{0, 0}, {8, 0}};
    const cv::Vec2i start(0, 0);
    const cv::Vec2i end(8, 0);
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "TSegemetLine", [&] { TSegemetLine{two}; }));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "TSegemetLine", [] { TSegemetLine{Points()}; }));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "TSegemetLine", [&] { TSegemetLine(start, end, two); }));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "TSegemetLine", [&] { TSegemetLine(start, end, two, 1); }));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "TSegemetLine", [&] { TSegemetLine(start, end, Points(), 1); }));
    EXPECT_TRUE(refusedWith(orx::rcOption, "TSegemetLine", [&] { TSegemetLine(start, end, kRow, -2); }));

    EXPECT_TRUE(notRefused([&] {
        EXPECT_EQ(TSegemetLine(kRow).fitPoints, kRow);
        EXPECT_EQ(TSegemetLine(start, end, kRow).fitPoints, kRow);
        EXPECT_EQ(TSegemetLine(start, end, kRow, 1).fitPoints.size(), 8U);
        findWithin(row, 0)();
        line.fitLineWithContoursWithTurkey();
        // Nothing near the fitted line is an answer.
        EXPECT_TRUE(TSegemetLine(Points{{0, 0}, {100, 0}, {100, 100}, {0, 100}}).fitPoints.empty());
    }));
}

TEST(SegmentationRefusals, OfCircles) {
    TSegemetLine row = chordOf(kRow);
    TSegemetLine more = chordOf(straight({9, 0}, {20, 0}));
    TSegemetLine first = chordOf(arc({100, 100}, 80, 0, 40));
    TSegemetLine second = chordOf(arc({100, 100}, 80, 40, 80));
    TSegemetLine pixel;
    pixel.points = {{3, 4}};
    TSegemetLine none;
    TSegemetCircle flat;
    flat.points = kRow;
    TSegemetCircle empty;
    TSegemetCircle out;
    const std::vector<std::pair<orx::TRefusalCode, std::function<void()>>> fits{
        {orx::rcTooFew, [&] { out.generateCircleWithTurkey(none); }},
        {orx::rcTooFew, [&] { out.generateCircleWithTurkey(pixel, none); }},
        {orx::rcTooFew, [&] { out.generateCircleWithTurkey(empty, empty, false); }},
        {orx::rcTooFew, [&] { out.generateCircleWithTurkey(empty, pixel, false); }},
        {orx::rcDegenerate, [&] { out.generateCircleWithTurkey(row); }},
        {orx::rcDegenerate, [&] { out.generateCircleWithTurkey(row, more); }},
        {orx::rcDegenerate, [&] { out.generateCircleWithTurkey(flat, flat, false); }},
        {orx::rcDegenerate, [&] { out.generateCircleWithTurkey(flat, row, true); }},
    };
    for (const auto& [code, call] : fits) EXPECT_TRUE(refusedWith(code, "generateCircleWithTurkey", call));
    const std::vector<std::pair<orx::TRefusalCode, std::function<void()>>> constructors{
        {orx::rcDegenerate,
         [] {
             TSegemetCircle({0, 0}, {5, 5}, {9, 9});
         }},
        {orx::rcTooFew, [&] { TSegemetCircle{pixel}; }},
        {orx::rcTooFew, [&] { TSegemetCircle(none, pixel, 300, 60, 3.5); }},
        {orx::rcDegenerate, [&] { TSegemetCircle(flat, flat, 300, 60, 3.5, false); }},
        {orx::rcDegenerate, [&] { TSegemetCircle(flat, more, 300, 60, 3.5, true); }},
    };
    for (const auto& [code, call] : constructors) EXPECT_TRUE(refusedWith(code, "TSegemetCircle", call));
    EXPECT_TRUE(refusedWith(orx::rcDegenerate, "generateCircle", [&] {
        out.generateCircle({0, 0}, {5, 5}, {9, 9});
    }));
    EXPECT_EQ(orx::lastRefusal().text, "generateCircle: (0, 0), (5, 5) and (9, 9) lie on a line");
    EXPECT_TRUE(refusedWith(orx::rcDegenerate, "generateCircle", [&] { out.generateCircle(row, more); }));
    EXPECT_EQ(out.radius, -1.0);
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "point2CircleDistacne", [&] { out.point2CircleDistacne({}); }));
    out.radius = std::nan("");
    EXPECT_TRUE(
        refusedWith(orx::rcNotFinite, "point2CircleDistacne", [&] { out.point2CircleDistacne(kRow); }));

    EXPECT_TRUE(notRefused([&] {
        out.generateCircle({130, 100}, {100, 130}, {70, 100});
        EXPECT_NEAR(out.point2CircleDistacne(Points{{100, 70}, {100, 68}}), 2, 1e-9);
        out.generateCircle(first, second);
        TSegemetCircle arc(first, second, 300, 60, 3.5);
        EXPECT_TRUE(arc.isCircle);
        // That an arc is rejected is an answer: its radius of 80 is too small here.
        EXPECT_FALSE(TSegemetCircle(first, second, 300, 90, 3.5).isCircle);
        out.generateCircleWithTurkey(first);
    }));
}

// A function that draws, by its name.
struct Drawing {
    std::string name;
    std::function<void(TSegmentContour&, cv::Mat&)> draw;
    bool drawsResults;
};

std::vector<Drawing> drawings() {
    using Image = cv::Mat&;
    using Splitter = TSegmentContour&;
    return {
        {"disPlayCircleForTest", [](Splitter, Image img) { TSegmentContour::disPlayCircleForTest(img, {}); },
         false},
        {"disPlayLinesForTest", [](Splitter, Image img) { TSegmentContour::disPlayLinesForTest(img, {}); },
         false},
        {"disPlayFitLinesForTest",
         [](Splitter, Image img) { TSegmentContour::disPlayFitLinesForTest(img, {}); }, false},
        {"disPlayContoursForTest",
         [](Splitter, Image img) { TSegmentContour::disPlayContoursForTest(img, {kRow}); }, false},
        {"disPlayContoursForTest",
         [](Splitter, Image img) { TSegmentContour::disPlayContoursForTest(img, {}, {}, true, false); },
         false},
        {"disPlayKeyPointsForTest",
         [](Splitter, Image img) { TSegmentContour::disPlayKeyPointsForTest(img, {}, true); }, false},
        {"disPlayKeyPoints", [](Splitter s, Image img) { s.disPlayKeyPoints(img, true); }, true},
        {"disPlayCirclesLines",
         [](Splitter s, Image img) { s.disPlayCirclesLines(img, true, true, true, true, false); }, true},
        {"disPlayContours",
         [](Splitter s, Image img) { s.disPlayContours(img, true, true, true, true, false); }, true},
        {"disPlayResultCirclesLines",
         [](Splitter s, Image img) { s.disPlayResultCirclesLines(img, false, true, true, true); }, false},
    };
}

cv::Mat blank(int type) { return cv::Mat(30, 40, type, cv::Scalar::all(0)); }

TEST(SegmentationRefusals, OfImages) {
    const int sides[] = {3, 3, 3};
    TSegmentContour fresh;
    TSegmentContour splitter;
    splitter.segmentContour(slot({400, 300}, 100, 300), {});
    for (const Drawing& drawing : drawings()) {
        const auto on = [&](TSegmentContour& contours, cv::Mat image) {
            return [&drawing, &contours, image]() mutable { drawing.draw(contours, image); };
        };
        EXPECT_TRUE(refusedWith(orx::rcEmptyImage, drawing.name, on(splitter, cv::Mat())));
        EXPECT_TRUE(refusedWith(orx::rcImageDimensions, drawing.name,
                                on(splitter, cv::Mat(3, sides, CV_8UC1, cv::Scalar(0)))));
        EXPECT_TRUE(refusedWith(orx::rcImageType, drawing.name, on(splitter, blank(CV_8UC(5)))));
        EXPECT_TRUE(refusedWith(orx::rcImageType, drawing.name, on(splitter, blank(CV_64FC1))));
        EXPECT_TRUE(notRefused(on(splitter, blank(CV_8UC1)))) << drawing.name;
        EXPECT_TRUE(notRefused(on(splitter, blank(CV_8UC2)))) << drawing.name;
        if (drawing.drawsResults) {
            EXPECT_TRUE(refusedWith(orx::rcNotReady, drawing.name, on(fresh, blank(CV_8UC1))));
        } else {
            EXPECT_TRUE(notRefused(on(fresh, blank(CV_32FC1)))) << drawing.name;
        }
    }
}

TEST(SegmentationRefusals, OfDrawings) {
    cv::Mat image = blank(CV_8UC3);
    cv::Mat pair = blank(CV_8UC2);
    TSegmentContour splitter;
    EXPECT_TRUE(refusedWith(orx::rcOption, "disPlayKeyPointsForTest", [&] {
        TSegmentContour::disPlayKeyPointsForTest(image, cv::Mat(2, 2, CV_32FC1), true);
    }));
    EXPECT_TRUE(refusedWith(orx::rcImageType, "disPlayResultCirclesLines",
                            [&] { splitter.disPlayResultCirclesLines(pair, true, true, true, true); }));
    TSegemetCircle arc({30, 10}, {10, 30}, {10, 10});
    TSegemetCircle endless = arc;
    endless.radius = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(refusedWith(orx::rcDegenerate, "disPlayCircleForTest", [&] {
        TSegmentContour::disPlayCircleForTest(image, {arc, endless});
    }));
    EXPECT_EQ(orx::lastRefusal().text, "disPlayCircleForTest: 1 of 2 arcs have no outline that can be drawn");

    arc.points = kRow;
    const auto points = [&](cv::Mat img) {
        return [&arc, img]() mutable { arc.displayPionts(img, {1, 2, 3}); };
    };
    const int sides[] = {3, 3, 3};
    EXPECT_TRUE(refusedWith(orx::rcEmptyImage, "displayPionts", points(cv::Mat())));
    EXPECT_TRUE(refusedWith(orx::rcImageDimensions, "displayPionts",
                            points(cv::Mat(3, sides, CV_8UC1, cv::Scalar(0)))));
    EXPECT_TRUE(refusedWith(orx::rcImageType, "displayPionts", points(blank(CV_8UC(5)))));
    EXPECT_TRUE(notRefused(points(image)));
    EXPECT_EQ(image.at<cv::Vec3b>(2, 4), cv::Vec3b(1, 2, 3));
}

}  // namespace
