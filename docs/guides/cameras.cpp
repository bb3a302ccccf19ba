// The program of docs/guides/cameras.md: two synthetic cameras, a worker each, every frame accounted for.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <opencv2/imgproc.hpp>
#include <string>
#include <thread>
#include <vector>

#include "guide.h"
#include "orxFunctions/orxfunctions.h"
#include "tests/support/environment.h"
#include "tests/support/loaded_module.h"

namespace {

constexpr int kCameras = 2;

std::atomic<bool> isOver{false};
std::atomic<int> states{0};

// What a worker alone has.
struct Work {
    std::thread thread;
    std::vector<std::uint64_t> numbers;  // of the frames taken
    std::uint64_t missed = 0;
    cv::Mat last;
    bool inOrder = true;
};

// [worker]
void work(int camera, Work& own) {
    orx::TFrame frame;
    while (!isOver) {
        if (!orx::takeFrame(camera, frame, 100)) continue;  // none came within 100 ms
        const std::uint64_t before = own.numbers.empty() ? 0 : own.numbers.back();
        own.inOrder = own.inOrder && frame.number == before + 1 + frame.lostBefore + frame.droppedBefore;
        own.numbers.push_back(frame.number);
        own.missed += frame.lostBefore + frame.droppedBefore;
        own.last = frame.image;                                      // the worker's alone, to keep
        std::this_thread::sleep_for(std::chrono::milliseconds(25));  // a measurement that takes too long
    }
}
// [worker end]

// [states]
void tell(const orx::TCameraStatus& status, void* /*user*/) {  // on the thread that brought it about
    std::printf("camera %d is %s: %s\n", status.camera + 1, orx::cameraStateText(status.state),
                orx::cameraReasonText(status.reason));
    ++states;
}
// [states end]

bool open(orx::TMultiCamera& cameras, orx::TCameraConfig (&configs)[kCameras]) {
    // [open]
    if (!cameras.InitCamera(12, nullptr, false, false)) return false;  // 12: any brand
    cameras.setCameraNumber(kCameras);
    for (int i = 0; i < kCameras; ++i) {
        orx::setReconnect(i, {orx::lpReconnect});  // the grab thread brings it back
        orx::openFrames(i, i == 0 ? orx::TFrameOptions{orx::fpEveryOne, 8} : orx::TFrameOptions{});
        if (!cameras.open(i, 12)) return false;
        orx::imgThreadManager.startThread(&cameras, &configs[i], i);  // borrows both
    }
    orx::APPaddOrSetParamBool(orx::kCameraReady, true);  // now the grab threads fetch
    // [open end]
    return true;
}

// One row a frame number: green where the worker took it, orange where it never saw it.
void drawFrames(const Work (&works)[kCameras]) {
    constexpr int kShown = 60;
    constexpr int kStep = 12;
    cv::Mat canvas(150, 190 + kShown * kStep, CV_8UC3, cv::Scalar::all(255));
    const auto write = [&](const std::string& text, cv::Point at) {
        cv::putText(canvas, text, at, cv::FONT_HERSHEY_SIMPLEX, 0.45, {50, 40, 30}, 1, cv::LINE_AA);
    };
    const char* const names[] = {"every one, queue of 8", "newest"};
    for (int i = 0; i < kCameras; ++i) {
        const std::vector<std::uint64_t>& taken = works[i].numbers;
        write(names[i], {10, 48 + 50 * i});
        for (int n = 1; n <= kShown; ++n) {
            const bool has = std::find(taken.begin(), taken.end(), n) != taken.end();
            const cv::Rect box(180 + (n - 1) * kStep, 30 + 50 * i, kStep - 3, 28);
            cv::rectangle(canvas, box, has ? cv::Scalar(90, 180, 70) : cv::Scalar(60, 140, 240), cv::FILLED);
        }
    }
    for (int n = 10; n <= kShown; n += 10) write(std::to_string(n), {180 + (n - 1) * kStep - 4, 130});
    write("frame number", {10, 130});
    guide::save("cameras-frames", canvas);
}

void grab() {
    orx::setCameraStateCallback(tell, nullptr);
    orx::TMultiCamera cameras;
    orx::TCameraConfig configs[kCameras];
    for (orx::TCameraConfig& config : configs) config.frameRate = 100;
    if (!open(cameras, configs)) return guide::expect(false, "the synthetic cameras are there");
    Work works[kCameras];
    for (int i = 0; i < kCameras; ++i) works[i].thread = std::thread(work, i, std::ref(works[i]));
    std::this_thread::sleep_for(std::chrono::milliseconds(1000));

    // [close]
    isOver = true;
    for (Work& own : works) own.thread.join();  // who takes frames
    orx::imgThreadManager.closeAllThread();     // who fetches them
    for (int i = 0; i < kCameras; ++i) {
        const orx::TFrameCounts counts = orx::frameCounts(i);
        std::printf("camera %d: %d delivered = %d taken + %d waiting + %d dropped + %d lost\n", i + 1,
                    static_cast<int>(counts.delivered), static_cast<int>(counts.taken),
                    static_cast<int>(counts.waiting), static_cast<int>(counts.dropped),
                    static_cast<int>(counts.lost));
        // [close end]
        guide::expect(counts.delivered == counts.taken + counts.waiting + counts.dropped + counts.lost,
                      "every frame is accounted for");
        guide::expect(counts.taken == works[i].numbers.size() && counts.taken > 0, "the workers took frames");
        guide::expect(works[i].inOrder, "numbers tell what is missing before each frame");
        guide::expect(works[i].last.size() == cv::Size(320, 240), "frames have the size of the camera");
        // [close on]
        orx::closeFrames(i);
    }
    cameras.DestoryCamera();
    cameras.freeDll();
    orx::setCameraStateCallback(nullptr, nullptr);
    // [close on end]
    guide::expect(states > 0, "each change of state is told");
    drawFrames(works);
}

void refuse() {
    // [refused]
    orx::TFrame frame;
    if (!orx::takeFrame(0, frame, 0)) std::printf("%s\n", orx::lastRefusal().text.c_str());
    // [refused end]
    guide::expect(orx::lastRefusal().code == orx::rcNotReady, "without a queue there is no frame");
}

}  // namespace

int main(int argc, char** argv) {
    return guide::run(argc, argv, [] {
        test::setVariable("TQVISION_CONFIG", GUIDE_CAMERAS);
        const test::LoadedModule module(GUIDE_DRIVER);  // which does not lie beside this program on Windows
        grab();
        refuse();
    });
}
