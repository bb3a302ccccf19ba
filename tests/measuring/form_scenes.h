// Outlines of known form with noise on them, independent or of an edge chain.
#ifndef TESTS_MEASURING_FORM_SCENES_H
#define TESTS_MEASURING_FORM_SCENES_H

#include <cmath>
#include <opencv2/core.hpp>
#include <vector>

#include "tests/support/fit_scenes.h"

namespace form_scenes {

using fit_scenes::kPi;
using fit_scenes::Random;
using Points = std::vector<cv::Point2d>;

// A circle around `center` whose radius has `lobes` lobes of a height (peak to valley), and noise.
struct Lobed {
    cv::Point2d center{200, 150};
    double radius = 80;
    int count = 400;
    int lobes = 3;
    double height = 0;
    double sweep = 2 * kPi;
};

inline Points lobed(const Lobed& part, const std::vector<double>& noise) {
    Points points;
    for (int i = 0; i < part.count; ++i) {
        const double angle = 0.3 + part.sweep * i / part.count;
        const double r = part.radius + part.height / 2 * std::cos(part.lobes * angle) +
                         (noise.empty() ? 0.0 : noise[static_cast<std::size_t>(i)]);
        points.push_back(part.center + r * cv::Point2d(std::cos(angle), std::sin(angle)));
    }
    return points;
}

// An edge 300 long that a parabola bends by a height; a point for each number of the noise.
inline Points bent(double height, const std::vector<double>& noise) {
    Points points;
    const double last = static_cast<double>(noise.size()) - 1;
    for (std::size_t i = 0; i < noise.size(); ++i) {
        const double t = 2 * static_cast<double>(i) / last - 1;
        points.push_back(cv::Point2d(500, 300) + 150 * t * cv::Point2d(0.6, 0.8) +
                         (height * t * t + noise[i]) * cv::Point2d(-0.8, 0.6));
    }
    return points;
}

inline std::vector<double> whiteNoise(int count, double sigma, Random& random) {
    std::vector<double> noise;
    for (int i = 0; i < count; ++i) noise.push_back(random.normal(sigma));
    return noise;
}

// Round a closed outline, correlated by exp(-(d / (2 smoothing))^2) at the distance d in steps.
inline std::vector<double> chainNoise(int count, double sigma, double smoothing, Random& random) {
    const std::vector<double> white = whiteNoise(count, 1, random);
    const int reach = static_cast<int>(std::ceil(4 * smoothing));
    std::vector<double> noise;
    double squares = 0;
    for (int k = -reach; k <= reach; ++k) squares += std::exp(-k * k / (smoothing * smoothing));
    for (int i = 0; i < count; ++i) {
        double sum = 0;
        for (int k = -reach; k <= reach; ++k) {
            sum += white[static_cast<std::size_t>((i + k + count) % count)] *
                   std::exp(-k * k / (2 * smoothing * smoothing));
        }
        noise.push_back(sigma * sum / std::sqrt(squares));
    }
    return noise;
}

}  // namespace form_scenes

#endif
