// Operators on binary pictures, and Canny, each beside a plain version or OpenCV's own call. The argument is
// the height of the picture, 4 : 3.
#include <benchmark/benchmark.h>

#include <array>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "bench/parts_picture.h"
#include "orxFunctions/orxfunctions.h"

namespace {

cv::Mat parts(std::int64_t height) { return bench::binaryParts(bench::sizeOfHeight(height)); }

cv::Mat scene(std::int64_t height) { return bench::greyParts(bench::sizeOfHeight(height)); }

#define ORX_SIZES Arg(480)->Arg(2000)->Unit(benchmark::kMillisecond)

void thinning(benchmark::State& state, orx::TThinningMethod method) {
    const cv::Mat img = parts(state.range(0));
    cv::Mat lines;
    for (auto _ : state) orx::thinning(img, lines, method);
}
BENCHMARK_CAPTURE(thinning, zhang_suen, orx::tnZhangSuen)->ORX_SIZES;
BENCHMARK_CAPTURE(thinning, guo_hall, orx::tnGuoHall)->ORX_SIZES;

// The eight neighbours, clockwise from the one above, as bits.
unsigned around(const uchar* pixel, std::size_t step) {
    const uchar* upper = pixel - step;
    const uchar* lower = pixel + step;
    return (upper[0] & 1U) | (upper[1] & 1U) << 1 | (pixel[1] & 1U) << 2 | (lower[1] & 1U) << 3 |
           (lower[0] & 1U) << 4 | (lower[-1] & 1U) << 5 | (pixel[-1] & 1U) << 6 | (upper[-1] & 1U) << 7;
}

bool isRemoved(unsigned p, int pass) {
    int neighbours = 0;
    int rises = 0;
    for (unsigned i = 0; i < 8; ++i) {
        neighbours += static_cast<int>(p >> i & 1U);
        rises += (p >> i & 1U) == 0 && (p >> ((i + 1) % 8) & 1U) == 1 ? 1 : 0;
    }
    const unsigned a = pass == 0 ? 0x15 : 0x45;
    const unsigned b = pass == 0 ? 0x54 : 0x51;
    return neighbours >= 2 && neighbours <= 6 && rises == 1 && (p & a) != a && (p & b) != b;
}

// Zhang and Suen's passes over the whole picture; `decide` says whether a pixel goes.
template <class Decide>
cv::Mat thinnedInFullPasses(const cv::Mat& img, Decide decide) {
    cv::Mat framed;
    cv::copyMakeBorder(img, framed, 1, 1, 1, 1, cv::BORDER_CONSTANT, 0);
    for (bool changed = true; changed;) {
        changed = false;
        for (int pass = 0; pass < 2; ++pass) {
            const cv::Mat before = framed.clone();
            for (int y = 1; y + 1 < framed.rows; ++y) {
                const uchar* from = before.ptr(y);
                for (int x = 1; x + 1 < framed.cols; ++x) {
                    if (from[x] == 0 || !decide(around(from + x, before.step), pass)) continue;
                    framed.at<uchar>(y, x) = 0;
                    changed = true;
                }
            }
        }
    }
    return framed(cv::Rect(1, 1, img.cols, img.rows));
}

void thinningPlain(benchmark::State& state) {
    const cv::Mat img = parts(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(thinnedInFullPasses(img, isRemoved).data);
}
BENCHMARK(thinningPlain)->Name("thinning_plain/zhang_suen")->ORX_SIZES;

void thinningTable(benchmark::State& state) {
    const cv::Mat img = parts(state.range(0));
    std::array<std::array<bool, 256>, 2> table{};
    for (unsigned p = 0; p < 256; ++p) {
        for (int pass = 0; pass < 2; ++pass) table[static_cast<std::size_t>(pass)][p] = isRemoved(p, pass);
    }
    const auto decide = [&](unsigned p, int pass) { return table[static_cast<std::size_t>(pass)][p]; };
    for (auto _ : state) benchmark::DoNotOptimize(thinnedInFullPasses(img, decide).data);
}
BENCHMARK(thinningTable)->Name("thinning_full_passes_by_table/zhang_suen")->ORX_SIZES;

void fillHoles(benchmark::State& state) {
    const cv::Mat img = parts(state.range(0));
    cv::Mat filled;
    for (auto _ : state) orx::fillHoles(img, filled);
}
BENCHMARK(fillHoles)->Name("fill_holes")->ORX_SIZES;

void fillHolesByFlood(benchmark::State& state) {
    const cv::Mat img = parts(state.range(0));
    for (auto _ : state) {
        cv::Mat framed;
        cv::copyMakeBorder(img, framed, 1, 1, 1, 1, cv::BORDER_CONSTANT, 0);
        cv::floodFill(framed, {0, 0}, 128, nullptr, {}, {}, 4);
        const cv::Mat filled = framed(cv::Rect(1, 1, img.cols, img.rows)) != 128;
        benchmark::DoNotOptimize(filled.data);
    }
}
BENCHMARK(fillHolesByFlood)->Name("fill_holes_opencv_flood")->ORX_SIZES;

void fillHolesByContours(benchmark::State& state) {
    const cv::Mat img = parts(state.range(0));
    for (auto _ : state) {
        cv::Mat filled = img.clone();
        std::vector<std::vector<cv::Point>> contours;
        cv::findContours(filled, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
        cv::drawContours(filled, contours, -1, 255, cv::FILLED);
        benchmark::DoNotOptimize(filled.data);
    }
}
BENCHMARK(fillHolesByContours)->Name("fill_holes_opencv_contours")->ORX_SIZES;

void removeSmall(benchmark::State& state) {
    const cv::Mat img = parts(state.range(0));
    cv::Mat kept;
    for (auto _ : state) orx::removeSmallObjects(img, kept, 100);
}
BENCHMARK(removeSmall)->Name("remove_small_objects")->ORX_SIZES;

void labelsAlone(benchmark::State& state) {
    const cv::Mat img = parts(state.range(0));
    cv::Mat labels;
    for (auto _ : state) cv::connectedComponents(img, labels, 8, CV_32S);
}
BENCHMARK(labelsAlone)->Name("opencv_connected_components")->ORX_SIZES;

void autoCanny(benchmark::State& state, orx::TCannyMethod method) {
    const cv::Mat img = scene(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(orx::autoCanny(img, {method}).data);
}
BENCHMARK_CAPTURE(autoCanny, median, orx::cmMedian)->ORX_SIZES;
BENCHMARK_CAPTURE(autoCanny, otsu, orx::cmOtsu)->ORX_SIZES;

void canny(benchmark::State& state) {
    const cv::Mat img = scene(state.range(0));
    const orx::TCannyThresholds thresholds = orx::getCannyThresholds(img);
    cv::Mat edges;
    for (auto _ : state) cv::Canny(img, edges, thresholds.low, thresholds.high, 3, true);
}
BENCHMARK(canny)->Name("opencv_canny_median")->ORX_SIZES;

}  // namespace
