#include "orxFunctions/matching/search/pose_score.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::matching {
namespace {

using search_kernels::kFieldUnit;
using search_kernels::kWindowColumns;
using search_kernels::kWindowRows;

// From the window's top-left place to its middle.
constexpr int kMiddleColumn = 3;
constexpr int kMiddleRow = 3;
// Points that are looked at in a climb.
constexpr std::size_t kMostPoints = 160;
// Steps to the summit between the pixels, pixels.
constexpr double kFineStep = 0.5;
// A climb ends after so many steps one way.
constexpr int kMostSteps = 5;
constexpr int kScannedSteps = 2;
constexpr int kMostMoves = 3;
constexpr std::int32_t kUnknown = std::numeric_limits<std::int32_t>::min();

// Of a parabola through three values at -1, 0 and 1, the middle one the largest.
double summit(double before, double middle, double after) {
    const double bend = 2 * middle - before - after;
    return bend > 0 ? std::clamp(0.5 * (after - before) / bend, -0.5, 0.5) : 0.0;
}

std::int32_t packed(float x, float y) {
    const auto low = static_cast<std::uint16_t>(static_cast<std::int16_t>(std::lrint(x * kFieldUnit)));
    const auto high = static_cast<std::uint16_t>(static_cast<std::int16_t>(std::lrint(y * kFieldUnit)));
    return static_cast<std::int32_t>(low | (static_cast<std::uint32_t>(high) << 16));
}

}  // namespace

PoseScore::PoseScore(const EdgeField& field, const SearchPlan& plan, const ScaleBand& band, int level,
                     SignRule rule)
    : field_(field),
      plan_(plan),
      band_(band),
      level_(level),
      rule_(rule),
      kernels_(search_kernels::chosen()) {}

std::int32_t PoseScore::valueOf(std::int32_t sum) const {
    return rule_ == SignRule::either ? std::abs(sum) : sum;
}

// Offsets and normals of the points whose windows reach into the level.
void PoseScore::place(int x, int y, double angle, double scale) {
    const SearchPoints& points = plan_.points(level_, scale);
    const double unit = std::ldexp(scale, -level_);
    const auto c = static_cast<float>(std::cos(angle));
    const auto s = static_cast<float>(std::sin(angle));
    const auto cu = static_cast<float>(unit * std::cos(angle));
    const auto su = static_cast<float>(unit * std::sin(angle));
    const auto step = static_cast<std::int32_t>(field_.step());
    const cv::Size size = field_.size();
    offsets_.clear();
    normals_.clear();
    pointCount_ = std::min(points.size(), kMostPoints);
    for (std::size_t i = 0; i < pointCount_; ++i) {
        const int dx = cvRound(cu * points.x[i] - su * points.y[i]);
        const int dy = cvRound(su * points.x[i] + cu * points.y[i]);
        const int left = x - kMiddleColumn + dx;
        const int above = y - kMiddleRow + dy;
        if (left <= -kWindowColumns || left >= size.width || above <= -kWindowRows || above >= size.height) {
            continue;
        }
        offsets_.push_back(above * step + 2 * left);
        normals_.push_back(packed(c * points.normalX[i] - s * points.normalY[i],
                                  s * points.normalX[i] + c * points.normalY[i]));
    }
}

PoseScore::Place PoseScore::lookAt(int x, int y, double angle, double scale, int reach) {
    place(x, y, angle, scale);
    sums_.fill(0);
    const search_kernels::PlacedPoints points = {offsets_.data(), normals_.data(), offsets_.size()};
    const auto add = rule_ == SignRule::any    ? kernels_.windowMagnitudes
                     : rule_ == SignRule::same ? kernels_.windowPositives
                                               : kernels_.windowSums;
    add(field_.row(0), field_.step(), points, sums_.data());
    const auto at = [](int r, int k) { return static_cast<std::size_t>(r * kWindowColumns + k); };
    int row = kMiddleRow;
    int column = kMiddleColumn;
    for (int r = std::max(0, kMiddleRow - reach); r <= std::min(kWindowRows - 1, kMiddleRow + reach); ++r) {
        for (int k = std::max(0, kMiddleColumn - reach);
             k <= std::min(kWindowColumns - 1, kMiddleColumn + reach); ++k) {
            if (valueOf(sums_[at(r, k)]) <= valueOf(sums_[at(row, column)])) continue;
            row = r;
            column = k;
        }
    }
    const std::size_t best = at(row, column);
    Place found{x - kMiddleColumn + column, y - kMiddleRow + row, angle, scale, sums_[best],
                valueOf(sums_[best])};
    const auto value = [&](int r, int k) { return static_cast<double>(valueOf(sums_[at(r, k)])); };
    if (column > 0 && column < kWindowColumns - 1) {
        found.offsetX = summit(value(row, column - 1), found.value, value(row, column + 1));
    }
    if (row > 0 && row < kWindowRows - 1) {
        found.offsetY = summit(value(row - 1, column), found.value, value(row + 1, column));
    }
    return found;
}

PoseScore::Place PoseScore::bestPlace(int x, int y, double angle, double scale) {
    Place found = lookAt(x, y, angle, scale, kWindowColumns);
    for (int i = 0; i < kMostMoves; ++i) {
        const int column = found.x - x + kMiddleColumn;
        const int row = found.y - y + kMiddleRow;
        const bool inside = column > 0 && column < kWindowColumns - 1 && row > 0 && row < kWindowRows - 1;
        if (inside) break;
        x = found.x;
        y = found.y;
        const Place next = lookAt(x, y, angle, scale, kWindowColumns);
        if (next.value < found.value) break;  // cannot be: the window holds the same place
        found = next;
    }
    return found;
}

double PoseScore::allowedAngle(double angle) const {
    if (plan_.anglesAreClosed()) return angle;
    return std::clamp(angle, plan_.startAngle(), plan_.startAngle() + plan_.angleRange());
}

template <typename LookAtStep>
double PoseScore::climbSteps(Place& best, const LookAtStep& lookAtStep) {
    std::array<Place, 2 * kMostSteps + 1> places;
    const auto placeAt = [&](int i) -> Place& { return places[static_cast<std::size_t>(i + kMostSteps)]; };
    placeAt(0) = best;
    int top = 0;
    for (int i = 1; i <= kScannedSteps; ++i) {
        for (const int step : {i, -i}) {
            placeAt(step) = lookAtStep(step, best);
            if (placeAt(step).value > placeAt(top).value) top = step;
        }
    }
    for (bool rises = true; rises && std::abs(top) < kMostSteps;) {
        rises = false;
        const int summitStep = top;
        for (const int step : {summitStep - 1, summitStep + 1}) {
            if (placeAt(step).value == kUnknown) placeAt(step) = lookAtStep(step, placeAt(summitStep));
            if (placeAt(step).value > placeAt(top).value) {
                top = step;
                rises = true;
            }
        }
    }
    best = placeAt(top);
    if (std::abs(top) == kMostSteps) return top;
    return top + summit(placeAt(top - 1).value, best.value, placeAt(top + 1).value);
}

// Returns the angle of the summit.
double PoseScore::climbAngle(Place& best, double step) {
    const double middle = best.angle;
    const double summitStep = climbSteps(best, [&](int i, const Place& near) {
        const double angle = allowedAngle(middle + i * step);
        return bestPlace(near.x, near.y, angle, near.scale);
    });
    return allowedAngle(middle + summitStep * step);
}

double PoseScore::climbScale(Place& best, double step) {
    const double middle = best.scale;
    const auto scaleAt = [&](double i) {
        return std::clamp(middle * (1 + i * step), band_.least, band_.most);
    };
    const double summitStep = climbSteps(
        best, [&](int i, const Place& near) { return bestPlace(near.x, near.y, near.angle, scaleAt(i)); });
    return scaleAt(summitStep);
}

LevelPose PoseScore::climbed(const LevelPose& start) {
    // No point of the outline moves farther than a pixel.
    const double step = 1 / std::max(2.0, std::ldexp(plan_.radius() * start.scale, -level_));
    Place best = bestPlace(cvRound(start.x), cvRound(start.y), start.angle, start.scale);
    double angle = start.angle;
    double scale = start.scale;
    const bool turns = plan_.angleRange() > 0;
    if (turns) angle = climbAngle(best, step);
    if (band_.most > band_.least) {
        const double former = best.scale;
        scale = climbScale(best, step);
        if (turns && best.scale != former) angle = climbAngle(best, step);
    }
    LevelPose pose = poseOf(best);
    pose.angle = angle;
    pose.scale = scale;
    return pose;
}

LevelPose PoseScore::moved(const LevelPose& start) {
    return poseOf(lookAt(cvRound(start.x), cvRound(start.y), start.angle, start.scale, 1));
}

LevelPose PoseScore::poseOf(const Place& best) const {
    LevelPose pose;
    pose.x = best.x + best.offsetX;
    pose.y = best.y + best.offsetY;
    pose.angle = best.angle;
    pose.scale = best.scale;
    pose.reversed = rule_ == SignRule::either && best.sum < 0;
    const double most = static_cast<double>(pointCount_) * kFieldUnit * kFieldUnit;
    pose.score = most > 0 ? best.value / most : 0.0;
    return pose;
}

double PoseScore::exactScore(const LevelPose& pose, std::size_t count) const {
    const SearchPoints& points = plan_.points(level_, pose.scale);
    count = std::min(count, points.size());
    if (count == 0) return 0;
    const double unit = std::ldexp(pose.scale, -level_);
    const auto c = static_cast<float>(std::cos(pose.angle));
    const auto s = static_cast<float>(std::sin(pose.angle));
    const auto cu = static_cast<float>(unit * std::cos(pose.angle));
    const auto su = static_cast<float>(unit * std::sin(pose.angle));
    const auto px = static_cast<float>(pose.x);
    const auto py = static_cast<float>(pose.y);
    const cv::Size size = field_.size();
    float sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const float x = px + cu * points.x[i] - su * points.y[i];
        const float y = py + su * points.x[i] + cu * points.y[i];
        if (!(x > -1.0F && y > -1.0F && x < static_cast<float>(size.width) &&
              y < static_cast<float>(size.height))) {
            continue;
        }
        const int left = cvFloor(x);
        const int above = cvFloor(y);
        const float u = x - static_cast<float>(left);
        const float v = y - static_cast<float>(above);
        const float nx = c * points.normalX[i] - s * points.normalY[i];
        const float ny = s * points.normalX[i] + c * points.normalY[i];
        const std::int16_t* pair = field_.row(above) + 2 * left;
        const std::int16_t* below = pair + field_.step();
        const auto along = [&](const std::int16_t* p) {
            return nx * static_cast<float>(p[0]) + ny * static_cast<float>(p[1]);
        };
        const float value = (1 - v) * ((1 - u) * along(pair) + u * along(pair + 2)) +
                            v * ((1 - u) * along(below) + u * along(below + 2));
        sum += rule_ == SignRule::any    ? std::abs(value)
               : rule_ == SignRule::same ? std::max(0.0F, value)
                                         : value;
    }
    const float seen = rule_ == SignRule::either ? std::abs(sum) : sum;
    return static_cast<double>(seen) / (kFieldUnit * static_cast<double>(count));
}

double PoseScore::exactScore(const LevelPose& pose) const { return exactScore(pose, kMostPoints); }

LevelPose PoseScore::refined(const LevelPose& pose) const {
    LevelPose best = pose;
    best.score = exactScore(best, kMostPoints);
    const double turn = kFineStep / std::max(2.0, std::ldexp(plan_.radius() * pose.scale, -level_));
    const auto improve = [&](double LevelPose::*member, double step) {
        LevelPose before = best;
        LevelPose after = best;
        before.*member -= step;
        after.*member += step;
        before.score = exactScore(before, kMostPoints);
        after.score = exactScore(after, kMostPoints);
        const LevelPose& better = before.score > after.score ? before : after;
        LevelPose next = best;
        if (better.score > best.score) {
            next = better;
        } else {
            next.*member += step * summit(before.score, best.score, after.score);
            next.score = exactScore(next, kMostPoints);
        }
        if (next.score >= best.score) best = next;
    };
    improve(&LevelPose::x, kFineStep);
    improve(&LevelPose::y, kFineStep);
    if (plan_.angleRange() > 0) improve(&LevelPose::angle, turn);
    if (band_.most > band_.least) improve(&LevelPose::scale, turn * pose.scale);
    improve(&LevelPose::x, kFineStep / 2);
    improve(&LevelPose::y, kFineStep / 2);
    best.angle = allowedAngle(best.angle);
    best.scale = std::clamp(best.scale, band_.least, band_.most);
    best.score = exactScore(best, plan_.points(level_, best.scale).size());
    return best;
}

}  // namespace orx::matching
