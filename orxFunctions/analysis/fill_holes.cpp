#include "orxFunctions/analysis/fill_holes.h"

#include <cmath>
#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/analysis/grey_input_internal.h"

namespace orx {
namespace {

// Whether the pixels of a label become 255. Label 0 is everything that is no background.
std::vector<uchar> holesOf(const cv::Mat& statistics, cv::Size size, double maxArea) {
    std::vector<uchar> isHole(static_cast<std::size_t>(statistics.rows), 0);
    for (int label = 1; label < statistics.rows; ++label) {
        const int* part = statistics.ptr<int>(label);
        const bool reachesBorder = part[cv::CC_STAT_LEFT] == 0 || part[cv::CC_STAT_TOP] == 0 ||
                                   part[cv::CC_STAT_LEFT] + part[cv::CC_STAT_WIDTH] == size.width ||
                                   part[cv::CC_STAT_TOP] + part[cv::CC_STAT_HEIGHT] == size.height;
        isHole[static_cast<std::size_t>(label)] = !reachesBorder && part[cv::CC_STAT_AREA] <= maxArea ? 1 : 0;
    }
    return isHole;
}

}  // namespace

bool fillHoles(const cv::Mat& src, cv::Mat& dst, const TFillHolesOptions& options) {
    const bool known = options.objects == cnFour || options.objects == cnEight;
    if (!isByteImage(src) || !known || std::isnan(options.maxArea)) return false;
    const cv::Mat background = src == 0;
    cv::Mat labels;
    cv::Mat statistics;
    cv::Mat centroids;
    cv::connectedComponentsWithStats(background, labels, statistics, centroids,
                                     options.objects == cnEight ? 4 : 8, CV_32S);
    const std::vector<uchar> isHole = holesOf(statistics, src.size(), options.maxArea);
    cv::Mat filled = src.clone();
    for (int y = 0; y < filled.rows; ++y) {
        const int* label = labels.ptr<int>(y);
        uchar* pixel = filled.ptr(y);
        for (int x = 0; x < filled.cols; ++x) {
            if (isHole[static_cast<std::size_t>(label[x])] != 0) pixel[x] = 255;
        }
    }
    dst = filled;
    return true;
}

}  // namespace orx
