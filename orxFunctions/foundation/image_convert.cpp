#include "orxFunctions/foundation/image_convert.h"

namespace orx {
namespace {

int matTypeOf(std::int32_t channels) {
    switch (channels) {
        case 4:
            return CV_8UC4;
        case 3:
            return CV_8UC3;
        default:
            return CV_8UC1;
    }
}

}  // namespace

void ORXImage2Mat(TORXImage* img, cv::Mat& out) {
    out = cv::Mat(img->height, img->width, matTypeOf(img->channels), img->data);
}

void Mat2ORXImage(cv::Mat& m, TORXImage* img) {
    img->width = m.cols;
    img->height = m.rows;
    img->channels = m.channels();
    img->data = m.data;
}

}  // namespace orx
