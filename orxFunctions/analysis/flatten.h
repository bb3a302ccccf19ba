// Evening out the light: what the background of a picture looks like, and the picture without it.
//
// For pictures whose light falls off so far that no one threshold parts objects from the ground. The
// background is what stays when objects narrower than a window are taken away: a morphological opening for
// objects brighter than the ground, a closing for darker ones, smoothed. The window must be wider than the
// widest object; the light should change little across it. Measure edges in the picture as it came
// (analysis/contour_edges.h): flattening is for finding objects, and moves edges where the light changes
// fast.
//
// Images are 8- or 16-bit unsigned, one channel. False, and the output untouched, for anything else: no
// pixels (rcEmptyImage), other depths or channels (rcImageType), more dimensions (rcImageDimensions), and for
// options outside their ranges (rcOption). The output may be the input. Reentrant. P. Soille, "Morphological
// Image Analysis", 2nd edition, Springer (2003), section 4.3 (top-hats).
#ifndef ORXFUNCTIONS_ANALYSIS_FLATTEN_H
#define ORXFUNCTIONS_ANALYSIS_FLATTEN_H

#include <opencv2/core.hpp>

#include "orxFunctions/api.h"

namespace orx {

struct TFlattenOptions {
    int window = 101;           // [101] Diameter of the window in pixels, 3 to 100,000.
    bool brightObjects = true;  // [true] Objects are brighter than the ground; false: darker.
};

// The background alone, of the size and type of the image. Windows above 25 pixels work on the picture shrunk
// accordingly, so that the time hardly depends on the window.
ORX_API bool getBackground(const cv::Mat& img, cv::Mat& background, const TFlattenOptions& options = {});

// The image less its background: bright objects on 0, dark objects on the highest level. Noise of the ground
// on the objects' side of the background stays; the rest is cut off.
ORX_API bool flattenLight(const cv::Mat& img, cv::Mat& flat, const TFlattenOptions& options = {});

}  // namespace orx

#endif
