#include "drivers/TQVisionDriver/real_camera.h"

#include <algorithm>
#include <vector>

#include "drivers/TQVisionDriver/camera_probe.h"
#include "drivers/TQVisionDriver/camera_session.h"
#include "drivers/TQVisionDriver/trace.h"

namespace vision {
namespace {

class RealCamera : public Source {
  public:
    RealCamera(const Device& device, const DeviceSettings& settings) : device_(device), settings_(settings) {}
    ~RealCamera() override { RealCamera::close(); }

    bool open() override;
    void close() override;
    bool start(PictureFormat& format) override { return session_->start(format); }
    void stop() override { session_->stop(); }
    bool fetch(VDImage& image) override { return session_->fetch(image); }
    VDFrameInfo frameInfo() override { return session_->frameInfo(); }
    bool setParameter(int id, long value) override { return session_->setParameter(id, value); }
    float parameter(int id) override { return session_->parameter(id); }

  private:
    bool locate();

    Device device_;
    const DeviceSettings settings_;
    std::shared_ptr<CameraSession> session_;
};

bool RealCamera::open() {
    if (!locate()) {
        trace("camera " + device_.serial + " is not connected");
        return false;
    }
    session_ = CameraSession::open(device_, settings_);
    return session_ != nullptr;
}

void RealCamera::close() {
    if (session_) session_->close();
    session_.reset();
}

bool RealCamera::locate() {
    constexpr std::chrono::milliseconds kWait{200};
    // A USB camera has a name that stays.
    if (device_.address.empty() && !device_.id.empty()) return true;
    if (!device_.address.empty() && serialAt(device_.address, kWait) == device_.serial) return true;
    const std::vector<Device> devices = listDevices();
    const auto found = std::find_if(devices.begin(), devices.end(),
                                    [this](const Device& device) { return device.serial == device_.serial; });
    if (found == devices.end()) return false;
    device_ = *found;
    return true;
}

}  // namespace

std::unique_ptr<Source> makeRealCamera(const Device& device, const DeviceSettings& settings) {
    return std::make_unique<RealCamera>(device, settings);
}

}  // namespace vision
