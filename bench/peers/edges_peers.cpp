// VIGRA's sub-pixel edge detectors on the mosaics of edges_bench, with ours beside them: they give unordered
// edge elements, we give chains.
#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>
#include <vector>
#include <vigra/edgedetection.hxx>
#include <vigra/multi_array.hxx>

#include "bench/edge_mosaic.h"
#include "orxFunctions/analysis/subpixel_edges.h"

namespace {

// VIGRA's gradients are grey levels a pixel, in which a ramp of 1 reads 1; in ours it reads 2.74.
constexpr double kThreshold = 12 / 2.74;

using Image = vigra::MultiArrayView<2, unsigned char>;

Image viewOf(cv::Mat& image) { return Image(vigra::Shape2(image.cols, image.rows), image.data); }

void vigra3x3(benchmark::State& state, cv::Size size) {
    cv::Mat image = edge_mosaic::make(size);
    std::vector<vigra::Edgel> edgels;
    for (auto _ : state) {
        edgels.clear();
        vigra::cannyEdgelList3x3Threshold(viewOf(image), edgels, 1.0, kThreshold);
    }
    state.counters["points"] = static_cast<double>(edgels.size());
}

void vigra3Point(benchmark::State& state, cv::Size size) {
    cv::Mat image = edge_mosaic::make(size);
    std::vector<vigra::Edgel> edgels;
    for (auto _ : state) {
        edgels.clear();
        vigra::cannyEdgelListThreshold(viewOf(image), edgels, 1.0, kThreshold);
    }
    state.counters["points"] = static_cast<double>(edgels.size());
}

void edgesSubPix(benchmark::State& state, cv::Size size) {
    cv::Mat image = edge_mosaic::make(size);
    std::vector<ORXEdge::TContour> contours;
    for (auto _ : state) ORXEdge::EdgesSubPix(image, contours, 12, 36, 1.0);
    std::size_t points = 0;
    for (const auto& contour : contours) points += contour.points.size();
    state.counters["points"] = static_cast<double>(points);
}

#define ORX_EDGE_PEER(function)                                                          \
    BENCHMARK_CAPTURE(function, VGA, cv::Size(640, 480))->Unit(benchmark::kMillisecond); \
    BENCHMARK_CAPTURE(function, 5MP, cv::Size(2448, 2048))->Unit(benchmark::kMillisecond)

ORX_EDGE_PEER(edgesSubPix);
ORX_EDGE_PEER(vigra3x3);
ORX_EDGE_PEER(vigra3Point);

}  // namespace
