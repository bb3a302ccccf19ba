#include "orxFunctions/segmentation/segment_line.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orxFunctions/fitting/reweighted_line_internal.h"
#include "orxFunctions/segmentation/splitting/chord_points.h"

namespace orx {

TSegemetLine::TSegemetLine(cv::Vec2i start, cv::Vec2i end, std::vector<cv::Point> ownPoints)
    : startPoint(start), endPoint(end), points(std::move(ownPoints)) {
    generateLine(start, end);
    for (const cv::Point& p : points) maxDist = std::max(maxDist, point2LineDist(p, chordA, chordB, chordC));
    fitLineWithContoursWithTurkey();
}

TSegemetLine::TSegemetLine(cv::Vec2i start, cv::Vec2i end, std::vector<cv::Point> contour, double tolerance)
    : startPoint(start), endPoint(end) {
    generateLine(start, end);
    findLinePoints(contour, tolerance);
    fitLineWithContoursWithTurkey();
}

TSegemetLine::TSegemetLine(std::vector<cv::Point> ownPoints) : points(std::move(ownPoints)) {
    if (points.empty()) return;
    startPoint = {points.front().x, points.front().y};
    endPoint = {points.back().x, points.back().y};
    fitLineWithContoursWithTurkey();
}

void TSegemetLine::generateLine(cv::Vec2i p1, cv::Vec2i p2) {
    const double x1 = p1[0];
    const double y1 = p1[1];
    const double x2 = p2[0];
    const double y2 = p2[1];
    if (p1[0] != p2[0]) {
        chordA = y2 - y1;
        chordB = x1 - x2;
        chordC = -chordB * y1 - chordA * x1;
    } else {
        chordA = 1.0;
        chordB = 0.0;
        chordC = -x2;
    }
    const double length = std::sqrt(chordA * chordA + chordB * chordB);
    chordA /= length;
    chordB /= length;
    chordC /= length;
}

void TSegemetLine::findLinePoints(std::vector<cv::Point>& contour, double tolerance) {
    const splitting::ChordPointFinder finder(contour, {cv::Point(startPoint), cv::Point(endPoint)});
    splitting::Work work;
    finder.collect(*this, tolerance, work);
}

void TSegemetLine::fitLineWithContoursWithTurkey() {
    constexpr std::size_t kFewestPoints = 3;
    constexpr double kInlierDistance = 3.0;
    if (points.size() < kFewestPoints) return;

    const DirectedLine line = fitLineHuber(points.data(), points.size());
    float vx = line.vx;
    float vy = line.vy;
    const auto dx = static_cast<float>(static_cast<double>(endPoint[0]) - startPoint[0]);
    const auto dy = static_cast<float>(static_cast<double>(endPoint[1]) - startPoint[1]);
    if (dx * vx + dy * vy < 0) {
        vx = -vx;
        vy = -vy;
    }
    // In single precision, like the direction itself.
    if (vx == 0) {
        fitA = 1.0;
        fitB = 0.0;
        fitC = static_cast<double>(-line.x);
    } else {
        fitA = static_cast<double>(vy);
        fitB = static_cast<double>(-vx);
        fitC = static_cast<double>(line.y * vx - line.x * vy);
    }
    for (const cv::Point& p : points) {
        if (point2LineDist(p, fitA, fitB, fitC) < kInlierDistance) fitPoints.push_back(p);
    }
    if (fitPoints.empty()) return;
    fitStartPoint = fitPoints.front();
    fitEndPoint = fitPoints.back();
}

cv::Point2d TSegemetLine::findCrossPoint(cv::Point p, double a, double b, double c) {
    const double n = a * a + b * b;
    return {(b * b * p.x - a * b * p.y - a * c) / n, (a * a * p.y - a * b * p.x - b * c) / n};
}

double TSegemetLine::point2LineDist(cv::Point p, double a, double b, double c) {
    return std::abs(a * p.x + b * p.y + c) / std::sqrt(a * a + b * b);
}

double TSegemetLine::point2LineDistAbs(cv::Point p, double a, double b, double c) {
    return point2LineDist(p, a, b, c);
}

}  // namespace orx
