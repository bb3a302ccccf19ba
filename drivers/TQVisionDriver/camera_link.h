// Control of one camera, from taking it to giving it up.
#ifndef DRIVERS_TQVISIONDRIVER_CAMERA_LINK_H
#define DRIVERS_TQVISIONDRIVER_CAMERA_LINK_H

#include <arv.h>

#include <atomic>
#include <memory>

#include "drivers/TQVisionDriver/camera_stream.h"
#include "drivers/TQVisionDriver/glib_object.h"
#include "drivers/TQVisionDriver/settings.h"
#include "drivers/devices/device_list.h"

namespace vision {

// One thread at a time, except for what says otherwise. Whoever drops the last reference to a link that was
// marked as dead does not wait: Aravis then repeats its farewell for seconds, on a thread of releaser.h.
class CameraLink {
  public:
    // Takes control of a camera and makes it stop acquiring; tries for about 4 seconds when another program
    // controls it, for that may be one that died and whose control is about to expire. Null when it can't be
    // had, and when `giveUp` becomes true.
    static std::shared_ptr<CameraLink> open(const Device& device, const DeviceSettings& settings,
                                            const std::atomic<bool>& giveUp);
    ~CameraLink();
    CameraLink(const CameraLink&) = delete;
    CameraLink& operator=(const CameraLink&) = delete;

    ArvCamera* camera() const { return camera_.get(); }

    bool startStream(const std::shared_ptr<FrameCounters>& counters);
    void stopStream();
    // Null when it does not acquire.
    const std::shared_ptr<CameraStream>& stream() const { return stream_; }

    // Any thread.
    bool controlLost() const { return controlLost_; }
    void markDead() { dead_ = true; }

  private:
    explicit CameraLink(const DeviceSettings& settings) : settings_(settings) {}
    bool connect(const Device& device, const std::atomic<bool>& giveUp);

    const DeviceSettings settings_;
    std::atomic<bool> controlLost_{false};
    std::atomic<bool> dead_{false};
    Ref<ArvCamera> camera_;
    gulong signal_ = 0;
    std::shared_ptr<CameraStream> stream_;
};

}  // namespace vision

#endif
