// Filling the holes of objects in a binary image.
#ifndef ORXFUNCTIONS_ANALYSIS_FILL_HOLES_H
#define ORXFUNCTIONS_ANALYSIS_FILL_HOLES_H

#include <opencv2/core.hpp>

#include "orxFunctions/api.h"

namespace orx {

// How pixels of an object hang together. Background and holes hang together the other way, so that a closed
// line one pixel wide always divides inside from outside.
enum TConnectivity : int { cnFour = 4, cnEight = 8 };

struct TFillHolesOptions {
    double maxArea = 1e300;  // holes of more pixels stay open
    TConnectivity objects = cnEight;
};

// Sets the pixels of every hole to 255: of each connected part of the background (pixels of 0) that does not
// reach the border of the image. Objects keep their values, an object inside a hole too.
//
// Images are 8-bit, one channel; `dst` may be `src`. False, and `dst` untouched, for no pixels
// (rcEmptyImage), colour or 16 bits (rcImageType), more dimensions (rcImageDimensions), a limit that is not a
// number (rcNotFinite) and an unknown connectivity (rcOption). A single pixel is never a hole. Reentrant;
// large images are worked on by several threads. The time grows as the number of pixels and of the runs of
// background in their rows; per pixel, an image of 20 megapixels takes up to three times as long as one that
// the caches hold. P. Soille, "Morphological Image Analysis", 2nd edition, Springer (2003), section 6.3.7.
ORX_API bool fillHoles(const cv::Mat& src, cv::Mat& dst, const TFillHolesOptions& options = {});

}  // namespace orx

#endif
