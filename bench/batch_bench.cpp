// orx_inspection's batch on files of a plate (recipe_scene.h), with and without pictures written, beside
// reading the same files by OpenCV and thresholding them. Processor time is that of all threads; the real
// time of two jobs and of a start means something on an idle machine alone.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <opencv2/imgproc.hpp>
#include <sstream>
#include <system_error>
#include <thread>
#include <vector>

#include "bench/recipe_scene.h"
#include "inspection/batch/batch_run.h"

namespace {

namespace fs = std::filesystem;
using recipe_scene::Plates;

constexpr int kCopies = 16;  // of each picture

constexpr int kLot = 20;  // pictures of a lot of which one fails

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

// The same, with every twentieth replaced by one that fails: what scripts/demo has.
std::string lotOf(const Plates& plates) {
    const fs::path folder = fs::u8path(plates.path("lot"));
    if (fs::exists(folder)) return folder.u8string();
    fs::copy(fs::u8path(copiesOf(plates)), folder);
    std::vector<fs::path> files;
    for (const fs::directory_entry& file : fs::directory_iterator(folder)) files.push_back(file.path());
    std::sort(files.begin(), files.end());
    for (std::size_t i = 0; i < files.size(); i += kLot)
        fs::copy_file(plates.badFile(), files[i], fs::copy_options::overwrite_existing);
    return folder.u8string();
}

std::size_t sheetsIn(const std::string& output) {
    std::error_code none;
    const fs::directory_iterator sheets(fs::u8path(output) / "pictures", none);
    return static_cast<std::size_t>(std::distance(begin(sheets), end(sheets)));
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

void batch(benchmark::State& state, const Plates& (*platesOf)(), int jobs,
           inspection::Annotate annotate = inspection::Annotate::kNone, bool jpeg = false) {
    const Plates& plates = platesOf();
    inspection::Options options;
    const bool isLot = annotate == inspection::Annotate::kFailed;
    options.inputs = {isLot ? lotOf(plates) : copiesOf(plates)};
    options.output = plates.path("out");
    options.batch.recipe = plates.writeRecipe("calipers");
    options.batch.annotate = annotate;
    options.batch.jpeg = jpeg;
    options.batch.jobs = jobs;
    options.batch.again = true;
    options.batch.quiet = true;
    for (auto _ : state) {
        std::ostringstream out;
        std::ostringstream log;
        if (inspection::runBatch(options, out, log) != 0) state.SkipWithError(log.str().c_str());
    }
    const std::size_t pictures = kCopies * plates.pictures().size();
    if (isLot && sheetsIn(options.output) != (pictures + kLot - 1) / kLot)
        state.SkipWithError("not every bad part, or a good one, has a sheet");
    state.counters["pictures"] = static_cast<double>(kCopies) * static_cast<double>(plates.pictures().size());
}

// A process of its own that measures one picture, files in the system's cache.
void coldStart(benchmark::State& state, const Plates& (*platesOf)()) {
    const Plates& plates = platesOf();
    const std::string command = std::string("\"") + ORX_INSPECTION_PROGRAM + "\" --recipe \"" +
                                plates.writeRecipe("calipers") + "\" \"" + plates.fileOf(0) +
                                "\" --again --quiet --annotate none --output \"" + plates.path("cold") + "\"";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) state.SkipWithError("orx_inspection failed");
    }
}

void sixtyMilliseconds(benchmark::State& state) {
    for (auto _ : state) std::this_thread::sleep_for(std::chrono::milliseconds(60));
}

#define ORX_BATCH_BENCHMARKS(size, plates)            \
    BENCHMARK_CAPTURE(readThresholdAll, size, plates) \
        ->Unit(benchmark::kMillisecond)               \
        ->MeasureProcessCPUTime();                    \
    BENCHMARK_CAPTURE(batch, size##_1_job, plates, 1) \
        ->Unit(benchmark::kMillisecond)               \
        ->MeasureProcessCPUTime();                    \
    BENCHMARK_CAPTURE(batch, size##_2_jobs, plates, 2)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()

#define ORX_SHEET_BENCHMARKS(size, plates)                                                       \
    BENCHMARK_CAPTURE(batch, size##_failed, plates, 1, inspection::Annotate::kFailed)            \
        ->Unit(benchmark::kMillisecond)                                                          \
        ->MeasureProcessCPUTime();                                                               \
    BENCHMARK_CAPTURE(batch, size##_annotated, plates, 1, inspection::Annotate::kAll)            \
        ->Unit(benchmark::kMillisecond)                                                          \
        ->MeasureProcessCPUTime();                                                               \
    BENCHMARK_CAPTURE(batch, size##_annotated_jpeg, plates, 1, inspection::Annotate::kAll, true) \
        ->Unit(benchmark::kMillisecond)                                                          \
        ->MeasureProcessCPUTime()

ORX_BATCH_BENCHMARKS(VGA, recipe_scene::vgaPlates);
ORX_SHEET_BENCHMARKS(VGA, recipe_scene::vgaPlates);
BENCHMARK_CAPTURE(coldStart, VGA, recipe_scene::vgaPlates)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(sixtyMilliseconds)->Unit(benchmark::kMillisecond)->UseRealTime();
ORX_BATCH_BENCHMARKS(5MP, recipe_scene::largePlates);
ORX_SHEET_BENCHMARKS(5MP, recipe_scene::largePlates);

}  // namespace
