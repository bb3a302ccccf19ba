#include "orxFunctions/analysis/fill_holes.h"

#include <cmath>
#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/analysis/grey_input_internal.h"

namespace orx {
namespace {

// 255 where the background does not reach the border: what a flood from a frame around the image leaves.
cv::Mat enclosedBackground(const cv::Mat& src, int connectivity) {
    cv::Mat framed;
    cv::copyMakeBorder(src == 0, framed, 1, 1, 1, 1, cv::BORDER_CONSTANT, cv::Scalar(255));
    cv::floodFill(framed, {0, 0}, cv::Scalar(0), nullptr, {}, {}, connectivity);
    return framed(cv::Rect(1, 1, src.cols, src.rows));
}

void dropLargerThan(double maxArea, cv::Mat& holes, int connectivity) {
    cv::Mat labels;
    cv::Mat statistics;
    cv::Mat centroids;
    const int count =
        cv::connectedComponentsWithStats(holes, labels, statistics, centroids, connectivity, CV_32S);
    std::vector<uchar> stays(static_cast<std::size_t>(count), 255);
    stays[0] = 0;
    for (int label = 1; label < count; ++label) {
        if (statistics.at<int>(label, cv::CC_STAT_AREA) > maxArea) stays[static_cast<std::size_t>(label)] = 0;
    }
    for (int y = 0; y < holes.rows; ++y) {
        const int* label = labels.ptr<int>(y);
        uchar* hole = holes.ptr(y);
        for (int x = 0; x < holes.cols; ++x) hole[x] = stays[static_cast<std::size_t>(label[x])];
    }
}

}  // namespace

bool fillHoles(const cv::Mat& src, cv::Mat& dst, const TFillHolesOptions& options) {
    const bool known = options.objects == cnFour || options.objects == cnEight;
    if (!isByteImage(src) || !known || std::isnan(options.maxArea)) return false;
    const int connectivity = options.objects == cnEight ? 4 : 8;
    cv::Mat holes = enclosedBackground(src, connectivity);
    const bool limited = options.maxArea < static_cast<double>(src.total());
    if (limited) dropLargerThan(options.maxArea, holes, connectivity);
    dst = src | holes;
    return true;
}

}  // namespace orx
