#include "orxFunctions/analysis/edges/threshold.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/platform/parallel_internal.h"

namespace orx::edges {
namespace {

double limitFor(int rows, int cols) { return 2.5 * (static_cast<double>(cols) + rows); }

// The general route, for gradients of any type.
LevelHistogram levelsOfAnyType(const cv::Mat& gx, const cv::Mat& gy) {
    constexpr double kWeight = 0.00390625;
    cv::Mat levels;
    cv::addWeighted(cv::abs(gx), kWeight, cv::abs(gy), kWeight, 0, levels);
    levels.convertTo(levels, CV_8U);
    const int channel = 0;
    const int bins = 256;
    const float range[] = {0, 255};
    const float* ranges = range;
    cv::Mat counts;
    cv::calcHist(&levels, 1, &channel, cv::Mat(), counts, 1, &bins, &ranges);
    LevelHistogram histogram{};
    for (int i = 0; i < bins; ++i) {
        histogram[static_cast<std::size_t>(i)] = std::llrint(counts.at<float>(i));
    }
    return histogram;
}

// Adds up what count(levels, row) counts of every row.
template <class Count>
LevelHistogram levelsOfRows(cv::Size size, const Count& count) {
    const auto ofRows = [&](const cv::Range& rows) {
        LevelHistogram levels{};
        for (int r = rows.start; r < rows.end; ++r) count(levels, r);
        return levels;
    };
    return platform::sumOfStripes({size, platform::kStripe}, ofRows, platform::addEach);
}

bool arePlainGradients(const cv::Mat& gx, const cv::Mat& gy) {
    return gx.dims <= 2 && gx.type() == CV_16SC1 && gy.type() == CV_16SC1 && gx.size() == gy.size();
}

}  // namespace

double highestLevelAbove(const LevelHistogram& levels, double limit) {
    // Bins are single precision, as a histogram of the image library is.
    double count = 0;
    for (int level = 254; level >= 0; --level) {
        count += static_cast<float>(levels[static_cast<std::size_t>(level)]);
        if (std::rint(count) > limit) return level;
    }
    return -1.0;
}

double automaticThreshold(const GradientImage& gradient) {
    const cv::Size size(gradient.cols(), gradient.rows());
    const LevelHistogram levels = levelsOfRows(size, [&](LevelHistogram& counted, int r) {
        const std::int16_t* pairs = gradient.row(r);
        for (int c = 0; c < gradient.cols(); ++c) ++counted[gradientLevel(pairs[2 * c], pairs[2 * c + 1])];
    });
    return highestLevelAbove(levels, limitFor(gradient.rows(), gradient.cols()));
}

double automaticThreshold(const cv::Mat& gx, const cv::Mat& gy) {
    if (gx.empty()) return -1.0;
    if (!arePlainGradients(gx, gy)) {
        return highestLevelAbove(levelsOfAnyType(gx, gy), limitFor(gx.rows, gx.cols));
    }
    const LevelHistogram levels = levelsOfRows(gx.size(), [&](LevelHistogram& counted, int r) {
        const auto* dx = gx.ptr<std::int16_t>(r);
        const auto* dy = gy.ptr<std::int16_t>(r);
        for (int c = 0; c < gx.cols; ++c) ++counted[gradientLevel(dx[c], dy[c])];
    });
    return highestLevelAbove(levels, limitFor(gx.rows, gx.cols));
}

}  // namespace orx::edges
