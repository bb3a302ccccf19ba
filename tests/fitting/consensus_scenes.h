// Points of known shapes among strewn ones, in random order.
#ifndef TESTS_FITTING_CONSENSUS_SCENES_H
#define TESTS_FITTING_CONSENSUS_SCENES_H

#include <cmath>
#include <cstddef>
#include <opencv2/core.hpp>
#include <utility>
#include <vector>

#include "tests/support/fit_scenes.h"

namespace consensus_scenes {

using Points = std::vector<cv::Point2d>;

constexpr double kSize = 1000.0;  // of the image, pixels
constexpr int kStrewn = -1;

class Scene {
  public:
    explicit Scene(unsigned seed) : random_(seed) {}

    // center + cos(t) first + sin(t) second, for t from 0 on, in degrees.
    Scene& affine(cv::Point2d center, cv::Point2d first, cv::Point2d second, int count, double noise,
                  double sweep = 360.0) {
        return add(shapes_++, count, noise, [&] {
            const double t = random_.uniform(0, sweep * fit_scenes::kPi / 180);
            return center + std::cos(t) * first + std::sin(t) * second;
        });
    }
    // The part of a circle (centre, radius) over an angle from 0 on, in degrees.
    Scene& circle(cv::Point3d circle, int count, double noise, double sweep = 360.0) {
        return affine({circle.x, circle.y}, {circle.z, 0}, {0, circle.z}, count, noise, sweep);
    }
    Scene& segment(cv::Point2d from, cv::Point2d to, int count, double noise) {
        return add(shapes_++, count, noise, [&] { return from + random_.uniform(0, 1) * (to - from); });
    }
    Scene& strewn(int count, double size = kSize) {
        add(kStrewn, count, 0.0,
            [&] { return cv::Point2d(random_.uniform(0, size), random_.uniform(0, size)); });
        return *this;
    }

    Points points;
    std::vector<int> shapeOf;  // of each point: number of its shape, or kStrewn

  private:
    template <class Place>
    Scene& add(int shape, int count, double noise, Place place) {
        for (int i = 0; i < count; ++i) {
            const cv::Point2d p = place();
            const double x = p.x + random_.normal(noise);
            points.emplace_back(x, p.y + random_.normal(noise));
            shapeOf.push_back(shape);
            const auto other =
                static_cast<std::size_t>(random_.integer(0, static_cast<int>(points.size()) - 1));
            std::swap(points.back(), points[other]);
            std::swap(shapeOf.back(), shapeOf[other]);
        }
        return *this;
    }

    fit_scenes::Random random_;
    int shapes_ = 0;
};

}  // namespace consensus_scenes

#endif
