// Sub-pixel edges beside pipelines of OpenCV calls, on mosaics of synthetic parts of VGA, 5 and 12
// megapixels.
//
//     build/bench/bin/edges_bench --benchmark_filter=/5MP
//
// The counters say what each found: points in chains and the share of edge pixels.
#include <benchmark/benchmark.h>

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "bench/edge_mosaic.h"
#include "orxFunctions/analysis/subpixel_edges.h"
#include "orxFunctions/analysis/subpixel_edges_metric.h"

namespace {

constexpr int kLow = 12;
constexpr int kHigh = 36;
constexpr double kSigma = 1.0;

std::size_t pointsOf(const std::vector<std::vector<cv::Point>>& chains) {
    std::size_t count = 0;
    for (const auto& chain : chains) count += chain.size();
    return count;
}

template <typename Contour>
std::size_t pointsOf(const std::vector<Contour>& contours) {
    std::size_t count = 0;
    for (const auto& contour : contours) count += contour.points.size();
    return count;
}

// The kernel that a Gaussian of sigma 1 gives, in the form that sepFilter2D takes.
cv::Mat derivativeKernel() { return (cv::Mat_<short>(7, 1) << -5, -38, -85, 0, 85, 38, 5); }

// The facet fit of one pixel as a caller would write it.
cv::Point2f refined(const cv::Mat& dx, const cv::Mat& dy, cv::Point p) {
    double g[9];
    for (int i = 0; i < 9; ++i) {
        const int r = std::min(std::max(p.y + i / 3 - 1, 0), dx.rows - 1);
        const int c = std::min(std::max(p.x + i % 3 - 1, 0), dx.cols - 1);
        const double x = dx.at<short>(r, c);
        const double y = dy.at<short>(r, c);
        g[i] = std::sqrt(x * x + y * y);
    }
    const double a1 = (g[2] + g[5] + g[8] - g[0] - g[3] - g[6]) / 6;
    const double a2 = (g[6] + g[7] + g[8] - g[0] - g[1] - g[2]) / 6;
    const double cc = (g[0] - 2 * g[1] + g[2] + g[3] - 2 * g[4] + g[5] + g[6] - 2 * g[7] + g[8]) / 3;
    const double rr = (g[0] + g[1] + g[2] - 2 * (g[3] + g[4] + g[5]) + g[6] + g[7] + g[8]) / 3;
    const double rc = (g[2] - g[0] + g[6] - g[8]) / 4;
    const double angle = 0.5 * std::atan2(2 * rc, cc - rr);
    const double nx = std::cos(angle);
    const double ny = std::sin(angle);
    const double t = -(a1 * nx + a2 * ny) / (cc * nx * nx + 2 * rc * nx * ny + rr * ny * ny);
    if (!(std::abs(t * nx) <= 0.5 && std::abs(t * ny) <= 0.5)) return cv::Point2f(p);
    return {static_cast<float>(p.x + t * nx), static_cast<float>(p.y + t * ny)};
}

void report(benchmark::State& state, const cv::Mat& image, std::size_t points) {
    state.counters["points"] = static_cast<double>(points);
    state.counters["points_percent"] =
        100.0 * static_cast<double>(points) / static_cast<double>(image.total());
}

void edgesSubPix(benchmark::State& state, cv::Size size) {
    cv::Mat image = edge_mosaic::make(size);
    std::vector<ORXEdge::TContour> contours;
    for (auto _ : state) ORXEdge::EdgesSubPix(image, contours, kLow, kHigh, kSigma);
    report(state, image, pointsOf(contours));
}

void edgesSubPixMetric(benchmark::State& state, cv::Size size) {
    const cv::Mat image = edge_mosaic::make(size);
    std::vector<ORXEdge::TMetricContour> contours;
    for (auto _ : state) ORXEdge::edgesSubPixMetric(image, contours);
    report(state, image, pointsOf(contours));
}

void opencvCallsRefined(benchmark::State& state, cv::Size size) {
    const cv::Mat image = edge_mosaic::make(size);
    const cv::Mat kernel = derivativeKernel();
    const cv::Mat one(1, 1, CV_16S, cv::Scalar(1));
    std::vector<std::vector<cv::Point>> chains;
    std::vector<std::vector<cv::Point2f>> points;
    for (auto _ : state) {
        cv::Mat smoothed;
        cv::Mat dx;
        cv::Mat dy;
        cv::Mat edges;
        cv::GaussianBlur(image, smoothed, cv::Size(), kSigma);
        cv::sepFilter2D(smoothed, dx, CV_16S, kernel, one);
        cv::sepFilter2D(smoothed, dy, CV_16S, one, kernel);
        cv::Canny(dx, dy, edges, 128 * kLow, 128 * kHigh, true);
        cv::findContours(edges, chains, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
        points.resize(chains.size());
        for (std::size_t i = 0; i < chains.size(); ++i) {
            points[i].clear();
            for (const cv::Point& p : chains[i]) points[i].push_back(refined(dx, dy, p));
        }
    }
    report(state, image, pointsOf(chains));
}

void opencvCannyWholePixels(benchmark::State& state, cv::Size size) {
    const cv::Mat image = edge_mosaic::make(size);
    std::vector<std::vector<cv::Point>> chains;
    // In the scale of Canny's 3 x 3 Sobel gradients: a ramp of 1 reads 8 there and 2.74 in ours.
    for (auto _ : state) {
        cv::Mat smoothed;
        cv::Mat edges;
        cv::GaussianBlur(image, smoothed, cv::Size(), kSigma);
        cv::Canny(smoothed, edges, 2.92 * kLow, 2.92 * kHigh, 3, true);
        cv::findContours(edges, chains, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
    }
    report(state, image, pointsOf(chains));
}

#define ORX_EDGE_BENCH(function)                                                           \
    BENCHMARK_CAPTURE(function, VGA, cv::Size(640, 480))->Unit(benchmark::kMillisecond);   \
    BENCHMARK_CAPTURE(function, 5MP, cv::Size(2448, 2048))->Unit(benchmark::kMillisecond); \
    BENCHMARK_CAPTURE(function, 12MP, cv::Size(4096, 3072))->Unit(benchmark::kMillisecond)

ORX_EDGE_BENCH(edgesSubPix);
ORX_EDGE_BENCH(edgesSubPixMetric);
ORX_EDGE_BENCH(opencvCallsRefined);
ORX_EDGE_BENCH(opencvCannyWholePixels);

}  // namespace
