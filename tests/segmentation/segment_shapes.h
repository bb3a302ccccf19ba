// Outlines with known geometry.
#ifndef TESTS_SEGMENTATION_SEGMENT_SHAPES_H
#define TESTS_SEGMENTATION_SEGMENT_SHAPES_H

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace segment_shapes {

using Points = std::vector<cv::Point>;

constexpr double kPi = 3.141592653589793;

inline cv::Point2d onCircle(cv::Point2d center, double radius, double degrees) {
    return {center.x + radius * std::cos(degrees * kPi / 180),
            center.y + radius * std::sin(degrees * kPi / 180)};
}

inline cv::Point toPixel(cv::Point2d p) { return {cvRound(p.x), cvRound(p.y)}; }

// The pixels along an arc, in the direction from -> to.
inline Points arc(cv::Point2d center, double radius, double from, double to) {
    Points points;
    const double step = (to > from ? 1 : -1) * 180 / (kPi * radius);
    const int count = static_cast<int>(std::floor((to - from) / step));
    for (int i = 0; i <= count; ++i) {
        const cv::Point p = toPixel(onCircle(center, radius, from + i * step));
        if (points.empty() || points.back() != p) points.push_back(p);
    }
    return points;
}

// The pixels along a straight piece, the end excluded.
inline Points straight(cv::Point from, cv::Point to) {
    Points points;
    const int steps = std::max(std::abs(to.x - from.x), std::abs(to.y - from.y));
    for (int i = 0; i < steps; ++i) {
        points.emplace_back(cvRound(from.x + static_cast<double>(to.x - from.x) * i / steps),
                            cvRound(from.y + static_cast<double>(to.y - from.y) * i / steps));
    }
    return points;
}

inline void append(Points& points, const Points& more) {
    points.insert(points.end(), more.begin(), more.end());
}

// A closed outline through the corners.
inline Points polygon(const Points& corners) {
    Points points;
    for (std::size_t i = 0; i < corners.size(); ++i)
        append(points, straight(corners[i], corners[(i + 1) % corners.size()]));
    return points;
}

// Two half circles joined by straight sides of the given length, lying along the x axis.
inline Points slot(cv::Point center, int radius, int length) {
    const int half = length / 2;
    Points points = straight({center.x - half, center.y - radius}, {center.x + half, center.y - radius});
    append(points, arc({center.x + half + 0.0, center.y + 0.0}, radius, -90, 90));
    append(points, straight({center.x + half, center.y + radius}, {center.x - half, center.y + radius}));
    append(points, arc({center.x - half + 0.0, center.y + 0.0}, radius, 90, 270));
    return points;
}

// The same outline begun at its n-th point.
inline Points startedAt(Points contour, std::size_t n) {
    std::rotate(contour.begin(), contour.begin() + static_cast<std::ptrdiff_t>(n), contour.end());
    return contour;
}

// The longest contour of a filled picture, as contour extraction gives it.
inline Points outlineOf(const cv::Mat& picture) {
    std::vector<Points> contours;
    cv::findContours(picture.clone(), contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
    return *std::max_element(contours.begin(), contours.end(),
                             [](const Points& a, const Points& b) { return a.size() < b.size(); });
}

// A chord over the given pixels.
inline orx::TSegemetLine chordOf(const Points& points) {
    return {{points.front().x, points.front().y}, {points.back().x, points.back().y}, points};
}

}  // namespace segment_shapes

#endif
