#include "orxFunctions/analysis/auto_canny.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/analysis/colour.h"
#include "orxFunctions/analysis/histogram_internal.h"
#include "orxFunctions/foundation/option_range_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx {
namespace {

bool isUsable(const cv::Mat& img, const TAutoCannyOptions& options, const char* function) {
    return takesPicture(img, function) &&
           takesOptions(function, {{"method", static_cast<double>(options.method), cmMedian, cmOtsu},
                                   {"spread", options.spread, 0, 1},
                                   {"lowRatio", options.lowRatio, 0, 1},
                                   {"blur", options.blur, 0, 50},
                                   {"bits", static_cast<double>(options.bits), 8, 16}});
}

// What both the thresholds and the edges are made of; computed once. Empty for what is refused.
struct Gradient {
    Gradient(const cv::Mat& img, const TAutoCannyOptions& options, const char* function) {
        if (!isUsable(img, options, function)) return;
        grey = toGray(img, options.bits);
        if (options.blur > 0)
            cv::GaussianBlur(grey, grey, {}, options.blur, options.blur, cv::BORDER_REPLICATE);
        dx.create(grey.size(), CV_16S);
        dy.create(grey.size(), CV_16S);
        const platform::RowStripes stripes(grey.size(), platform::kStripe);
        platform::forStripes(stripes, [&](int, const cv::Range& rows) {
            // The rows above and below are those of the image.
            const cv::Mat stripe = grey.rowRange(rows);
            cv::Sobel(stripe, cv::Mat(dx.rowRange(rows)), CV_16S, 1, 0, 3, 1, 0, cv::BORDER_REPLICATE);
            cv::Sobel(stripe, cv::Mat(dy.rowRange(rows)), CV_16S, 0, 1, 3, 1, 0, cv::BORDER_REPLICATE);
        });
    }
    cv::Mat grey;
    cv::Mat dx;
    cv::Mat dy;
};

// Of an even number of pixels the lower one of the two in the middle.
int medianLevel(const cv::Mat& grey) {
    const Histogram histogram = directHistogram(grey);
    const std::uint64_t half = (static_cast<std::uint64_t>(grey.total()) + 1) / 2;
    std::uint64_t below = 0;
    int level = -1;
    while (below < half && level < kLevels - 1) below += histogram[static_cast<std::size_t>(++level)];
    return level;
}

using Counts = std::vector<std::uint64_t>;
constexpr std::size_t kHighestMagnitude = 1442;  // 1020 * sqrt(2)

// Gradient magnitudes in whole levels, rounded to nearest.
Counts magnitudeCountsOf(const Gradient& gradient, const cv::Range& rows) {
    Counts counts(kHighestMagnitude + 1);
    for (int y = rows.start; y < rows.end; ++y) {
        const auto* dx = gradient.dx.ptr<std::int16_t>(y);
        const auto* dy = gradient.dy.ptr<std::int16_t>(y);
        for (int x = 0; x < gradient.dx.cols; ++x) {
            const auto squares = static_cast<float>(dx[x] * dx[x] + dy[x] * dy[x]);
            ++counts[static_cast<std::size_t>(cvRound(std::sqrt(squares)))];
        }
    }
    return counts;
}

Counts magnitudeCounts(const Gradient& gradient) {
    const auto ofRows = [&](const cv::Range& rows) { return magnitudeCountsOf(gradient, rows); };
    return platform::sumOfStripes({gradient.dx.size(), platform::kStripe}, ofRows, platform::addEach);
}

// The highest level of the lower class, for the largest variance between the classes; 0 with fewer than two
// levels.
int otsuLevel(const Counts& counts) {
    double total = 0;
    double weighted = 0;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        total += static_cast<double>(counts[i]);
        weighted += static_cast<double>(i) * static_cast<double>(counts[i]);
    }
    double lower = 0;
    double lowerWeighted = 0;
    double best = 0;
    int level = 0;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        lower += static_cast<double>(counts[i]);
        lowerWeighted += static_cast<double>(i) * static_cast<double>(counts[i]);
        const double upper = total - lower;
        if (lower == 0 || upper == 0) continue;
        const double apart = lowerWeighted / lower - (weighted - lowerWeighted) / upper;
        const double variance = lower * upper * apart * apart;
        if (variance > best) {
            best = variance;
            level = static_cast<int>(i);
        }
    }
    return level;
}

TCannyThresholds thresholdsOf(const Gradient& gradient, const TAutoCannyOptions& options) {
    if (gradient.grey.empty()) return {};
    const int median = options.method == cmMedian ? medianLevel(gradient.grey) : 0;
    if (median > 0) return {(1 - options.spread) * median, (1 + options.spread) * median, true};
    const double high = otsuLevel(magnitudeCounts(gradient));
    return {options.lowRatio * high, high, true};
}

}  // namespace

TCannyThresholds getCannyThresholds(const cv::Mat& img, const TAutoCannyOptions& options) {
    return thresholdsOf(Gradient(img, options, "getCannyThresholds"), options);
}

cv::Mat autoCanny(const cv::Mat& img, const TAutoCannyOptions& options) {
    const Gradient gradient(img, options, "autoCanny");
    const TCannyThresholds thresholds = thresholdsOf(gradient, options);
    cv::Mat edges;
    if (thresholds.valid) cv::Canny(gradient.dx, gradient.dy, edges, thresholds.low, thresholds.high, true);
    return edges;
}

}  // namespace orx
