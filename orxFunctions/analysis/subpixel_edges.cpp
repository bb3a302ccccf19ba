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
#include "orxFunctions/foundation/refusal_internal.h"

namespace ORXEdge {
namespace {

using namespace orx::edges;

constexpr double kLargestAlpha = 1000;

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

bool takesInput(const cv::Mat& gray, double alpha) {
    const bool leftToOpenCV = gray.empty() && gray.dims <= 2 && gray.type() == CV_8UC1;  // which throws
    if (!leftToOpenCV && !orx::takesBytes(gray, "EdgesSubPix")) return false;
    if (alpha > kLargestAlpha)
        return orx::refuse(orx::rcOption, "EdgesSubPix", "alpha is %g; up to %g is taken", alpha,
                           kLargestAlpha);
    return true;
}

// Not smoothed in earnest where no kernel will look at it.
cv::Mat smoothedBy(double alpha, const cv::Mat& gray, bool needed) {
    // OpenCV does not look at the sigma for a single pixel.
    const bool looksAway = gray.total() == 1 && !(alpha > 0);
    const double sigma = needed || !(alpha > 1) ? alpha : 1;
    cv::Mat smoothed;
    cv::GaussianBlur(looksAway ? cv::repeat(gray, 2, 2) : gray, smoothed, cv::Size(), sigma, sigma);
    return smoothed;
}

}  // namespace

bool EdgesSubPix(const cv::Mat& gray, std::vector<TContour>& contours, const cv::_OutputArray& hierarchy,
                 int mode, int low, int high, double alpha) {
    if (!takesInput(gray, alpha)) return false;
    const std::vector<std::int16_t> kernel = derivativeKernel(alpha);
    const GradientImage gradient = derivativeGradient(smoothedBy(alpha, gray, !kernel.empty()), kernel);
    const Thresholds thresholds = high < 0 ? automaticThresholds(gradient) : Thresholds{low, high};
    const cv::Mat edges = findEdgePixels(gradient, {squared(thresholds.low), squared(thresholds.high)}).map;
    std::vector<PixelChain> chains;
    cv::findContours(edges, chains, hierarchy, mode, cv::CHAIN_APPROX_NONE);
    refineChains(gradient, chains, contours);
    return true;
}

bool EdgesSubPix(const cv::Mat& gray, std::vector<TContour>& contours, int low, int high, double alpha) {
    return EdgesSubPix(gray, contours, cv::noArray(), cv::RETR_LIST, low, high, alpha);
}

bool EdgesSubPix(const cv::Mat& gray, std::vector<std::vector<cv::Point2f>>& contours, int low, int high,
                 double alpha) {
    std::vector<TContour> found;
    if (!EdgesSubPix(gray, found, low, high, alpha)) return false;
    contours.resize(found.size());
    std::transform(found.begin(), found.end(), contours.begin(),
                   [](TContour& contour) { return std::move(contour.points); });
    return true;
}

bool EdgesSubPix(cv::Mat& gray, std::vector<TContour>& contours, const cv::_OutputArray& hierarchy, int mode,
                 int low, int high, double alpha) {
    return EdgesSubPix(std::as_const(gray), contours, hierarchy, mode, low, high, alpha);
}

bool EdgesSubPix(cv::Mat& gray, std::vector<TContour>& contours, int low, int high, double alpha) {
    return EdgesSubPix(std::as_const(gray), contours, low, high, alpha);
}

bool EdgesSubPix(cv::Mat& gray, std::vector<std::vector<cv::Point2f>>& contours, int low, int high,
                 double alpha) {
    return EdgesSubPix(std::as_const(gray), contours, low, high, alpha);
}

double calcEdgeThresVal(cv::Mat gx, cv::Mat gy) {
    for (const cv::Mat* gradient : {&gx, &gy}) {
        if (gradient->dims > 2 && !orx::takesImage(*gradient, "calcEdgeThresVal")) return -1.0;
    }
    const double level = automaticThreshold(gx, gy);
    if (level < 0 && orx::takesImage(gx, "calcEdgeThresVal"))
        orx::refuse(orx::rcNoResult, "calcEdgeThresVal",
                    "no level has more than 2.5 (rows + columns) pixels");
    return level;
}

}  // namespace ORXEdge
