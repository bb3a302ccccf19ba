// Thinning of binary images to lines one pixel wide.
#ifndef ORXFUNCTIONS_ANALYSIS_THINNING_H
#define ORXFUNCTIONS_ANALYSIS_THINNING_H

#include <opencv2/core.hpp>

#include "orxFunctions/api.h"

namespace orx {

enum TThinningMethod : int {
    // T. Zhang, C. Suen, "A fast parallel algorithm for thinning digital patterns", Commun. ACM 27 (1984).
    // Smooth lines with few spurs. Diagonal lines may stay two pixels wide, and squares of 2 x 2 pixels
    // vanish, as the method has it.
    tnZhangSuen = 0,
    // Z. Guo, R. Hall, "Parallel thinning with two-subiteration algorithms", Commun. ACM 32 (1989), the first
    // of the two (A1). Thinner, and no object vanishes: prefer it where objects are counted or lines traced.
    tnGuoHall = 1
};

// Thins every object until nothing changes. The result has 255 on the lines and 0 elsewhere.
//
// Images are 8-bit, one channel; every pixel that is not 0 belongs to an object, and beyond the border lies
// background. `dst` may be `src`. A single pixel stays. False, and `dst` untouched, for no pixels
// (rcEmptyImage), colour or 16 bits (rcImageType), more dimensions (rcImageDimensions) and an unknown method
// (rcOption).
//
// The answer is that of the published passes over the whole image. It is found by testing, in each pass, only
// those pixels whose surroundings have changed since their last test, and each with one look into a table of
// the 256 possible surroundings: the cost grows with the pixels removed, not with the width of the objects
// times the size of the image; per pixel, an image of 20 megapixels takes twice as long as one that the
// caches hold. Large images are worked on by several threads. Reentrant.
ORX_API bool thinning(const cv::Mat& src, cv::Mat& dst, TThinningMethod method = tnZhangSuen);

}  // namespace orx

#endif
