#include "orxFunctions/analysis/flatten.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/foundation/option_range_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

// The window is shrunk to at most this many pixels together with the picture: the light changes slowly, and
// the cost of a morphological operation grows with its window.
constexpr int kCoarseWindow = 25;

bool isUsable(const cv::Mat& img, const TFlattenOptions& options, const char* function) {
    return takesPicture(img, function) && takesOneChannel(img, function) &&
           takesOptions(function, {{"window", static_cast<double>(options.window), 3, 100000}});
}

cv::Mat backgroundOf(const cv::Mat& grey, const TFlattenOptions& options) {
    const double scale = std::min(1.0, static_cast<double>(kCoarseWindow) / options.window);
    const auto shrunk = [&](int side) { return std::max(1, cvRound(side * scale)); };
    cv::Mat coarse;
    cv::resize(grey, coarse, cv::Size(shrunk(grey.cols), shrunk(grey.rows)), 0, 0, cv::INTER_AREA);
    const int side = shrunk(options.window) | 1;
    const cv::Mat element = cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(side, side));
    cv::morphologyEx(coarse, coarse, options.brightObjects ? cv::MORPH_OPEN : cv::MORPH_CLOSE, element,
                     cv::Point(-1, -1), 1, cv::BORDER_REFLECT);
    cv::GaussianBlur(coarse, coarse, cv::Size(), side / 4.0);
    cv::Mat background;
    cv::resize(coarse, background, grey.size(), 0, 0, cv::INTER_LINEAR);
    return background;
}

}  // namespace

bool getBackground(const cv::Mat& img, cv::Mat& background, const TFlattenOptions& options) {
    if (!isUsable(img, options, "getBackground")) return false;
    background = backgroundOf(img, options);
    return true;
}

bool flattenLight(const cv::Mat& img, cv::Mat& flat, const TFlattenOptions& options) {
    if (!isUsable(img, options, "flattenLight")) return false;
    const cv::Mat background = backgroundOf(img, options);
    cv::Mat difference;
    if (options.brightObjects) {
        cv::subtract(img, background, difference);
    } else {
        cv::subtract(background, img, difference);
        cv::bitwise_not(difference, difference);
    }
    flat = difference;
    return true;
}

}  // namespace orx
