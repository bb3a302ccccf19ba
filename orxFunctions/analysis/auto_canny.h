// Canny edge images whose thresholds follow from the image.
//
// Images are 8- or 16-bit unsigned with 1 to 4 channels; they are brought to 8-bit grey as by toGray
// (analysis/colour.h) first. Refused are empty images (rcEmptyImage), other depths or more channels
// (rcImageType), more dimensions (rcImageDimensions), and options outside their ranges (rcOption). A single
// pixel, and any image of one level, has no edges. Reentrant.
//
// J. Canny, "A computational approach to edge detection", IEEE Trans. PAMI 8 (1986).
#ifndef ORXFUNCTIONS_ANALYSIS_AUTO_CANNY_H
#define ORXFUNCTIONS_ANALYSIS_AUTO_CANNY_H

#include <opencv2/core.hpp>

#include "orxFunctions/api.h"

namespace orx {

enum TCannyMethod : int {
    // From the median grey level m: (1 - spread) m and (1 + spread) m. For ordinary scenes with much texture,
    // where most pixels are of middle brightness; follows the exposure. A. Rosebrock, "Zero-parameter,
    // automatic Canny edge detection" (2015). A median of 0 leaves nothing to scale; cmOtsu then decides.
    cmMedian = 0,
    // The high threshold is the level that divides the gradient magnitudes by Otsu's criterion, the low one
    // `lowRatio` of it. For few clear edges before a quiet background, as back-lit parts have; independent of
    // the exposure. M. Fang, G. Yue, Q. Yu, "The study on an application of Otsu method in Canny operator",
    // ISIP (2009).
    cmOtsu = 1
};

struct TAutoCannyOptions {
    TCannyMethod method = cmMedian;
    double spread = 0.33;   // cmMedian: 0 to 1; the larger, the more edges
    double lowRatio = 0.5;  // cmOtsu: low threshold over high, 0 to 1
    double blur = 0.0;      // standard deviation of a Gaussian before, pixels, 0 (none) to 50
    int bits = 16;          // bits in use of a 16-bit image, 8 to 16; see toGray
};

// Thresholds for the magnitude (L2) of the 3 x 3 Sobel gradient, 0 to about 1,442.
struct TCannyThresholds {
    double low = 0.0;
    double high = 0.0;
    bool valid = false;  // false for what is refused
};

// The thresholds alone, to be looked at, or kept for a series of images under the same light.
ORX_API TCannyThresholds getCannyThresholds(const cv::Mat& img, const TAutoCannyOptions& options = {});

// The edge image: 8-bit, 255 on edges one pixel wide, else 0. Empty for what is refused.
ORX_API cv::Mat autoCanny(const cv::Mat& img, const TAutoCannyOptions& options = {});

}  // namespace orx

#endif
