// One grab thread.
#ifndef ORXFUNCTIONS_CAMERA_IMAGE_THREAD_INTERNAL_H
#define ORXFUNCTIONS_CAMERA_IMAGE_THREAD_INTERNAL_H

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <thread>

#include "ZULLib/sync_internal.h"
#include "orxFunctions/camera/image_thread_manager.h"
#include "orxFunctions/display/frame_pacing_internal.h"
#include "orxFunctions/platform/worker_thread_internal.h"

namespace orx {

// By slot: held while the callback runs and the latest image is stored. Defined in orxfunctions.cpp.
extern std::array<zul::Mutex, MAXCameraNum> slotMutexes;
// Serialises the starting and ending of grab threads. Defined there too.
extern zul::Mutex grabLifecycleMutex;

using TDrawImgCallback = void (*)(cv::Mat&, int);

// A slot of the thread manager; it lives from the first start of its thread until the library is unloaded.
class TImageThread {
  public:
    explicit TImageThread(int idx);
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
    bool isThisThread() const { return threadId_.load() == std::this_thread::get_id(); }

    std::int32_t measuredFps() const { return pace_.measuredFps; }

    const std::int32_t cameraIdx;
    std::atomic<bool> threadWork{true};
    std::atomic<bool> camUpdateImg{true};

  private:
    static void runOnThread(void* self);
    void run();
    bool turn();
    void pause();
    bool mayFetch();
    bool fetch();
    bool handOver();
    bool callBack();
    void storeLatest();
    void keepPace();
    void pickBuffer();
    template <typename Work>
    void withSlotMutex(const Work& work);

    std::atomic<bool> callbackEnabled{false};
    std::atomic<TDrawImgCallback> drawImgCallback{nullptr};
    TMultiCamera* cameras = nullptr;
    TCameraConfig* config = nullptr;
    std::atomic<TPictureBox*> pictureBox{nullptr};

    // The grab thread's own.
    int failCount_ = 0;
    display::FramePace pace_;      // its measured rate is read by anybody
    cv::Mat threadImage;           // of the last fetch
    std::array<cv::Mat, 2> idle_;  // buffers that may have become free for the next fetch

    zul::Mutex latestMutex_;  // taken last, so that callbacks may ask for any slot
    cv::Mat latestImage_ ZUL_GUARDED_BY(latestMutex_);

    std::atomic<bool> running{false};
    std::atomic<bool> exitRequested{false};
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
