// A recipe on pictures of a plate (four holes, a slot, four edges; found by its model, on a calibrated plane)
// beside reading the files by OpenCV and thresholding them. Each pass is over a few pictures, on one thread.
#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>

#include "bench/recipe_scene.h"
#include "inspection/run/image_source.h"

namespace {

using recipe_scene::Plates;

// As orx_inspection does.
cv::Mat readGrey(const Plates& plates, std::size_t i) {
    std::string problem;
    cv::Mat grey = inspection::readDeepGrey(std::filesystem::u8path(plates.fileOf(i)), problem);
    if (grey.empty()) throw std::runtime_error(problem);
    return grey;
}

void readThreshold(benchmark::State& state, const Plates& (*platesOf)()) {
    const Plates& plates = platesOf();
    cv::Mat binary;
    for (auto _ : state) {
        for (std::size_t i = 0; i < plates.pictures().size(); ++i) {
            cv::threshold(cv::imread(plates.fileOf(i), cv::IMREAD_GRAYSCALE), binary, 0, 255,
                          cv::THRESH_BINARY | cv::THRESH_OTSU);
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

void readOurs(benchmark::State& state, const Plates& (*platesOf)()) {
    const Plates& plates = platesOf();
    for (auto _ : state) {
        for (std::size_t i = 0; i < plates.pictures().size(); ++i)
            benchmark::DoNotOptimize(readGrey(plates, i).data);
    }
}

void readOpenCv(benchmark::State& state, const Plates& (*platesOf)()) {
    const Plates& plates = platesOf();
    for (auto _ : state) {
        for (std::size_t i = 0; i < plates.pictures().size(); ++i)
            benchmark::DoNotOptimize(cv::imread(plates.fileOf(i), cv::IMREAD_GRAYSCALE).data);
    }
}

// The sheets of the plates as PNG files in memory: by the library and by OpenCV, as both make them unasked.
void writeSheet(benchmark::State& state, const Plates& (*platesOf)(), bool ours) {
    const Plates& plates = platesOf();
    const orx::TRecipe recipe = plates.recipe("calipers", false);
    const cv::Mat& picture = plates.pictures().front();
    const cv::Mat sheet = orx::drawRecipeSheet(picture, recipe, recipe.run(picture));
    std::vector<unsigned char> bytes;
    for (auto _ : state) {
        if (!(ours ? orx::encodePicture(".png", sheet, bytes) : cv::imencode(".png", sheet, bytes)))
            state.SkipWithError("the sheet can't be encoded");
    }
    state.counters["bytes"] = static_cast<double>(bytes.size());
}

// The same as the batch draws and writes them.
void drawSheet(benchmark::State& state, const Plates& (*platesOf)()) {
    const Plates& plates = platesOf();
    const orx::TRecipe recipe = plates.recipe("calipers", false);
    const cv::Mat& picture = plates.pictures().front();
    const orx::TRecipeResult result = recipe.run(picture);
    std::vector<cv::Vec3b> palette;
    for (auto _ : state)
        benchmark::DoNotOptimize(orx::drawIndexedRecipeSheet(picture, recipe, result, palette).data);
}

void writeIndexedSheet(benchmark::State& state, const Plates& (*platesOf)()) {
    const Plates& plates = platesOf();
    const orx::TRecipe recipe = plates.recipe("calipers", false);
    const cv::Mat& picture = plates.pictures().front();
    std::vector<cv::Vec3b> palette;
    const cv::Mat sheet = orx::drawIndexedRecipeSheet(picture, recipe, recipe.run(picture), palette);
    std::vector<unsigned char> bytes;
    for (auto _ : state) {
        if (!orx::encodeIndexedPng(sheet, palette, bytes)) state.SkipWithError("the sheet can't be encoded");
    }
    state.counters["bytes"] = static_cast<double>(bytes.size());
}

void recipeInMemory(benchmark::State& state, const Plates& (*platesOf)(), const char* by, bool form) {
    const Plates& plates = platesOf();
    const orx::TRecipe recipe = plates.recipe(by, form);
    for (auto _ : state) {
        for (const cv::Mat& picture : plates.pictures()) benchmark::DoNotOptimize(recipe.run(picture));
    }
}

#define ORX_RECIPE_BENCHMARKS(size, plates)                                                             \
    BENCHMARK_CAPTURE(readThreshold, size, plates)->Unit(benchmark::kMillisecond);                      \
    BENCHMARK_CAPTURE(readOurs, size, plates)->Unit(benchmark::kMillisecond);                           \
    BENCHMARK_CAPTURE(readOpenCv, size, plates)->Unit(benchmark::kMillisecond);                         \
    BENCHMARK_CAPTURE(writeSheet, size, plates, true)->Unit(benchmark::kMillisecond);                   \
    BENCHMARK_CAPTURE(writeSheet, size##_opencv, plates, false)->Unit(benchmark::kMillisecond);         \
    BENCHMARK_CAPTURE(drawSheet, size, plates)->Unit(benchmark::kMillisecond);                          \
    BENCHMARK_CAPTURE(writeIndexedSheet, size, plates)->Unit(benchmark::kMillisecond);                  \
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
