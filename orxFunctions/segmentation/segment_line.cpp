#include "orxFunctions/segmentation/segment_line.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "orxFunctions/fitting/reweighted_line_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/segmentation/splitting/chord_points.h"

namespace orx {
namespace {

constexpr const char* kConstructor = "TSegemetLine";

bool collectPoints(TSegemetLine& line, const std::vector<cv::Point>& contour, double tolerance,
                   const char* function) {
    const splitting::ChordPointFinder finder(contour, {cv::Point(line.startPoint), cv::Point(line.endPoint)});
    splitting::Work unlimited(std::numeric_limits<std::size_t>::max());
    finder.collect(line, tolerance, unlimited);
    if (contour.empty()) return refuse(rcTooFew, function, "the contour is empty");
    return tolerance >= 0 ||
           refuse(rcOption, function, "the tolerance is %g; 0 pixels and more are taken", tolerance);
}

void fitLine(TSegemetLine& line, const char* function) {
    constexpr double kInlierDistance = 3.0;
    if (line.points.size() < splitting::kFewestFitted) {
        refuse(rcTooFew, function, "%zu points; at least %zu are taken", line.points.size(),
               splitting::kFewestFitted);
        return;
    }

    const DirectedLine direction = fitLineHuber(line.points.data(), line.points.size());
    float vx = direction.vx;
    float vy = direction.vy;
    const auto dx = static_cast<float>(static_cast<double>(line.endPoint[0]) - line.startPoint[0]);
    const auto dy = static_cast<float>(static_cast<double>(line.endPoint[1]) - line.startPoint[1]);
    if (dx * vx + dy * vy < 0) {
        vx = -vx;
        vy = -vy;
    }
    // In single precision, like the direction itself.
    if (vx == 0) {
        line.fitA = 1.0;
        line.fitB = 0.0;
        line.fitC = static_cast<double>(-direction.x);
    } else {
        line.fitA = static_cast<double>(vy);
        line.fitB = static_cast<double>(-vx);
        line.fitC = static_cast<double>(direction.y * vx - direction.x * vy);
    }
    for (const cv::Point& p : line.points) {
        if (TSegemetLine::point2LineDist(p, line.fitA, line.fitB, line.fitC) < kInlierDistance)
            line.fitPoints.push_back(p);
    }
    if (line.fitPoints.empty()) return;
    line.fitStartPoint = line.fitPoints.front();
    line.fitEndPoint = line.fitPoints.back();
}

}  // namespace

TSegemetLine::TSegemetLine(cv::Vec2i start, cv::Vec2i end, std::vector<cv::Point> ownPoints)
    : startPoint(start), endPoint(end), points(std::move(ownPoints)) {
    generateLine(start, end);
    for (const cv::Point& p : points) maxDist = std::max(maxDist, point2LineDist(p, chordA, chordB, chordC));
    fitLine(*this, kConstructor);
}

TSegemetLine::TSegemetLine(cv::Vec2i start, cv::Vec2i end, std::vector<cv::Point> contour, double tolerance)
    : startPoint(start), endPoint(end) {
    generateLine(start, end);
    if (collectPoints(*this, contour, tolerance, kConstructor)) fitLine(*this, kConstructor);
}

TSegemetLine::TSegemetLine(std::vector<cv::Point> ownPoints) : points(std::move(ownPoints)) {
    if (!points.empty()) {
        startPoint = {points.front().x, points.front().y};
        endPoint = {points.back().x, points.back().y};
    }
    fitLine(*this, kConstructor);
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
    collectPoints(*this, contour, tolerance, "findLinePoints");
}

void TSegemetLine::fitLineWithContoursWithTurkey() { fitLine(*this, "fitLineWithContoursWithTurkey"); }

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
