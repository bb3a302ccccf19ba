#include "orxFunctions/fitting/wanted_line.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <random>
#include <utility>

#include "orxFunctions/fitting/line_search_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr double kThreshold = 2.0;  // pixels
constexpr int kTrials = 1000;
constexpr std::size_t kMaxLines = 32;
constexpr std::size_t kFewestPoints = 3;

using Points = std::vector<cv::Point>;

struct FittedLine {
    double dx, dy;  // direction, of length 1
    double x, y;    // mean of the points

    double distance(cv::Point2d p) const { return std::abs((p.x - x) * dy - (p.y - y) * dx); }
};

FittedLine fitTo(const Points& points) {
    cv::Vec4f fit;
    cv::fitLine(points, fit, cv::DIST_HUBER, 0, 0.01, 0.01);
    return {fit[0], fit[1], fit[2], fit[3]};
}

// The points of the strongest line, as ascending indices; empty when no two points differ.
std::vector<int> strongestLine(const Points& points) {
    if (points.empty()) return {};
    std::minstd_rand generator;
    const auto size = static_cast<unsigned>(points.size());
    const auto draw = [&] { return static_cast<int>(generator() % size); };
    LineSearch search(points, kThreshold);
    for (int trial = 0; trial < kTrials; ++trial) {
        const LineSample sample{draw(), draw()};
        if (points[static_cast<std::size_t>(sample.first)] !=
            points[static_cast<std::size_t>(sample.second)]) {
            search.offer(sample);
        }
    }
    return search.hasBest() ? search.inliers() : std::vector<int>();
}

// Moves the items at the ascending indices out of the list; the others keep their order.
template <class Item>
std::vector<Item> takeOut(std::vector<Item>& items, const std::vector<int>& indices) {
    std::vector<Item> taken;
    std::vector<Item> kept;
    taken.reserve(indices.size());
    kept.reserve(items.size() - indices.size());
    auto next = indices.begin();
    for (std::size_t i = 0; i < items.size(); ++i) {
        const bool isTaken = next != indices.end() && static_cast<std::size_t>(*next) == i;
        (isTaken ? taken : kept).push_back(items[i]);
        if (isTaken) ++next;
    }
    items = std::move(kept);
    return taken;
}

struct FoundLine {
    std::vector<int> indices;  // ascending, into the list searched
    FittedLine fit;
};

// The strongest first.
std::vector<FoundLine> findLines(Points points, std::size_t minPoints) {
    std::vector<FoundLine> lines;
    std::vector<int> indices(points.size());
    std::iota(indices.begin(), indices.end(), 0);
    while (lines.size() < kMaxLines) {
        const std::vector<int> found = strongestLine(points);
        if (found.size() < minPoints) break;
        lines.push_back({takeOut(indices, found), fitTo(takeOut(points, found))});
    }
    return lines;
}

// How far the line is from where it is wanted, smaller is better; none when its direction is not the wanted.
std::optional<double> farness(const FittedLine& line, TWantLineType type, cv::Point2d middle) {
    const bool upright = std::abs(line.dy) >= std::abs(line.dx);
    const bool level = std::abs(line.dx) >= std::abs(line.dy);
    switch (type) {
        case wlLeft:
            return upright ? std::optional(line.x) : std::nullopt;
        case wlRight:
            return upright ? std::optional(-line.x) : std::nullopt;
        case wlTop:
            return level ? std::optional(line.y) : std::nullopt;
        case wlBottom:
            return level ? std::optional(-line.y) : std::nullopt;
        case wlCenter:
            return line.distance(middle);
    }
    return std::nullopt;
}

cv::Point2d middleOf(const Points& points) {
    const auto [left, right] =
        std::minmax_element(points.begin(), points.end(), [](cv::Point a, cv::Point b) { return a.x < b.x; });
    const auto [top, bottom] =
        std::minmax_element(points.begin(), points.end(), [](cv::Point a, cv::Point b) { return a.y < b.y; });
    return {(static_cast<double>(left->x) + right->x) / 2, (static_cast<double>(top->y) + bottom->y) / 2};
}

std::vector<int> indicesNear(const FittedLine& line, const Points& points) {
    std::vector<int> indices;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (line.distance(points[i]) <= kThreshold) indices.push_back(static_cast<int>(i));
    }
    return indices;
}

}  // namespace

bool getWantedLine(std::vector<cv::Point> points, std::vector<cv::Point>& linePoints,
                   std::vector<cv::Point>& restPoints, TWantLineType type, int minPoints, bool refine) {
    const std::size_t fewest = std::max(kFewestPoints, static_cast<std::size_t>(std::max(minPoints, 0)));
    std::vector<int> wanted;
    double nearest = std::numeric_limits<double>::infinity();
    if (!points.empty()) {
        const cv::Point2d middle = middleOf(points);
        for (FoundLine& line : findLines(points, fewest)) {
            const std::optional<double> distance = farness(line.fit, type, middle);
            if (!distance || !(*distance < nearest)) continue;
            nearest = *distance;
            wanted = refine ? indicesNear(line.fit, points) : std::move(line.indices);
        }
    }
    linePoints = takeOut(points, wanted);
    restPoints = std::move(points);
    if (!linePoints.empty()) return true;
    if (type < wlLeft || type > wlCenter)
        return refuse(rcOption, "getWantedLine", "there is no type %d", static_cast<int>(type));
    if (restPoints.size() < fewest)
        return refuse(rcTooFew, "getWantedLine", "%zu points; at least %zu are taken", restPoints.size(),
                      fewest);
    return refuse(rcNoResult, "getWantedLine", "none of the lines in %zu points is the wanted",
                  restPoints.size());
}

}  // namespace orx
