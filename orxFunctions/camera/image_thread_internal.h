// One grab thread.
#ifndef ORXFUNCTIONS_CAMERA_IMAGE_THREAD_INTERNAL_H
#define ORXFUNCTIONS_CAMERA_IMAGE_THREAD_INTERNAL_H

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <thread>
#include <vector>

#include "ZULLib/sync_internal.h"
#include "orxFunctions/camera/camera_messages_internal.h"
#include "orxFunctions/camera/camera_state.h"
#include "orxFunctions/camera/frame_queue_internal.h"
#include "orxFunctions/camera/image_thread_manager.h"
#include "orxFunctions/display/frame_pacing_internal.h"
#include "orxFunctions/platform/worker_thread_internal.h"

namespace orx {

// By slot, each lent to the TImageThread that the manager creates there: they exist before anything else of
// the library, and outlive every slot. Defined in orxfunctions.cpp.
extern std::array<zul::Mutex, MAXCameraNum> slotMutexes;
// Serialises the starting and ending of grab threads. Defined there too.
extern zul::Mutex grabLifecycleMutex;

using TDrawImgCallback = void (*)(cv::Mat&, int);

// A slot of the thread manager; it lives from the first start of its thread until the library is unloaded.
//
// Locks, in the order in which they are taken: grabLifecycleMutex, the slot's mutex, then latestMutex_,
// sleepMutex_ or that of the frame queue, under which nothing more is locked. A callback runs under its
// slot's mutex and takes neither of the first two here, not even that of its own slot; what else it calls
// (cameras, picture boxes, the host bridge) locks after the slot's mutex and never comes back for it.
class TImageThread {
  public:
    TImageThread(int idx, zul::Mutex& slotMutex, FrameQueue& frames);
    TImageThread(const TImageThread&) = delete;
    TImageThread& operator=(const TImageThread&) = delete;

    // The manager serialises setSource, start and the two that end the thread.

    // What the next start grabs from; the thread must not run.
    void setSource(TMultiCamera* cams, TCameraConfig* cfg, TPictureBox* box);
    bool start();
    void askToEnd();
    void waitForEnd();

    // For the library's destructors: on Windows other threads are gone by then, perhaps in the middle of
    // anything, so that this neither locks nor waits there. True when the slot may be deleted.
    bool endAtUnload();

    void showStatus(int code);
    void setCallback(bool enable, TDrawImgCallback f);
    cv::Mat copyLatest();
    // Whether the caller is any grab thread in its callback.
    static bool isInCallback();
    bool isThisThread() const { return threadId_.load() == std::this_thread::get_id(); }

    std::int32_t measuredFps() const { return pace_.measuredFps; }

    const std::int32_t cameraIdx;
    std::atomic<bool> threadWork{true};
    std::atomic<bool> camUpdateImg{true};
    std::atomic<std::int32_t> failedFetches{0};  // since the last start

  private:
    static void runOnThread(void* self);
    void run();
    bool turnWithOrWithoutMemory();
    bool turn();
    void pause();
    void pauseUntil(std::chrono::steady_clock::time_point end);
    void awaitNewer();
    bool mayFetch();
    bool fetch();
    void pickBuffer();
    bool handOver();
    bool dropPicture();
    bool offerFrame() ZUL_REQUIRES(slotMutex_);
    bool callBack() ZUL_REQUIRES(slotMutex_);
    template <typename Call>
    bool isDone(const Call& call);
    void storeLatest() ZUL_REQUIRES(slotMutex_);
    void keepPace();
    void reportTurn();
    void tell(CameraMessage message);
    void lose();
    void endLoss(bool hasReturned);
    bool isKeptLost();
    bool isAtRest() const;
    void tryToReturn();
    void showInBox(cv::Mat image);
    template <typename Work>
    void withSlotMutex(const Work& work);

    static constexpr int kMostFailures = 6;

    // Held while the callback runs and the latest image is stored.
    zul::Mutex& slotMutex_;
    FrameQueue& frames_;

    // Atomic, as callbacks set them without that lock.
    std::atomic<bool> callbackEnabled_{false};
    std::atomic<TDrawImgCallback> drawImgCallback_{nullptr};

    // Changed while the thread does not run, apart from the box, which it lets go as it ends.
    TMultiCamera* cameras_ = nullptr;
    TCameraConfig* config_ = nullptr;
    std::string name_;  // the configuration's, as it was then
    std::atomic<TPictureBox*> pictureBox_{nullptr};

    // The grab thread's own.
    int failCount_ = 0;
    TReconnect reconnect_;  // as of this turn
    TCameraReason lastFailure_ = crNoPicture;
    bool isLost_ = false;
    bool isReopened_ = false;        // by this thread; its first picture is awaited
    bool mayAllFetch_ = false;       // the loss stops all cameras by the host's parameter, not this one alone
    std::uint64_t hostChanges_ = 0;  // of the camera by the host, as counted at the first failure
    std::int64_t waitMs_ = 0;        // before the next attempt to connect again
    std::chrono::steady_clock::time_point nextAttempt_;
    display::FramePace pace_;    // its measured rate is read by anybody
    cv::Mat threadImage_;        // of the last fetch
    FrameOrigin origin_;         // its
    std::vector<cv::Mat> idle_;  // buffers that may have become free for the next fetch
    std::size_t nextIdle_ = 0;   // the one to give up where none has

    zul::Mutex latestMutex_;
    cv::Mat latestImage_ ZUL_GUARDED_BY(latestMutex_);

    std::atomic<bool> running_{false};
    std::atomic<bool> exitRequested_{false};
    std::atomic<bool> isUnloading_{false};
    std::atomic<std::thread::id> threadId_{};
    zul::Mutex sleepMutex_;  // of the pause and of the end
    std::condition_variable_any changed_;
    platform::WorkerThread worker_;
};

// Ends the threads as the first thing of all when the library is unloaded: what callbacks may use is still
// there.
struct GrabbingEnd {
    GrabbingEnd() = default;
    ~GrabbingEnd();
    GrabbingEnd(const GrabbingEnd&) = delete;
    GrabbingEnd& operator=(const GrabbingEnd&) = delete;
};

}  // namespace orx

#endif
