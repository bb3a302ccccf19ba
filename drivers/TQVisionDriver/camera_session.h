// A camera from VDOpen to VDClose, across its absences.
//
// A watcher thread notices within a second when the camera is gone, by its silence and then by asking it (see
// camera_probe.h), connects to it again when it is back, and restores its parameters and its acquisition.
#ifndef DRIVERS_TQVISIONDRIVER_CAMERA_SESSION_H
#define DRIVERS_TQVISIONDRIVER_CAMERA_SESSION_H

#include <atomic>
#include <condition_variable>
#include <memory>
#include <opencv2/core/mat.hpp>
#include <string>
#include <thread>

#include "ZULLib/sync_internal.h"
#include "drivers/TQVisionDriver/camera_link.h"
#include "drivers/TQVisionDriver/camera_parameters.h"
#include "drivers/TQVisionDriver/source.h"

namespace vision {

// One thread at a time, beside the watcher.
class CameraSession {
  public:
    CameraSession(const Device& device, const DeviceSettings& settings);
    CameraSession(const CameraSession&) = delete;
    CameraSession& operator=(const CameraSession&) = delete;

    // Null when the camera can't be had.
    static std::shared_ptr<CameraSession> open(const Device& device, const DeviceSettings& settings);
    // Returns at once also when the camera is dead. The last call.
    void close();

    bool start(PictureFormat& format);
    void stop();
    bool fetch(VDImage& image);
    VDFrameInfo frameInfo();
    bool setParameter(int id, long value);
    float parameter(int id);

  private:
    std::shared_ptr<CameraLink> link();
    // Asks the camera whether it lives, so that a call to it may be made on the host's thread: Aravis would
    // repeat one that is not answered for seconds. A link that turns out to be dead is dropped.
    bool answers(const std::shared_ptr<CameraLink>& link);
    void drop(const std::shared_ptr<CameraLink>& link, const std::string& reason);

    void adopt(const std::shared_ptr<CameraStream>& stream, ReceivedFrame frame);
    void forgetPicture();
    void updatePatience(ArvCamera* camera);
    bool isPatient();

    void watch();
    void rest(std::chrono::milliseconds duration);  // shorter when the host closes
    void inspect(const std::shared_ptr<CameraLink>& link);
    void reconnect();
    bool findAgain();

    const DeviceSettings settings_;
    const std::shared_ptr<FrameCounters> counters_ = std::make_shared<FrameCounters>();
    std::thread watcher_;
    std::condition_variable_any wake_;
    std::atomic<bool> closing_{false};
    std::atomic<bool> triggered_{false};

    // The watcher's own; the host reads device_, which is changed under the lock.
    Device device_;
    int misses_ = 0;
    bool absent_ = false;
    Clock::time_point nextProbe_;
    Clock::time_point nextSearch_;

    // The host's own: the picture that was handed out.
    VDImage given_{};
    cv::Mat converted_;
    ReceivedFrame held_;
    std::weak_ptr<CameraStream> heldFrom_;
    Clock::time_point givenArrived_;
    std::uint64_t givenNumber_ = 0;
    std::uint64_t givenTime_ = 0;  // nanoseconds of the camera's clock
    Clock::time_point started_;

    zul::Mutex mutex_;
    std::shared_ptr<CameraLink> link_ ZUL_GUARDED_BY(mutex_);  // null while the camera is lost
    bool running_ ZUL_GUARDED_BY(mutex_) = false;
    ParameterValues parameters_ ZUL_GUARDED_BY(mutex_);      // to be restored
    Clock::time_point waitingSince_ ZUL_GUARDED_BY(mutex_);  // for a picture newer than the given one
    double secondsPerPicture_ ZUL_GUARDED_BY(mutex_) = 0.0;  // as the camera is set
};

}  // namespace vision

#endif
