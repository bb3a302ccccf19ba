#include "orxFunctions/analysis/subpixel_edges.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "orxFunctions/analysis/edges/gradient.h"
#include "orxFunctions/analysis/edges/refinement.h"
#include "orxFunctions/analysis/edges/suppression.h"
#include "orxFunctions/analysis/edges/threshold.h"

namespace ORXEdge {
namespace {

using namespace orx::edges;

struct Thresholds {
    int low;
    int high;
};

Thresholds automaticThresholds(const GradientImage& gradient) {
    const int high = static_cast<int>(automaticThreshold(gradient));
    return {static_cast<int>(0.4 * high), high};
}

// In gradient units and squared; far beyond the largest magnitude it stays there.
std::int64_t squared(int threshold) {
    const std::int64_t scaled = std::abs(static_cast<std::int64_t>(threshold) * kGradientScale);
    const std::int64_t bounded = std::min<std::int64_t>(scaled, 1 << 16);
    return bounded * bounded;
}

}  // namespace

bool EdgesSubPix(cv::Mat& gray, std::vector<TContour>& contours, const cv::_OutputArray& hierarchy, int mode,
                 int low, int high, double alpha) {
    if (gray.type() != CV_8UC1) return false;
    cv::Mat smoothed;
    cv::GaussianBlur(gray, smoothed, cv::Size(), alpha, alpha);
    const GradientImage gradient = derivativeGradient(smoothed, derivativeKernel(alpha));
    const Thresholds thresholds = high < 0 ? automaticThresholds(gradient) : Thresholds{low, high};
    const cv::Mat edges = findEdgePixels(gradient, {squared(thresholds.low), squared(thresholds.high)}).map;
    std::vector<PixelChain> chains;
    cv::findContours(edges, chains, hierarchy, mode, cv::CHAIN_APPROX_NONE);
    refineChains(gradient, chains, contours);
    return true;
}

bool EdgesSubPix(cv::Mat& gray, std::vector<TContour>& contours, int low, int high, double alpha) {
    return EdgesSubPix(gray, contours, cv::noArray(), cv::RETR_LIST, low, high, alpha);
}

bool EdgesSubPix(cv::Mat& gray, std::vector<std::vector<cv::Point2f>>& contours, int low, int high,
                 double alpha) {
    std::vector<TContour> found;
    if (!EdgesSubPix(gray, found, low, high, alpha)) return false;
    contours.resize(found.size());
    std::transform(found.begin(), found.end(), contours.begin(),
                   [](TContour& contour) { return std::move(contour.points); });
    return true;
}

double calcEdgeThresVal(cv::Mat gx, cv::Mat gy) { return automaticThreshold(gx, gy); }

}  // namespace ORXEdge
