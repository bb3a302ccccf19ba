// Contours split into lines and arcs: pieces made of the contour's own points, the same again, and drawn.
#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;
using Contour = std::vector<cv::Point>;

orx::TSegemetParams parameters(fuzz::Input& input) {
    orx::TSegemetParams params;
    params.firstEpsilon = input.option(0.5, 12);
    params.secondEpsilon = input.option(0.5, 6);
    params.minRadius = input.option(0, 80);
    params.maxRadius = input.option(10, 400);
    params.mergeCenterDist = input.option(0, 90);
    params.errThreshold = input.option(0, 8);
    const unsigned flags = input.byte();
    params.useSecondPass = (flags & 1U) == 0;
    params.useCircles = (flags & 2U) == 0;
    return params;
}

// A ring of straight and round stretches, the outline of what a picture shows, or any walk.
Contour contour(fuzz::Input& input) {
    const int kind = input.between(0, 3);
    Contour list;
    if (kind == 0) {
        cv::Mat image = input.grey() > 128;
        cv::resize(image, image, {}, 4, 4, cv::INTER_LINEAR);
        std::vector<Contour> all;
        cv::findContours(image, all, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
        for (const Contour& c : all) list = c.size() > list.size() ? c : list;
        return list;
    }
    if (kind == 1) {
        for (int i = input.between(0, 40); i > 0; --i)
            list.push_back({input.between(-400, 800), input.between(-400, 800)});
        return list;
    }
    cv::Mat drawn = cv::Mat::zeros(260, 260, CV_8UC1);
    if (kind == 2) {
        Contour corners;
        for (int i = input.between(3, 9); i > 0; --i) corners.push_back(input.pixel(255));
        cv::fillPoly(drawn, std::vector<Contour>{corners}, cv::Scalar(255));
    }
    const cv::Point middle = input.pixel(255);
    const cv::Size axes{input.between(5, 120), input.between(5, 120)};
    const double turn = input.byte();
    cv::ellipse(drawn, middle, axes, turn, 0, 90 + 2.0 * input.byte(), cv::Scalar(255), cv::FILLED);
    std::vector<Contour> all;
    cv::findContours(drawn, all, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
    for (const Contour& c : all) list = c.size() > list.size() ? c : list;
    return list;
}

bool holds(const Contour& contour, cv::Point p) {
    return std::find(contour.begin(), contour.end(), p) != contour.end();
}

bool equal(const std::vector<orx::TSegemetCircle>& a, const std::vector<orx::TSegemetCircle>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!fuzz::nearly(a[i].radius, b[i].radius, 0) || a[i].points != b[i].points) return false;
    }
    return true;
}

void checkSplit(const Contour& outline, const orx::TSegemetParams& params, cv::Mat& image) {
    orx::TSegmentContour splitter;
    const auto pieces = splitter.segmentContour(outline, params);
    for (const orx::TSegemetLine& line : pieces.first) {
        require(holds(outline, line.startPoint) && holds(outline, line.endPoint), "lines end on the contour");
        require(!line.usedByCircle, "no arc stands for them");
        for (const cv::Point& p : line.points)
            require(holds(outline, p), "points of lines are the contour's");
    }
    for (const orx::TSegemetCircle& arc : pieces.second) {
        require(params.useCircles && arc.isCircle, "arcs where they are asked for");
        for (const cv::Point& p : arc.points) require(holds(outline, p), "points of arcs are the contour's");
    }
    orx::TSegmentContour again;
    again.segmentContour(std::vector<Contour>{outline, outline}, params);
    const auto arcs = again.getCircles();
    const auto lines = again.getLines();
    require(arcs.size() == lines.size() && arcs.size() == (outline.empty() ? arcs.size() : 2),
            "one entry a contour");
    for (const auto& list : arcs) require(equal(list, pieces.second), "the same arcs again");
    splitter.disPlayCirclesLines(image, true, true, true, true, false);
    splitter.disPlayContours(image, true, true, true, true, false);
    splitter.disPlayKeyPoints(image, true);
    orx::TSegmentContour::disPlayCircleForTest(image, pieces.second);
    orx::TSegmentContour::disPlayLinesForTest(image, pieces.first);
    orx::TSegmentContour::disPlayFitLinesForTest(image, pieces.first);
    orx::TSegmentContour::disPlayContoursForTest(image, {outline});
    orx::TSegmentContour::disPlayContoursForTest(image, pieces.second, pieces.first, true, false);
}

void checkPieces(fuzz::Input& input) {
    const Contour outline = contour(input);
    const double tolerance = input.option(0, 9);
    const double most = input.option(0, 400);
    const double least = input.option(0, 60);
    const double error = input.option(0, 9);
    if (outline.size() < 3) return;
    const std::size_t a = input.byte() % outline.size();
    const std::size_t b = input.byte() % outline.size();
    const std::size_t c = input.byte() % outline.size();
    orx::TSegemetLine first(outline[a], outline[b], outline, tolerance);
    orx::TSegemetLine second(outline[b], outline[c], outline, tolerance);
    for (orx::TSegemetLine* line : {&first, &second}) {
        for (const cv::Point& p : line->points)
            require(orx::TSegemetLine::point2LineDistAbs(p, line->chordA, line->chordB, line->chordC) <=
                        tolerance + 1e-9,
                    "points of a chord lie beside it");
        line->fitPoints.clear();  // a fit appends
        line->fitLineWithContoursWithTurkey();
        require(line->fitPoints.size() <= line->points.size(), "inliers are points");
        const cv::Point2d foot =
            orx::TSegemetLine::findCrossPoint(outline[a], line->chordA, line->chordB, line->chordC);
        if (line->startPoint != line->endPoint)
            require(std::abs(line->chordA * foot.x + line->chordB * foot.y + line->chordC) < 1e-6,
                    "feet are on the line");
    }
    orx::TSegemetCircle through(outline[a], outline[b], outline[c]);
    if (through.radius > 0) {
        for (const std::size_t i : {a, b, c})
            require(through.point2CircleDist(outline[i]) < 1e-6 * (1 + through.radius),
                    "through three points");
        through.getCircleAngle(outline[a], outline[b], outline[c]);
        require(through.startAngle <= through.endAngle, "angles in order");
        const double angle = through.getPointAngle(outline[a]);
        require(angle > 0 && angle <= 360, "directions in range");
    }
    orx::TSegemetCircle one(first);
    orx::TSegemetCircle both(first, second, most, least, error);
    orx::TSegemetCircle more(both, second, most, least, error, input.flag());
    orx::TSegemetCircle arcs(both, one, most, least, error, input.flag());
    through.generateCircle(first, second);
    through.getAngle2(first, second);
    require(!both.isCircle || both.points.size() >= 3, "an arc has points");
    arcs.point2CircleDistacne(outline);
    cv::Mat image(64, 64, CV_8UC3, cv::Scalar::all(0));
    more.displayPionts(image, {1, 2, 3});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    cv::setNumThreads(1);
    fuzz::Input input(bytes, size);
    if (input.byte() % 4U == 0) {
        checkPieces(input);
    } else {
        const orx::TSegemetParams params = parameters(input);
        cv::Mat image =
            input.flag() ? cv::Mat(40, 50, CV_8UC1, cv::Scalar(9)) : cv::Mat(40, 50, CV_8UC3, cv::Scalar(9));
        checkSplit(contour(input), params, image);
    }
    fuzz::forgetMessages();
    return 0;
}
