#include "orxFunctions/matching/refine/overlap.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace orx::matching {
namespace {

using Polygon = std::vector<cv::Point2d>;

double cross(cv::Point2d a, cv::Point2d b) { return a.x * b.y - a.y * b.x; }

// Above 0 where the corners turn from the x axis towards the y axis.
double areaOf(const Polygon& polygon) {
    double twice = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        twice += cross(polygon[i] - polygon[0], polygon[(i + 1) % polygon.size()] - polygon[0]);
    }
    return twice / 2;
}

// What lies on the inner side of the line from a to b. I. E. Sutherland and G. W. Hodgman, "Reentrant polygon
// clipping", Communications of the ACM 17 (1974).
Polygon clipped(const Polygon& polygon, cv::Point2d a, cv::Point2d b) {
    Polygon left;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const cv::Point2d p = polygon[i];
        const cv::Point2d q = polygon[(i + 1) % polygon.size()];
        const double ofP = cross(b - a, p - a);
        const double ofQ = cross(b - a, q - a);
        if (ofP >= 0) left.push_back(p);
        if ((ofP >= 0) != (ofQ >= 0)) left.push_back(p + ofP / (ofP - ofQ) * (q - p));
    }
    return left;
}

Polygon positive(const Box& box) {
    Polygon polygon(box.begin(), box.end());
    if (areaOf(polygon) < 0) std::reverse(polygon.begin(), polygon.end());
    return polygon;
}

}  // namespace

Box outlineBox(const ModelData& model) {
    std::vector<cv::Point2f> points;
    points.reserve(model.outline.size());
    for (const OutlinePoint& point : model.outline) points.emplace_back(point.position);
    cv::RotatedRect box = cv::minAreaRect(points);
    constexpr float kNarrowest = 2;
    box.size.width = std::max(box.size.width, kNarrowest);
    box.size.height = std::max(box.size.height, kNarrowest);
    cv::Point2f corners[4];
    box.points(corners);
    Box result;
    std::copy(std::begin(corners), std::end(corners), result.begin());
    return result;
}

Box boxAt(const Box& box, const TPartPose& pose) {
    Box result;
    for (std::size_t i = 0; i < box.size(); ++i) result[i] = applyPose(pose, box[i]);
    return result;
}

double sharedArea(const Box& a, const Box& b) {
    const Polygon first = positive(a);
    Polygon both = positive(b);
    const double smaller = std::min(areaOf(first), areaOf(both));
    for (std::size_t i = 0; i < first.size() && both.size() > 2; ++i) {
        both = clipped(both, first[i], first[(i + 1) % first.size()]);
    }
    if (both.size() < 3 || !(smaller > 0)) return 0;
    return std::clamp(areaOf(both) / smaller, 0.0, 1.0);
}

}  // namespace orx::matching
