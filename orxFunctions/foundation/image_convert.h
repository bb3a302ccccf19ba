// Conversions between the raw image record and cv::Mat, without copying pixels.
#ifndef ORXFUNCTIONS_FOUNDATION_IMAGE_CONVERT_H
#define ORXFUNCTIONS_FOUNDATION_IMAGE_CONVERT_H

#include <opencv2/core.hpp>

#include "orxFunctions/api.h"
#include "orxFunctions/foundation/records.h"

namespace orx {

// Makes `out` a header over the record's buffer: height rows, width columns, CV_8UC4 for 4 channels, CV_8UC3
// for 3, CV_8UC1 for anything else. Whatever `out` held is released. Writes through `out` change the host's
// pixels, and `out` must not outlive the buffer. The record is trusted: a null buffer with positive sizes
// gives a header that can't be read. Reentrant.
ORX_API void ORXImage2Mat(TORXImage* img, cv::Mat& out);

// Describes `m` in the record: columns, rows, channels and the pixel buffer, which stays valid only while `m`
// lives. Meant for continuous 8-bit images; depth and padding are not checked and not recorded. Nobody may
// write through the record of a const image. Reentrant.
ORX_API void Mat2ORXImage(cv::Mat& m, TORXImage* img);
ORX_API void Mat2ORXImage(const cv::Mat& m, TORXImage* img);

}  // namespace orx

#endif
