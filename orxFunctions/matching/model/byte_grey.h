// Pictures as matching looks at them.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_BYTE_GREY_H
#define ORXFUNCTIONS_MATCHING_MODEL_BYTE_GREY_H

#include <opencv2/core.hpp>

#include "orxFunctions/analysis/grey_input_internal.h"

namespace orx::matching {

// 8 bits, one channel, of a picture (takesPicture); 16-bit levels are rounded. Shares the pixels of such a
// one.
inline cv::Mat byteGrey(const cv::Mat& img) {
    const cv::Mat grey = greyOf(img);
    if (grey.depth() == CV_8U) return grey;
    cv::Mat bytes;
    grey.convertTo(bytes, CV_8U, 1 / levelUnit(img));
    return bytes;
}

}  // namespace orx::matching

#endif
