#include "orxFunctions/fitting/circle_algebra_internal.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/fitting/geometry.h"
#include "orxFunctions/fitting/pixel_span_internal.h"

namespace orx::circle_blocks {
namespace {

circle_kernels::PowerSums powerSums(const std::vector<cv::Point>& points,
                                    const std::vector<double>& weights) {
    const circle_kernels::Kernels& kernels = circle_kernels::chosen();
    if (!weights.empty()) return kernels.weightedPowerSums(spanOf(points), weights.data());
    circle_kernels::PowerSums sums = {};
    if (kernels.exactPowerSums(spanOf(points), sums)) return sums;
    const std::vector<double> ones(points.size(), 1.0);
    return kernels.weightedPowerSums(spanOf(points), ones.data());
}

}  // namespace

TCircle algebraicCircle(const std::vector<cv::Point>& points, const std::vector<double>& weights) {
    const circle_kernels::PowerSums s = powerSums(points, weights);
    const double x = s.x / s.w;
    const double y = s.y / s.w;
    const double xx = s.xx / s.w;
    const double yy = s.yy / s.w;
    const double xy = s.xy / s.w;
    const double C = xx - x * x;
    const double D = xy - x * y;
    const double E = s.xxx / s.w + s.xyy / s.w - (xx + yy) * x;
    const double G = yy - y * y;
    const double H = s.yyy / s.w + s.xxy / s.w - (xx + yy) * y;
    const double a = (H * D - E * G) / (C * G - D * D);
    const double b = (H * C - E * D) / (D * D - G * C);
    const double c = -(a * x + b * y + xx + yy);
    TCircle circle;
    circle.x = -a / 2;
    circle.y = -b / 2;
    circle.r = std::sqrt(a * a + b * b - 4 * c) / 2;
    return circle;
}

double residualSum(const std::vector<cv::Point>& points, const TCircle& circle) {
    return circle_kernels::chosen().circleResiduals(spanOf(points), {circle.x, circle.y, circle.r}, nullptr);
}

double residualList(const std::vector<cv::Point>& points, const TCircle& circle,
                    std::vector<double>& residuals) {
    residuals.resize(points.size());
    return circle_kernels::chosen().circleResiduals(spanOf(points), {circle.x, circle.y, circle.r},
                                                    residuals.data());
}

double inlierRatio(const std::vector<double>& residuals, double threshold) {
    if (residuals.empty()) return 0.0;
    const auto inliers = std::count_if(residuals.begin(), residuals.end(),
                                       [threshold](double residual) { return residual < threshold; });
    return static_cast<double>(inliers) / static_cast<double>(residuals.size());
}

double weightedMeanResidual(const std::vector<double>& residuals, const std::vector<double>& weights) {
    if (residuals.empty() || (!weights.empty() && weights.size() != residuals.size())) return 9999.0;
    double sum = 0;
    for (std::size_t i = 0; i < residuals.size(); ++i) {
        sum += weights.empty() ? residuals[i] : weights[i] * residuals[i];
    }
    return sum / static_cast<double>(residuals.size());
}

bool sampleThree(const std::vector<cv::Point>& points, int seed, platform::RuntimeRandom& random,
                 std::array<cv::Point, 3>& sample) {
    constexpr int kAttempts = 10;
    if (points.size() < 3) return false;
    random.seed(static_cast<unsigned>(seed));
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        for (cv::Point& p : sample) p = points[static_cast<std::size_t>(random.draw()) % points.size()];
        if (!isCollinear(sample[0], sample[1], sample[2])) return true;
    }
    return false;
}

}  // namespace orx::circle_blocks
