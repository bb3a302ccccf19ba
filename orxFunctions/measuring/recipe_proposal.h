// A first recipe from a picture of a good part: the shapes that stand out in it, numbered, each with its
// values as they are.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_PROPOSAL_H
#define ORXFUNCTIONS_MEASURING_RECIPE_PROPOSAL_H

#include <opencv2/core.hpp>
#include <string>

#include "orxFunctions/api.h"

namespace orx {

struct TProposalOptions {
    std::string name = "part";  // of the recipe
    // [none] File of a part model as the recipe will name it, relative to `folder` or absolute: the part is
    // found by it, and features are told in its frame. Without one they are told in pixels of the picture.
    std::string model;
    // [none] File of a plane calibration, named likewise: values are then told in millimetres.
    std::string calibration;
    std::string folder = ".";  // of both files, and of the recipe to be
    // [whole picture] Where the part lies, pixels; features outside are not proposed.
    cv::Rect region;
    int maxFeatures = 40;     // [40] The largest ones, 1 to 500.
    double minLength = 20.0;  // [20] Least length of an edge, pixels, 8 or more.
    // [0.01, 0.1] Tolerances to either side, to be edited: this share of the value, and at least so many
    // pixels' worth. Both 0 or more, not both 0.
    double share = 0.01;
    double leastPixels = 0.1;
};

struct TProposal {
    bool valid = false;
    std::string problem;  // in English, why there is none; else empty
    std::string text;     // the recipe, which parseRecipe(text, options.folder) takes; edit it
    cv::Mat picture;      // 8-bit BGR, features drawn with their numbers
    int features = 0;
    int values = 0;
};

// Measured by the recipe itself: nominal values are what it then gives for this picture. Pictures as
// TRecipe::run takes them. Refused with the reason: no picture, options out of range, files that can't be
// read, a part that is not found, no features. Reentrant.
ORX_API TProposal proposeRecipe(const cv::Mat& img, const TProposalOptions& options = {});

}  // namespace orx

#endif
