// From a driver's picture to an image of one's own.
#ifndef ORXFUNCTIONS_CAMERA_CAMERA_IMAGE_INTERNAL_H
#define ORXFUNCTIONS_CAMERA_CAMERA_IMAGE_INTERNAL_H

#include <opencv2/core.hpp>

#include "orxFunctions/foundation/records.h"

namespace orx {

// What happens to a picture between the driver and the caller, in this order.
struct ImageTreatment {
    int scale = 0;         // 2 or 4: columns and rows divided by it; any other value: as it is
    bool reverse = false;  // upside down
    int angle = 0;         // degrees counter-clockwise; see TCamera::rotation

    bool scales() const { return scale == 2 || scale == 4; }
    bool turnsByQuarter() const { return angle % 360 == 90 || angle % 360 == 270; }
};

// Treats a driver's picture into `out`, which then never shares pixels with it. A picture that can't be one
// (no data, no or absurd size) and one that scaling leaves nothing of give an empty image.
//
// The driver's pixels are only read, so that a driver may hand out the same picture again: all flips and
// turns are made at once on the way, which gives the pixels that the single steps would. The buffer of `out`
// is used again when it fits and no other header looks at it: new memory for each picture costs more than the
// copy (every page of it is a fault).
void treatImage(const TORXImage& picture, const ImageTreatment& treatment, cv::Mat& out);

// True when the image owns its pixels and no other header looks at them.
bool isExclusive(const cv::Mat& image);

}  // namespace orx

#endif
