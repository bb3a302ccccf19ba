#include "inspection/measure/calipers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace inspection {
namespace {

constexpr int kCalipers = 72;
// Edges so much farther from the circle than the median edge belong to something else, pixels.
constexpr double kStray = 1.5;

// The mean level of every column (row, when the search runs downwards) of the box.
std::vector<double> profileOf(const cv::Mat& grey, const cv::Rect& box, bool downwards) {
    const int length = downwards ? box.height : box.width;
    const int breadth = downwards ? box.width : box.height;
    std::vector<double> profile;
    profile.reserve(static_cast<std::size_t>(length));
    for (int i = 0; i < length; ++i) {
        std::int64_t sum = 0;
        for (int k = 0; k < breadth; ++k) {
            const int x = std::clamp(box.x + (downwards ? k : i), 0, grey.cols - 1);
            const int y = std::clamp(box.y + (downwards ? i : k), 0, grey.rows - 1);
            sum += grey.at<uchar>(y, x);
        }
        profile.push_back(static_cast<double>(sum) / breadth);
    }
    return profile;
}

// The edges that most calipers agree on.
std::vector<cv::Point2d> commonEdges(const std::vector<orx::TContrastEdge>& edges, const Circle& circle) {
    std::vector<double> offsets;
    offsets.reserve(edges.size());
    for (const orx::TContrastEdge& edge : edges) offsets.push_back(circle.distance(edge.position));
    std::vector<cv::Point2d> near;
    std::vector<double> sorted = offsets;
    const auto median = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    if (!sorted.empty()) std::nth_element(sorted.begin(), median, sorted.end());
    for (std::size_t i = 0; i < edges.size(); ++i)
        if (offsets[i] <= *median + kStray) near.push_back(edges[i].position);
    return near;
}

}  // namespace

BoxCaliper searchBox(const cv::Mat& grey, const cv::Rect& box) {
    BoxCaliper result;
    result.box = box;
    result.downwards = box.height > box.width;
    const cv::Rect picture({}, grey.size());
    const int most = 2 * (grey.cols + grey.rows);
    if ((box & picture).empty() || box.width > most || box.height > most) return result;
    result.profile = profileOf(grey, box, result.downwards);
    result.edges =
        orx::getContrastEdges(grey, box, result.downwards ? orx::sdTopToBottom : orx::sdLeftToRight);
    return result;
}

CircleCaliper searchCircleEdges(const cv::Mat& grey, const Circle& nominal) {
    CircleCaliper result;
    result.nominal = nominal;
    orx::TCircleCaliperOptions options;
    options.count = kCalipers;
    options.searchLength = 2.0 * std::clamp(0.3 * nominal.radius, 3.0, 20.0);
    result.calipers = options.count;
    result.edges = orx::getCircleEdges(grey, nominal.center, nominal.radius, options);

    std::vector<cv::Point2d> points;
    for (const orx::TContrastEdge& edge : result.edges) points.push_back(edge.position);
    auto fitted = fitCircleFrom(nominal, points);
    if (!fitted) return result;
    for (int pass = 0; pass < 3; ++pass) {
        points = commonEdges(result.edges, *fitted);
        const auto better = fitCircleFrom(*fitted, points);
        if (!better) break;
        fitted = better;
    }
    result.fitted = fitted;
    result.used = points.size();
    for (const orx::TContrastEdge& edge : result.edges)
        result.meanResidual += fitted->distance(edge.position) / static_cast<double>(result.edges.size());
    return result;
}

}  // namespace inspection
