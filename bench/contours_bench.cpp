// Outlines of a picture of parts, beside OpenCV's border following, with the same choice among its contours.
// The argument is the height of the picture, 4 : 3.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "bench/parts_picture.h"
#include "bench/steady.h"
#include "orxFunctions/orxfunctions.h"

namespace {

using Contours = std::vector<std::vector<cv::Point>>;

#define ORX_SIZES Arg(480)->Arg(2000)->Unit(benchmark::kMillisecond)

template <class Find>
void outlines(benchmark::State& state, Find find) {
    const cv::Mat img = bench::binaryParts(bench::sizeOfHeight(state.range(0)));
    std::size_t found = 0;
    bench::steady(state, [&] { benchmark::DoNotOptimize(found = find(img).size()); });
    state.counters["contours"] = static_cast<double>(found);
}

void ours(benchmark::State& state, orx::TContourType type) {
    outlines(state, [=](const cv::Mat& img) { return orx::getContours(img, type); });
}
BENCHMARK_CAPTURE(ours, external, orx::ctExternal)->Name("contours/external")->ORX_SIZES;
BENCHMARK_CAPTURE(ours, all, orx::ctAll)->Name("contours/all")->ORX_SIZES;
BENCHMARK_CAPTURE(ours, holes, orx::ctHoles)->Name("contours/holes")->ORX_SIZES;
BENCHMARK_CAPTURE(ours, largest, orx::ctLargest)->Name("contours/largest")->ORX_SIZES;
BENCHMARK_CAPTURE(ours, hulls, orx::ctConvexHull)->Name("contours/hulls")->ORX_SIZES;

Contours found(const cv::Mat& img, int mode, int points = cv::CHAIN_APPROX_NONE) {
    Contours contours;
    cv::findContours(img, contours, mode, points);
    return contours;
}

Contours external(const cv::Mat& img) { return found(img, cv::RETR_EXTERNAL); }

Contours all(const cv::Mat& img) { return found(img, cv::RETR_CCOMP); }

Contours holes(const cv::Mat& img) {
    Contours contours;
    Contours kept;
    std::vector<cv::Vec4i> order;
    cv::findContours(img, contours, order, cv::RETR_CCOMP, cv::CHAIN_APPROX_NONE);
    for (std::size_t i = 0; i < contours.size(); ++i) {
        if (order[i][3] >= 0) kept.push_back(std::move(contours[i]));
    }
    return kept;
}

Contours largest(const cv::Mat& img) {
    Contours contours = external(img);
    const auto smaller = [](const auto& a, const auto& b) { return cv::contourArea(a) < cv::contourArea(b); };
    return {*std::max_element(contours.begin(), contours.end(), smaller)};
}

Contours hulls(const cv::Mat& img) {
    Contours contours = found(img, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    for (auto& contour : contours) {
        std::vector<cv::Point> hull;
        cv::convexHull(contour, hull);
        contour.swap(hull);
    }
    return contours;
}
BENCHMARK_CAPTURE(outlines, external, external)->Name("opencv_contours/external")->ORX_SIZES;
BENCHMARK_CAPTURE(outlines, all, all)->Name("opencv_contours/all")->ORX_SIZES;
BENCHMARK_CAPTURE(outlines, holes, holes)->Name("opencv_contours/holes")->ORX_SIZES;
BENCHMARK_CAPTURE(outlines, largest, largest)->Name("opencv_contours/largest")->ORX_SIZES;
BENCHMARK_CAPTURE(outlines, hulls, hulls)->Name("opencv_contours/hulls")->ORX_SIZES;

}  // namespace
