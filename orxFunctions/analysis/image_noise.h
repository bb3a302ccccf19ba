// How much a camera's pixels flicker: the noise that limits every measurement in an image.
#ifndef ORXFUNCTIONS_ANALYSIS_IMAGE_NOISE_H
#define ORXFUNCTIONS_ANALYSIS_IMAGE_NOISE_H

#include <opencv2/core.hpp>

#include "orxFunctions/api.h"

namespace orx {

// The standard deviation of the noise of one pixel, in grey levels of 8-bit images; 0.29, which rounding
// makes, at the least. Edges and smooth shading do not count, fine texture does. Of large images evenly
// spaced rows are looked at, so that it takes less than a millisecond.
//
// Images are 8- or 16-bit unsigned with 1 to 4 channels: colour is weighted to grey, as toGray does, and
// 16-bit levels are rounded to 8 bits. -1 for anything else: no pixels (rcEmptyImage), other depths or more
// channels (rcImageType), more dimensions (rcImageDimensions). Reentrant.
// J. Immerkaer, "Fast noise variance estimation", Computer Vision and Image Understanding 64 (1996), with the
// median in place of the mean.
ORX_API double getImageNoise(const cv::Mat& img);

}  // namespace orx

#endif
