#ifndef ORXFUNCTIONS_ANALYSIS_IMAGE_NOISE_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_IMAGE_NOISE_INTERNAL_H

#include <opencv2/core.hpp>

namespace orx::edges {

// The standard deviation of the noise of an 8-bit image in grey levels, from the median response to a mask
// that is blind to planes (J. Immerkaer, "Fast noise variance estimation", Computer Vision and Image
// Understanding 64, 1996, with the median in place of the mean so that edges do not count). Of large images
// evenly spaced rows are looked at. At least that of rounding to grey levels.
double imageNoise(const cv::Mat& gray);

}  // namespace orx::edges

#endif
