#include "inspection/run/camera_rig.h"

#include <cmath>

#include "inspection/report/table.h"
#include "inspection/report/utf8.h"
#include "orxFunctions/vision_driver.h"

namespace inspection {
namespace {

constexpr int kTargetRate = 30;  // pictures per second, where the camera has as many

}  // namespace

bool CameraRig::open() {
    std::string missing;
    if (!cams_.CheckCameraDriverValid(options_.type, &missing)) {
        log_ << "orx_inspection: " << zul::toUtf8(missing) << "\n";
    }
    if (!cams_.InitCamera(options_.type, nullptr, false, false)) return false;
    cams_.setCameraNumber(cameras());
    bool areOpen = true;
    for (int i = 0; i < cameras(); ++i) areOpen = cams_.open(i, options_.type) && areOpen;
    return areOpen;
}

void CameraRig::start() {
    config_.frameRate = kTargetRate;
    for (int i = 0; i < cameras(); ++i) {
        orx::imgThreadManager.startThread(&cams_, &config_, i);
        orx::imgThreadManager.setDrawImgCallbackFunc(true, CameraFeed::receive, i);
    }
    orx::APPaddOrSetParamBool(orx::kCameraReady, true);
}

bool CameraRig::take(std::chrono::steady_clock::time_point end, cv::Mat& picture, int& camera) {
    const bool taken = feed_.take(end, picture, camera);
    if (!orx::APPgetParamBool(orx::kCameraReady)) reconnect();
    return taken;
}

// The driver reconnects by itself; what it needs is to be asked again.
void CameraRig::reconnect() {
    for (int i = 0; i < cameras(); ++i) cams_.connectCamera(i, options_.type);
    orx::APPaddOrSetParamBool(orx::kCameraReady, true);
}

void CameraRig::stop() { orx::imgThreadManager.closeAllThread(); }

void CameraRig::close() {
    for (int i = 0; i < cams_.cameraNumber; ++i) {
        sizes_.push_back(cams_.getImgSize(i));
        lost_.push_back(cams_.GetParam(i, VD_PARAM_FRAMES_LOST));
    }
    cams_.DestoryCamera();
    cams_.freeDll();
    showMessages();
}

std::string CameraRig::size(int camera) const {
    const cv::Size size = sizes_[static_cast<std::size_t>(camera)];
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::string CameraRig::lost(int camera) const {
    const float lost = lost_[static_cast<std::size_t>(camera)];
    return std::isnan(lost) ? "-" : fixedText(lost, 0);
}

void CameraRig::showMessages() {
    std::string text;
    int color = 0;
    while (orx::APPgetMessage(text, color)) log_ << "message: " << cleanUtf8(zul::toUtf8(text)) << "\n";
}

}  // namespace inspection
