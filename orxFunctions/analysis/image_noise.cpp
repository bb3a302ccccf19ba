#include "orxFunctions/analysis/image_noise.h"

#include "orxFunctions/analysis/edges/image_noise.h"
#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {

double getImageNoise(const cv::Mat& img) {
    if (!takesPicture(img, "getImageNoise")) return -1.0;
    cv::Mat grey = greyOf(img);
    if (grey.depth() == CV_16U) grey.convertTo(grey, CV_8U, 1.0 / levelUnit(grey));
    return edges::imageNoise(grey);
}

}  // namespace orx
