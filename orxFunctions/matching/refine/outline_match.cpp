#include "orxFunctions/matching/refine/outline_match.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::matching {
namespace {

// Neighbours of a chain farther apart than this have a gap between them, pixels of the model.
constexpr double kGap = 2.0;
// Points on each side over which variances are averaged: a single one errs with its point.
constexpr int kVarianceReach = 15;

// Each point stands for half of the way to either neighbour.
void measureLengths(ReadyOutline& outline) {
    const std::size_t count = outline.points.size();
    for (std::size_t i = 0; i < count; ++i) outline.points[i].length = 0;
    const auto join = [&](std::size_t a, std::size_t b) {
        const double way = cv::norm(outline.points[b].position - outline.points[a].position);
        if (way > kGap) return;
        outline.points[a].length += way / 2;
        outline.points[b].length += way / 2;
    };
    std::size_t first = 0;  // of the chain
    for (std::size_t i = 0; i < count; ++i) {
        const bool last = i + 1 == count || outline.chains[i + 1] != outline.chains[i];
        if (!last) {
            join(i, i + 1);
            continue;
        }
        if (i > first + 2) join(i, first);
        first = i + 1;
    }
    outline.length = 0;
    for (ReadyPoint& point : outline.points) {
        point.length = std::max(point.length, 0.1);
        outline.length += point.length;
    }
}

void smoothVariances(const ModelData& model, ReadyOutline& outline) {
    const int count = static_cast<int>(outline.points.size());
    std::vector<double> sums(static_cast<std::size_t>(count) + 1);
    for (std::size_t i = 0; i < outline.points.size(); ++i) {
        const double deviation = model.outline[i].deviation;
        sums[i + 1] = sums[i] + deviation * deviation;
    }
    for (int i = 0; i < count; ++i) {
        const int from = std::max(i - kVarianceReach, 0);
        const int to = std::min(i + kVarianceReach + 1, count);
        const double sum = sums[static_cast<std::size_t>(to)] - sums[static_cast<std::size_t>(from)];
        outline.points[static_cast<std::size_t>(i)].variance = sum / (to - from);
    }
}

// Bent edges lie beside their place by what the edge finder can't compensate, which depends on how they lie
// to the pixels: so much, pixels, for a bend of one radian a pixel at a sigma of one.
constexpr double kBendDeviation = 0.16;

void addBends(const ModelData& model, ReadyOutline& outline) {
    constexpr std::size_t kReach = 2;
    const double unit = kBendDeviation * model.sigma * model.sigma;
    for (std::size_t i = kReach; i + kReach < outline.points.size(); ++i) {
        if (outline.chains[i - kReach] != outline.chains[i + kReach]) continue;
        const ReadyPoint& before = outline.points[i - kReach];
        const ReadyPoint& after = outline.points[i + kReach];
        const double way = cv::norm(after.position - before.position);
        if (!(way > 0)) continue;
        const double bend = unit * turnBetween(before.direction, after.direction, false) / way;
        outline.points[i].variance += bend * bend;
    }
}

void findCentre(const ModelData& model, ReadyOutline& outline) {
    cv::Point2d sum;
    for (std::size_t i = 0; i < outline.points.size(); ++i) {
        sum += outline.points[i].length * model.outline[i].position;
    }
    outline.centre = sum / outline.length;
    double squares = 0;
    for (std::size_t i = 0; i < outline.points.size(); ++i) {
        ReadyPoint& point = outline.points[i];
        point.position = model.outline[i].position - outline.centre;
        squares += point.length * point.position.dot(point.position);
    }
    outline.radius = std::max(std::sqrt(squares / outline.length), 1.0);
}

// The mean normal stands at half the turn from the outline's: `across` and `along` are the way from the
// outline's point to the edge's in the frame of the outline's normal.
double distanceOver(double across, double along, double turn) {
    const double h = turn / 2;
    const double h2 = h * h;
    return across * (1 - h2 / 2 * (1 - h2 / 12)) + along * h * (1 - h2 / 6 * (1 - h2 / 20));
}

// The way from a point of the outline to an edge point.
struct Way {
    double across = 0.0;
    double along = 0.0;
    double turn = 0.0;
};

Way wayTo(const EdgePoint& edge, cv::Point2d place, cv::Point2d normal, double direction, bool eitherSign) {
    const cv::Point2d way = edge.position - place;
    return {way.dot(normal), normal.x * way.y - normal.y * way.x,
            turnBetween(direction, edge.direction, eitherSign)};
}

}  // namespace

ReadyOutline readyOutline(const ModelData& model, bool reversed) {
    ReadyOutline outline;
    outline.points.resize(model.outline.size());
    outline.chains.resize(model.outline.size());
    for (std::size_t i = 0; i < model.outline.size(); ++i) {
        ReadyPoint& point = outline.points[i];
        point.position = model.outline[i].position;
        point.normal = reversed ? -model.outline[i].normal : model.outline[i].normal;
        point.direction = std::atan2(point.normal.y, point.normal.x);
        outline.chains[i] = model.outline[i].chain;
    }
    measureLengths(outline);
    smoothVariances(model, outline);
    addBends(model, outline);
    findCentre(model, outline);
    return outline;
}

CentredPose centredPose(const TPartPose& pose, const ReadyOutline& outline) {
    return {applyPose(pose, outline.centre), radians(pose.angle), pose.scale};
}

TPartPose partPose(const CentredPose& pose, const ReadyOutline& outline) {
    const TPartPose turn{0, 0, degrees(pose.angle), pose.scale};
    const cv::Point2d origin = pose.centre - applyPose(turn, outline.centre);
    return {origin.x, origin.y, turn.angle, turn.scale};
}

void matchOutline(const ReadyOutline& outline, const WindowEdges& edges, const CentredPose& pose,
                  const EdgeWish& wish, int stride, std::vector<Match>& matches) {
    // Beyond its end an edge says nothing.
    constexpr double kBeyond = 1.0;
    const double c = std::cos(pose.angle);
    const double s = std::sin(pose.angle);
    matches.resize(outline.points.size());
    const auto every = static_cast<std::size_t>(stride);
    for (std::size_t i = 0; i < matches.size(); ++i) {
        const ReadyPoint& point = outline.points[i];
        Match& match = matches[i];
        match.found = false;
        if (i % every != 0) continue;
        const cv::Point2d turned(c * point.position.x - s * point.position.y,
                                 s * point.position.x + c * point.position.y);
        match.arm = pose.scale * turned;
        match.normal = {c * point.normal.x - s * point.normal.y, s * point.normal.x + c * point.normal.y};
        const cv::Point2d place = pose.centre + match.arm;
        const double direction = point.direction + pose.angle;
        const int nearest = edges.nearest(place, direction, wish, match.known);
        if (nearest < 0) continue;
        const EdgePoint& edge = edges[nearest];
        const auto wayToPoint = [&](int k) {
            return wayTo(edges[k], place, match.normal, direction, wish.eitherSign);
        };
        const Way here = wayToPoint(nearest);
        match.distance = distanceOver(here.across, here.along, here.turn);
        match.turn = here.turn;
        match.variance = edge.variance + pose.scale * pose.scale * point.variance;
        match.found = std::abs(here.along) <= kBeyond;
        for (const int neighbour : {edge.previous, edge.next}) {
            if (neighbour < 0) continue;
            const Way there = wayToPoint(neighbour);
            const bool between = here.along * there.along <= 0 && here.along != there.along;
            if (!between || std::abs(there.turn) > 2 * wish.mostTurn) continue;
            const double share = here.along / (here.along - there.along);
            match.distance += share * (distanceOver(there.across, there.along, there.turn) - match.distance);
            match.turn += share * (there.turn - match.turn);
            match.found = true;
            break;
        }
    }
}

}  // namespace orx::matching
