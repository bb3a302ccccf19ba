#include "orxFunctions/fitting/geometric/outline_bias.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace orx::geometric {
namespace {

// Of many points so many tell the mean.
constexpr std::size_t kSome = 256;

// Points with a say, and the places where the outline is nearest to them.
struct FeetOfSome {
    std::vector<cv::Point2d> feet;
    std::vector<double> weights;
    double each = 0.0;  // points that one stands for
};

FeetOfSome feetOfSome(const Columns& points, const Ellipse& e, const Loss& loss) {
    const foot_kernels::Kernels& kernels = foot_kernels::chosen();
    std::vector<double> distances(points.count);
    kernels.distances(points, e, distances.data());
    const auto weight = [&](std::size_t i) { return points.weights == nullptr ? 1.0 : points.weights[i]; };
    std::vector<std::size_t> used;
    used.reserve(points.count);
    for (std::size_t i = 0; i < points.count; ++i) {
        if (weight(i) > 0.0 && weight(i) * distances[i] * distances[i] <= loss.reach2) used.push_back(i);
    }
    const std::size_t count = std::min(used.size(), kSome);
    FeetOfSome some;
    std::vector<double> x;
    std::vector<double> y;
    for (std::size_t k = 0; k < count; ++k) {
        const std::size_t i = used[k * used.size() / count];
        x.push_back(points.x[i]);
        y.push_back(points.y[i]);
        some.weights.push_back(weight(i));
    }
    std::vector<double> c(count);
    std::vector<double> s(count);
    kernels.feet({x.data(), y.data(), nullptr, count}, e, c.data(), s.data());
    for (std::size_t k = 0; k < count; ++k) {
        const cv::Point2d local(e.a * c[k], e.b * s[k]);
        some.feet.emplace_back(e.x + e.cosine * local.x - e.sine * local.y,
                               e.y + e.sine * local.x + e.cosine * local.y);
    }
    some.each = count > 0 ? static_cast<double>(used.size()) / static_cast<double>(count) : 0.0;
    return some;
}

}  // namespace

bool outlineTurnsWithinNoise(const Ellipse& ellipse, double noise) {
    constexpr double kTurns = 0.05;
    return noise * ellipse.a > kTurns * ellipse.b * ellipse.b;
}

// By the rule of C. F. Gauss and C. Hermite with three places in each direction, exact to the fifth order.
// The place in the middle has no distance.
EllipseVector outlineBiasSums(const Columns& points, const Ellipse& ellipse, const Loss& loss, double noise) {
    struct Places {
        double share;
        cv::Point2d at[4];  // in deviations
    };
    const double far = std::sqrt(3.0);
    const Places kPlaces[] = {{1.0 / 9.0, {{far, 0.0}, {-far, 0.0}, {0.0, far}, {0.0, -far}}},
                              {1.0 / 36.0, {{far, far}, {-far, far}, {far, -far}, {-far, -far}}}};
    const FeetOfSome some = feetOfSome(points, ellipse, loss);
    EllipseVector mean;
    for (const Places& places : kPlaces) {
        std::vector<double> x;
        std::vector<double> y;
        std::vector<double> weights;
        for (std::size_t k = 0; k < some.feet.size(); ++k) {
            for (const cv::Point2d& at : places.at) {
                const cv::Point2d p = some.feet[k] + noise / std::sqrt(some.weights[k]) * at;
                x.push_back(p.x);
                y.push_back(p.y);
                weights.push_back(some.weights[k]);
            }
        }
        const Columns columns{x.data(), y.data(), weights.data(), x.size()};
        const EllipseSums sums = foot_kernels::chosen().sums(columns, ellipse, loss);
        mean += places.share * some.each * EllipseVector(sums.rowDistances);
    }
    return mean;
}

}  // namespace orx::geometric
