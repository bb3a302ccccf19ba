// What the drawing operations ask of an image and of a coordinate, so that OpenCV can draw.
#ifndef ORXFUNCTIONS_FITTING_DRAWING_INTERNAL_H
#define ORXFUNCTIONS_FITTING_DRAWING_INTERNAL_H

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>

namespace orx {

// Nothing is drawn on other images; OpenCV writes outside those of more than two dimensions.
inline bool isDrawable(const cv::Mat& image) { return !image.empty() && image.dims == 2; }

// A coordinate limited to what lies far outside every image; 0 for not-a-number. The difference of two such
// coordinates fits into 32 bits, in which OpenCV takes it for a thick line.
inline double limitedCoordinate(double v) {
    constexpr double kFarthest = 1 << 29;
    return std::isnan(v) ? 0.0 : std::clamp(v, -kFarthest, kFarthest);
}

}  // namespace orx

#endif
