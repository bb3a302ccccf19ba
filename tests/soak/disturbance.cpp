// What happens to the cameras and boxes of a round.
#include <opencv2/highgui.hpp>

#include "tests/soak/round.h"

namespace soak {
namespace {

constexpr double kLongestAbsence = 2.5;  // seconds
constexpr double kLongestStop = 1.0;

}  // namespace

void RoundRun::later(double seconds, std::function<void()> work) {
    const auto delay = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    later_.push_back({Clock::now() + delay, std::move(work)});
}

void RoundRun::doWhatIsDue(bool all) {
    std::vector<Later> due;
    std::vector<Later> rest;
    for (Later& one : later_) (all || one.when <= Clock::now() ? due : rest).push_back(std::move(one));
    later_ = std::move(rest);
    for (const Later& one : due) one.work();
}

void RoundRun::disturb() {
    const int camera = anyOf(kCameras);
    const int kind = anyOf(10);
    if (kind >= 3 && kind < 9) ++order_.tally->changes;
    switch (kind) {
        case 0:
        case 1:
        case 2:
            return unplug(camera);
        case 3:
            return changeDriver(camera);
        case 4:
            return changePicture(camera);
        case 5:
            return pause(camera);
        case 6:
            return reopen(camera);
        case 7:
            beat_.at("starting a grab thread anew");
            return orx::imgThreadManager.startThread(&cameras_, &configs_[static_cast<std::size_t>(camera)],
                                                     camera);
        case 8:
            return changeView();
        default:
            return stopDisplay();
    }
}

void RoundRun::unplug(int camera) {
    if (isDevice(camera) && anyOf(2) == 0) {
        ++order_.tally->silences;
        const int device = camera - kScenes;
        order_.silence(device, true);
        return later(between(0.05, kLongestAbsence), [this, device] { order_.silence(device, false); });
    }
    ++order_.tally->unpluggings;
    std::atomic<bool>& isPlugged = order_.driver->cameras[static_cast<std::size_t>(camera)].isPlugged;
    isPlugged = false;
    later(between(0.05, kLongestAbsence), [&isPlugged] { isPlugged = true; });
}

// What its box is told and given meanwhile waits for nothing.
void RoundRun::stopDisplay() {
    ++order_.tally->stops;
    const int display = anyOf(kBoxes);
    order_.stop(display, true);
    later(between(0.05, kLongestStop), [this, display] { order_.stop(display, false); });
}

void RoundRun::changeDriver(int camera) {
    beat_.at("setting a parameter of the driver");
    if (anyOf(2) == 0) {
        cameras_.SetParam(camera, 5 + anyOf(36), VD_PARAM_FRAME_RATE);
    } else {
        cameras_.SetParam(camera, 6000 + anyOf(6000), VD_PARAM_EXPOSURE);
    }
    cameras_.GetParam(camera, VD_PARAM_FRAMES_LOST);
}

// Its size and how it lies.
void RoundRun::changePicture(int camera) {
    orx::TCameraConfig& config = configs_[static_cast<std::size_t>(camera)];
    config.scaleEnable = anyOf(2) == 0;
    config.frameRate = 5 + anyOf(50);
    orx::TCamera& changed = *cameras_.cameras[static_cast<std::size_t>(camera)];
    changed.reverseXFlag = anyOf(2) == 0;
    changed.rotationAngle = 90 * anyOf(4);
}

void RoundRun::pause(int camera) {
    beat_.at("pausing a camera");
    if (anyOf(2) == 0) {
        orx::imgThreadManager.setThreadWork(camera, false);
        later(between(0.05, 0.5), [camera] { orx::imgThreadManager.setThreadWork(camera, true); });
    } else {
        orx::imgThreadManager.setCamUpdateImg(camera, false);
        later(between(0.05, 0.5), [camera] { orx::imgThreadManager.setCamUpdateImg(camera, true); });
    }
}

void RoundRun::reopen(int camera) {
    beat_.at("closing a camera");
    cameras_.close(camera);
    beat_.at("opening a camera");
    cameras_.open(camera, VD_TYPE_ANY);
}

// What waits for the host: lost cameras that it brings back, and those that it could not open.
void RoundRun::helpLostCameras() {
    for (int i = 0; i < kCameras; ++i) {
        if (!order_.driver->cameras[static_cast<std::size_t>(i)].isPlugged) continue;
        const orx::TCameraState state = orx::cameraStatus(i).state;
        if (state == orx::csClosed || (state == orx::csLost && isBroughtBackByHost(i))) reopen(i);
    }
}

void RoundRun::changeView() {
    beat_.at("changing a box");
    TPictureBox& box = *boxes_[static_cast<std::size_t>(anyOf(kBoxes))];
    box.setWindowSize(100 + anyOf(200), 100 + anyOf(140));
    box.showGroup("number", anyOf(2) == 0);
    box.setFunction(anyOf(2) == 0 ? FUNC_ZOOM_PAN : FUNC_EDIT_RECT);
    box.setShowFrame(5 + anyOf(25));
    box.mouseEvent(cv::EVENT_MOUSEWHEEL, anyOf(100), anyOf(100), anyOf(2) == 0 ? 120 << 16 : -(120 << 16));
}

}  // namespace soak
