#include "orxFunctions/analysis/colour.h"

#include <opencv2/imgproc.hpp>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

bool isConvertible(const cv::Mat& img, int bits, const char* function) {
    if (!takesPicture(img, function)) return false;
    if (bits >= 8 && bits <= 16) return true;
    return refuse(rcOption, function, "%d bits in use; 8 to 16 are taken", bits);
}

// Always a copy. No level falls halfway between two others: 2^bits - 1 is odd.
cv::Mat in8Bits(const cv::Mat& img, int bits) {
    cv::Mat result;
    const double scale = img.depth() == CV_8U ? 1.0 : 255.0 / ((1 << bits) - 1);
    img.convertTo(result, CV_8U, scale);
    return result;
}

}  // namespace

cv::Mat toGray(const cv::Mat& img, int bits) {
    if (!isConvertible(img, bits, "toGray")) return {};
    return in8Bits(greyOf(img), bits);
}

cv::Mat toBGR(const cv::Mat& img, int bits) {
    if (!isConvertible(img, bits, "toBGR")) return {};
    if (img.channels() == 3) return in8Bits(img, bits);
    cv::Mat colour;
    if (img.channels() == 4) {
        cv::cvtColor(in8Bits(img, bits), colour, cv::COLOR_BGRA2BGR);
    } else {
        cv::cvtColor(toGray(img, bits), colour, cv::COLOR_GRAY2BGR);
    }
    return colour;
}

}  // namespace orx
