// The profile that the curve benchmarks share.
#ifndef BENCH_CURVE_PROFILE_H
#define BENCH_CURVE_PROFILE_H

#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <random>
#include <vector>

// `count` samples of a noisy wave over x = 0 .. 100.
inline std::vector<cv::Point2d> curveProfile(std::int64_t count) {
    std::mt19937 random(11);
    std::normal_distribution<double> noise(0, 0.1);
    std::vector<cv::Point2d> samples;
    for (std::int64_t i = 0; i < count; ++i) {
        const double x = 100.0 * static_cast<double>(i) / static_cast<double>(count - 1);
        samples.emplace_back(x, 20 * std::sin(x / 17) + noise(random));
    }
    return samples;
}

#endif
