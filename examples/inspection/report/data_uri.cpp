#include "inspection/report/data_uri.h"

#include <algorithm>

#include "orxFunctions/orxfunctions.h"

namespace inspection {

std::string base64(const std::vector<unsigned char>& bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        unsigned group = 0;
        for (std::size_t k = 0; k < 3; ++k) group = (group << 8) | (k < count ? bytes[i + k] : 0U);
        for (std::size_t k = 0; k < 4; ++k) text += k <= count ? kDigits[(group >> (18 - 6 * k)) & 63U] : '=';
    }
    return text;
}

std::string pngDataUri(const cv::Mat& picture) {
    std::vector<unsigned char> bytes;
    if (!orx::encodePicture(".png", picture, bytes)) return "";
    return "data:image/png;base64," + base64(bytes);
}

}  // namespace inspection
