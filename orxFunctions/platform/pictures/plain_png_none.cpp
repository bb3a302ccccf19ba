#include "orxFunctions/platform/pictures/plain_png_internal.h"

namespace orx::platform {

cv::Mat decodePlainPng(const unsigned char* /*bytes*/, std::size_t /*size*/, int /*flags*/) { return {}; }

bool encodePlainPng(const cv::Mat& /*picture*/, std::vector<unsigned char>& /*encoded*/) { return false; }

bool encodePalettePng(const cv::Mat& /*indices*/, const std::vector<cv::Vec3b>& /*palette*/,
                      std::vector<unsigned char>& /*encoded*/) {
    return false;
}

}  // namespace orx::platform
