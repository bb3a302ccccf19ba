// White balance: removes the colour of the light from a colour image.
//
// Images are 8- or 16-bit unsigned BGR, with or without alpha. Grey images have no colour to remove: they are
// copied unchanged. False (an invalid record), and `dst` untouched, for anything else: no pixels
// (rcEmptyImage), other depths or more channels (rcImageType), more dimensions (rcImageDimensions), and for
// options outside their ranges (rcOption). A single pixel becomes grey. All functions are reentrant.
#ifndef ORXFUNCTIONS_ANALYSIS_WHITE_BALANCE_H
#define ORXFUNCTIONS_ANALYSIS_WHITE_BALANCE_H

#include <opencv2/core.hpp>

#include "orxFunctions/api.h"

namespace orx {

enum TWhiteBalanceMethod : int {
    // The mean of a scene is grey. For scenes of many colours; large surfaces of one colour mislead it.
    // G. Buchsbaum, "A spatial processor model for object colour perception", J. Franklin Inst. 310 (1980).
    wbGreyWorld = 0,
    // The brightest of a scene is white. For scenes with a white or shining part that is not saturated.
    // E. Land, J. McCann, "Lightness and retinex theory", J. Opt. Soc. Am. 61 (1971).
    wbWhitePatch = 1
};

struct TWhiteBalanceOptions {
    TWhiteBalanceMethod method = wbGreyWorld;
    // wbWhitePatch: the level taken as white in each channel is the lowest that this share of the pixels does
    // not exceed, above 0 to 1. Below 1 so that a few hot pixels or reflections do not decide.
    double whiteShare = 0.99;
};

// A factor for each channel, in the order of the channels.
struct TWhiteBalance {
    cv::Vec3d gains = {1.0, 1.0, 1.0};
    bool valid = false;
};

// The gains alone: take them once from an image of a grey card and apply them to all that follow. Brightness
// is kept: grey world brings all channels to their common mean, white patch to the highest of the three white
// levels. A channel without any light has gain 1. Grey images give three ones.
ORX_API TWhiteBalance getWhiteBalance(const cv::Mat& img, const TWhiteBalanceOptions& options = {});

// Multiplies each channel by its gain (0 to 1e6, or else rcOption), rounded to nearest, at most full scale.
// `dst` may be `src`. A balance that is not valid is refused (rcNotReady).
ORX_API bool applyWhiteBalance(const cv::Mat& src, cv::Mat& dst, const TWhiteBalance& balance);

// Both in one. A channel so dark that its gain would be above 1e6 is refused (rcNoResult).
ORX_API bool whiteBalance(const cv::Mat& src, cv::Mat& dst, const TWhiteBalanceOptions& options = {});

}  // namespace orx

#endif
