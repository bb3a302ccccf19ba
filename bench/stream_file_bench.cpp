// Stream files, beside the same bytes through one call of the C runtime.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

constexpr int kRows = 1000;

std::string benchFile() { return (std::filesystem::temp_directory_path() / "orx-stream-bench.bin").string(); }

cv::Mat matrixOf(benchmark::State& state) {
    return cv::Mat(kRows, static_cast<int>(state.range(0)) / kRows, CV_64F, cv::Scalar(1.5));
}

void finish(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * state.range(0) * 8);
    std::filesystem::remove(benchFile());
}

void writeStream(benchmark::State& state) {
    const cv::Mat matrix = matrixOf(state);
    for (auto _ : state) benchmark::DoNotOptimize(orx::image2StreamFile(matrix, {1, 1}, benchFile(), "text"));
    finish(state);
}
BENCHMARK(writeStream)->Name("stream_write")->Arg(300000)->Arg(5000000)->Unit(benchmark::kMillisecond);

void writePlain(benchmark::State& state) {
    const cv::Mat matrix = matrixOf(state);
    for (auto _ : state) {
        std::FILE* const file = std::fopen(benchFile().c_str(), "wb");
        benchmark::DoNotOptimize(std::fwrite(matrix.data, 8, matrix.total(), file));
        std::fclose(file);
    }
    finish(state);
}
BENCHMARK(writePlain)->Name("runtime/stream_write")->Arg(300000)->Arg(5000000)->Unit(benchmark::kMillisecond);

// The same bytes where a stream file has them: 8 further on, so that no page of the matrix is one of the
// file.
void writePlainAfterHeader(benchmark::State& state) {
    const cv::Mat matrix = matrixOf(state);
    const std::int32_t header[2] = {};
    for (auto _ : state) {
        std::FILE* const file = std::fopen(benchFile().c_str(), "wb");
        benchmark::DoNotOptimize(std::fwrite(header, sizeof header, 1, file));
        benchmark::DoNotOptimize(std::fwrite(matrix.data, 8, matrix.total(), file));
        std::fclose(file);
    }
    finish(state);
}
BENCHMARK(writePlainAfterHeader)
    ->Name("runtime/stream_write_after_header")
    ->Arg(300000)
    ->Arg(5000000)
    ->Unit(benchmark::kMillisecond);

void readStream(benchmark::State& state) {
    orx::image2StreamFile(matrixOf(state), {1, 1}, benchFile(), "text");
    cv::Mat image;
    cv::Size size;
    std::string text;
    for (auto _ : state) benchmark::DoNotOptimize(orx::streamFile2Image(benchFile(), image, size, text));
    finish(state);
}
BENCHMARK(readStream)->Name("stream_read")->Arg(300000)->Arg(5000000)->Unit(benchmark::kMillisecond);

void readPlain(benchmark::State& state) {
    orx::image2StreamFile(matrixOf(state), {1, 1}, benchFile(), "text");
    for (auto _ : state) {
        cv::Mat image = cv::Mat::zeros(kRows, static_cast<int>(state.range(0)) / kRows, CV_64F);
        std::FILE* const file = std::fopen(benchFile().c_str(), "rb");
        benchmark::DoNotOptimize(std::fread(image.data, 8, image.total(), file));
        std::fclose(file);
    }
    finish(state);
}
BENCHMARK(readPlain)->Name("runtime/stream_read")->Arg(300000)->Arg(5000000)->Unit(benchmark::kMillisecond);

}  // namespace
