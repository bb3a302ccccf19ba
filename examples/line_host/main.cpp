// orx_line_host: a host in some seventy lines. Two cameras; each has a worker that measures and saves
// what fails, and a picture box.
//
//   orx_line_host [FRAMES [FOLDER]]
//
// Ends after so many frames of each camera (0, as without it: never), with its window, or with Ctrl-C. The
// cameras are synthetic, unless TQVISION_CONFIG names settings of yours (drivers/README.md). Pictures of
// parts that fail go to FOLDER. docs/threads.md leads through the code.
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "support/camera_settings.h"
#include "support/command_line.h"
#include "support/host_window.h"

namespace {

constexpr const char* kTwoScenes =
    "[camera1]\nsource = scene\nwidth = 320\nheight = 240\n"
    "[camera2]\nsource = scene\nwidth = 320\nheight = 236\n";  // its part is too small
constexpr int kCameras = 2;
constexpr int kAnyBrand = 12;
constexpr unsigned long long kMostSaved = 50;    // pictures of a camera
const orx::TTolerance kDiameter = {86.2, 86.6};  // of the part, pixels

std::atomic<bool> isOver{false};
std::atomic<int> workers{kCameras};

struct Work {
    TPictureBox box{TPictureOf::kBox};
    std::thread thread;
    unsigned long long frames = 0, missed = 0, failed = 0, saved = 0;
};

orx::TMeasuredCircle findPart(const cv::Mat& picture) {  // the largest circle
    ORXEdge::TMetricOptions finder;
    finder.automaticThresholds = true;
    std::vector<ORXEdge::TMetricContour> edges;
    ORXEdge::edgesSubPixMetric(picture, edges, finder);
    orx::TMeasuredCircle part;
    for (const ORXEdge::TMetricContour& edge : edges) {
        const orx::TMeasuredCircle circle = orx::fitCircleGeometric(edge, finder.sigma);
        if (circle.valid() && circle.sweep > 300 && circle.radius > part.radius) part = circle;
    }
    return part;
}

void work(int camera, unsigned long long frames, const std::string& folder, Work& own) {
    orx::TFrame frame;
    while (!isOver && (frames == 0 || own.frames < frames)) {
        if (!orx::takeFrame(camera, frame, 100)) continue;  // none came within 100 ms
        ++own.frames;
        own.missed += frame.lostBefore + frame.droppedBefore;
        const orx::TMeasuredCircle part = findPart(frame.image);
        const orx::TJudgement judgement =
            orx::judge(2 * part.radius, 2 * part.radiusDeviation, part.degreesOfFreedom, kDiameter);
        TOverlay marks;
        marks.circle(part.center, part.radius).text({8, 20}, orx::verdictText(judgement.verdict));
        own.box.setPicture(frame.image, marks);
        if (judgement.verdict == orx::vdPass || ++own.failed > kMostSaved) continue;
        if (FileOperator::saveImage(frame.image, folder)) ++own.saved;
    }
    --workers;
}

void tell(const orx::TCameraStatus& status, void* /*user*/) {
    std::printf("camera %d is %s: %s\n", status.camera + 1, orx::cameraStateText(status.state),
                orx::cameraReasonText(status.reason));
}

bool account(int camera, Work& own) {
    unsigned long long left = 0;
    for (orx::TFrame frame; orx::takeFrame(camera, frame, 0); ++left)
        own.missed += frame.lostBefore + frame.droppedBefore;
    const unsigned long long delivered = orx::frameCounts(camera).delivered;
    std::printf("camera %d: %llu frames = %llu measured + %llu missed + %llu left; %llu failed, %llu saved\n",
                camera + 1, delivered, own.frames, own.missed, left, own.failed, own.saved);
    return delivered == own.frames + own.missed + left;
}

}  // namespace

int main(int argc, char** argv) {
    const host::CommandLine arguments(argc, argv);
    const auto frames = argc > 1 ? std::strtoull(arguments.texts()[1], nullptr, 10) : 0;
    const std::string folder = argc > 2 ? arguments.texts()[2] : "failed";
    const host::CameraSettings settings(kTwoScenes);
    std::signal(SIGINT, [](int) { isOver = true; });
    const auto window = host::openHostWindow("line host", kCameras, {320, 240});
    if (!window) return 1;

    orx::TCameraConfig configs[kCameras];
    Work works[kCameras];
    orx::setCameraStateCallback(tell, nullptr);
    orx::TMultiCamera cameras;
    if (!cameras.InitCamera(kAnyBrand, nullptr, false, false)) return 1;
    cameras.setCameraNumber(kCameras);
    for (int i = 0; i < kCameras; ++i) {
        works[i].box.setHandle(window->pane(i), window->paneSize().width, window->paneSize().height);
        works[i].box.start();
        orx::setReconnect(i, {orx::lpReconnect});
        orx::openFrames(i, {orx::fpEveryOne, 16});
        cameras.open(i, kAnyBrand);
        orx::imgThreadManager.startThread(&cameras, &configs[i], i);
        works[i].thread = std::thread([&, i] { work(i, frames, folder, works[i]); });
    }
    orx::APPaddOrSetParamBool(orx::kCameraReady, true);
    while (!isOver && workers > 0 && window->handleEvents(20)) {
    }

    isOver = true;
    for (Work& own : works) own.thread.join();
    orx::imgThreadManager.closeAllThread();
    bool addsUp = true;
    for (int i = 0; i < kCameras; ++i) addsUp = account(i, works[i]) && addsUp;
    cameras.DestoryCamera();
    cameras.freeDll();
    orx::setCameraStateCallback(nullptr, nullptr);
    return FileOperator::flush() && addsUp ? 0 : 1;
}
