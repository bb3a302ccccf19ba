// Grabbing from up to nine cameras, each on a thread of its own.
#ifndef ORXFUNCTIONS_CAMERA_IMAGE_THREAD_MANAGER_H
#define ORXFUNCTIONS_CAMERA_IMAGE_THREAD_MANAGER_H

#include <array>
#include <atomic>
#include <opencv2/core.hpp>

#include "orxFunctions/api.h"
#include "orxFunctions/camera/camera_config.h"
#include "orxFunctions/camera/multi_camera.h"

class TPictureBox;

namespace orx {

class TImageThread;

// The host's parameter that lets the grab threads fetch.
constexpr const char* kCameraReady = "cameraReady";

// Runs one grab thread per camera. A thread fetches pictures at the frame rate that its TCameraConfig asks
// for, gives each to a picture box and to a callback of the host, keeps a copy for getThreadImage, and
// measures the rate that it reaches over 8 pictures.
//
// Nothing is fetched while the host's parameter "cameraReady" (kCameraReady) is false; a host sets it with
// APPaddOrSetParamBool once its cameras are open. After six failed fetches in a row a thread asks the user to
// reconnect and sets the parameter to false; the host sets it again when it has. To reconnect: close the lost
// camera first, since it still counts as open, then open it, then set the parameter. setReconnect
// (camera/camera_state.h) lets the thread reconnect, and the other cameras go on; camera/frames.h hands out
// frames that are accounted for.
//
// A thread asks for the newest picture at its own pace. Where the camera has sent no newer one the driver
// gives the last one again: that is fetched, shown, handed to the callback and counted in the rate like any
// other.
//
// These calls wait for a callback of their slot that is running (but not where they are made from inside a
// callback): getThreadImage, initView, setCamUpdateImg with false, setDrawImgCallbackFunc. closeAllThread,
// setCameraCntSame2ThreadCnt and startThread wait for the end of a thread, and so for its fetch and its
// callback; when they return, the fetches of the ended threads have ended. setThreadWork and setCamUpdateImg
// do not wait for a fetch that is under way; its picture goes nowhere.
//
// Thread-safe. A host ends the threads (closeAllThread) before it closes the cameras, destroys what it gave
// to startThread, or unloads the library. Threads that still run when the library is unloaded are ended then,
// on POSIX after the picture they are at; on Windows they keep the library loaded instead.
class ORX_API TImageThreadManager {
  public:
    TImageThreadManager();
    ~TImageThreadManager();
    TImageThreadManager(const TImageThreadManager&) = delete;
    TImageThreadManager& operator=(const TImageThreadManager&) = delete;

    // Starts the thread of slot `idx` (0 to 8), which grabs from the logical camera of that number; one that
    // runs is ended first. The three objects are borrowed while the thread runs; `box` may be null. Refused,
    // with a message, for other slots (rcNoCamera), on a grab thread, in a callback (rcNotReady), and where
    // the system has no thread (rcFailed).
    void startThread(TMultiCamera* cams, TCameraConfig* cfg, TPictureBox* box, int idx);
    void startThread(TMultiCamera* cams, TCameraConfig* cfg, int idx);

    // Ends every thread: asks all, wakes those that sleep, and waits until the last has ended, which takes as
    // long as one fetch and one callback. May be called again, and slots may be started again afterwards. On
    // a grab thread it asks only.
    void closeAllThread();
    // Ends the threads of the slots from n on, as closeAllThread does.
    void setCameraCntSame2ThreadCnt(int n);

    // The operations below take a slot. One that is out of range (rcNoCamera) or was never started
    // (rcNotReady) is told to the user, and nothing happens.

    // Shows a picture of 200 x 200 pixels that says "stop update image" (code 1) or "camera not open" in
    // place of the camera's, in the picture box and through getThreadImage.
    void initView(int idx, int code);
    // Pauses and resumes fetching, and tells the user.
    void setThreadWork(int idx, bool on);
    // Pauses and resumes fetching; a pause shows the picture of initView with code 1.
    void setCamUpdateImg(int idx, bool on);

    // Sets what is called with each new picture and the camera's logical number, on the grab thread. The
    // picture is the callback's to change while it runs; to keep it, keep a cv::Mat of it. A callback should
    // be short. It gets what the picture box got before it: with a box, paint on a copy. One that throws is
    // reported to the user and counts as a failed fetch. When the call returns on another thread, the former
    // callback has ended.
    void setDrawImgCallbackFunc(bool enable, void (*f)(cv::Mat&, int), int idx);

    // A copy of the latest picture, before the first one that of initView; empty for a refused slot.
    cv::Mat getThreadImage(int idx);
    // Pictures per second as last measured; 0 for a refused slot.
    int getCurrentFrameRate(int idx);
    // Fetches without a picture since the slot's thread was started last, also after its end; 0 for a refused
    // slot. Pictures that a camera lost on the way are counted by its driver (GetParam).
    int getFailedFetches(int idx);
    // The logical camera of a slot; 0, without a message, where there is none.
    int threadIdx2CameraIdx(int i);

  private:
    friend struct GrabbingEnd;

    bool checkValid(int idx, const char* function);
    TImageThread* slotOf(int idx) const;
    bool isGrabThread() const;
    void restart(TMultiCamera* cams, TCameraConfig* cfg, TPictureBox* box, int idx);
    void endFrom(int first);
    void endAtUnload();

    std::array<std::atomic<TImageThread*>, MAXCameraNum> imageThread_{};
};

// The one manager of the process.
ORX_API extern TImageThreadManager imgThreadManager;

}  // namespace orx

#endif
