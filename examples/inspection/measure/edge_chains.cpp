#include "inspection/measure/edge_chains.h"

#include <algorithm>

namespace inspection {
namespace {

constexpr int kCropWidth = 44;
constexpr int kCropHeight = 28;

cv::Rect cropAround(cv::Point2f at, cv::Size size) {
    const int width = std::min(kCropWidth, size.width);
    const int height = std::min(kCropHeight, size.height);
    return {std::clamp(cvRound(at.x) - width / 2, 0, size.width - width),
            std::clamp(cvRound(at.y) - height / 2, 0, size.height - height), width, height};
}

double lengthOf(const ORXEdge::TMetricContour& chain) {
    double length = 0.0;
    for (std::size_t i = 1; i < chain.points.size(); ++i)
        length += cv::norm(chain.points[i] - chain.points[i - 1]);
    if (chain.closed && chain.points.size() > 2)
        length += cv::norm(chain.points.front() - chain.points.back());
    return length;
}

}  // namespace

EdgeChains findEdgeChains(const cv::Mat& grey) {
    ORXEdge::TMetricOptions options;
    options.automaticThresholds = true;
    EdgeChains result;
    ORXEdge::edgesSubPixMetric(grey, result.chains, options);

    std::vector<float> deviations;
    double contrast = 0.0;
    double longest = 0.0;
    for (const ORXEdge::TMetricContour& chain : result.chains) {
        if (chain.points.empty()) continue;
        deviations.insert(deviations.end(), chain.deviation.begin(), chain.deviation.end());
        for (const float c : chain.contrast) contrast += static_cast<double>(c);
        const double length = lengthOf(chain);
        result.length += length;
        if (length <= longest) continue;
        longest = length;
        result.crop = cropAround(chain.points[chain.points.size() / 2], grey.size());
    }
    result.pointCount = deviations.size();
    if (deviations.empty()) return result;
    const auto median = deviations.begin() + static_cast<std::ptrdiff_t>(deviations.size() / 2);
    std::nth_element(deviations.begin(), median, deviations.end());
    result.medianDeviation = static_cast<double>(*median);
    result.meanContrast = contrast / static_cast<double>(result.pointCount);
    return result;
}

}  // namespace inspection
