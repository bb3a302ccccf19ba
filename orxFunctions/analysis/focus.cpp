#include "orxFunctions/analysis/focus.h"

#include <opencv2/imgproc.hpp>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace AutoFocus {
namespace {

constexpr double kNoImage = -1.0;
// A view is measured as if it were a copy.
constexpr int kBorder = cv::BORDER_REPLICATE | cv::BORDER_ISOLATED;

double pixelCount(const cv::Mat& img) { return static_cast<double>(img.total()); }

double squared(double value) { return value * value; }

// The norm of the differences between pixels `step` columns apart, and `step` rows apart, added.
double differences(const cv::Mat& grey, int step, int norm) {
    double sum = 0;
    if (grey.cols > step) {
        sum += cv::norm(grey.colRange(step, grey.cols), grey.colRange(0, grey.cols - step), norm);
    }
    if (grey.rows > step) {
        sum += cv::norm(grey.rowRange(step, grey.rows), grey.rowRange(0, grey.rows - step), norm);
    }
    return sum;
}

// Derivatives of 8-bit images fit 16 bits; those of 16-bit ones are exact in single precision.
int derivativeDepth(const cv::Mat& grey) { return grey.depth() == CV_8U ? CV_16S : CV_32F; }

}  // namespace

double calcGrayDifference(const cv::Mat& img) {
    if (!orx::takesPicture(img, "calcGrayDifference")) return kNoImage;
    const cv::Mat grey = orx::greyOf(img);
    return differences(grey, 1, cv::NORM_L1) / pixelCount(grey) / orx::levelUnit(grey);
}

double calcBrenner(const cv::Mat& img) {
    if (!orx::takesPicture(img, "calcBrenner")) return kNoImage;
    const cv::Mat grey = orx::greyOf(img);
    return differences(grey, 2, cv::NORM_L2SQR) / pixelCount(grey) / squared(orx::levelUnit(grey));
}

double calcTenengrad(const cv::Mat& img) {
    if (!orx::takesPicture(img, "calcTenengrad")) return kNoImage;
    const cv::Mat grey = orx::greyOf(img);
    cv::Mat derivative;
    double sum = 0;
    for (const int alongX : {1, 0}) {
        cv::Sobel(grey, derivative, derivativeDepth(grey), alongX, 1 - alongX, 3, 1, 0, kBorder);
        sum += cv::norm(derivative, cv::NORM_L2SQR);
    }
    return sum / pixelCount(grey) / squared(orx::levelUnit(grey));
}

double calcLaplacianVariance(const cv::Mat& img) {
    if (!orx::takesPicture(img, "calcLaplacianVariance")) return kNoImage;
    const cv::Mat grey = orx::greyOf(img);
    cv::Mat laplacian;
    cv::Laplacian(grey, laplacian, derivativeDepth(grey), 1, 1, 0, kBorder);
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(laplacian, mean, deviation);
    return squared(deviation[0] / orx::levelUnit(grey));
}

}  // namespace AutoFocus
