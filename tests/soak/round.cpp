#include "tests/soak/round.h"

#include "tests/support/environment.h"

#include <cstdio>
#include <filesystem>

namespace soak {
namespace {

constexpr int kAnyType = VD_TYPE_ANY;
constexpr int kTakeMs = 100;
constexpr std::uint64_t kSavedOf = 40;  // one frame of so many is saved
const cv::Size kPaneSize(300, 240);

// A camera that is disturbed all the time gives some frames in between.
constexpr std::chrono::seconds kLongestSilence{60};

// Three workers take half of what their cameras send; two of these have queues of one frame.
bool isSlow(int camera) { return camera % 3 == 1; }
constexpr std::chrono::milliseconds kSlowWork{100};
orx::TFrameOptions queueOf(int camera) {
    return camera % 6 == 1 ? orx::TFrameOptions{} : orx::TFrameOptions{orx::fpEveryOne, 8};
}

// Says to ThreadSanitizer that this thread has read the picture: OpenCV counts in its own code, unseen, that
// it lets go of it, which is what the grab thread waits for before it fills the buffer again.
void doneWith(const cv::Mat& picture) {
    // OpenCV's macro, which Clang takes for C.
    // NOLINTNEXTLINE(clang-diagnostic-c11-extensions)
    if (picture.u != nullptr) CV_XADD(&picture.u->refcount, 0);
}

}  // namespace

RoundRun::RoundRun(const Round& order) : order_(order), beat_((*order.beats)[kCameras]), random_(order.seed) {
    for (int i = 0; i < kCameras; ++i) ledgers_.emplace_back(i, isDevice(i));
}

RoundRun::~RoundRun() { beat_.end(); }

void RoundRun::complain(int camera, const std::string& problem) const {
    order_.complain(("camera " + std::to_string(camera + 1) + ": " + problem).c_str());
}

void RoundRun::count(const orx::TCameraStatus& status, void* self) {
    auto* const run = static_cast<RoundRun*>(self);
    if (status.state == orx::csLost) ++run->losses_;
    if (status.state == orx::csGrabbing && status.reason == orx::crReturned) ++run->returns_;
}

bool RoundRun::begin() {
    beat_.at("opening the boxes");
    for (std::size_t i = 0; i < kBoxes; ++i) {
        test::setEnvironment("DISPLAY", order_.displays[i]);
        auto& window = windows_[i];
        window = host::openHostWindow("soak", 1, kPaneSize);
        auto& box = boxes_[i];
        box = std::make_unique<TPictureBox>(TPictureOf::kBox);
        if (window) box->setHandle(window->pane(0), kPaneSize.width, kPaneSize.height);
        box->start();
    }
    beat_.at("opening the cameras");
    orx::setCameraStateCallback(count, this);
    if (!cameras_.InitCamera(kAnyType, nullptr, false, false)) return false;
    cameras_.setCameraNumber(kCameras);
    for (int i = 0; i < kCameras; ++i) {
        configs_[static_cast<std::size_t>(i)].frameRate = 30;
        orx::setReconnect(i, {isBroughtBackByHost(i) ? orx::lpThisOneWaits : orx::lpReconnect, 50, 400});
        orx::openFrames(i, queueOf(i));
        // A device may not have been found in time: it is opened as a lost one is.
        if (!cameras_.open(i, kAnyType) && !isDevice(i)) return false;
        orx::imgThreadManager.startThread(&cameras_, &configs_[static_cast<std::size_t>(i)], i);
    }
    orx::APPaddOrSetParamBool(orx::kCameraReady, true);
    for (int i = 0; i < kCameras; ++i) {
        lastFrames_[static_cast<std::size_t>(i)] = Clock::now();
        workers_[static_cast<std::size_t>(i)] = std::thread([this, i] { work(i); });
    }
    return true;
}

void RoundRun::work(int camera) {
    Beat& beat = (*order_.beats)[static_cast<std::size_t>(camera)];
    FrameLedger& ledger = ledgers_[static_cast<std::size_t>(camera)];
    orx::TFrame frame;
    for (;;) {
        const bool isLast = isOver_;  // asked first, so that nothing stays behind
        beat.at("waiting for a frame");
        if (!orx::takeFrame(camera, frame, isLast ? 0 : kTakeMs)) {
            if (isLast) break;
            continue;
        }
        lastFrames_[static_cast<std::size_t>(camera)] = Clock::now();
        beat.at("measuring");
        orx::TMeasuredCircle disk;
        const std::string problem = ledger.enter(frame, disk);
        if (!problem.empty()) complain(camera, problem);
        beat.at("showing a picture");
        show(camera, frame, disk);
        beat.at("saving a picture");
        if (frame.number % kSavedOf == 0) save(frame.image);
        doneWith(frame.image);
        if (isSlow(camera) && !isLast) std::this_thread::sleep_for(kSlowWork);
    }
    beat.end();
}

void RoundRun::show(int camera, const orx::TFrame& frame, const orx::TMeasuredCircle& disk) {
    if (camera >= kBoxes) return;
    TOverlay marks;
    marks.setGroup("disk").circle(disk.center, disk.radius).cross(disk.center);
    marks.setGroup("number").text({4, 14}, std::to_string(frame.number));
    boxes_[static_cast<std::size_t>(camera)]->setPicture(frame.image, marks);
}

void RoundRun::save(const cv::Mat& picture) {
    ++(FileOperator::saveImage(picture, order_.folder) ? saved_ : notSaved_);
}

void RoundRun::run() {
    if (!begin()) {
        order_.complain("the cameras can't be opened");
        return;
    }
    const auto over = Clock::now() + std::chrono::duration<double>(order_.seconds);
    Clock::time_point nextBlow = Clock::now();
    while (Clock::now() < over) {
        beat_.at("handling events");
        handleEvents();
        doWhatIsDue(false);
        helpLostCameras();
        watchFrames();
        if (Clock::now() < nextBlow) continue;
        disturb();
        nextBlow = Clock::now() + std::chrono::milliseconds(anyOf(700));
    }
    end();
}

void RoundRun::handleEvents() {
    // Of a display that is stopped there are none: the window's own connection only looks for what came.
    for (const auto& window : windows_)
        if (window) window->handleEvents(5);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::string text;
    int color = 0;
    while (orx::APPgetMessage(text, color)) {
    }
}

void RoundRun::watchFrames() {
    for (int i = 0; i < kCameras; ++i) {
        std::atomic<Clock::time_point>& last = lastFrames_[static_cast<std::size_t>(i)];
        if (Clock::now() - last.load() < kLongestSilence) continue;
        complain(i, std::string("no frame for a minute, though it is ") +
                        orx::cameraStateText(orx::cameraStatus(i).state));
        last = Clock::now();
    }
}

// As a host should: threads, workers, boxes, cameras, queues, pictures.
void RoundRun::end() {
    doWhatIsDue(true);
    beat_.at("ending the grab threads");
    orx::imgThreadManager.closeAllThread();
    beat_.at("ending the workers");
    isOver_ = true;
    for (std::thread& worker : workers_) worker.join();
    beat_.at("closing the boxes");
    for (auto& box : boxes_) box.reset();
    for (auto& window : windows_) window.reset();
    beat_.at("closing the cameras");
    if (!cameras_.DestoryCamera()) order_.complain("the driver is not destroyed");
    orx::setCameraStateCallback(nullptr, nullptr);
    for (int i = 0; i < kCameras; ++i) checkCamera(i);
    orx::APPaddOrSetParamBool(orx::kCameraReady, false);
    cameras_.freeDll();
    beat_.at("waiting for saved pictures");
    checkSaved();
}

// What went into the library, by the driver's own count, came out of it or was told to be missing.
void RoundRun::checkCamera(int camera) {
    const orx::TFrameCounts counts = orx::frameCounts(camera);
    orx::closeFrames(camera);
    CameraTally tally = ledgers_[static_cast<std::size_t>(camera)].tally();
    flaky::Camera& driver = order_.driver->cameras[static_cast<std::size_t>(camera)];
    tally.sent = driver.sent.exchange(0);
    tally.handed = driver.handed.exchange(0);
    tally.starts = driver.starts.exchange(0);
    tally.delivered = counts.delivered;
    const auto expect = [&](const char* what, std::uint64_t got, std::uint64_t wanted) {
        if (got != wanted)
            complain(camera,
                     std::string(what) + ": " + std::to_string(got) + ", not " + std::to_string(wanted));
    };
    // What was lost after the last frame is counted, but no frame can tell it.
    tally.untold = counts.lost - tally.lost;
    expect("frames delivered", tally.delivered, tally.taken + tally.dropped + tally.lost + tally.untold);
    expect("frames taken", counts.taken, tally.taken);
    expect("frames dropped", counts.dropped, tally.dropped);
    expect("frames left", counts.waiting, 0);
    expect("frames handed over", tally.handed, tally.delivered);
    if (tally.lost > counts.lost) expect("frames lost", counts.lost, tally.lost);
    order_.tally->cameras[static_cast<std::size_t>(camera)].add(tally);
}

void RoundRun::checkSaved() {
    namespace fs = std::filesystem;
    if (!FileOperator::flush(60000)) order_.complain("saving does not end");
    const fs::path folder = fs::u8path(order_.folder);
    std::uint64_t found = 0;
    if (fs::exists(folder))
        found = static_cast<std::uint64_t>(std::distance(fs::directory_iterator(folder), {}));
    if (found != saved_) {
        order_.complain((std::to_string(found) + " pictures saved, not " + std::to_string(saved_)).c_str());
    }
    order_.tally->saved += found;
    order_.tally->notSaved += notSaved_;
    order_.tally->losses += losses_;
    order_.tally->returns += returns_;
    fs::remove_all(folder);
}

}  // namespace soak

extern "C" __attribute__((visibility("default"))) void soakRound(const soak::Round* order) {
    try {
        soak::RoundRun(*order).run();
    } catch (const std::exception& error) {
        order->complain(error.what());
    }
}
