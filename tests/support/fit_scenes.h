// Points of a circle or a line with Gaussian noise and outliers, the true shape known.
//
// The numbers come from one generator and plain arithmetic, so that a seed means the same scene with every
// compiler and standard library.
#ifndef TESTS_SUPPORT_FIT_SCENES_H
#define TESTS_SUPPORT_FIT_SCENES_H

#include <cmath>
#include <opencv2/core.hpp>
#include <random>
#include <utility>
#include <vector>

namespace fit_scenes {

constexpr double kPi = 3.141592653589793;

class Random {
  public:
    explicit Random(unsigned seed) : engine_(seed) {}

    // In [low, high).
    double uniform(double low, double high) {
        return low + (high - low) * static_cast<double>(engine_()) / 4294967296.0;
    }

    int integer(int low, int high) { return static_cast<int>(std::floor(uniform(low, high + 1.0))); }

    // Box and Muller.
    double normal(double sigma) {
        const double radius = std::sqrt(-2 * std::log(1 - uniform(0, 1)));
        return sigma * radius * std::cos(2 * kPi * uniform(0, 1));
    }

  private:
    std::mt19937 engine_;
};

struct Disturbance {
    double sigma = 0;     // pixels
    double outliers = 0;  // share of the points, strewn over the image
    cv::Size image{640, 480};
};

// `onShape()` gives an undisturbed point. Outliers lie among the others at random places of the list.
template <class OnShape>
std::vector<cv::Point> scatter(int count, const Disturbance& disturbance, Random& random, OnShape onShape) {
    std::vector<cv::Point> points;
    const auto outliers = static_cast<int>(std::lround(count * disturbance.outliers));
    for (int i = 0; i < count; ++i) {
        if (i < outliers) {
            const int x = random.integer(0, disturbance.image.width - 1);
            points.emplace_back(x, random.integer(0, disturbance.image.height - 1));
        } else {
            const cv::Point2d p = onShape();
            const double x = p.x + random.normal(disturbance.sigma);
            const double y = p.y + random.normal(disturbance.sigma);
            points.emplace_back(static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)));
        }
        std::swap(points.back(), points[static_cast<std::size_t>(random.integer(0, i))]);
    }
    return points;
}

// `circle` is centre and radius.
inline std::vector<cv::Point> circlePoints(cv::Point3d circle, int count, const Disturbance& disturbance,
                                           Random& random) {
    return scatter(count, disturbance, random, [&] {
        const double angle = random.uniform(0, 2 * kPi);
        return cv::Point2d(circle.x + circle.z * std::cos(angle), circle.y + circle.z * std::sin(angle));
    });
}

// Points of y = k x + b for x over the width of the image.
inline std::vector<cv::Point> linePoints(double k, double b, int count, const Disturbance& disturbance,
                                         Random& random) {
    return scatter(count, disturbance, random, [&] {
        const double x = random.uniform(0, disturbance.image.width);
        return cv::Point2d(x, k * x + b);
    });
}

}  // namespace fit_scenes

#endif
