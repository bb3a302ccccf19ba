// The watcher of a camera session: notices that the camera is gone, and brings it back.
#include "drivers/TQVisionDriver/camera_session.h"

#include <algorithm>
#include <exception>
#include <string>
#include <vector>

#include "drivers/TQVisionDriver/camera_probe.h"
#include "drivers/TQVisionDriver/trace.h"

namespace vision {
namespace {

// A camera is silent for kQuiet before it is asked, then asked kProbes times in a row: gone in about 0.8 s.
constexpr std::chrono::milliseconds kTurn{50};
constexpr std::chrono::milliseconds kQuiet{250};
constexpr std::chrono::milliseconds kProbeWait{120};
constexpr std::chrono::milliseconds kBetweenAnswers{200};
constexpr int kProbes = 3;

constexpr std::chrono::milliseconds kBetweenReconnections{200};
constexpr std::chrono::milliseconds kIdentifyWait{200};
// A camera may come back with another address; looking for it takes a second.
constexpr std::chrono::seconds kBetweenSearches{5};

}  // namespace

void CameraSession::watch() {
    while (!closing_) {
        try {
            if (const std::shared_ptr<CameraLink> current = link()) {
                absent_ = false;
                inspect(current);
            } else {
                if (!absent_) nextSearch_ = Clock::now() + kBetweenSearches;
                absent_ = true;
                reconnect();
            }
        } catch (const std::exception& failure) {
            trace(std::string("watching a camera: ") + failure.what());
        }
        rest(kTurn);
    }
}

void CameraSession::rest(std::chrono::milliseconds duration) {
    const zul::LockGuard lock(mutex_);
    const Clock::time_point end = Clock::now() + duration;
    while (!closing_ && wake_.wait_until(mutex_, end) == std::cv_status::no_timeout) {
    }
}

void CameraSession::inspect(const std::shared_ptr<CameraLink>& link) {
    const Clock::time_point now = Clock::now();
    if (link->controlLost()) {
        drop(link, "is no longer controlled");
        return;
    }
    if (device_.address.empty() || now < nextProbe_) return;
    if (now - counters_->counts().lastSign < kQuiet) {
        misses_ = 0;
        return;
    }
    switch (probeCamera(device_.address, kProbeWait)) {
        case ProbeAnswer::kControlled:
            misses_ = 0;
            nextProbe_ = now + kBetweenAnswers;
            break;
        case ProbeAnswer::kFree:
            drop(link, "was restarted");
            break;
        case ProbeAnswer::kSilent:
            if (++misses_ >= kProbes) drop(link, "does not answer");
            break;
    }
}

bool CameraSession::findAgain() {
    if (!device_.address.empty() && serialAt(device_.address, kIdentifyWait) == device_.serial) return true;
    if (Clock::now() < nextSearch_) return false;
    nextSearch_ = Clock::now() + kBetweenSearches;
    const std::vector<Device> devices = listDevices();
    const auto found = std::find_if(devices.begin(), devices.end(),
                                    [this](const Device& device) { return device.serial == device_.serial; });
    if (found == devices.end()) return false;
    const zul::LockGuard lock(mutex_);
    device_ = *found;
    return true;
}

void CameraSession::reconnect() {
    if (!findAgain()) {
        rest(kBetweenReconnections);
        return;
    }
    const std::shared_ptr<CameraLink> back = CameraLink::open(device_, settings_, closing_);
    if (!back) return;
    ParameterValues values;
    bool running = false;
    {
        const zul::LockGuard lock(mutex_);
        values = parameters_;
        running = running_;
    }
    restoreCameraParameters(back->camera(), values);
    if (running && !back->startStream(counters_)) return;
    {
        const zul::LockGuard lock(mutex_);
        if (!closing_ && running_ == running) {
            link_ = back;
            waitingSince_ = Clock::now();
        }
    }
    misses_ = 0;
    trace("camera " + device_.serial + " at " + device_.address + " is back");
}

}  // namespace vision
