// Pixel points on a line or a circle, three in ten of them strays, in random order.
#ifndef BENCH_RANSAC_SCENE_H
#define BENCH_RANSAC_SCENE_H

#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <random>
#include <vector>

namespace scene {

constexpr int kTrials = 1000;
constexpr double kThreshold = 1.5;  // pixels
constexpr double kOutliers = 0.3;
constexpr int kSize = 1000;  // of the image, pixels

// `place` gives the true point for a number in [0, 1).
template <class Place>
std::vector<cv::Point> points(std::int64_t count, Place place) {
    std::mt19937 generator(5);
    std::uniform_real_distribution<double> unit(0, 1);
    std::normal_distribution<double> noise(0, 0.5);
    std::vector<cv::Point> result;
    for (std::int64_t i = 0; i < count; ++i) {
        cv::Point2d p(kSize * unit(generator), kSize * unit(generator));
        if (unit(generator) >= kOutliers)
            p = place(unit(generator)) + cv::Point2d(noise(generator), noise(generator));
        result.emplace_back(static_cast<int>(std::lround(p.x)), static_cast<int>(std::lround(p.y)));
    }
    return result;
}

inline std::vector<cv::Point> line(std::int64_t count) {
    return points(count, [](double t) { return cv::Point2d(kSize * t, 0.31 * kSize * t + 200); });
}

inline std::vector<cv::Point> circle(std::int64_t count) {
    return points(count, [](double t) {
        return cv::Point2d(480 + 320 * std::cos(2 * CV_PI * t), 510 + 320 * std::sin(2 * CV_PI * t));
    });
}

}  // namespace scene

#endif
