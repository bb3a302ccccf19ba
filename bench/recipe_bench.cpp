// A recipe on pictures of a plate (four holes, a slot, four edges; found by its model, on a calibrated plane)
// beside reading the files and thresholding them. Each pass is over a few pictures, on one thread.
#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>

#include "bench/recipe_scene.h"

namespace {

using recipe_scene::Plates;

cv::Mat readGrey(const Plates& plates, std::size_t i) {
    return cv::imread(plates.fileOf(i), cv::IMREAD_GRAYSCALE);
}

void readThreshold(benchmark::State& state, const Plates& (*platesOf)()) {
    const Plates& plates = platesOf();
    cv::Mat binary;
    for (auto _ : state) {
        for (std::size_t i = 0; i < plates.pictures().size(); ++i) {
            cv::threshold(readGrey(plates, i), binary, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
            benchmark::DoNotOptimize(binary.data);
        }
    }
}

void readRecipe(benchmark::State& state, const Plates& (*platesOf)(), const char* by, bool form) {
    const Plates& plates = platesOf();
    const orx::TRecipe recipe = plates.recipe(by, form);
    for (auto _ : state) {
        for (std::size_t i = 0; i < plates.pictures().size(); ++i)
            benchmark::DoNotOptimize(recipe.run(readGrey(plates, i)));
    }
}

void recipeInMemory(benchmark::State& state, const Plates& (*platesOf)(), const char* by, bool form) {
    const Plates& plates = platesOf();
    const orx::TRecipe recipe = plates.recipe(by, form);
    for (auto _ : state) {
        for (const cv::Mat& picture : plates.pictures()) benchmark::DoNotOptimize(recipe.run(picture));
    }
}

struct OneThread {
    OneThread() { cv::setNumThreads(1); }
};
const OneThread kOneThread;

#define ORX_RECIPE_BENCHMARKS(size, plates)                                                             \
    BENCHMARK_CAPTURE(readThreshold, size, plates)->Unit(benchmark::kMillisecond);                      \
    BENCHMARK_CAPTURE(readRecipe, size##_calipers, plates, "calipers", false)                           \
        ->Unit(benchmark::kMillisecond);                                                                \
    BENCHMARK_CAPTURE(readRecipe, size##_edges, plates, "edges", false)->Unit(benchmark::kMillisecond); \
    BENCHMARK_CAPTURE(readRecipe, size##_chain, plates, "chain", false)->Unit(benchmark::kMillisecond); \
    BENCHMARK_CAPTURE(recipeInMemory, size##_calipers, plates, "calipers", false)                       \
        ->Unit(benchmark::kMillisecond);                                                                \
    BENCHMARK_CAPTURE(recipeInMemory, size##_calipers_form, plates, "calipers", true)                   \
        ->Unit(benchmark::kMillisecond)

ORX_RECIPE_BENCHMARKS(VGA, recipe_scene::vgaPlates);
ORX_RECIPE_BENCHMARKS(5MP, recipe_scene::largePlates);

}  // namespace
