#include "orxFunctions/platform/pictures/picture_modules.h"

#include <opencv2/imgcodecs.hpp>

namespace orx::platform {

const PictureCodecs opencvCodecs = {
    [](const std::string& fileName) { return cv::haveImageWriter(fileName); },
    [](const std::string& extension, const cv::Mat& image, std::vector<unsigned char>& encoded,
       const std::vector<int>& parameters) { return cv::imencode(extension, image, encoded, parameters); },
    [](const cv::Mat& encoded, int flags) { return cv::imdecode(encoded, flags); }};

}  // namespace orx::platform
