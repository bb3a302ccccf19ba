// Operators on pictures of five megapixels, on one thread and on two. The argument is the number of threads.
//
//     build/bench/bin/threads_bench --benchmark_filter=thinning
#include <benchmark/benchmark.h>

#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>
#include <utility>
#include <vector>

#include "bench/edge_mosaic.h"
#include "bench/parts_picture.h"
#include "orxFunctions/orxfunctions.h"

namespace {

constexpr int kHeight = 1944;

const cv::Mat& parts() {
    static const cv::Mat img = bench::binaryParts(bench::sizeOfHeight(kHeight));
    return img;
}

const cv::Mat& grey() {
    static const cv::Mat img = bench::greyParts(bench::sizeOfHeight(kHeight));
    return img;
}

const cv::Mat& colour() {
    static const cv::Mat img = bench::colourParts(bench::sizeOfHeight(kHeight));
    return img;
}

const cv::Mat& words() {
    static const cv::Mat img = [] {
        cv::Mat deep;
        grey().convertTo(deep, CV_16U, 257);
        return deep;
    }();
    return img;
}

const cv::Mat& mosaic() {
    static const cv::Mat img = edge_mosaic::make({kHeight * 4 / 3, kHeight});
    return img;
}

const std::vector<std::vector<cv::Point>>& outlines() {
    static const std::vector<std::vector<cv::Point>> all = orx::getContours(parts(), orx::ctAll);
    return all;
}

template <class Operator>
void onThreads(benchmark::State& state, Operator work) {
    cv::setNumThreads(static_cast<int>(state.range(0)));
    work();  // scenes are made, threads started
    for (auto _ : state) work();
    cv::setNumThreads(-1);
}

#define ORX_ON_THREADS(name, ...)                           \
    BENCHMARK_CAPTURE(onThreads, name, [] { __VA_ARGS__; }) \
        ->Arg(1)                                            \
        ->Arg(2)                                            \
        ->UseRealTime()                                     \
        ->Unit(benchmark::kMillisecond)

ORX_ON_THREADS(threshold_otsu, benchmark::DoNotOptimize(orx::getThresholdValue(grey(), orx::tmOtsu)));
ORX_ON_THREADS(threshold_four_parts, cv::Mat out;
               orx::OTSUfourPartsThreshold(grey(), out, cv::MORPH_OPEN, 5));
ORX_ON_THREADS(thinning, cv::Mat out; orx::thinning(parts(), out));
ORX_ON_THREADS(fill_holes, cv::Mat out; orx::fillHoles(parts(), out));
ORX_ON_THREADS(fill_small_holes, cv::Mat out; orx::fillHoles(parts(), out, {100}));
ORX_ON_THREADS(remove_small_objects, cv::Mat out; orx::removeSmallObjects(parts(), out, 100));
ORX_ON_THREADS(remove_short_lines, cv::Mat out; orx::removeShortLines(parts(), out, 20.0));
ORX_ON_THREADS(auto_canny_median, benchmark::DoNotOptimize(orx::autoCanny(grey(), {orx::cmMedian}).data));
ORX_ON_THREADS(auto_canny_otsu, benchmark::DoNotOptimize(orx::autoCanny(grey(), {orx::cmOtsu}).data));
ORX_ON_THREADS(clahe_grey, cv::Mat out; orx::enhanceImage(grey(), out, orx::emEqualize));
ORX_ON_THREADS(clahe_colour, cv::Mat out; orx::enhanceImage(colour(), out, orx::emEqualize));
ORX_ON_THREADS(detail_gain, cv::Mat out; orx::enhanceImage(grey(), out, orx::emDetailGain));
ORX_ON_THREADS(gamma_8_bits, cv::Mat out; orx::correctGamma(colour(), out, 0.6));
ORX_ON_THREADS(gamma_16_bits, cv::Mat out; orx::correctGamma(words(), out, 0.6));
ORX_ON_THREADS(highlights, cv::Mat out; orx::suppressHighlights(colour(), out));
ORX_ON_THREADS(white_balance_grey, cv::Mat out; orx::whiteBalance(colour(), out, {orx::wbGreyWorld}));
ORX_ON_THREADS(white_balance_patch, cv::Mat out; orx::whiteBalance(colour(), out, {orx::wbWhitePatch}));
ORX_ON_THREADS(focus_differences, benchmark::DoNotOptimize(AutoFocus::calcGrayDifference(grey())));
ORX_ON_THREADS(focus_brenner, benchmark::DoNotOptimize(AutoFocus::calcBrenner(grey())));
ORX_ON_THREADS(focus_tenengrad, benchmark::DoNotOptimize(AutoFocus::calcTenengrad(grey())));
ORX_ON_THREADS(focus_laplacian, benchmark::DoNotOptimize(AutoFocus::calcLaplacianVariance(grey())));
ORX_ON_THREADS(edges_metric, std::vector<ORXEdge::TMetricContour> out;
               ORXEdge::edgesSubPixMetric(mosaic(), out));
ORX_ON_THREADS(edges_classic, std::vector<ORXEdge::TContour> out;
               ORXEdge::EdgesSubPix(mosaic(), out, 12, 36, 1.0));
ORX_ON_THREADS(edges_classic_automatic, std::vector<ORXEdge::TContour> out;
               ORXEdge::EdgesSubPix(mosaic(), out, -1, -1, 1.0));
ORX_ON_THREADS(split_outlines, orx::TSegmentContour splitter; splitter.segmentContour(outlines(), {}));

}  // namespace
