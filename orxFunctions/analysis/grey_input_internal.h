// Pictures (takesPicture of foundation/refusal_internal.h) as the image operators look at them.
#ifndef ORXFUNCTIONS_ANALYSIS_GREY_INPUT_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_GREY_INPUT_INTERNAL_H

#include <opencv2/core.hpp>

namespace orx {

// For options. Not-a-number is not between anything.
inline bool isBetween(double value, double low, double high) { return value >= low && value <= high; }

// Of an image that is known to have pixels: one channel, or else refused.
bool takesOneChannel(const cv::Mat& img, const char* function) noexcept;

// Channels that carry light: 1 of 1 or 2, 3 of 3 or 4. What is left is an alpha channel.
int lightChannels(const cv::Mat& img);

// The highest level of a picture: 255 or 65535.
double fullLevel(const cv::Mat& img);

// Levels of the picture for one level of an 8-bit one: 1 or 257.
double levelUnit(const cv::Mat& img);

// One channel in the depth of the picture: 0.299 R + 0.587 G + 0.114 B of colour, the first channel of 1 or
// 2. Shares the pixels of a picture that has one channel.
cv::Mat greyOf(const cv::Mat& picture);

}  // namespace orx

#endif
