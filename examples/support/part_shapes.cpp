#include "support/part_shapes.h"

#include <algorithm>
#include <cmath>

#include "support/angles.h"

namespace scenes {
namespace {

constexpr double kArcStep = 0.5 * kDegree;  // a chord of the widest arc is within 0.0006 of it

cv::Point2d polar(double radius, double angle) {
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

void addArc(Loop& loop, cv::Point2d center, double radius, double from, double to) {
    const int steps = std::max(1, static_cast<int>(std::ceil(std::abs(to - from) / kArcStep)));
    for (int i = 0; i <= steps; ++i) loop.push_back(center + polar(radius, from + (to - from) * i / steps));
}

Loop circle(cv::Point2d center, double radius) {
    Loop loop;
    addArc(loop, center, radius, 0, 2 * kPi);
    loop.pop_back();
    return loop;
}

// The corner at `at` between two neighbours, rounded.
void addRounded(Loop& loop, cv::Point2d before, cv::Point2d at, cv::Point2d after, double radius) {
    const cv::Point2d in = (before - at) / cv::norm(before - at);
    const cv::Point2d out = (after - at) / cv::norm(after - at);
    const double half = 0.5 * std::acos(std::clamp(in.dot(out), -1.0, 1.0));
    const cv::Point2d middle = (in + out) / cv::norm(in + out);
    const cv::Point2d center = at + middle * (radius / std::sin(half));
    const cv::Point2d first = at + in * (radius / std::tan(half)) - center;
    const cv::Point2d last = at + out * (radius / std::tan(half)) - center;
    const double from = std::atan2(first.y, first.x);
    double to = std::atan2(last.y, last.x);
    if (to - from > kPi) to -= 2 * kPi;
    if (to - from < -kPi) to += 2 * kPi;
    addArc(loop, center, radius, from, to);
}

Loop rounded(const Loop& corners, double radius) {
    Loop loop;
    const std::size_t n = corners.size();
    for (std::size_t i = 0; i < n; ++i)
        addRounded(loop, corners[(i + n - 1) % n], corners[i], corners[(i + 1) % n], radius);
    return loop;
}

PartShape shapeOf(std::vector<Loop> loops, int symmetry = 1) {
    const bool positive = signedArea(loops.front()) > 0;
    for (std::size_t i = 1; i < loops.size(); ++i)
        if ((signedArea(loops[i]) > 0) == positive) std::reverse(loops[i].begin(), loops[i].end());
    return {std::move(loops), symmetry};
}

PartShape plate() {
    return shapeOf({rounded({{-54, -31}, {54, -31}, {54, 31}, {-54, 31}}, 8), circle({-38, -14}, 9),
                    circle({-38, 15}, 6), circle({31, 0}, 15)});
}

Loop gearOutline() {
    constexpr int kTeeth = 12;
    constexpr double kRoot = 50;
    Loop loop;
    for (int i = 0; i < kTeeth; ++i) {
        const double tooth = 2 * kPi * i / kTeeth;
        addArc(loop, {}, kPartRadius, tooth - 4 * kDegree, tooth + 4 * kDegree);
        addArc(loop, {}, kRoot, tooth + 8 * kDegree, tooth + 22 * kDegree);
    }
    return loop;
}

Loop keyedBore() {
    constexpr double kRadius = 18;
    constexpr double kHalfWidth = 4;
    const double edge = std::asin(kHalfWidth / kRadius);
    Loop loop;
    addArc(loop, {}, kRadius, edge, 2 * kPi - edge);
    loop.emplace_back(24, -kHalfWidth);
    loop.emplace_back(24, kHalfWidth);
    return loop;
}

PartShape bracket() {
    return shapeOf({rounded({{-42, -42}, {-14, -42}, {-14, 14}, {42, 14}, {42, 42}, {-42, 42}}, 3),
                    circle({-28, -28}, 7)});
}

PartShape key() {
    const cv::Point2d bow(-38, 0);
    constexpr double kBow = 22;
    const double edge = std::asin(7 / kBow);
    Loop loop;
    addArc(loop, bow, kBow, edge, 2 * kPi - edge);
    for (const cv::Point2d p :
         {cv::Point2d(54, -7), cv::Point2d(60, -1), cv::Point2d(60, 2), cv::Point2d(55, 7),
          cv::Point2d(48, 7), cv::Point2d(44, 2), cv::Point2d(40, 2), cv::Point2d(36, 7), cv::Point2d(28, 7),
          cv::Point2d(24, 3), cv::Point2d(18, 3), cv::Point2d(14, 7)})
        loop.push_back(p);
    return shapeOf({loop, circle({-44, 0}, 8)});
}

PartShape notchedRing() {
    constexpr double kHalfWidth = 8;
    const double edge = std::asin(kHalfWidth / kPartRadius);
    Loop loop;
    addArc(loop, {}, kPartRadius, edge, 2 * kPi - edge);
    loop.emplace_back(48, -kHalfWidth);
    loop.emplace_back(48, kHalfWidth);
    return shapeOf({loop, circle({}, 36)});
}

}  // namespace

const char* partName(PartKind kind) {
    switch (kind) {
        case PartKind::plate:
            return "plate with holes";
        case PartKind::gear:
            return "gear";
        case PartKind::bracket:
            return "L-bracket";
        case PartKind::key:
            return "key";
        case PartKind::notchedRing:
            return "ring with a notch";
        case PartKind::keyedGear:
            return "gear with a keyway";
    }
    return "";
}

const PartShape& partShape(PartKind kind) {
    static const std::array<PartShape, 6> kShapes{plate(),       shapeOf({gearOutline(), circle({}, 18)}, 12),
                                                  bracket(),     key(),
                                                  notchedRing(), shapeOf({gearOutline(), keyedBore()})};
    return kShapes.at(static_cast<std::size_t>(kind));
}

cv::Point2d placed(const ScenePose& pose, cv::Point2d point) {
    const double c = pose.scale * std::cos(pose.angle * kDegree);
    const double s = pose.scale * std::sin(pose.angle * kDegree);
    return {pose.x + c * point.x - s * point.y, pose.y + s * point.x + c * point.y};
}

Loop outlinePoints(const PartShape& shape, double step) {
    Loop points;
    for (const Loop& loop : shape.loops) {
        double left = 0;  // from the last point to the beginning of this piece
        for (std::size_t i = 0; i < loop.size(); ++i) {
            const cv::Point2d from = loop[i];
            const cv::Point2d way = loop[(i + 1) % loop.size()] - from;
            const double length = cv::norm(way);
            double at = left > 0 ? step - left : 0;
            for (; at < length; at += step) points.push_back(from + way * (at / length));
            left = length - (at - step);
        }
    }
    return points;
}

}  // namespace scenes
