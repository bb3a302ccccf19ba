// Conversions to 8-bit grey and 8-bit colour, whatever a camera or a file delivers.
//
// Accepted are 8- and 16-bit unsigned images of 1 (grey), 2 (grey, alpha), 3 (BGR) or 4 (BGR, alpha)
// channels; alpha is dropped. Everything else gives an empty matrix: no pixels (rcEmptyImage), more than two
// dimensions (rcImageDimensions), more channels, signed or floating-point levels, whose range nobody knows
// (rcImageType), and bits in use that are none (rcOption). The result is always a new image that shares
// nothing with the source, so that drawing on it is safe. Reentrant.
#ifndef ORXFUNCTIONS_ANALYSIS_COLOUR_H
#define ORXFUNCTIONS_ANALYSIS_COLOUR_H

#include <opencv2/core.hpp>

#include "orxFunctions/api.h"

namespace orx {

// 8-bit grey. Colour is weighted 0.299 R + 0.587 G + 0.114 B (Recommendation ITU-R BT.601) in the depth of
// the source and scaled after that.
//
// `bits` is how many bits of a 16-bit image are in use, 8 to 16: machine-vision cameras deliver 10, 12 or 14
// bits in the low end of 16. The level 2^bits - 1 becomes 255, higher ones too, the rest in proportion,
// rounded to nearest. It is not looked at for 8-bit images, except that values outside 8 to 16 are refused.
ORX_API cv::Mat toGray(const cv::Mat& img, int bits = 16);

// 8-bit BGR; grey goes into all three channels. `bits` as for toGray.
ORX_API cv::Mat toBGR(const cv::Mat& img, int bits = 16);

}  // namespace orx

#endif
