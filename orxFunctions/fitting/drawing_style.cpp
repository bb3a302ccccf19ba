#include "orxFunctions/fitting/drawing_internal.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

// OpenCV's limits.
constexpr int kThickest = 32767;
constexpr int kMostShift = 16;

bool takesShift(int shift, const char* function) noexcept {
    if (shift >= 0 && shift <= kMostShift) return true;
    return refuse(rcOption, function, "the shift is %d; 0 to %d are taken", shift, kMostShift);
}

bool takesThickness(int thickness, int thinnest, const char* function) noexcept {
    if (thickness >= thinnest && thickness <= kThickest) return true;
    return refuse(rcOption, function, "the thickness is %d; %d to %d are taken", thickness, thinnest,
                  kThickest);
}

// Smoothed lines are 16 and above; thick ones are outlines, whatever their type.
bool takesLineType(const DrawingStyle& style, const char* function) noexcept {
    constexpr std::array<int, 4> kStepped{0, 1, cv::LINE_4, cv::LINE_8};
    const bool stepped = std::find(kStepped.begin(), kStepped.end(), style.lineType) != kStepped.end();
    if (stepped || style.lineType >= cv::LINE_AA || style.thickness > 1) return true;
    return refuse(rcOption, function, "the line type is %d; 4, 8 and 16 are taken", style.lineType);
}

// The end `from` moved along the line to where it enters the rows [top, bottom]; those that don't cross them
// stay.
cv::Point endWithin(cv::Point from, cv::Point to, double top, double bottom) {
    const double y = std::clamp<double>(from.y, top, bottom);
    if (y == from.y || from.y == to.y) return from;
    const double part = (y - from.y) / (static_cast<double>(to.y) - from.y);
    if (!(part <= 1)) return from;
    const double x = from.x + part * (static_cast<double>(to.x) - from.x);
    return {static_cast<int>(std::lrint(x)), static_cast<int>(y)};
}

}  // namespace

void drawLineIn(cv::Mat& image, cv::Point from, cv::Point to, const cv::Scalar& color,
                const DrawingStyle& style) {
    if (style.thickness > 1) {
        // Farther than its ends are round.
        const double reach = kFarRows + 2.0 * style.thickness;
        const double unit = 1 << style.shift;
        const double top = -reach * unit;
        const double bottom = (image.rows + reach) * unit;
        const bool misses = std::max(from.y, to.y) < top || std::min(from.y, to.y) > bottom;
        if (misses) return;
        const cv::Point begin = endWithin(from, to, top, bottom);
        to = endWithin(to, from, top, bottom);
        from = begin;
    }
    cv::line(image, from, to, color, style.thickness, style.lineType, style.shift);
}

bool takesDrawing(const cv::Mat& image, const char* function) noexcept {
    if (!takesImage(image, function)) return false;
    if (isDrawable(image)) return true;
    return refuse(rcImageType, function, "the image has %d channels; 1 to %d are taken", image.channels(),
                  kMostDrawnChannels);
}

bool takesLines(const DrawingStyle& style, int thinnest, const char* function) noexcept {
    return takesThickness(style.thickness, thinnest, function) && takesLineType(style, function) &&
           takesShift(style.shift, function);
}

// OpenCV goes around the whole circle, also where it is far outside of the image.
bool takesCircles(const DrawingStyle& style, int radius, const char* function) noexcept {
    constexpr int kLargestRadius = 1'000'000;
    if (!takesShift(style.shift, function)) return false;
    if (radius < 0 || radius >> style.shift > kLargestRadius)
        return refuse(rcOption, function, "the radius is %d; 0 to %d pixels are taken", radius,
                      kLargestRadius);
    if (style.thickness <= kThickest) return true;
    return refuse(rcOption, function, "the thickness is %d; up to %d is taken", style.thickness, kThickest);
}

}  // namespace orx
