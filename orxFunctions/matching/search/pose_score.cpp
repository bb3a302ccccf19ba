#include "orxFunctions/matching/search/pose_score.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::matching {
namespace {

using search_kernels::kFieldUnit;
using search_kernels::kWindowColumns;
using search_kernels::kWindowRows;

// From the window's top-left place to its middle.
constexpr int kMiddleColumn = 3;
constexpr int kMiddleRow = 2;
// A climb ends after so many steps one way.
constexpr int kMostSteps = 6;
constexpr int kMostMoves = 3;

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
    pointCount_ = points.size();
    for (std::size_t i = 0; i < points.size(); ++i) {
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

PoseScore::Place PoseScore::lookAt(int x, int y, double angle, double scale) {
    place(x, y, angle, scale);
    sums_.fill(0);
    const search_kernels::PlacedPoints points = {offsets_.data(), normals_.data(), offsets_.size()};
    const auto add = rule_ == SignRule::any ? kernels_.windowMagnitudes : kernels_.windowSums;
    add(field_.row(0), field_.step(), points, sums_.data());
    std::size_t best = 0;
    for (std::size_t i = 1; i < sums_.size(); ++i) {
        if (valueOf(sums_[i]) > valueOf(sums_[best])) best = i;
    }
    const int row = static_cast<int>(best) / kWindowColumns;
    const int column = static_cast<int>(best) % kWindowColumns;
    Place found{x - kMiddleColumn + column, y - kMiddleRow + row, angle, scale, sums_[best],
                valueOf(sums_[best])};
    const auto value = [&](int r, int k) {
        return static_cast<double>(valueOf(sums_[static_cast<std::size_t>(r * kWindowColumns + k)]));
    };
    if (column > 0 && column < kWindowColumns - 1) {
        found.offsetX = summit(value(row, column - 1), found.value, value(row, column + 1));
    }
    if (row > 0 && row < kWindowRows - 1) {
        found.offsetY = summit(value(row - 1, column), found.value, value(row + 1, column));
    }
    return found;
}

PoseScore::Place PoseScore::bestPlace(int x, int y, double angle, double scale) {
    Place found = lookAt(x, y, angle, scale);
    for (int i = 0; i < kMostMoves; ++i) {
        const int column = found.x - x + kMiddleColumn;
        const int row = found.y - y + kMiddleRow;
        const bool inside = column > 0 && column < kWindowColumns - 1 && row > 0 && row < kWindowRows - 1;
        if (inside) break;
        x = found.x;
        y = found.y;
        const Place next = lookAt(x, y, angle, scale);
        if (next.value < found.value) break;  // cannot be: the window holds the same place
        found = next;
    }
    return found;
}

double PoseScore::allowedAngle(double angle) const {
    if (plan_.anglesAreClosed()) return angle;
    return std::clamp(angle, plan_.startAngle(), plan_.startAngle() + plan_.angleRange());
}

// Returns the angle of the summit.
double PoseScore::climbAngle(Place& best, double step) {
    double before = best.value;
    double after = best.value;
    for (const int sign : {1, -1}) {
        for (int i = 0; i < kMostSteps; ++i) {
            const double angle = allowedAngle(best.angle + sign * step);
            if (std::abs(angle - best.angle) < 1e-9) break;
            const Place next = bestPlace(best.x, best.y, angle, best.scale);
            if (next.value <= best.value) {
                (sign > 0 ? after : before) = next.value;
                break;
            }
            (sign > 0 ? before : after) = best.value;
            best = next;
        }
        if (sign > 0 && before < best.value) break;  // it went up: what lies behind is known
    }
    return allowedAngle(best.angle + step * summit(before, best.value, after));
}

double PoseScore::climbScale(Place& best, double step) {
    double before = best.value;
    double after = best.value;
    for (const int sign : {1, -1}) {
        for (int i = 0; i < kMostSteps; ++i) {
            const double scale = std::clamp(best.scale * (1 + sign * step), band_.least, band_.most);
            if (std::abs(scale - best.scale) < 1e-9) break;
            const Place next = bestPlace(best.x, best.y, best.angle, scale);
            if (next.value <= best.value) {
                (sign > 0 ? after : before) = next.value;
                break;
            }
            (sign > 0 ? before : after) = best.value;
            best = next;
        }
        if (sign > 0 && before < best.value) break;
    }
    const double scale = best.scale * (1 + step * summit(before, best.value, after));
    return std::clamp(scale, band_.least, band_.most);
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
    LevelPose pose;
    pose.x = best.x + best.offsetX;
    pose.y = best.y + best.offsetY;
    pose.angle = angle;
    pose.scale = scale;
    pose.reversed = rule_ == SignRule::either && best.sum < 0;
    const double most = static_cast<double>(pointCount_) * kFieldUnit * kFieldUnit;
    pose.score = most > 0 ? best.value / most : 0.0;
    return pose;
}

}  // namespace orx::matching
