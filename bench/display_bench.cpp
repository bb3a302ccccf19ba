// A picture box's way from an image to the picture that is shown in 800 x 600, without a window system, and
// beside it what OpenCV takes to do no more than make the picture small. The argument is the image's width.
#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>

#include "bench/picture_show.h"

namespace {

#define ORX_WIDTHS Arg(640)->Arg(1280)->Arg(2592)->Arg(5184)->Unit(benchmark::kMillisecond)

void showImage(benchmark::State& state, int type) {
    TPictureBox box;
    bench::showAgain(state, box, bench::noiseImage(state.range(0), type));
}
BENCHMARK_CAPTURE(showImage, colour, CV_8UC3)->ORX_WIDTHS;
BENCHMARK_CAPTURE(showImage, grey, CV_8UC1)->ORX_WIDTHS;

void opencvResize(benchmark::State& state, int interpolation) {
    const cv::Mat image = bench::noiseImage(state.range(0), CV_8UC3);
    cv::Mat small;
    for (auto _ : state) cv::resize(image, small, bench::kWindow, 0, 0, interpolation);
}
BENCHMARK_CAPTURE(opencvResize, linear, cv::INTER_LINEAR)->ORX_WIDTHS;
BENCHMARK_CAPTURE(opencvResize, area, cv::INTER_AREA)->ORX_WIDTHS;

}  // namespace
