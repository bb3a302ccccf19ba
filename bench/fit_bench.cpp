// The circle and line estimators beside OpenCV's line fits and enclosing circle.
//
// The peers of other libraries are in bench/peers. Scenes: 30 % outliers for the searches, 10 % for the
// robust fits, none for the fits of clean points.
#include <benchmark/benchmark.h>

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/fit_scenes.h"

namespace {

using Points = std::vector<cv::Point>;

const cv::Point3d kCircle(480, 510, 320);
const cv::Size kImage(1000, 1000);

Points circle(const benchmark::State& state, double outliers) {
    fit_scenes::Random random(5);
    return fit_scenes::circlePoints(kCircle, static_cast<int>(state.range(0)), {0.5, outliers, kImage},
                                    random);
}

Points line(const benchmark::State& state, double outliers) {
    fit_scenes::Random random(5);
    return fit_scenes::linePoints(0.31, 200, static_cast<int>(state.range(0)), {0.5, outliers, kImage},
                                  random);
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(200)->Arg(2000)->Arg(20000)->Unit(benchmark::kMicrosecond);
}

// A thousand trials: no radius limit that matters, a cap that is not reached.
void circleRansac(benchmark::State& state) {
    orxFit::TCircleFitFactory factory;
    factory.createFitType_ransacCircle(circle(state, 0.3), 1000, 5, 1.5, 1000, 1000);
    for (auto _ : state) benchmark::DoNotOptimize(factory.fitter->fit());
}
BENCHMARK(circleRansac)->Name("circle_ransac")->Apply(sizes);

// Ends in the first pass: least squares and one list of residuals.
void circleWeightedClean(benchmark::State& state) {
    orxFit::TCircleFitFactory factory;
    factory.createFitType_weightedLeastSquares(circle(state, 0), 4, 1.345);
    for (auto _ : state) benchmark::DoNotOptimize(factory.fitter->fit());
}
BENCHMARK(circleWeightedClean)->Name("circle_weighted_first_pass")->Apply(sizes);

// All 30 passes, by weight type.
template <int kType>
void circleWeightedAll(benchmark::State& state) {
    orxFit::TCircleFitFactory factory;
    factory.createFitType_weightedLeastSquares(circle(state, 0.1), kType, 1.5);
    for (auto _ : state) benchmark::DoNotOptimize(factory.fitter->fit());
}
BENCHMARK_TEMPLATE(circleWeightedAll, 4)->Name("circle_weighted_huber_30_passes")->Apply(sizes);
BENCHMARK_TEMPLATE(circleWeightedAll, 3)->Name("circle_weighted_welsch_30_passes")->Apply(sizes);

// All 1000 passes: with this constant every point counts, and steps are so small that the loss, some
// thousands, still changes at the end.
template <int kType>
void circleRobustPasses(benchmark::State& state) {
    TCircleFit_Robust fitter;
    fitter.setPoints(circle(state, 0.3));
    fitter.setParams({1e5, 1e-4, kType});
    for (auto _ : state) benchmark::DoNotOptimize(fitter.fit());
}
BENCHMARK_TEMPLATE(circleRobustPasses, 4)->Name("circle_robust_type4_1000_passes")->Apply(sizes);
BENCHMARK_TEMPLATE(circleRobustPasses, 1)->Name("circle_robust_tukey_1000_passes")->Apply(sizes);

// As the factory does it, but with a cap that is not reached.
template <int kSampleSize>
void lineRansac(benchmark::State& state) {
    TLineFit_Ransac fitter;
    fitter.setPoints(line(state, 0.3));
    fitter.setParams({17.2, 1.5, kSampleSize, 180});
    fitter.setSearchLimits(1000, 1000);
    for (auto _ : state) benchmark::DoNotOptimize(fitter.fit());
}
BENCHMARK_TEMPLATE(lineRansac, 2)->Name("line_ransac")->Apply(sizes);

template <int kType>
void lineRobust(benchmark::State& state) {
    orxFit::TLineFitFactory factory;
    factory.createFitType_robustLine(line(state, 0.1), kType, 0);
    for (auto _ : state) benchmark::DoNotOptimize(factory.fitter->fit());
}
BENCHMARK_TEMPLATE(lineRobust, -1)->Name("line_robust_equal")->Apply(sizes);
BENCHMARK_TEMPLATE(lineRobust, 1)->Name("line_robust_l1")->Apply(sizes);
BENCHMARK_TEMPLATE(lineRobust, 4)->Name("line_robust_huber")->Apply(sizes);

template <int kType>
void openCvLine(benchmark::State& state) {
    const Points points = line(state, 0.1);
    cv::Vec4f fit;
    for (auto _ : state) {
        cv::fitLine(points, fit, kType, 0, 0.01, 0.01);
        benchmark::DoNotOptimize(fit);
    }
}
BENCHMARK_TEMPLATE(openCvLine, cv::DIST_L2)->Name("opencv_fit_line_l2")->Apply(sizes);
BENCHMARK_TEMPLATE(openCvLine, cv::DIST_L1)->Name("opencv_fit_line_l1")->Apply(sizes);
BENCHMARK_TEMPLATE(openCvLine, cv::DIST_HUBER)->Name("opencv_fit_line_huber")->Apply(sizes);

void openCvEnclosing(benchmark::State& state) {
    const Points points = circle(state, 0);
    cv::Point2f centre;
    float radius = 0;
    for (auto _ : state) {
        cv::minEnclosingCircle(points, centre, radius);
        benchmark::DoNotOptimize(radius);
    }
}
BENCHMARK(openCvEnclosing)->Name("opencv_min_enclosing_circle")->Apply(sizes);

// A thousand passes that calculate distances and count small ones, nothing else, a point at a time.
void plainScore(benchmark::State& state) {
    const Points points = circle(state, 0.1);
    cv::Point3d at = kCircle;
    for (auto _ : state) {
        for (int pass = 0; pass < 1000; ++pass) {
            benchmark::DoNotOptimize(at);
            int near = 0;
            for (const cv::Point& p : points) {
                const double dx = at.x - p.x;
                const double dy = at.y - p.y;
                near += std::abs(std::sqrt(dx * dx + dy * dy) - at.z) < 1.5 ? 1 : 0;
            }
            benchmark::DoNotOptimize(near);
        }
    }
}
BENCHMARK(plainScore)->Name("circle_score_scalar_1000_passes")->Apply(sizes);

}  // namespace
