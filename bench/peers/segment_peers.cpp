// From a picture to lines and arcs, beside EdgeDrawing with its lines and ellipses: the mosaics of
// edges_bench.
//
//     build/bench/bin/segment_peers --benchmark_enable_random_interleaving=true --benchmark_repetitions=9
//
// Ours is EdgesSubPix and the splitter on every chain, rounded to pixels. The mosaic's parts are 3 to 28
// pixels in radius, so the splitter's bounds are set for parts of that size (kParts), which makes it build
// arcs all over the picture; with its defaults (arcs of 60 pixels and more) it finds lines only. EdgeDrawing
// runs with its defaults. The counters say what each found; a chain runs along both sides of an edge, so ours
// sees each twice.
#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>
#include <opencv2/ximgproc/edge_drawing.hpp>
#include <vector>

#include "bench/edge_mosaic.h"
#include "orxFunctions/analysis/subpixel_edges.h"
#include "orxFunctions/segmentation/segment_contour.h"

namespace {

constexpr int kLow = 12;
constexpr int kHigh = 36;
constexpr double kSigma = 1.0;

using Chains = std::vector<std::vector<cv::Point>>;

orx::TSegemetParams partsParams() {
    orx::TSegemetParams params;
    params.firstEpsilon = 2.0;
    params.secondEpsilon = 1.0;
    params.minRadius = 3.0;
    params.mergeCenterDist = 5.0;
    params.errThreshold = 1.0;
    return params;
}

Chains pixelChains(const std::vector<std::vector<cv::Point2f>>& chains) {
    Chains pixels;
    pixels.reserve(chains.size());
    for (const auto& chain : chains) pixels.emplace_back(chain.begin(), chain.end());
    return pixels;
}

Chains chainsOf(cv::Mat& image) {
    std::vector<std::vector<cv::Point2f>> chains;
    ORXEdge::EdgesSubPix(image, chains, kLow, kHigh, kSigma);
    return pixelChains(chains);
}

template <typename Lists>
double total(const Lists& lists) {
    std::size_t count = 0;
    for (const auto& list : lists) count += list.size();
    return static_cast<double>(count);
}

void report(benchmark::State& state, orx::TSegmentContour& splitter, const Chains& chains) {
    state.counters["chains"] = static_cast<double>(chains.size());
    state.counters["points"] = total(chains);
    state.counters["lines"] = total(splitter.getLines());
    state.counters["arcs"] = total(splitter.getCircles());
}

void edgesAndSplit(benchmark::State& state, cv::Size size, const orx::TSegemetParams& params) {
    cv::Mat image = edge_mosaic::make(size);
    Chains chains;
    orx::TSegmentContour splitter;
    for (auto _ : state) {
        chains = chainsOf(image);
        splitter = {};
        splitter.segmentContour(chains, params);
    }
    report(state, splitter, chains);
}

// The splitter's part of it.
void split(benchmark::State& state, cv::Size size, const orx::TSegemetParams& params) {
    cv::Mat image = edge_mosaic::make(size);
    const Chains chains = chainsOf(image);
    orx::TSegmentContour splitter;
    for (auto _ : state) {
        splitter = {};
        splitter.segmentContour(chains, params);
    }
    report(state, splitter, chains);
}

void edgeDrawing(benchmark::State& state, cv::Size size, bool ellipses) {
    const cv::Mat image = edge_mosaic::make(size);
    std::vector<cv::Vec4f> lines;
    std::vector<cv::Vec6d> arcs;
    std::size_t points = 0;
    for (auto _ : state) {
        const cv::Ptr<cv::ximgproc::EdgeDrawing> detector = cv::ximgproc::createEdgeDrawing();
        detector->detectEdges(image);
        detector->detectLines(lines);
        if (ellipses) detector->detectEllipses(arcs);
        state.PauseTiming();
        points = static_cast<std::size_t>(total(detector->getSegments()));
        state.ResumeTiming();
    }
    state.counters["points"] = static_cast<double>(points);
    state.counters["lines"] = static_cast<double>(lines.size());
    state.counters["arcs"] = static_cast<double>(arcs.size());
}

const cv::Size kVga(640, 480);
const cv::Size k5Mp(2448, 2048);

#define ORX_SPLIT_PEER(function, name, argument)                                            \
    BENCHMARK_CAPTURE(function, name##_VGA, kVga, argument)->Unit(benchmark::kMillisecond); \
    BENCHMARK_CAPTURE(function, name##_5MP, k5Mp, argument)->Unit(benchmark::kMillisecond)

ORX_SPLIT_PEER(edgesAndSplit, parts, partsParams());
ORX_SPLIT_PEER(edgesAndSplit, defaults, orx::TSegemetParams());
ORX_SPLIT_PEER(split, parts, partsParams());
ORX_SPLIT_PEER(split, defaults, orx::TSegemetParams());
ORX_SPLIT_PEER(edgeDrawing, lines, false);
ORX_SPLIT_PEER(edgeDrawing, lines_and_ellipses, true);

}  // namespace
