// Curves by Eigen and GSL, on the profile of curves_bench beside our own calls. The argument is the number
// of samples.
#include <benchmark/benchmark.h>
#include <gsl/gsl_multifit.h>
#include <gsl/gsl_spline.h>

#include <Eigen/Dense>
#include <vector>

#include "bench/curve_scene.h"

namespace {

using scene::cubicFit;
using scene::curveProfile;
using scene::splineList;

void eigenCubicQr(benchmark::State& state) {
    const auto samples = curveProfile(state.range(0));
    const auto n = static_cast<Eigen::Index>(samples.size());
    // Allocated once: fresh pages would cost more than the decomposition.
    Eigen::Matrix<double, Eigen::Dynamic, 4> design(n, 4);
    Eigen::VectorXd values(n);
    Eigen::ColPivHouseholderQR<Eigen::Matrix<double, Eigen::Dynamic, 4>> qr(n, 4);
    for (auto _ : state) {
        for (Eigen::Index i = 0; i < n; ++i) {
            const cv::Point2d& p = samples[static_cast<std::size_t>(i)];
            design.row(i) << 1, p.x, p.x * p.x, p.x * p.x * p.x;
            values[i] = p.y;
        }
        const Eigen::Vector4d solution = qr.compute(design).solve(values);
        benchmark::DoNotOptimize(solution.sum());
    }
}

void gslCubicFit(benchmark::State& state) {
    const auto samples = curveProfile(state.range(0));
    const std::size_t n = samples.size();
    gsl_matrix* design = gsl_matrix_alloc(n, 4);
    gsl_vector* values = gsl_vector_alloc(n);
    gsl_vector* solution = gsl_vector_alloc(4);
    gsl_matrix* covariance = gsl_matrix_alloc(4, 4);
    gsl_multifit_linear_workspace* work = gsl_multifit_linear_alloc(n, 4);
    for (auto _ : state) {
        for (std::size_t i = 0; i < n; ++i) {
            double power = 1;
            for (std::size_t j = 0; j < 4; ++j) {
                gsl_matrix_set(design, i, j, power);
                power *= samples[i].x;
            }
            gsl_vector_set(values, i, samples[i].y);
        }
        double chi = 0;
        gsl_multifit_linear(design, values, solution, covariance, &chi, work);
        benchmark::DoNotOptimize(chi);
    }
    gsl_multifit_linear_free(work);
    gsl_matrix_free(covariance);
    gsl_vector_free(solution);
    gsl_vector_free(values);
    gsl_matrix_free(design);
}

// 10,000 values at ascending x, as a list.
void gslSplineList(benchmark::State& state) {
    std::vector<double> x;
    std::vector<double> y;
    for (const cv::Point2d& p : curveProfile(state.range(0))) {
        x.push_back(p.x);
        y.push_back(p.y);
    }
    gsl_interp_accel* accelerator = gsl_interp_accel_alloc();
    gsl_spline* spline = gsl_spline_alloc(gsl_interp_cspline, x.size());
    gsl_spline_init(spline, x.data(), y.data(), x.size());
    std::vector<cv::Point2d> list;
    for (auto _ : state) {
        list.clear();
        for (int i = 0; i < 10000; ++i)
            list.emplace_back(i * 0.01, gsl_spline_eval(spline, i * 0.01, accelerator));
        benchmark::DoNotOptimize(list.data());
    }
    gsl_spline_free(spline);
    gsl_interp_accel_free(accelerator);
}

BENCHMARK(cubicFit)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(eigenCubicQr)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(gslCubicFit)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(splineList)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(gslSplineList)->Arg(100)->Arg(1000)->Arg(10000);

}  // namespace
