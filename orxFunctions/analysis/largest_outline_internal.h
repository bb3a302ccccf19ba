// The outline of the largest object of a binary image.
#ifndef ORXFUNCTIONS_ANALYSIS_LARGEST_OUTLINE_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_LARGEST_OUTLINE_INTERNAL_H

#include <opencv2/core.hpp>
#include <vector>

namespace orx {

// Of the outer outlines that cv::findContours gives for an 8-bit image, without their straight pixels, the
// first one of the largest area (cv::contourArea); empty when there is none. Few of them are followed: the
// boxes around the objects, found on several threads, say which can be the largest.
std::vector<cv::Point> largestOutline(const cv::Mat& binary);

}  // namespace orx

#endif
