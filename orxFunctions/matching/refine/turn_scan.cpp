#include "orxFunctions/matching/refine/turn_scan.h"

#include <algorithm>
#include <cmath>

namespace orx::matching {
namespace {

// An edge moves by this share of what a turn moves its point by, at the least, to be a detail.
constexpr double kLever = 0.3;
// Parts with more details than this share of the outline are not round.
constexpr double kMostDetails = 0.2;
constexpr double kReach = 1.5;    // pixels
constexpr double kMostTurn = 20;  // degrees

double cross(cv::Point2d a, cv::Point2d b) { return a.x * b.y - a.y * b.x; }

// About which the outline's normals have the least levers: a 2 x 2 least-squares problem.
cv::Point2d middleOf(const ReadyOutline& outline) {
    double xx = 0;
    double xy = 0;
    double yy = 0;
    cv::Point2d right;
    for (const ReadyPoint& point : outline.points) {
        const cv::Point2d along(-point.normal.y, point.normal.x);
        xx += point.length * along.x * along.x;
        xy += point.length * along.x * along.y;
        yy += point.length * along.y * along.y;
        right += point.length * along.dot(point.position) * along;
    }
    const double determinant = xx * yy - xy * xy;
    if (!(determinant > 1e-6 * (xx + yy) * (xx + yy))) return {};
    return cv::Point2d(yy * right.x - xy * right.y, xx * right.y - xy * right.x) / determinant;
}

}  // namespace

TurnScan::TurnScan(const ReadyOutline& outline) : outline_(outline), middle_(middleOf(outline)) {
    double length = 0;
    for (std::size_t i = 0; i < outline.points.size(); ++i) {
        const ReadyPoint& point = outline.points[i];
        const double lever = std::abs(cross(point.position - middle_, point.normal));
        if (lever < kLever * outline.radius) continue;
        length += point.length;
        details_.push_back(i);
    }
    if (length > kMostDetails * outline.length) details_.clear();
}

bool TurnScan::isDoubtful(const std::vector<Match>& matches) const {
    const auto seen = std::count_if(details_.begin(), details_.end(), [&](std::size_t i) {
        return matches[i].found && std::abs(matches[i].distance) <= kReach;
    });
    constexpr double kEnough = 0.7;
    return static_cast<double>(seen) < kEnough * static_cast<double>(details_.size());
}

CentredPose TurnScan::at(const CentredPose& pose, double angle) const {
    const auto arm = [&](double turn) {
        const double c = pose.scale * std::cos(turn);
        const double s = pose.scale * std::sin(turn);
        return cv::Point2d(c * middle_.x - s * middle_.y, s * middle_.x + c * middle_.y);
    };
    return {pose.centre + arm(pose.angle) - arm(angle), angle, pose.scale};
}

std::size_t TurnScan::hits(const WindowEdges& edges, const CentredPose& pose, bool eitherSign) const {
    // So many tell as much as all.
    constexpr std::size_t kAsked = 24;
    const std::size_t every = details_.size() / kAsked + 1;
    const double c = pose.scale * std::cos(pose.angle);
    const double s = pose.scale * std::sin(pose.angle);
    const EdgeWish wish{kReach, radians(kMostTurn), eitherSign};
    std::size_t hits = 0;
    for (std::size_t i = 0; i < details_.size(); i += every) {
        const ReadyPoint& point = outline_.points[details_[i]];
        const cv::Point2d m = point.position;
        const cv::Point2d place = pose.centre + cv::Point2d(c * m.x - s * m.y, s * m.x + c * m.y);
        if (edges.nearest(place, point.direction + pose.angle, wish) >= 0) ++hits;
    }
    return hits;
}

CentredPose TurnScan::turned(const WindowEdges& edges, const CentredPose& pose, bool eitherSign,
                             const TurnRange& range) const {
    const double step = 1.2 / std::max(outline_.radius * pose.scale, 1.0);
    const int steps = static_cast<int>(std::ceil(range.range / step));
    CentredPose best = pose;
    std::size_t most = hits(edges, pose, eitherSign);
    for (int i = 0; i <= steps; ++i) {
        const CentredPose turned = at(pose, range.from + std::min(i * step, range.range));
        const std::size_t count = hits(edges, turned, eitherSign);
        if (count <= most) continue;
        most = count;
        best = turned;
    }
    return best;
}

}  // namespace orx::matching
