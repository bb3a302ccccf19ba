#include "orxFunctions/analysis/contour_center.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

struct Extent {
    cv::Point2d low;
    cv::Point2d high;
};

Extent extentOf(const std::vector<cv::Point>& points) {
    Extent extent{points.front(), points.front()};
    for (const cv::Point& p : points) {
        extent.low.x = std::min<double>(extent.low.x, p.x);
        extent.low.y = std::min<double>(extent.low.y, p.y);
        extent.high.x = std::max<double>(extent.high.x, p.x);
        extent.high.y = std::max<double>(extent.high.y, p.y);
    }
    return extent;
}

cv::Point2d meanOf(const std::vector<cv::Point>& points) {
    cv::Point2d sum;
    for (const cv::Point& p : points) sum += cv::Point2d(p);
    return sum / static_cast<double>(points.size());
}

cv::Point2d centreOfGravity(const std::vector<cv::Point>& points) {
    const cv::Moments moments = cv::moments(points);
    if (moments.m00 == 0) return meanOf(points);
    return {moments.m10 / moments.m00, moments.m01 / moments.m00};
}

cv::Point2d centreOfCircle(const std::vector<cv::Point>& points) {
    cv::Point2f centre;
    float radius = 0;
    cv::minEnclosingCircle(points, centre, radius);
    return centre;
}

// Not-a-number becomes `low`.
double between(double value, double low, double high) { return value >= low ? std::min(value, high) : low; }

cv::Point2d centreOf(const std::vector<cv::Point>& contour, int mode) {
    const Extent extent = extentOf(contour);
    cv::Point2d centre;
    if (mode == 1) {
        centre = (extent.low + extent.high) / 2;
    } else if (mode == 2) {
        centre = centreOfCircle(contour);
    } else {
        centre = centreOfGravity(contour);
    }
    return {between(centre.x, extent.low.x, extent.high.x), between(centre.y, extent.low.y, extent.high.y)};
}

cv::Point roundedCentreOf(const std::vector<cv::Point>& contour, int mode) {
    const cv::Point2d centre = centreOf(contour, mode);
    return {static_cast<int>(std::lrint(centre.x)), static_cast<int>(std::lrint(centre.y))};
}

bool hasPoints(const std::vector<cv::Point>& contour, const char* function) {
    return !contour.empty() || refuse(rcTooFew, function, "a contour without points has no centre");
}

}  // namespace

cv::Point2d getContourCenterSubPix(const std::vector<cv::Point>& contour, int mode) {
    if (!hasPoints(contour, "getContourCenterSubPix")) return {-1, -1};
    return centreOf(contour, mode);
}

cv::Point getContourCenterPt(std::vector<cv::Point> contour, int mode) {
    if (!hasPoints(contour, "getContourCenterPt")) return {-1, -1};
    return roundedCentreOf(contour, mode);
}

std::vector<cv::Point> getContourCenterPts(const std::vector<std::vector<cv::Point>>& contours, int mode) {
    std::vector<cv::Point> centres;
    centres.reserve(contours.size());
    for (const std::vector<cv::Point>& contour : contours)
        centres.push_back(hasPoints(contour, "getContourCenterPts") ? roundedCentreOf(contour, mode)
                                                                    : cv::Point(-1, -1));
    return centres;
}

}  // namespace orx
