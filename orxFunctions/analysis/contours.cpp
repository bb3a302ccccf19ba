#include "orxFunctions/analysis/contours.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

using Contour = std::vector<cv::Point>;
using Contours = std::vector<Contour>;

// Outlines of holes turn the other way than those of objects; only these can enclose nothing.
bool isHole(const Contour& outline) { return cv::contourArea(outline, true) > 0; }

// The outlines of holes, those of one object together, objects in the order of `all`. The library's two-level
// retrieval gives the same, but looks for each hole's object among the outlines in turn; here a labelled
// pixel tells it.
Contours holesByObject(const cv::Mat& binary, Contours all) {
    cv::Mat labels;
    const int count = cv::connectedComponents(binary, labels, 8, CV_32S);
    std::vector<std::size_t> placeOf(static_cast<std::size_t>(count));
    const auto objectOf = [&](const Contour& outline) -> std::size_t& {
        return placeOf[static_cast<std::size_t>(labels.at<int>(outline.front()))];
    };
    std::size_t objects = 0;
    std::vector<std::pair<std::size_t, std::size_t>> holes;  // place of the object, index of the outline
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!isHole(all[i])) objectOf(all[i]) = objects++;
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (isHole(all[i])) holes.emplace_back(objectOf(all[i]), i);
    }
    std::sort(holes.begin(), holes.end());
    Contours sorted;
    sorted.reserve(holes.size());
    for (const auto& hole : holes) sorted.push_back(std::move(all[hole.second]));
    return sorted;
}

Contours traced(const cv::Mat& binary, TContourType type, int approximation) {
    const bool inner = type == ctAll || type == ctHoles;
    Contours contours;
    cv::findContours(binary, contours, inner ? cv::RETR_LIST : cv::RETR_EXTERNAL, approximation);
    return type == ctHoles ? holesByObject(binary, std::move(contours)) : contours;
}

void replaceByHulls(Contours& contours) {
    for (Contour& contour : contours) {
        Contour hull;
        // "Clockwise" is meant with y running up there: on the screen the hull turns as its outline does.
        cv::convexHull(contour, hull, true);
        contour.swap(hull);
    }
}

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

bool takesOptions(const cv::Mat& binary, TContourType type, const TContourOptions& options) {
    if (!takesBytes(binary, "getContours")) return false;
    if (type < ctExternal || type > ctConvexHull)
        return refuse(rcOption, "getContours", "there is no type %d", static_cast<int>(type));
    if (std::isnan(options.minLength) || std::isnan(options.minArea) || std::isnan(options.maxArea))
        return refuse(rcNotFinite, "getContours", "a limit is not a number");
    return true;
}

}  // namespace

std::vector<std::vector<cv::Point>> getContours(const cv::Mat& binary, TContourType type,
                                                const TContourOptions& options) {
    if (!takesOptions(binary, type, options)) return {};
    const bool everyPoint = options.points == cpAll && type != ctConvexHull;
    Contours contours = traced(binary, type, everyPoint ? cv::CHAIN_APPROX_NONE : cv::CHAIN_APPROX_SIMPLE);
    if (type == ctConvexHull) replaceByHulls(contours);
    contours.erase(std::remove_if(contours.begin(), contours.end(),
                                  [&](const Contour& contour) { return !isWithinLimits(contour, options); }),
                   contours.end());
    if (type == ctLargest) keepLargest(contours);
    if (contours.empty()) refuse(rcNoResult, "getContours", "no outline of this type is within the limits");
    return contours;
}

}  // namespace orx
