#include "orxFunctions/analysis/contours.h"

#include <algorithm>
#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "orxFunctions/analysis/grey_input_internal.h"

namespace orx {
namespace {

using Contour = std::vector<cv::Point>;
using Contours = std::vector<Contour>;

int retrievalOf(TContourType type) {
    if (type == ctAll) return cv::RETR_LIST;
    return type == ctHoles ? cv::RETR_CCOMP : cv::RETR_EXTERNAL;
}

Contours traced(const cv::Mat& binary, TContourType type, int approximation) {
    Contours contours;
    std::vector<cv::Vec4i> links;
    cv::findContours(binary, contours, links, retrievalOf(type), approximation);
    if (type != ctHoles) return contours;
    Contours holes;
    for (std::size_t i = 0; i < contours.size(); ++i) {
        const bool hasParent = links[i][3] >= 0;
        if (hasParent) holes.push_back(std::move(contours[i]));
    }
    return holes;
}

void replaceByHulls(Contours& contours) {
    for (Contour& contour : contours) {
        Contour hull;
        // "Clockwise" is meant with y running up there: on the screen the hull turns as its outline does.
        cv::convexHull(contour, hull, true);
        contour.swap(hull);
    }
}

// Not-a-number as a limit keeps nothing.
bool isWithinLimits(const Contour& contour, const TContourOptions& options) {
    const double area = cv::contourArea(contour);
    return area >= options.minArea && area <= options.maxArea &&
           cv::arcLength(contour, true) >= options.minLength;
}

void keepLargest(Contours& contours) {
    const auto smaller = [](const Contour& a, const Contour& b) {
        return cv::contourArea(a) < cv::contourArea(b);
    };
    const auto largest = std::max_element(contours.begin(), contours.end(), smaller);
    if (largest == contours.end()) return;
    contours.front().swap(*largest);
    contours.resize(1);
}

}  // namespace

std::vector<std::vector<cv::Point>> getContours(const cv::Mat& binary, TContourType type,
                                                const TContourOptions& options) {
    if (!isByteImage(binary) || type < ctExternal || type > ctConvexHull) return {};
    const bool everyPoint = options.points == cpAll && type != ctConvexHull;
    Contours contours = traced(binary, type, everyPoint ? cv::CHAIN_APPROX_NONE : cv::CHAIN_APPROX_SIMPLE);
    if (type == ctConvexHull) replaceByHulls(contours);
    contours.erase(std::remove_if(contours.begin(), contours.end(),
                                  [&](const Contour& contour) { return !isWithinLimits(contour, options); }),
                   contours.end());
    if (type == ctLargest) keepLargest(contours);
    return contours;
}

}  // namespace orx
