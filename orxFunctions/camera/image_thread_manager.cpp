#include "orxFunctions/camera/image_thread_manager.h"

#include <algorithm>
#include <exception>

#include "orxFunctions/camera/camera_messages_internal.h"
#include "orxFunctions/camera/camera_number_internal.h"
#include "orxFunctions/camera/camera_states_internal.h"
#include "orxFunctions/camera/image_thread_internal.h"
#include "orxFunctions/foundation/host_bridge.h"

namespace orx {
namespace {

void showProblem(const char* text) { zul::APPshowMessage(text, kErrorColor); }

void reportPause(const TImageThread& thread) {
    cameraStates.report(thread.cameraIdx, [&thread](CameraFacts& facts) {
        facts.isWanted = thread.threadWork && thread.camUpdateImg;
    });
}

// What a host lends to a thread is not kept where memory runs out before the thread starts.
class Borrowed {
  public:
    explicit Borrowed(TImageThread& thread) : thread_(&thread) {}
    ~Borrowed() {
        if (thread_ != nullptr) thread_->setSource(nullptr, nullptr, nullptr);
    }
    Borrowed(const Borrowed&) = delete;
    Borrowed& operator=(const Borrowed&) = delete;

    void keep() { thread_ = nullptr; }

  private:
    TImageThread* thread_;
};

void traceText(const char* utf8) { zul::outPutDebugString(zul::toAnsi(utf8)); }

}  // namespace

TImageThreadManager::TImageThreadManager() { LoadORXdriverLanguageStr(); }

TImageThreadManager::~TImageThreadManager() { endAtUnload(); }

// Null for a slot that is out of range or was never started.
TImageThread* TImageThreadManager::slotOf(int idx) const {
    return isCameraNumber(idx) ? imageThread_[static_cast<std::size_t>(idx)].load() : nullptr;
}

bool TImageThreadManager::checkValid(int idx, const char* function) {
    if (slotOf(idx) != nullptr) return true;
    if (takesCameraNumber(idx, function)) {
        refuse(rcNotReady, function, "no thread was started in slot %d", idx);
        showProblem(" TImageThreadManager::checkValid imageThread[idx] == NULL");
    } else {
        showProblem(idx < 0 ? " TImageThreadManager::checkValid idx < 0"
                            : " TImageThreadManager::checkValid idx > MAXCameraNum - 1");
    }
    return false;
}

// Whether the caller is a callback. It must not wait for threads: one of them is its own, and another one's
// end may be waiting for it.
bool TImageThreadManager::isGrabThread() const {
    return std::any_of(imageThread_.begin(), imageThread_.end(), [](const std::atomic<TImageThread*>& slot) {
        const TImageThread* const thread = slot;
        return thread != nullptr && thread->isThisThread();
    });
}

void TImageThreadManager::startThread(TMultiCamera* cams, TCameraConfig* cfg, int idx) {
    startThread(cams, cfg, nullptr, idx);
}

void TImageThreadManager::startThread(TMultiCamera* cams, TCameraConfig* cfg, TPictureBox* box, int idx) {
    traceText("开启线程取图线程...");
    if (isGrabThread()) {
        showProblem(" TImageThreadManager::startThread in a callback");
        refuse(rcNotReady, "startThread", "a grab thread, in a callback, can't wait for threads");
        return;
    }
    restart(cams, cfg, box, idx);
    cameraStates.deliver();
}

void TImageThreadManager::restart(TMultiCamera* cams, TCameraConfig* cfg, TPictureBox* box, int idx) {
    const zul::LockGuard lock(grabLifecycleMutex);
    if (isCameraNumber(idx) && slotOf(idx) == nullptr) {
        const auto slot = static_cast<std::size_t>(idx);
        imageThread_[slot] = new TImageThread(idx, slotMutexes[slot], frameQueues[slot]);
    }
    if (!checkValid(idx, "startThread")) return;
    TImageThread& thread = *slotOf(idx);
    thread.askToEnd();
    thread.waitForEnd();
    traceText("开始设置相机参数...");
    Borrowed borrowed(thread);
    thread.setSource(cams, cfg, box);
    traceText("开始initView 0...");
    try {
        initView(idx, 0);
    } catch (const std::exception& error) {
        zul::outPutDebugString(zul::toAnsi("开始initView 0...   失败") + error.what());
    }
    traceText("开始线程...");
    borrowed.keep();
    if (thread.start()) return;
    showProblem(" TImageThreadManager::startThread no thread");
    refuse(rcFailed, "startThread", "the system has no thread for slot %d", idx);
}

void TImageThreadManager::closeAllThread() { endFrom(0); }

void TImageThreadManager::setCameraCntSame2ThreadCnt(int n) { endFrom(std::clamp(n, 0, MAXCameraNum)); }

void TImageThreadManager::endFrom(int first) {
    // All are asked before the first is waited for, so that they end at the same time.
    const auto askAll = [&] {
        for (int i = first; i < MAXCameraNum; ++i) {
            if (TImageThread* const thread = slotOf(i)) thread->askToEnd();
        }
    };
    askAll();
    if (isGrabThread()) return;
    const zul::LockGuard lock(grabLifecycleMutex);
    askAll();  // also those that were being started meanwhile
    for (int i = first; i < MAXCameraNum; ++i) {
        if (TImageThread* const thread = slotOf(i)) thread->waitForEnd();
    }
}

GrabbingEnd::~GrabbingEnd() { imgThreadManager.endAtUnload(); }

void TImageThreadManager::endAtUnload() {
    for (std::atomic<TImageThread*>& slot : imageThread_) {
        const TImageThread* const thread = slot;
        if (thread != nullptr && slot.load()->endAtUnload()) delete slot.exchange(nullptr);
    }
}

void TImageThreadManager::initView(int idx, int code) {
    if (checkValid(idx, "initView")) slotOf(idx)->showStatus(code);
}

void TImageThreadManager::setThreadWork(int idx, bool on) {
    if (!checkValid(idx, "setThreadWork")) return;
    slotOf(idx)->threadWork = on;
    reportPause(*slotOf(idx));
    const CameraMessage message = on ? CameraMessage::kResumed : CameraMessage::kPaused;
    showPlain(withNumber(textOf(message), slotOf(idx)->cameraIdx + 1));
}

void TImageThreadManager::setCamUpdateImg(int idx, bool on) {
    if (!checkValid(idx, "setCamUpdateImg")) return;
    slotOf(idx)->camUpdateImg = on;
    reportPause(*slotOf(idx));
    if (!on) slotOf(idx)->showStatus(1);
}

void TImageThreadManager::setDrawImgCallbackFunc(bool enable, void (*f)(cv::Mat&, int), int idx) {
    if (checkValid(idx, "setDrawImgCallbackFunc")) slotOf(idx)->setCallback(enable, f);
}

cv::Mat TImageThreadManager::getThreadImage(int idx) {
    return checkValid(idx, "getThreadImage") ? slotOf(idx)->copyLatest() : cv::Mat();
}

int TImageThreadManager::getCurrentFrameRate(int idx) {
    return checkValid(idx, "getCurrentFrameRate") ? slotOf(idx)->measuredFps() : 0;
}

int TImageThreadManager::getFailedFetches(int idx) {
    return checkValid(idx, "getFailedFetches") ? int{slotOf(idx)->failedFetches} : 0;
}

int TImageThreadManager::threadIdx2CameraIdx(int i) {
    const TImageThread* const thread = slotOf(i);
    if (thread != nullptr) return thread->cameraIdx;
    if (takesCameraNumber(i, "threadIdx2CameraIdx"))
        refuse(rcNotReady, "threadIdx2CameraIdx", "no thread was started in slot %d", i);
    return 0;
}

}  // namespace orx
