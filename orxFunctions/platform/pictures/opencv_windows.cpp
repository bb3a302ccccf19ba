#include "orxFunctions/platform/pictures/picture_modules.h"

#include <opencv2/highgui.hpp>

namespace orx::platform {

const PictureWindows opencvWindows = {
    [](const std::string& title, const cv::Mat& image) { cv::imshow(title, image); }};

}  // namespace orx::platform
