// Turning and mirroring images in one pass.
#ifndef ORXFUNCTIONS_CAMERA_TURN_IMAGE_INTERNAL_H
#define ORXFUNCTIONS_CAMERA_TURN_IMAGE_INTERNAL_H

#include <opencv2/core.hpp>

namespace orx {

// Any of the eight ways to lay an image: rows and columns exchanged first, then flipped.
struct Orientation {
    bool transposed = false;
    bool upsideDown = false;
    bool leftRight = false;

    bool asItIs() const { return !transposed && !upsideDown && !leftRight; }
};

// Lays an 8-bit image of 1, 3 or 4 channels into `out`, which must not share its pixels. The pixels are those
// of cv::transpose followed by cv::flip. The buffer of `out` is used again when it fits. Reentrant.
void turnImage(const cv::Mat& image, const Orientation& orientation, cv::Mat& out);

}  // namespace orx

#endif
