// The cameras of this process, which all cameras of Python share: the driver module is loaded once, finds its
// cameras anew only while none of them is open, and each open camera has a grab thread and a queue of frames.
#ifndef ORXFUNCTIONS_PYTHON_CAMERAS_H
#define ORXFUNCTIONS_PYTHON_CAMERAS_H

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/camera/camera_config.h"
#include "orxFunctions/camera/frames.h"
#include "orxFunctions/camera/multi_camera.h"

namespace orxpy {

// Which of the package's errors a failure is.
enum class CameraTrouble { kOther, kNotFound, kLost, kTimeout };

struct CameraFailure {
    CameraTrouble trouble;
    std::string text;  // UTF-8
};

struct CameraOptions {
    int type = 12;
    bool everyOne = false;
    int capacity = 8;
    bool reconnects = false;
    long frameRate = 0;  // 0 leaves the camera's
    int scale = 1;
    int rotation = 0;
    bool flips = false;
};

struct CameraFormat {
    int index;
    cv::Size size;
    int channels;
    bool isOpen;  // in this process
};

// No function here touches Python: call them without its lock. They throw CameraFailure. Thread-safe. A
// camera is known by its number and by the session that `open` gave, which ends with `close`.
class Cameras {
  public:
    std::uint64_t open(int index, const CameraOptions& options);
    // Nothing where the session has ended.
    void close(int index, std::uint64_t session);
    // Of all cameras, also what the driver module took.
    void closeAll();

    bool isOpen(int index, std::uint64_t session) const;

    // Ends and begins acquisition; for a moment the grab threads of cameras with higher numbers end.
    void stop(int index, std::uint64_t session);
    void start(int index, std::uint64_t session);

    void setParameter(int index, std::uint64_t session, int id, long value);
    float parameter(int index, std::uint64_t session, int id);
    cv::Size size(int index, std::uint64_t session);

    // Opens those for a moment that are closed.
    std::vector<CameraFormat> list(int type);
    int connectedType();
    bool hasRuntime(int type);

  private:
    struct Slot {
        orx::TCameraConfig config;
        std::atomic<std::uint64_t> session{0};  // 0 while closed
        bool isGrabbing = false;
    };

    void load();
    void find(int type);
    bool isAnyOpen() const;
    Slot& openSlot(int index, std::uint64_t session);
    void openAndGrab(int index, const CameraOptions& options);
    void grab(int index);
    void endGrabbing(int index);
    void closeSlot(int index);

    std::mutex mutex_;
    orx::TMultiCamera* cameras_ = nullptr;  // never destroyed: grab threads may outlive Python
    int type_ = 0;                          // that was looked for last
    std::uint64_t sessions_ = 0;
    std::array<Slot, orx::MAXCameraNum> slots_;
};

Cameras& cameras();

// What the library just said of a call that failed, with what it tells the user.
[[noreturn]] void failCamera(CameraTrouble trouble);

}  // namespace orxpy

#endif
