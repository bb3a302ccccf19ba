#include "orxFunctions/foundation/image_convert.h"

#include <cstdint>
#include <utility>

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
    // OpenCV makes no header over no buffer, unless it is empty.
    std::uint8_t nothing = 0;
    const bool isNull = img->data == nullptr;
    out = cv::Mat(img->height, img->width, matTypeOf(img->channels), isNull ? &nothing : img->data);
    if (isNull) {
        out.data = nullptr;
        out.datastart = out.dataend = out.datalimit = nullptr;
    }
}

void Mat2ORXImage(cv::Mat& m, TORXImage* img) { Mat2ORXImage(std::as_const(m), img); }

void Mat2ORXImage(const cv::Mat& m, TORXImage* img) {
    img->width = m.cols;
    img->height = m.rows;
    img->channels = m.channels();
    img->data = m.data;
}

}  // namespace orx
