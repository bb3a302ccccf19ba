// The loop that the display benchmarks share.
#ifndef BENCH_PICTURE_SHOW_H
#define BENCH_PICTURE_SHOW_H

#include <benchmark/benchmark.h>

#include "orxFunctions/orxfunctions.h"

namespace bench {

inline const cv::Size kWindow(800, 600);

// Of that width, and three quarters as high.
inline cv::Mat noiseImage(std::int64_t width, int type) {
    cv::Mat image(static_cast<int>(width * 3 / 4), static_cast<int>(width), type);
    cv::randu(image, 0, 255);
    return image;
}

inline void showAgain(benchmark::State& state, TPictureBox& box, cv::Mat image) {
    box.setWindowSize(kWindow.width, kWindow.height);
    for (auto _ : state) {
        box.setImage(image, false);
        box.showImage();
    }
    state.counters["pictures/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

}  // namespace bench

#endif
