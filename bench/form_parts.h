// Edge points of turned and straight parts, without outliers: shapes that are a little out of form, and noise
// of a twentieth of a pixel.
#ifndef BENCH_FORM_PARTS_H
#define BENCH_FORM_PARTS_H

#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <random>
#include <vector>

namespace form_parts {

using Points = std::vector<cv::Point2d>;

// Five lobes of a fifth of a pixel, over an angle in radians.
inline Points roundPart(std::int64_t count, double sweep = 2 * CV_PI) {
    std::mt19937 random(1);
    std::normal_distribution<double> noise(0, 0.05);
    Points points;
    for (std::int64_t i = 0; i < count; ++i) {
        const double angle = sweep * static_cast<double>(i) / static_cast<double>(count);
        const double r = 500 + 0.1 * std::cos(5 * angle) + noise(random);
        points.emplace_back(1000 + r * std::cos(angle), 800 + r * std::sin(angle));
    }
    return points;
}

// Bent by a fifth of a pixel.
inline Points straightPart(std::int64_t count) {
    std::mt19937 random(1);
    std::normal_distribution<double> noise(0, 0.05);
    Points points;
    for (std::int64_t i = 0; i < count; ++i) {
        const double t = 2.0 * static_cast<double>(i) / static_cast<double>(count) - 1;
        points.emplace_back(1000 + 500 * t, 800 + 100 * t + 0.2 * t * t + noise(random));
    }
    return points;
}

}  // namespace form_parts

#endif
