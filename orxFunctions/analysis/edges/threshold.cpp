#include "orxFunctions/analysis/edges/threshold.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

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
    LevelHistogram levels{};
    for (int r = 0; r < gradient.rows(); ++r) {
        const std::int16_t* pairs = gradient.row(r);
        for (int c = 0; c < gradient.cols(); ++c) ++levels[gradientLevel(pairs[2 * c], pairs[2 * c + 1])];
    }
    return highestLevelAbove(levels, limitFor(gradient.rows(), gradient.cols()));
}

double automaticThreshold(const cv::Mat& gx, const cv::Mat& gy) {
    if (gx.empty()) return -1.0;
    if (!arePlainGradients(gx, gy)) {
        return highestLevelAbove(levelsOfAnyType(gx, gy), limitFor(gx.rows, gx.cols));
    }
    LevelHistogram levels{};
    for (int r = 0; r < gx.rows; ++r) {
        const auto* dx = gx.ptr<std::int16_t>(r);
        const auto* dy = gy.ptr<std::int16_t>(r);
        for (int c = 0; c < gx.cols; ++c) ++levels[gradientLevel(dx[c], dy[c])];
    }
    return highestLevelAbove(levels, limitFor(gx.rows, gx.cols));
}

}  // namespace orx::edges
