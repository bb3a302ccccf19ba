// Points of a circle or a line whose truth is known, what the noise leaves open of it at best (the bound of
// Cramer and Rao, from the true geometry), and how the errors of many fits compare with that.
#ifndef TESTS_FITTING_GEOMETRIC_SCENES_H
#define TESTS_FITTING_GEOMETRIC_SCENES_H

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <ostream>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/fit_scenes.h"

namespace geometric_scenes {

using fit_scenes::kPi;
using fit_scenes::Random;

inline cv::Point2d unit(double degrees) {
    return {std::cos(degrees * kPi / 180), std::sin(degrees * kPi / 180)};
}

// Points at equal steps, with noise across the outline and, where `independent`, as much along it. Outliers
// are strewn over a square of twice the shape's size, at random places of the list.
struct Scene {
    double extent;  // of the arc in degrees; of the line in pixels
    int count;
    double noise;
    double outliers = 0.0;  // their share
    bool independent = true;

    int inliers() const { return count - static_cast<int>(std::lround(count * outliers)); }
    double place(int i) const { return extent * (i + 0.5) / inliers(); }
};

inline void strewOutliers(const Scene& scene, cv::Point2d middle, double reach, Random& random,
                          std::vector<cv::Point2d>& points) {
    while (static_cast<int>(points.size()) < scene.count) {
        points.emplace_back(middle.x + random.uniform(-reach, reach),
                            middle.y + random.uniform(-reach, reach));
        std::swap(points.back(),
                  points[static_cast<std::size_t>(random.integer(0, static_cast<int>(points.size()) - 1))]);
    }
}

inline cv::Point2d disturbed(cv::Point2d p, cv::Point2d normal, const Scene& scene, Random& random) {
    const double across = random.normal(scene.noise);
    const double along = scene.independent ? random.normal(scene.noise) : 0.0;
    return p + across * normal + along * cv::Point2d(-normal.y, normal.x);
}

struct TrueCircle {
    cv::Point2d center;
    double radius;
    double from;  // degrees

    std::vector<cv::Point2d> points(const Scene& scene, Random& random) const {
        std::vector<cv::Point2d> points;
        for (int i = 0; i < scene.inliers(); ++i) {
            const cv::Point2d normal = unit(from + scene.place(i));
            points.push_back(disturbed(center + radius * normal, normal, scene, random));
        }
        strewOutliers(scene, center, 2 * radius, random, points);
        return points;
    }

    // Covariance of center and radius.
    cv::Matx33d bound(const Scene& scene) const {
        cv::Matx33d information = cv::Matx33d::zeros();
        for (int i = 0; i < scene.inliers(); ++i) {
            const cv::Point2d normal = unit(from + scene.place(i));
            const cv::Vec3d row(normal.x, normal.y, 1);
            information += row * row.t();
        }
        return scene.noise * scene.noise * information.inv(cv::DECOMP_SVD);
    }
};

struct TrueLine {
    cv::Point2d middle;
    double angle;

    cv::Point2d direction() const { return unit(angle); }
    cv::Point2d normal() const { return {-direction().y, direction().x}; }

    std::vector<cv::Point2d> points(const Scene& scene, Random& random) const {
        std::vector<cv::Point2d> points;
        for (int i = 0; i < scene.inliers(); ++i) {
            const cv::Point2d p = middle + (scene.place(i) - scene.extent / 2) * direction();
            points.push_back(disturbed(p, normal(), scene, random));
        }
        strewOutliers(scene, middle, scene.extent, random, points);
        return points;
    }

    // Variance of the offset at the middle, and of the angle in degrees.
    cv::Vec2d bound(const Scene& scene) const {
        double squares = 0;
        for (int i = 0; i < scene.inliers(); ++i) squares += std::pow(scene.place(i) - scene.extent / 2, 2);
        const double variance = scene.noise * scene.noise;
        return {variance / scene.inliers(), variance / squares * std::pow(180 / kPi, 2)};
    }
};

// Errors of one parameter over many scenes.
class Errors {
  public:
    void add(double error, double boundVariance, double deviation, double degreesOfFreedom) {
        const double relative = error / std::sqrt(boundVariance);
        sum_ += relative;
        squares_ += relative * relative;
        const double size = std::abs(error) / deviation;
        within68_ += size <= orx::coverageFactor(0.6827, degreesOfFreedom) ? 1 : 0;
        within95_ += size <= orx::coverageFactor(0.9545, degreesOfFreedom) ? 1 : 0;
        ++count_;
    }

    // In units of the bound's deviation.
    double spread() const { return std::sqrt(squares_ / count_ - bias() * bias()); }
    double bias() const { return sum_ / count_; }
    // In percent.
    double within68() const { return 100 * within68_ / count_; }
    double within95() const { return 100 * within95_ / count_; }

  private:
    double sum_ = 0;
    double squares_ = 0;
    double within68_ = 0;
    double within95_ = 0;
    double count_ = 0;
};

// White noise at small steps, smoothed by a Gaussian, of unit variance, at `spacing` along the way: what an
// edge finder of that smoothing does to the noise of pixels. Closed: the end goes on with the beginning.
inline std::vector<double> smoothedNoise(int count, double spacing, double sigma, bool closed,
                                         Random& random) {
    const auto stride = static_cast<int>(std::ceil(5 * spacing / sigma));
    const double step = spacing / stride;
    const auto reach = static_cast<int>(std::ceil(4 * sigma / step));
    std::vector<double> white(static_cast<std::size_t>(count * stride + (closed ? 0 : 2 * reach)));
    for (double& w : white) w = random.normal(1);
    std::vector<double> kernel;
    double squares = 0;
    for (int k = -reach; k <= reach; ++k) {
        kernel.push_back(std::exp(-std::pow(k * step / sigma, 2) / 2));
        squares += kernel.back() * kernel.back();
    }
    std::vector<double> result;
    for (int i = 0; i < count; ++i) {
        const auto at = static_cast<std::size_t>(i) * static_cast<std::size_t>(stride);
        double sum = 0;
        for (std::size_t k = 0; k < kernel.size(); ++k) sum += kernel[k] * white[(at + k) % white.size()];
        result.push_back(sum / std::sqrt(squares));
    }
    return result;
}

}  // namespace geometric_scenes

#endif
