// Drawing models and found parts over pictures.
//
// Pictures are 8- or 16-bit unsigned with 1 to 4 channels; others are left alone (rcEmptyImage, rcImageType,
// rcImageDimensions), and so is everything for a model that is not valid() (rcNotReady). What lies outside of
// the picture, or nowhere at all, is not drawn. Colours are BGR of 0 to 255; grey pictures get their
// brightness. Reentrant, on pictures of their own.
#ifndef ORXFUNCTIONS_MATCHING_PART_DRAWING_H
#define ORXFUNCTIONS_MATCHING_PART_DRAWING_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/matching/part_finder.h"
#include "orxFunctions/matching/part_model.h"
#include "orxFunctions/matching/part_pose.h"

namespace orx {

struct TPartColours {
    cv::Scalar seen{80, 220, 0};      // of the outline
    cv::Scalar unseen{40, 40, 255};   // of what is hidden of it
    cv::Scalar pose{0, 200, 255};     // cross and direction
    cv::Scalar score{255, 255, 255};  // text
    int thickness = 1;                // of lines, pixels, 1 to 20; others count as the nearest
};

// The outline at a pose, a cross at the reference point, and a line along the reference direction, half as
// long as the outline's radius.
ORX_API void drawPartModel(cv::Mat& img, const TPartModel& model, const TPartPose& pose,
                           const TPartColours& colours = {});

// The same for each part, in two colours where a part tells what is seen of it; with its number in the list,
// from 1, and its score in hundredths beside the cross.
ORX_API void drawFoundParts(cv::Mat& img, const TPartModel& model, const std::vector<TFoundPart>& parts,
                            const TPartColours& colours = {});

}  // namespace orx

#endif
