#include "orxFunctions/camera/image_thread_internal.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "orxFunctions/camera/camera_image_internal.h"
#include "orxFunctions/camera/camera_messages_internal.h"
#include "orxFunctions/camera/camera_states_internal.h"
#include "orxFunctions/display/picture_box.h"
#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/platform/fine_pauses_internal.h"

namespace orx {
namespace {

constexpr std::int32_t kDefaultFps = 10;  // without a configuration

// Where every frame is wanted: how often the driver is asked, and for how long it is at least.
constexpr std::chrono::milliseconds kBetweenLooks{1};
constexpr std::chrono::milliseconds kLongestLook{50};

// Beside those of the frame queue: one for the box and the callback, one for the latest image.
constexpr std::size_t kOtherBuffers = 2;

constexpr int kPaused = 1;  // the code of the picture that a pause shows

// Whether this thread is a grab thread in its callback.
thread_local bool inCallback = false;

cv::Mat statusImage(int code) {
    cv::Mat image(200, 200, CV_8UC3, cv::Scalar::all(0));
    cv::putText(image, code == kPaused ? "stop update image" : "camera not open", {0, 100},
                cv::FONT_HERSHEY_PLAIN, 1.0, cv::Scalar(255, 0, 0), 1, cv::LINE_8);
    return image;
}

}  // namespace

TImageThread::TImageThread(int idx, zul::Mutex& slotMutex, FrameQueue& frames)
    : cameraIdx(idx), slotMutex_(slotMutex), frames_(frames) {}

bool TImageThread::isInCallback() { return inCallback; }

void TImageThread::setSource(TMultiCamera* cams, TCameraConfig* cfg, TPictureBox* box) {
    cameras_ = cams;
    config_ = cfg;
    name_ = cfg == nullptr ? std::string() : cfg->name;
    pictureBox_ = box;
}

bool TImageThread::start() {
    running_ = true;
    failCount_ = 0;
    isLost_ = false;
    failedFetches = 0;
    pace_.frameCounter = 0;
    const bool isReady = zul::APPgetParamBool(kCameraReady);  // not as an earlier thread saw it
    cameraStates.note(cameraIdx, [&](CameraFacts& facts) {
        facts.hasThread = true;
        facts.isReady = isReady;
        facts.loss = Loss::kNone;
        facts.hasReturned = false;
        facts.name = name_;  // last: it takes memory
    });
    if (worker_.start(runOnThread, this)) return true;
    cameraStates.note(cameraIdx, [](CameraFacts& facts) { facts.hasThread = false; });
    running_ = false;
    pictureBox_ = nullptr;
    return false;
}

void TImageThread::askToEnd() {
    const zul::LockGuard lock(sleepMutex_);
    exitRequested_ = true;
    changed_.notify_all();
}

void TImageThread::waitForEnd() {
    {
        const zul::LockGuard lock(sleepMutex_);
        while (running_) changed_.wait(sleepMutex_);
    }
    worker_.join();
    exitRequested_ = false;  // not later: what asks from now on means the next thread
}

bool TImageThread::endAtUnload() {
    isUnloading_ = true;
    exitRequested_ = true;
    if (sleepMutex_.try_lock()) {
        sleepMutex_.unlock();
        changed_.notify_all();
    }
    worker_.join();
    return !running_;
}

void TImageThread::runOnThread(void* self) { static_cast<TImageThread*>(self)->run(); }

void TImageThread::run() {
    threadId_ = std::this_thread::get_id();
    {
        const platform::FinePauses finePauses;
        while (turnWithOrWithoutMemory()) {
        }
    }
    // Not while the library is being unloaded: the host's callback may be gone.
    if (!isUnloading_) {
        cameraStates.report(cameraIdx, [](CameraFacts& facts) {
            facts.hasThread = false;
            facts.loss = Loss::kNone;
        });
    }
    threadImage_.release();
    idle_.clear();
    pictureBox_ = nullptr;  // the host may destroy it now
    threadId_ = std::thread::id();
    const zul::LockGuard lock(sleepMutex_);
    running_ = false;
    changed_.notify_all();
}

// What a turn has no memory for counts as a failed fetch, and the next turn tries again.
bool TImageThread::turnWithOrWithoutMemory() {
    try {
        return turn();
    } catch (const std::exception&) {
        lastFailure_ = crNoPicture;
        ++failedFetches;
        if (failCount_++ == 0 && cameras_ != nullptr) hostChanges_ = cameras_->hostChanges(cameraIdx);
        pace_.frameCounter = 0;
        return !exitRequested_;
    }
}

// One turn of the grab loop. False when the thread has to end.
bool TImageThread::turn() {
    if (exitRequested_) {
        // Not while the library is being unloaded: writing the text may load a table of characters.
        if (!isUnloading_) zul::outPutDebugString(textOf(CameraMessage::kThreadEnded));
        return false;
    }
    pause();
    if (exitRequested_) return true;
    reportTurn();
    if (isKeptLost() || isAtRest() || !mayFetch()) return true;
    if (failCount_ >= kMostFailures) {
        lose();
        return true;
    }
    if (!fetch()) {
        if (failCount_++ == 0) hostChanges_ = cameras_->hostChanges(cameraIdx);
        pace_.frameCounter = 0;
        return true;
    }
    if (!handOver()) {
        lastFailure_ = crCallbackFailed;
        if (reconnect_.policy == lpAllWait && failCount_++ == 0) {
            hostChanges_ = cameras_->hostChanges(cameraIdx);
        }
        pace_.frameCounter = 0;
        return true;
    }
    endLoss(true);
    failCount_ = 0;
    ++pace_.frameCounter;
    keepPace();
    return true;
}

void TImageThread::pause() {
    pace_.sleepMs = std::max(pace_.sleepMs, 1);
    if (frames_.wantsEveryOne() && cameras_ != nullptr) {
        awaitNewer();
    } else {
        pauseUntil(std::chrono::steady_clock::now() + std::chrono::milliseconds(pace_.sleepMs));
    }
}

void TImageThread::pauseUntil(std::chrono::steady_clock::time_point end) {
    const zul::LockGuard lock(sleepMutex_);
    while (!exitRequested_ && changed_.wait_until(sleepMutex_, end) == std::cv_status::no_timeout) {
    }
}

// A pause that is over as soon as the driver has a picture that was not fetched yet. Asking takes no time,
// unlike a fetch that waits for a picture while all other cameras wait for it.
void TImageThread::awaitNewer() {
    const std::chrono::milliseconds pace{pace_.sleepMs};
    const auto start = std::chrono::steady_clock::now();
    const auto end = start + std::max(pace, kLongestLook);
    while (!exitRequested_) {
        pauseUntil(std::min(end, std::chrono::steady_clock::now() + kBetweenLooks));
        const bool mayLook = threadWork && camUpdateImg && zul::APPgetParamBool(kCameraReady);
        const NewerPicture newer = mayLook ? cameras_->newerPicture(cameraIdx) : NewerPicture::kUnknown;
        if (newer == NewerPicture::kUnknown) return pauseUntil(start + pace);
        if (newer == NewerPicture::kThere || std::chrono::steady_clock::now() >= end) return;
    }
}

bool TImageThread::mayFetch() {
    if (cameras_ == nullptr) {
        zul::APPshowMessage("FCameras==NULL", kErrorColor);
        return false;
    }
    return threadWork && camUpdateImg && zul::APPgetParamBool(kCameraReady) && cameras_->haveOpen(cameraIdx);
}

bool TImageThread::fetch() {
    pickBuffer();
    bool isFetched = false;
    try {
        const bool scales = config_ != nullptr && config_->scaleEnable;
        isFetched = cameras_->fetch(threadImage_, cameraIdx, scales ? int{config_->scaleFactor} : 0, origin_);
    } catch (const std::exception& error) {  // no memory for the picture
        zul::outPutDebugString("camera getImg", error.what());
    }
    lastFailure_ = isFetched ? crEmptyPicture : crNoPicture;
    if (!isFetched) {
        zul::outPutDebugString("camera getImg fail", cameraIdx);
    } else if (threadImage_.empty()) {
        zul::outPutDebugString("Get empty image", cameraIdx);
    }
    const bool hasPicture = isFetched && !threadImage_.empty();
    if (!hasPicture) ++failedFetches;
    return hasPicture;
}

// Puts a buffer that nobody looks at any more into threadImage_, for the fetch to fill; the box, the
// callback, the frame queue and the latest image may still refer to the one of the last fetch.
void TImageThread::pickBuffer() {
    if (isExclusive(threadImage_)) return;
    idle_.resize(frames_.capacity() + kOtherBuffers);
    auto free = std::find_if(idle_.begin(), idle_.end(), isExclusive);
    if (free == idle_.end()) {
        nextIdle_ = (nextIdle_ + 1) % idle_.size();
        free = idle_.begin() + static_cast<std::ptrdiff_t>(nextIdle_);
    }
    std::swap(threadImage_, *free);
}

// A callback may come back here for its own slot, whose mutex it runs under, and for another one, whose
// callback may be waiting for this one.
template <typename Work>
void TImageThread::withSlotMutex(const Work& work) {
    if (inCallback) {
        work();
        return;
    }
    const zul::LockGuard lock(slotMutex_);
    work();
}

// False when the callback failed.
bool TImageThread::handOver() {
    // Closed or paused meanwhile: the picture would take the place of the status picture.
    if (!cameras_->haveOpen(cameraIdx) || !threadWork || !camUpdateImg) return dropPicture();
    TPictureBox* const box = pictureBox_;
    if (box != nullptr && box->getParentHand() != nullptr) box->setImage(threadImage_, false);
    // A pause shows its picture after it has set the flag, in the box and as the latest image: whoever comes
    // second puts it there.
    if (!camUpdateImg) showInBox(statusImage(kPaused));
    const zul::LockGuard lock(slotMutex_);
    if (!threadWork || !camUpdateImg) return dropPicture();
    if (!offerFrame() || !callBack()) return false;
    if (threadWork && camUpdateImg) storeLatest();  // the callback may have paused
    return true;
}

// It goes nowhere, but it was fetched: it counts.
bool TImageThread::dropPicture() {
    frames_.skip(origin_);
    return true;
}

// A frame's pixels are its own where anything else may look at them or paint on them.
bool TImageThread::offerFrame() {
    if (!frames_.isWanted()) return true;
    return isDone([this] {
        const bool isShared = callbackEnabled_ || pictureBox_ != nullptr;
        frames_.add(cameraIdx, isShared && frames_.isNew(origin_) ? threadImage_.clone() : threadImage_,
                    origin_);
    });
}

bool TImageThread::callBack() {
    const TDrawImgCallback call = drawImgCallback_;
    if (!callbackEnabled_ || call == nullptr) return true;
    return isDone([&] { call(threadImage_, cameraIdx); });
}

// Runs what belongs to the host. False when it failed.
template <typename Call>
bool TImageThread::isDone(const Call& call) {
    std::string problem;
    inCallback = true;
    try {
        call();
        inCallback = false;
        return true;
    } catch (const std::exception& error) {
        problem = error.what();
    } catch (...) {
        problem = "?";
    }
    inCallback = false;
    zul::APPshowMessage(withNumber(textOf(CameraMessage::kCallbackFailed), cameraIdx + 1) + problem,
                        kErrorColor);
    return false;
}

// A picture that nobody else refers to can't change any more and need not be copied: the next fetch takes
// another buffer.
void TImageThread::storeLatest() {
    const zul::LockGuard lock(latestMutex_);
    if (isExclusive(threadImage_)) {
        latestImage_ = threadImage_;
        return;
    }
    if (!isExclusive(latestImage_)) latestImage_.release();
    threadImage_.copyTo(latestImage_);
}

void TImageThread::keepPace() {
    // As intended, a rate below 1 is a new one with every picture, and stays at one a second. No measurement
    // starts where the rate changes: where this was the first picture of eight, their time counts from an
    // older picture, and they are found too slow.
    const std::int32_t pauseMs = pace_.sleepMs;
    if (display::keepPace(pace_, config_ == nullptr ? kDefaultFps : int{config_->frameRate})) {
        zul::outPutDebugString("camera: " + std::to_string(cameraIdx + 1) + " frame rate changed");
    } else if (frames_.wantsEveryOne()) {
        pace_.sleepMs = pauseMs;  // the driver sets the pace
    }
}

void TImageThread::showStatus(int code) {
    const cv::Mat image = statusImage(code);
    withSlotMutex([&] {
        const zul::LockGuard lock(latestMutex_);
        latestImage_ = image.clone();
    });
    showInBox(image);
}

void TImageThread::showInBox(cv::Mat image) {
    TPictureBox* const box = pictureBox_;
    if (box == nullptr || box->getParentHand() == nullptr) return;
    box->setImage(image, true);
    box->showImageLast();
}

void TImageThread::setCallback(bool enable, TDrawImgCallback f) {
    withSlotMutex([&] {
        drawImgCallback_ = f;
        callbackEnabled_ = enable;
    });
}

cv::Mat TImageThread::copyLatest() {
    cv::Mat copy;
    withSlotMutex([&] {
        const zul::LockGuard lock(latestMutex_);
        copy = latestImage_.clone();
    });
    return copy;
}

}  // namespace orx
