// Ellipse fits beside OpenCV's. The argument is the number of points.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

constexpr double kAnyAxis = 1e6;

std::vector<cv::Point2f> noisyEllipse(std::int64_t count, double sigma) {
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0, sigma);
    std::uniform_real_distribution<double> angle(0, 2 * CV_PI);
    std::vector<cv::Point2f> points;
    for (std::int64_t i = 0; i < count; ++i) {
        const double t = angle(random);
        const double u = 200 * std::cos(t);
        const double v = 120 * std::sin(t);
        points.emplace_back(static_cast<float>(640 + 0.8 * u - 0.6 * v + noise(random)),
                            static_cast<float>(480 + 0.6 * u + 0.8 * v + noise(random)));
    }
    return points;
}

void fitEllipseNorm(benchmark::State& state) {
    const auto points = noisyEllipse(state.range(0), 0.5);
    for (auto _ : state) {
        benchmark::DoNotOptimize(orxFit::fitEllipseNorm(points, 1.5, 0.5, 0, kAnyAxis, 0, kAnyAxis));
    }
}

// All in: report, mask, covered arc, covariance.
template <orx::TFitLoss kLoss>
void measured(benchmark::State& state) {
    const auto points = noisyEllipse(state.range(0), 0.5);
    orx::TFitOptions options;
    options.loss = kLoss;
    for (auto _ : state) benchmark::DoNotOptimize(orx::fitEllipseGeometric(points, options));
}

void footPoints(benchmark::State& state) {
    const auto points = noisyEllipse(state.range(0), 0.5);
    const orx::TMeasuredEllipse ellipse = orx::fitEllipseGeometric(points);
    for (auto _ : state) {
        double sum = 0;
        for (const cv::Point2f& p : points) sum += ellipse.signedDistance(p);
        benchmark::DoNotOptimize(sum);
    }
}

template <cv::RotatedRect (*Fit)(cv::InputArray)>
void openCv(benchmark::State& state) {
    const auto points = noisyEllipse(state.range(0), 0.5);
    for (auto _ : state) benchmark::DoNotOptimize(Fit(points));
}

// 100 trials; noise that no trial grades well enough to end the search.
constexpr double kSearchNoise = 1.0;
constexpr int kTrials = 100;

void fitEllipseRansac(benchmark::State& state) {
    const auto points = noisyEllipse(state.range(0), kSearchNoise);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            orxFit::fitEllipseRansac(points, 1.5, kTrials, 0.1, 0, kAnyAxis, 0, kAnyAxis));
    }
}

// The distance of each point from the ellipse along the ray from its centre.
double meanRadialError(const cv::RotatedRect& ellipse, const std::vector<cv::Point2f>& points) {
    const double angle = static_cast<double>(ellipse.angle) * CV_PI / 180;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double a = static_cast<double>(ellipse.size.width) / 2;
    const double b = static_cast<double>(ellipse.size.height) / 2;
    double sum = 0;
    for (const cv::Point2f& p : points) {
        const auto dx = static_cast<double>(p.x - ellipse.center.x);
        const auto dy = static_cast<double>(p.y - ellipse.center.y);
        const double u = (dx * c + dy * s) / a;
        const double v = (dy * c - dx * s) / b;
        const double relative = std::sqrt(u * u + v * v);
        sum += std::abs(std::sqrt(dx * dx + dy * dy) * (1 - 1 / relative));
    }
    return sum / static_cast<double>(points.size());
}

// The same search from OpenCV's calls: six points, direct fit, radial grading.
void openCvSearch(benchmark::State& state) {
    const auto points = noisyEllipse(state.range(0), kSearchNoise);
    const std::size_t step = points.size() / 6;
    for (auto _ : state) {
        double best = 1e9;
        for (int trial = 0; trial < kTrials; ++trial) {
            std::srand(static_cast<unsigned>(trial));
            const std::size_t start = static_cast<std::size_t>(std::rand()) % step;
            std::vector<cv::Point2f> sample(6);
            for (std::size_t i = 0; i < 6; ++i) sample[i] = points[start + i * step];
            best = std::min(best, meanRadialError(cv::fitEllipseDirect(sample), points));
        }
        benchmark::DoNotOptimize(best);
    }
}

BENCHMARK(fitEllipseNorm)->Arg(6)->Arg(50)->Arg(500)->Arg(5000);
BENCHMARK(measured<orx::flLeastSquares>)->Name("measured_ellipse")->Arg(50)->Arg(500)->Arg(5000);
BENCHMARK(measured<orx::flTukey>)->Name("measured_ellipse_tukey")->Arg(50)->Arg(500)->Arg(5000);
BENCHMARK(footPoints)->Name("measured_ellipse_distances")->Arg(50)->Arg(500)->Arg(5000);
BENCHMARK(openCv<cv::fitEllipseDirect>)->Name("cv_fitEllipseDirect")->Arg(6)->Arg(50)->Arg(500)->Arg(5000);
BENCHMARK(openCv<cv::fitEllipseAMS>)->Name("cv_fitEllipseAMS")->Arg(6)->Arg(50)->Arg(500)->Arg(5000);
BENCHMARK(openCv<cv::fitEllipse>)->Name("cv_fitEllipse")->Arg(6)->Arg(50)->Arg(500)->Arg(5000);
BENCHMARK(fitEllipseRansac)->Name("fitEllipseRansac_100")->Arg(50)->Arg(500)->Arg(5000);
BENCHMARK(openCvSearch)->Name("cv_ellipseSearch_100")->Arg(50)->Arg(500)->Arg(5000);

}  // namespace
