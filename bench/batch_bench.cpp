// orx_inspection's batch on files of a plate (recipe_scene.h), no pictures written, beside reading the same
// files and thresholding them. Processor time is that of all threads; the real time of two jobs means
// something on an idle machine alone.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "bench/recipe_scene.h"
#include "inspection/batch/batch_run.h"

namespace {

namespace fs = std::filesystem;
using recipe_scene::Plates;

constexpr int kCopies = 16;  // of each picture

// The folder with the copies.
std::string copiesOf(const Plates& plates) {
    const fs::path folder = fs::u8path(plates.path("many"));
    if (fs::exists(folder)) return folder.u8string();
    fs::create_directories(folder);
    for (std::size_t i = 0; i < plates.pictures().size(); ++i) {
        for (int copy = 0; copy < kCopies; ++copy)
            fs::copy_file(plates.fileOf(i),
                          folder / (std::to_string(i) + "-" + std::to_string(copy) + ".png"));
    }
    return folder.u8string();
}

void readThresholdAll(benchmark::State& state, const Plates& (*platesOf)()) {
    const std::string folder = copiesOf(platesOf());
    cv::Mat binary;
    for (auto _ : state) {
        for (const fs::directory_entry& file : fs::directory_iterator(folder)) {
            const cv::Mat grey = cv::imread(file.path().string(), cv::IMREAD_GRAYSCALE);
            cv::threshold(grey, binary, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
            benchmark::DoNotOptimize(binary.data);
        }
    }
}

void batch(benchmark::State& state, const Plates& (*platesOf)(), int jobs) {
    const Plates& plates = platesOf();
    inspection::Options options;
    options.inputs = {copiesOf(plates)};
    options.output = plates.path("out");
    options.batch.recipe = plates.writeRecipe("calipers");
    options.batch.annotate = inspection::Annotate::kNone;
    options.batch.jobs = jobs;
    options.batch.again = true;
    options.batch.quiet = true;
    for (auto _ : state) {
        std::ostringstream out;
        std::ostringstream log;
        if (inspection::runBatch(options, out, log) != 0) state.SkipWithError(log.str().c_str());
    }
    state.counters["pictures"] = static_cast<double>(kCopies) * static_cast<double>(plates.pictures().size());
}

#define ORX_BATCH_BENCHMARKS(size, plates)            \
    BENCHMARK_CAPTURE(readThresholdAll, size, plates) \
        ->Unit(benchmark::kMillisecond)               \
        ->MeasureProcessCPUTime();                    \
    BENCHMARK_CAPTURE(batch, size##_1_job, plates, 1) \
        ->Unit(benchmark::kMillisecond)               \
        ->MeasureProcessCPUTime();                    \
    BENCHMARK_CAPTURE(batch, size##_2_jobs, plates, 2)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()

ORX_BATCH_BENCHMARKS(VGA, recipe_scene::vgaPlates);
ORX_BATCH_BENCHMARKS(5MP, recipe_scene::largePlates);

}  // namespace
