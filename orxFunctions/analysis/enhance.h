// Enhancement of grey and colour images for the eye, or for an operator that follows.
//
// Images are 8- or 16-bit unsigned with 1 to 4 channels (grey; grey, alpha; BGR; BGR, alpha); the result has
// the same size and type, alpha is carried over unchanged. `dst` may be `src`. False, and `dst` untouched,
// for anything else: no pixels (rcEmptyImage), other depths or more channels (rcImageType), more dimensions
// (rcImageDimensions), and for options outside their ranges (rcOption). A single pixel is allowed. All
// functions are reentrant.
//
// None of them adds information: measure in the original, except where light is so uneven that one threshold
// no longer serves.
#ifndef ORXFUNCTIONS_ANALYSIS_ENHANCE_H
#define ORXFUNCTIONS_ANALYSIS_ENHANCE_H

#include <opencv2/core.hpp>

#include "orxFunctions/api.h"
#include "orxFunctions/foundation/enumerations.h"

namespace orx {

struct TEnhanceOptions {
    // emEqualize
    double clipLimit = 2.0;  // largest slope of a tile's curve, above 0 to 100; 1 changes hardly anything
    int tiles = 8;           // tiles along each side, 1 to 64; at most one for each pixel
    // emDetailGain
    double gain = 1.0;   // how much of the detail is added once more, 0 to 20
    double sigma = 2.0;  // detail is what a Gaussian of this standard deviation takes away, pixels, 0.3 to 50
};

// Raises local contrast.
//
// emEqualize (1): contrast-limited adaptive histogram equalisation. Evens out light and brings up faint
//     structure in dark and bright regions alike; moves grey levels, so levels of different places no longer
//     compare. K. Zuiderveld, "Contrast limited adaptive histogram equalization", Graphics Gems IV (1994).
// every other value: unsharp detail gain, src + gain * (src - smoothed). Sharpens edges and texture and keeps
//     the mean level; edges get a seam of about 2 sigma. W. Schreiber, "Wirephoto quality improvement by
//     unsharp masking", Pattern Recognition 2 (1970).
//
// Of colour the luma is changed and the colour differences are kept (Y, Cr, Cb), so that no colour is moved
// beyond rounding.
ORX_API bool enhanceImage(const cv::Mat& src, cv::Mat& dst, TEnchanceMethod method,
                          const TEnhanceOptions& options = {});

// top * (level / top)^gamma for every level, top being 255 or 65535, rounded to nearest. Gamma below 1
// brightens dark regions, above 1 darkens them; 0.01 to 100.
ORX_API bool correctGamma(const cv::Mat& src, cv::Mat& dst, double gamma);

// top * ln(1 + gain * level / top) / ln(1 + gain), rounded to nearest. Lifts dark regions more than a gamma
// does and compresses bright ones; gain above 0 to 1e6, 255 being the classic curve ln(1 + level) of 8 bits.
ORX_API bool stretchLog(const cv::Mat& src, cv::Mat& dst, double gain = 255.0);

struct THighlightOptions {
    double knee = 0.7;      // from this share of full scale on levels are compressed, 0 to below `ceiling`
    double ceiling = 0.85;  // share of full scale that no level exceeds, up to 1
};

// Suppresses highlights: levels up to the knee stay, higher ones approach the ceiling along
// c - (c - k) exp(-(level - k) / (c - k)), which leaves the knee with slope 1 and keeps the order of levels
// (up to rounding). Of colour the highest of the three channels is compressed and the others by the same
// factor, so that hue and saturation stay.
ORX_API bool suppressHighlights(const cv::Mat& src, cv::Mat& dst, const THighlightOptions& options = {});

}  // namespace orx

#endif
