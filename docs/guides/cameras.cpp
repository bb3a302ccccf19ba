// The program of docs/guides/cameras.md: two synthetic cameras, a worker each, every frame accounted for.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <opencv2/imgproc.hpp>
#include <string>
#include <thread>
#include <vector>

#include "canvas.h"
#include "drivers/vision_driver.h"
#include "orxFunctions/orxfunctions.h"
#include "tests/support/environment.h"
#include "tests/support/loaded_module.h"

namespace {

constexpr int kCameras = 2;
constexpr int kEnough = 35;  // frames for each worker, to show how the numbers run

std::atomic<bool> isOver{false};
std::atomic<int> states{0};

// What a worker alone has; `taken` is read by others, too.
struct Work {
    std::thread thread;
    std::atomic<int> taken{0};
    std::uint64_t start = 0;             // that the last frame comes from
    std::vector<std::uint64_t> numbers;  // of the frames taken
    cv::Mat last;
    bool inOrder = true;
};

// [worker]
void work(int camera, Work& own) {
    orx::TFrame frame;
    while (!isOver) {
        if (!orx::takeFrame(camera, frame, 100)) continue;  // none came within 100 ms
        if (own.taken > 0 && frame.start == own.start) {    // a start anew counts from 1
            const std::uint64_t next = own.numbers.back() + 1 + frame.lostBefore + frame.droppedBefore;
            own.inOrder = own.inOrder && frame.number == next;
        }
        own.start = frame.start;
        own.numbers.push_back(frame.number);
        own.last = frame.image;  // the worker's alone, to keep
        ++own.taken;
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
    bool opened = cameras.InitCamera(VD_TYPE_ANY, nullptr, false, false);
    cameras.setCameraNumber(kCameras);
    for (int i = 0; opened && i < kCameras; ++i) {
        const orx::TFrameOptions queue =
            i == 0 ? orx::TFrameOptions{orx::fpEveryOne, 8} : orx::TFrameOptions{};
        opened = orx::setReconnect(i, {orx::lpReconnect})  // the grab thread brings it back
                 && orx::openFrames(i, queue) && cameras.open(i, VD_TYPE_ANY);
    }
    if (!opened) {  // no grab thread runs yet: nobody borrows what goes now
        std::fprintf(stderr, "%s\n", orx::lastRefusal().text.c_str());
        for (int i = 0; i < kCameras; ++i) orx::closeFrames(i);
        cameras.DestoryCamera();
        cameras.freeDll();
        return false;
    }
    for (int i = 0; i < kCameras; ++i)
        orx::imgThreadManager.startThread(&cameras, &configs[i], i);  // borrows both
    orx::APPaddOrSetParamBool(orx::kCameraReady, true);               // now the grab threads fetch
    // [open end]
    return true;
}

// One row a frame number: green where the worker took it, orange where it never saw it.
void drawFrames(const Work (&works)[kCameras]) {
    constexpr int kShown = 60;
    constexpr int kStep = 12;
    cv::Mat canvas(150, 190 + kShown * kStep, CV_8UC3, cv::Scalar::all(255));
    const char* const names[] = {"every one, queue of 8", "newest"};
    for (int i = 0; i < kCameras; ++i) {
        const std::vector<std::uint64_t>& taken = works[i].numbers;
        guide::write(canvas, names[i], {10, 48 + 50 * i});
        for (int n = 1; n <= kShown; ++n) {
            const bool has = std::find(taken.begin(), taken.end(), n) != taken.end();
            const cv::Rect box(180 + (n - 1) * kStep, 30 + 50 * i, kStep - 3, 28);
            cv::rectangle(canvas, box, has ? cv::Scalar(90, 180, 70) : cv::Scalar(60, 140, 240), cv::FILLED);
        }
    }
    for (int n = 10; n <= kShown; n += 10)
        guide::write(canvas, std::to_string(n), {180 + (n - 1) * kStep - 4, 130});
    guide::write(canvas, "frame number", {10, 130});
    guide::save("cameras-frames", canvas);
}

// Until each worker has taken enough, however slow this machine is.
void waitForFrames(const Work (&works)[kCameras]) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    for (const Work& own : works) {
        while (own.taken < kEnough && std::chrono::steady_clock::now() < limit)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

void grab() {
    orx::setCameraStateCallback(tell, nullptr);
    orx::TMultiCamera cameras;
    orx::TCameraConfig configs[kCameras];
    for (orx::TCameraConfig& config : configs) config.frameRate = 100;
    if (!open(cameras, configs)) return guide::expect(false, "the synthetic cameras are there");
    Work works[kCameras];
    for (int i = 0; i < kCameras; ++i) works[i].thread = std::thread(work, i, std::ref(works[i]));
    waitForFrames(works);

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
        guide::expect(counts.taken == works[i].numbers.size() && counts.taken >= kEnough,
                      "the workers took frames");
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
    orx::TFrame frame;
    guide::expect(!orx::takeFrame(0, frame, 0) && orx::lastRefusal().code == orx::rcNotReady,
                  "without a queue there is no frame");
    guide::expect(orx::lastRefusal().text == "takeFrame: camera 0 has no queue; openFrames begins one",
                  "and the refusal says so");
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
