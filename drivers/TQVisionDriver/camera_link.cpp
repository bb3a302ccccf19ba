#include "drivers/TQVisionDriver/camera_link.h"

#include <chrono>
#include <string>
#include <thread>

#include "drivers/TQVisionDriver/releaser.h"
#include "drivers/TQVisionDriver/trace.h"

namespace vision {
namespace {

constexpr std::chrono::seconds kLongestWaitForControl{4};
constexpr std::chrono::milliseconds kControlRetry{250};

bool takeControl(ArvGvDevice* device, const std::atomic<bool>& giveUp) {
    const auto deadline = Clock::now() + kLongestWaitForControl;
    while (arv_gv_device_is_controller(device) == FALSE) {
        if (giveUp || Clock::now() >= deadline) return false;
        std::this_thread::sleep_for(kControlRetry);
        Error error;
        arv_gv_device_take_control(device, error.receive());
    }
    return true;
}

void onControlLost(ArvDevice* /*device*/, gpointer lost) { *static_cast<std::atomic<bool>*>(lost) = true; }

}  // namespace

std::shared_ptr<CameraLink> CameraLink::open(const Device& device, const DeviceSettings& settings,
                                             const std::atomic<bool>& giveUp) {
    const auto drop = [](CameraLink* link) {
        if (link->dead_) {
            releaseLater([link] { delete link; });
        } else {
            delete link;
        }
    };
    const std::shared_ptr<CameraLink> link(new CameraLink(settings), drop);
    return link->connect(device, giveUp) ? link : nullptr;
}

bool CameraLink::connect(const Device& device, const std::atomic<bool>& giveUp) {
    // By its name Aravis may choose an interface of this machine that does not lead to the camera.
    const std::string& name = device.address.empty() ? device.id : device.address;
    Error error;
    camera_.reset(arv_camera_new(name.c_str(), error.receive()));
    if (!camera_) {
        trace("camera " + device.serial + " at " + name + ": " + error.text());
        return false;
    }
    ArvDevice* const opened = arv_camera_get_device(camera_.get());
    if (arv_camera_is_gv_device(camera_.get()) != FALSE && !takeControl(ARV_GV_DEVICE(opened), giveUp)) {
        trace("camera " + device.serial + " at " + name + " is controlled by another program");
        return false;
    }
    signal_ = g_signal_connect(opened, "control-lost", G_CALLBACK(onControlLost), &controlLost_);
    arv_camera_set_range_check_policy(camera_.get(), ARV_RANGE_CHECK_POLICY_ENABLE);
    // A program that died may have left it running.
    arv_camera_stop_acquisition(camera_.get(), error.receive());
    return true;
}

CameraLink::~CameraLink() {
    stopStream();
    if (camera_ && signal_ != 0) g_signal_handler_disconnect(arv_camera_get_device(camera_.get()), signal_);
}

bool CameraLink::startStream(const std::shared_ptr<FrameCounters>& counters) {
    Error error;
    arv_camera_set_acquisition_mode(camera_.get(), ARV_ACQUISITION_MODE_CONTINUOUS, error.receive());
    stream_ = CameraStream::create(camera_.get(), settings_, counters);
    if (!stream_) return false;
    arv_camera_start_acquisition(camera_.get(), error.receive());
    if (!error.failed()) return true;
    trace("the camera does not start: " + error.text());
    stream_.reset();
    return false;
}

void CameraLink::stopStream() {
    if (!stream_) return;
    if (!dead_) {
        Error error;
        arv_camera_stop_acquisition(camera_.get(), error.receive());
    }
    stream_.reset();
}

}  // namespace vision
