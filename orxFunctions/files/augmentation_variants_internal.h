// The variants of one image.
#ifndef ORXFUNCTIONS_FILES_AUGMENTATION_VARIANTS_INTERNAL_H
#define ORXFUNCTIONS_FILES_AUGMENTATION_VARIANTS_INTERNAL_H

#include <functional>
#include <opencv2/core.hpp>
#include <string>

#include "orxFunctions/files/image_data_augmentation.h"

namespace orx {

struct AugmentedImage {
    std::string name;  // "rotate0"
    cv::Mat image;
    cv::Matx23d motion;  // of points that count from the corner of the top-left pixel
};

// Makes the variants one by one and hands over each. `imageName` and the configuration's seed choose the
// amounts.
void forEachVariant(const cv::Mat& image, const std::string& imageName, const TAugmentationConfig& config,
                    const std::function<void(const AugmentedImage&)>& receive);

}  // namespace orx

#endif
