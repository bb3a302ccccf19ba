#include "orxFunctions/analysis/grey_input_internal.h"

#include <opencv2/imgproc.hpp>

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {

bool takesOneChannel(const cv::Mat& img, const char* function) noexcept {
    return img.channels() == 1 ||
           refuse(rcImageType, function, "the image has %d channels; one is taken", img.channels());
}

int lightChannels(const cv::Mat& img) { return img.channels() < 3 ? 1 : 3; }

double fullLevel(const cv::Mat& img) { return img.depth() == CV_16U ? 65535.0 : 255.0; }

double levelUnit(const cv::Mat& img) { return fullLevel(img) / 255.0; }

cv::Mat greyOf(const cv::Mat& picture) {
    if (picture.channels() == 1) return picture;
    cv::Mat grey;
    if (picture.channels() == 2) {
        cv::extractChannel(picture, grey, 0);
    } else {
        cv::cvtColor(picture, grey, picture.channels() == 3 ? cv::COLOR_BGR2GRAY : cv::COLOR_BGRA2GRAY);
    }
    return grey;
}

}  // namespace orx
