// Focus measures: how sharp an image is, for finding the best position of a lens or an axis.
//
// A measure has its maximum at best focus; its value depends on the scene, so only images of the same scene
// under the same light compare. Pass the part that matters as a view (`img(rect)`): what lies around it has
// no influence. All are normalised per pixel, so that parts of different size are comparable.
//
// Grey levels are those of 8-bit images; 16-bit levels are divided by 257 (without rounding), so that the
// scale does not change with the depth. Colour is weighted to grey as in toGray (analysis/colour.h). A single
// pixel, and any image of one level, gives 0. All functions are reentrant.
//
// -1.0 for what is no image: no pixels (rcEmptyImage), more than two dimensions (rcImageDimensions), another
// depth than 8 or 16 bits unsigned or more than 4 channels (rcImageType).
#ifndef ORXFUNCTIONS_ANALYSIS_FOCUS_H
#define ORXFUNCTIONS_ANALYSIS_FOCUS_H

#include <opencv2/core.hpp>

#include "orxFunctions/api.h"

namespace AutoFocus {

// The sum of the absolute grey differences of every pixel to its right and its lower neighbour, over the
// number of pixels; grey levels. The cheapest and the least sensitive to outliers, with a wide slope around
// the maximum: the first choice for a coarse search.
// R. Jarvis, "Focus optimization criteria for computer image processing", Microscope 24 (1976).
ORX_API double calcGrayDifference(const cv::Mat& img);

// The mean squared difference of pixels two columns and two rows apart; squared grey levels. Narrower around
// the maximum than calcGrayDifference and less sensitive to noise than calcLaplacianVariance. Both directions
// are summed, so that turning the object by 90 degrees changes nothing.
// J. Brenner et al., "An automated microscope for cytologic research", J. Histochem. Cytochem. 24 (1976).
ORX_API double calcBrenner(const cv::Mat& img);

// The mean squared magnitude of the 3 x 3 Sobel gradient (unscaled: a ramp of 1 level a pixel counts 64);
// squared grey levels. The border repeats its pixels. The most reliable one for ordinary scenes with edges.
// E. Krotkov, "Focusing", Int. J. Comput. Vision 1 (1988).
ORX_API double calcTenengrad(const cv::Mat& img);

// The variance of the 4-neighbour Laplacian; squared grey levels. The border repeats its pixels. The sharpest
// maximum, for fine search in images of little noise.
// J. Pech-Pacheco et al., "Diatom autofocusing in brightfield microscopy: a comparative study", ICPR (2000).
ORX_API double calcLaplacianVariance(const cv::Mat& img);

}  // namespace AutoFocus

#endif
