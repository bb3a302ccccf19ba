// The code of docs/cameras.md, and the numbers in it.
//
//   TQVISION_CONFIG=docs/tools/cameras_guide.ini cameras_guide [SECONDS]
//
// Grabs from two synthetic cameras that send twice what its workers take, and prints what became of the
// frames. Ends with 1 when they do not add up.
//
// What the page shows stands here to the letter; a test compares.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <opencv2/core.hpp>
#include <thread>

#include "orxFunctions/orxfunctions.h"

namespace {

constexpr int kCameras = 2;

std::atomic<bool> isOver{false};

// Slower than the cameras, as a worker that measures may be.
void measure(const cv::Mat& picture) {
    std::this_thread::sleep_for(std::chrono::milliseconds(picture.empty() ? 0 : 20));
}

void work(int camera) {
    orx::TFrame frame;
    while (!isOver) {
        if (!orx::takeFrame(camera, frame, 100)) continue;  // none came within 100 ms
        if (frame.lostBefore + frame.droppedBefore > 0) {
            // The parts in these pictures were not looked at: frame.number says which.
        }
        measure(frame.image);
    }
}

void tell(const orx::TCameraStatus& status, void* /*user*/) {
    std::printf("camera %d %s: %s, %s\n", status.camera + 1, status.name.c_str(),
                orx::cameraStateText(status.state), orx::cameraReasonText(status.reason));
}

bool openCameras(orx::TMultiCamera& cameras, orx::TCameraConfig* configs) {
    if (!cameras.InitCamera(12, nullptr, false, false)) return false;
    cameras.setCameraNumber(kCameras);
    for (int i = 0; i < kCameras; ++i) {
        configs[i].name = i == 0 ? "left" : "right";
        orx::setReconnect(i, {orx::lpReconnect});
        orx::openFrames(i, {orx::fpEveryOne, 8});
        if (!cameras.open(i, 12)) return false;
        orx::imgThreadManager.startThread(&cameras, &configs[i], i);
    }
    orx::APPaddOrSetParamBool(orx::kCameraReady, true);  // now the grab threads fetch
    return true;
}

// Whether each frame is accounted for.
bool closeCameras(orx::TMultiCamera& cameras) {
    orx::imgThreadManager.closeAllThread();  // no fetch and no callback runs after this
    bool addUp = true;
    for (int i = 0; i < kCameras; ++i) {
        const orx::TFrameCounts counts = orx::frameCounts(i);
        std::printf(
            "camera %d: %llu delivered = %llu taken + %llu waiting + %llu dropped + %llu lost\n", i + 1,
            static_cast<unsigned long long>(counts.delivered), static_cast<unsigned long long>(counts.taken),
            static_cast<unsigned long long>(counts.waiting), static_cast<unsigned long long>(counts.dropped),
            static_cast<unsigned long long>(counts.lost));
        addUp = addUp && counts.taken > 0 &&
                counts.delivered == counts.taken + counts.waiting + counts.dropped + counts.lost;
        orx::closeFrames(i);
    }
    cameras.DestoryCamera();
    cameras.freeDll();
    return addUp;
}

}  // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 3;
    orx::setCameraStateCallback(tell, nullptr);
    orx::TMultiCamera cameras;
    orx::TCameraConfig configs[kCameras];
    if (!openCameras(cameras, configs)) return 1;
    std::thread workers[kCameras];
    for (int i = 0; i < kCameras; ++i) workers[i] = std::thread(work, i);
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    isOver = true;
    for (std::thread& worker : workers) worker.join();
    const bool addUp = closeCameras(cameras);
    orx::setCameraStateCallback(nullptr, nullptr);
    return addUp ? 0 : 1;
}
