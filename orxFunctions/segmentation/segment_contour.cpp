#include "orxFunctions/segmentation/segment_contour.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/segmentation/chord_points_internal.h"

namespace orx {
namespace {

template <typename List>
void append(List& list, List&& more) {
    list.insert(list.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

}  // namespace

TSegmentContour::TSegmentContour(std::vector<std::vector<cv::Point>> contours, int smooth, double epsilon,
                                 double secondFlag, cv::Mat image, double radiusLimit) {
    smoothSize = smooth;
    firstEpsilon = epsilon;
    srcImage = image;
    if (radiusLimit != 0) maxRadius = radiusLimit;
    if (radiusLimit == 5.0) useCircles = false;  // a sentinel, intended
    if (secondFlag == 0.0) useSecondPass = false;
    for (std::vector<cv::Point>& contour : contours) splitContour(std::move(contour), true);
}

void TSegmentContour::segmentContour(std::vector<std::vector<cv::Point>> contours, TSegemetParams params) {
    copyParams(params);
    for (std::vector<cv::Point>& contour : contours) splitContour(std::move(contour), false);
}

std::pair<std::vector<TSegemetLine>, std::vector<TSegemetCircle>> TSegmentContour::segmentContour(
    std::vector<cv::Point> contour, TSegemetParams params) {
    copyParams(params);
    if (contour.empty()) return {};
    splitContour(std::move(contour), false);
    return {contourLines.back(), contourCircles.back()};
}

void TSegmentContour::copyParams(const TSegemetParams& params) {
    smoothSize = params.smoothSize;
    firstEpsilon = params.firstEpsilon;
    secondEpsilon = params.secondEpsilon;
    maxRadius = params.maxRadius;
    minRadius = params.minRadius;
    mergeCenterDist = params.mergeCenterDist;
    errThreshold = params.errThreshold;
    useSecondPass = params.useSecondPass;
    useCircles = params.useCircles;
}

void TSegmentContour::splitContour(std::vector<cv::Point> contour, bool showSteps) {
    if (contour.empty()) return;
    auto [lines, circles] = segment(std::move(contour), smoothSize, firstEpsilon, showSteps);
    if (useSecondPass) {
        const cv::Mat firstKeyPoints = lastKeyPoints_;
        std::vector<std::vector<cv::Point>> runs = getSecondContours(lines);
        lines.clear();
        for (std::vector<cv::Point>& run : runs) {
            auto [runLines, runCircles] = segment(std::move(run), smoothSize, secondEpsilon, showSteps);
            append(lines, std::move(runLines));
            append(circles, std::move(runCircles));
        }
        lastKeyPoints_ = firstKeyPoints;
    }
    mergeCirclesAndLines(circles, lines);
    mergeCircles2(circles, false);

    for (TSegemetLine& line : lines) {
        if (line.usedByCircle) continue;
        // Not before: most chords end in arcs or are split again, and nothing on the way asks for the fit.
        line.fitLineWithContoursWithTurkey();
        resultLines.push_back(std::move(line));
    }
    for (TSegemetCircle& circle : circles) {
        if (circle.isCircle) resultCircles.push_back(std::move(circle));
    }
    contourLines.push_back(std::move(resultLines));
    contourCircles.push_back(std::move(resultCircles));
    resultLines.clear();
    resultCircles.clear();
}

std::vector<std::vector<TSegemetLine>> TSegmentContour::getLines() { return contourLines; }

std::vector<std::vector<TSegemetCircle>> TSegmentContour::getCircles() { return contourCircles; }

std::pair<TSegmentContour::TLineList, TSegmentContour::TCircleList> TSegmentContour::segment(
    std::vector<cv::Point> contour, int smooth, double epsilon, bool showSteps) {
    TLineList lines;
    TCircleList circles;
    lastKeyPoints_ = cv::Mat();
    if (contour.empty()) return {};
    smoothContour(contour, smooth);
    const bool closed = caldist(contour.front(), contour.back()) <= std::sqrt(2.0);
    // cv::approxPolyDP throws for other accuracies.
    if (epsilon >= 0 && epsilon < 1e30) cv::approxPolyDP(contour, lastKeyPoints_, epsilon, closed);
    generateLines(lastKeyPoints_, contour, epsilon, closed, lines);
    if (useCircles) generateCircles(lines, circles, closed);
    mergeCircles2(circles, closed);
    if (showSteps) showStep(lastKeyPoints_, lines, circles);
    return {std::move(lines), std::move(circles)};
}

void TSegmentContour::generateLines(cv::Mat keyPoints, std::vector<cv::Point>& contour, double epsilon,
                                    bool closed, TLineList& lines) {
    if (keyPoints.empty()) return;
    const std::vector<cv::Point> keys(keyPoints.begin<cv::Point>(), keyPoints.end<cv::Point>());
    // Two chords between the same two points would be one line twice.
    if (keys.size() < 2 || (keys.size() == 2 && closed)) return;
    const ChordPointFinder finder(contour, keys);
    const std::size_t chords = closed ? keys.size() : keys.size() - 1;
    lines.reserve(lines.size() + chords);
    for (std::size_t i = 0; i < chords; ++i) {
        const cv::Point& start = keys[i];
        const cv::Point& end = keys[(i + 1) % keys.size()];
        TSegemetLine line;
        line.startPoint = {start.x, start.y};
        line.endPoint = {end.x, end.y};
        line.generateLine(line.startPoint, line.endPoint);
        finder.collect(line, epsilon);
        lines.push_back(std::move(line));
    }
}

std::vector<std::vector<cv::Point>> TSegmentContour::getSecondContours(TLineList& lines) {
    std::vector<std::vector<cv::Point>> runs;
    std::vector<cv::Point> run;
    const auto emitRun = [&] {
        if (!run.empty()) runs.push_back(std::move(run));
        run.clear();
    };
    const TSegemetLine* previous = nullptr;
    for (const TSegemetLine& line : lines) {
        if (line.usedByCircle) {
            emitRun();
        } else {
            const bool continues =
                previous != nullptr && !previous->usedByCircle && line.startPoint == previous->endPoint;
            if (!continues) emitRun();
            run.insert(run.end(), line.points.begin(), line.points.end());
        }
        previous = &line;
    }
    emitRun();
    return runs;
}

// Smoothing leaves the points unchanged, intended.
void TSegmentContour::smoothContour(std::vector<cv::Point>& /*points*/, int /*size*/) {}

double TSegmentContour::caldist(cv::Point p1, cv::Point p2) {
    const double dx = static_cast<double>(p1.x) - p2.x;
    const double dy = static_cast<double>(p1.y) - p2.y;
    return std::sqrt(dx * dx + dy * dy);
}

}  // namespace orx
