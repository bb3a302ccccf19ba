#include "orxFunctions/analysis/threshold.h"

#include <opencv2/imgproc.hpp>
#include <utility>
#include <vector>

#include "orxFunctions/analysis/contour_center.h"
#include "orxFunctions/analysis/square_morphology_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

using Contour = std::vector<cv::Point>;

void binarise(const cv::Mat& src, cv::Mat dst) {
    // With Otsu the level passed is ignored.
    cv::threshold(src, dst, 100, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
}

// The contour of largest area; empty when there is none.
Contour largestContour(const cv::Mat& binary) {
    // Outer contours are enough: no hole and nothing inside one has a larger area than what surrounds it.
    std::vector<Contour> contours;
    cv::findContours(binary, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    double largest = -1;
    Contour result;
    for (Contour& contour : contours) {
        const double area = cv::contourArea(contour);
        if (area > largest) {
            largest = area;
            result.swap(contour);
        }
    }
    return result;
}

// Where the four quadrants meet; the first pixel when no object shows.
cv::Point objectCentre(const cv::Mat& img, int morphOp, int kernelSize) {
    cv::Mat binary(img.size(), img.type());
    binarise(img, binary);
    squareMorphology(binary, morphOp, kernelSize);
    const Contour contour = largestContour(binary);
    return contour.empty() ? cv::Point(0, 0) : getContourCenterPt(contour, 0);
}

}  // namespace

void OTSUfourPartsThreshold(const cv::Mat& src, cv::Mat& dst, int morphOp, int kernelSize) {
    if (src.dims > 2) {
        refuse(rcImageDimensions, "OTSUfourPartsThreshold", "the image has %d dimensions; two are taken",
               src.dims);
        return;
    }
    const cv::Mat source = src;  // stays when dst is src
    const cv::Point centre = objectCentre(source, morphOp, kernelSize);
    dst = source.clone();
    const cv::Range rows[] = {{0, centre.y}, {centre.y, source.rows}};
    const cv::Range cols[] = {{0, centre.x}, {centre.x, source.cols}};
    for (const cv::Range& row : rows) {
        for (const cv::Range& col : cols) {
            if (!row.empty() && !col.empty()) binarise(source(row, col), dst(row, col));
        }
    }
}

void OTSUfourPartsThreshold(cv::Mat& src, cv::Mat& dst, int morphOp, int kernelSize) {
    OTSUfourPartsThreshold(std::as_const(src), dst, morphOp, kernelSize);
}

}  // namespace orx
