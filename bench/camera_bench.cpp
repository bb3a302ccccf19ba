// From the driver's VDGetImage to the host's callback: frames per second with 1 to 9 fake cameras of 5
// megapixels, beside the deep copies of the same pictures that can't be avoided, and what paused threads
// cost.
#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <ctime>
#include <opencv2/core.hpp>
#include <thread>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/fake_driver/fake_driver.h"
#include "tests/fake_driver/fake_module.h"
#include "tests/support/loaded_module.h"

namespace {

constexpr int kWidth = 2448;
constexpr int kHeight = 2048;

std::atomic<int> callbacks{0};
void count(cv::Mat& image, int /*camera*/) {
    benchmark::DoNotOptimize(image.data);
    ++callbacks;
}

// The fake driver, its cameras open.
class Cameras {
  public:
    explicit Cameras(int number)
        : module_(test::fakeModule("complete", "TQVisionDriver")),
          driver_(reinterpret_cast<decltype(&fakeDriver)>(module_.function("fakeDriver"))()) {
        for (fake::Camera& camera : driver_->cameras) {
            camera.width = kWidth;
            camera.height = kHeight;
        }
        cams_.setCameraNumber(number);
        cv::Mat image;
        for (int i = 0; i < number; ++i) {
            cams_.open(i, 12);
            cams_.GetImage(image, i, false, 0);  // lets the fake driver draw its picture
        }
    }
    ~Cameras() {
        orx::imgThreadManager.closeAllThread();
        cams_.DestoryCamera();
        cams_.freeDll();
    }
    Cameras(const Cameras&) = delete;
    Cameras& operator=(const Cameras&) = delete;

    orx::TMultiCamera& cams() { return cams_; }

  private:
    test::LoadedModule module_;
    fake::Driver* driver_;
    orx::TMultiCamera cams_;
};

double processSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// One fetch through TMultiCamera into an image that is used again.
void fetch(benchmark::State& state) {
    Cameras cameras(1);
    cv::Mat image;
    for (auto _ : state) benchmark::DoNotOptimize(cameras.cams().GetImage(image, 0, false, 0));
    state.SetBytesProcessed(state.iterations() * kWidth * kHeight);
}
BENCHMARK(fetch)->Name("camera/fetch")->Unit(benchmark::kMicrosecond);

// The same while a copy of each image's header is kept, as a host does that hands it to another thread: the
// buffer can't be used again.
void fetchKept(benchmark::State& state) {
    Cameras cameras(1);
    cv::Mat image;
    cv::Mat kept;
    for (auto _ : state) {
        cameras.cams().GetImage(image, 0, false, 0);
        kept = image;
    }
    state.SetBytesProcessed(state.iterations() * kWidth * kHeight);
}
BENCHMARK(fetchKept)->Name("camera/fetch_kept")->Unit(benchmark::kMicrosecond);

void fetchTurned(benchmark::State& state) {
    Cameras cameras(1);
    cameras.cams().cameras[0]->rotationAngle = static_cast<int>(state.range(0));
    cv::Mat image;
    for (auto _ : state) benchmark::DoNotOptimize(cameras.cams().GetImage(image, 0, false, 0));
    state.SetBytesProcessed(state.iterations() * kWidth * kHeight);
}
BENCHMARK(fetchTurned)
    ->Name("camera/fetch_turned")
    ->Arg(90)
    ->Arg(180)
    ->Arg(270)
    ->Unit(benchmark::kMicrosecond);

// The deep copy that a fetch can't do without: the same bytes, into memory that has been touched.
void plainCopy(benchmark::State& state) {
    const std::vector<unsigned char> from(kWidth * kHeight, 7);
    std::vector<unsigned char> to(from.size());
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), from.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * kWidth * kHeight);
}
BENCHMARK(plainCopy)->Name("camera/memcpy")->Unit(benchmark::kMicrosecond);

// And the same by cv::Mat::clone, into new memory for each picture.
void clone(benchmark::State& state) {
    const cv::Mat from(kHeight, kWidth, CV_8U, cv::Scalar(7));
    for (auto _ : state) benchmark::DoNotOptimize(from.clone().data);
    state.SetBytesProcessed(state.iterations() * kWidth * kHeight);
}
BENCHMARK(clone)->Name("camera/clone")->Unit(benchmark::kMicrosecond);

// Grab threads at full speed for a second: pictures per second that reach the callbacks, and processor time
// for each picture in milliseconds.
void grab(benchmark::State& state) {
    const int number = static_cast<int>(state.range(0));
    Cameras cameras(number);
    std::array<orx::TCameraConfig, orx::MAXCameraNum> configs;
    orx::APPaddOrSetParamBool("cameraReady", true);
    for (int i = 0; i < number; ++i) {
        configs[static_cast<std::size_t>(i)].frameRate = 1000;
        orx::imgThreadManager.startThread(&cameras.cams(), &configs[static_cast<std::size_t>(i)], i);
        orx::imgThreadManager.setDrawImgCallbackFunc(true, count, i);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    for (auto _ : state) {
        const int before = callbacks;
        const double processorBefore = processSeconds();
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const int pictures = callbacks - before;
        state.counters["fps"] = pictures;
        state.counters["cpu_ms_per_frame"] = (processSeconds() - processorBefore) * 1000 / pictures;
    }
}
BENCHMARK(grab)
    ->Name("camera/grab")
    ->Arg(1)
    ->Arg(2)
    ->Arg(4)
    ->Arg(9)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

// Nine paused threads for a second: processor time as part of one processor.
void paused(benchmark::State& state) {
    Cameras cameras(orx::MAXCameraNum);
    orx::TCameraConfig config;
    orx::APPaddOrSetParamBool("cameraReady", false);
    for (int i = 0; i < orx::MAXCameraNum; ++i)
        orx::imgThreadManager.startThread(&cameras.cams(), &config, i);
    for (auto _ : state) {
        const double before = processSeconds();
        std::this_thread::sleep_for(std::chrono::seconds(1));
        state.counters["cpu_share"] = processSeconds() - before;
    }
}
BENCHMARK(paused)->Name("camera/paused")->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
