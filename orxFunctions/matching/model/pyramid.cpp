#include "orxFunctions/matching/model/pyramid.h"

#include <opencv2/imgproc.hpp>

namespace orx::matching {

std::vector<cv::Mat> makePyramid(const cv::Mat& grey, int levels) {
    std::vector<cv::Mat> pyramid = {grey};
    while (static_cast<int>(pyramid.size()) < levels) {
        const cv::Mat& finer = pyramid.back();
        const cv::Size half(finer.cols / 2, finer.rows / 2);
        if (half.empty()) break;
        cv::Mat coarser;
        cv::resize(finer(cv::Rect(cv::Point(), half * 2)), coarser, half, 0, 0, cv::INTER_AREA);
        pyramid.push_back(coarser);
    }
    return pyramid;
}

}  // namespace orx::matching
