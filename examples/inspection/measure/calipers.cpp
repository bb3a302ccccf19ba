#include "inspection/measure/calipers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace inspection {
namespace {

constexpr int kCalipers = 72;
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
    orx::TFitOptions fit;
    fit.loss = orx::flTukey;
    fit.noise = orx::pnNormal;
    result.fitted = orx::fitCircleGeometric(points, fit);
    if (!result.fitted.valid()) return result;
    for (const orx::TContrastEdge& edge : result.edges)
        result.meanResidual +=
            std::abs(result.fitted.signedDistance(edge.position)) / static_cast<double>(result.edges.size());
    return result;
}

}  // namespace inspection
