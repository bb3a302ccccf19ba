// From a grey picture to a picture of its objects: smooth, flatten the light, threshold, close gaps.
#ifndef EXAMPLES_INSPECTION_PREPARATION_H
#define EXAMPLES_INSPECTION_PREPARATION_H

#include <array>
#include <opencv2/core.hpp>
#include <optional>
#include <string>

#include "inspection/run/settings.h"

namespace inspection {

struct Preparation {
    cv::Mat grey;     // CV_8UC1, smoothed and flattened: what the level was chosen on
    cv::Mat objects;  // CV_8UC1, 255 on objects
    int level = 0;    // pixels above it form the bright class
    bool brightObjects = true;
    std::array<int, 256> histogram{};  // of `grey`
};

// Prepares an 8-bit grey picture. Nothing, with the reason in `error`, when the method finds no level.
//
// Polarity auto: the picture's border shows mostly background, so the objects are the class that holds fewer
// of its border pixels; that is judged before flattening. Flattening subtracts from bright objects the
// background that a morphological opening with the window leaves (dark objects: a closing), so the window
// must be wider than the widest object.
std::optional<Preparation> prepare(const cv::Mat& grey, const Settings& settings, std::string& error);

}  // namespace inspection

#endif
