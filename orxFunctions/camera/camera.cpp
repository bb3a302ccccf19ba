#include "orxFunctions/camera/camera.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <limits>
#include <opencv2/core.hpp>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "orxFunctions/camera/camera_brands_internal.h"
#include "orxFunctions/camera/camera_driver_internal.h"
#include "orxFunctions/camera/camera_image_internal.h"
#include "orxFunctions/camera/camera_messages_internal.h"
#include "orxFunctions/camera/frame_origin_internal.h"

namespace orx {
namespace {

constexpr std::chrono::seconds kLongestWaitForFirst{1};
constexpr std::chrono::milliseconds kBetweenLooks{2};

// What the module tells of the camera's last picture; false when it does not.
bool askFrameInfo(VDFrameInfo& info, int index) {
    info = {};
    return callDriver(cameraDriver.getFrameInfo, &info, index);
}

}  // namespace

// A mutex of its own, the last that is taken, since starting does not take the camera-call mutex.
struct TCamera::Session {
    zul::Mutex mutex;
    FrameNumbers numbers ZUL_GUARDED_BY(mutex);
    int type ZUL_GUARDED_BY(mutex) = VD_TYPE_ANY;  // it was opened with
    // What the host has set since then, in that order.
    std::vector<std::pair<int, long>> settings ZUL_GUARDED_BY(mutex);
    // How often the host has opened, closed, started or stopped it.
    std::atomic<std::uint64_t> hostChanges{0};

    void keepSetting(int id, long value) {
        if (id == VD_PARAM_SOFTWARE_TRIGGER) return;
        const zul::LockGuard lock(mutex);
        settings.erase(std::remove_if(settings.begin(), settings.end(),
                                      [id](const auto& setting) { return setting.first == id; }),
                       settings.end());
        settings.emplace_back(id, value);
    }
};

TCamera::TCamera(int cameraIndex) : index(cameraIndex), session_(std::make_unique<Session>()) {}
TCamera::~TCamera() = default;

bool TCamera::open(int type, bool checkType) {
    const zul::LockGuard lock(cameraCallMutex);
    if (isOpen) return true;
    ++session_->hostChanges;
    {
        const zul::LockGuard session(session_->mutex);
        session_->type = type;
        session_->settings.clear();
    }
    if (checkType && !CheckCameraType(type)) {
        isWorking = false;
        return false;
    }
    if (!callDriver(cameraDriver.open, type, index)) {
        reportFailedStart();
        showError(CameraMessage::kCannotConnect, index + 1LL);
        forget();
        return false;
    }
    return startAcquisition(true);
}

bool TCamera::connectCamera(int type, bool checkType) { return open(type, checkType); }

bool TCamera::start() {
    ++session_->hostChanges;
    return isOpen && startAcquisition(true);
}

// What the grab thread does with a lost camera. Nothing when the host has opened, closed, started or stopped
// it since it was counted. Silent, as it is tried again and again.
bool TCamera::reopen(std::uint64_t hostChangesSeen) {
    const zul::LockGuard lock(cameraCallMutex);
    if (session_->hostChanges != hostChangesSeen) return false;
    if (isOpen) {
        callDriver(cameraDriver.stop, index);
        callDriver(cameraDriver.close, index);
        forget();
    }
    int type = VD_TYPE_ANY;
    std::vector<std::pair<int, long>> settings;
    {
        const zul::LockGuard session(session_->mutex);
        type = session_->type;
        settings = session_->settings;
    }
    if (!callDriver(cameraDriver.open, type, index)) return false;
    for (const auto& [id, value] : settings) callDriver(cameraDriver.setParam, index, id, value);
    return startAcquisition(false);
}

std::uint64_t TCamera::hostChanges() const { return session_->hostChanges; }

// Closes the camera when it does not start.
bool TCamera::startAcquisition(bool isTold) {
    int columns = width;
    int rows = height;
    int samples = channels;
    {
        const zul::LockGuard session(session_->mutex);
        session_->numbers.begin();
    }
    const bool isStarted = callDriver(cameraDriver.start, &columns, &rows, &samples, index);
    width = columns;
    height = rows;
    channels = samples;
    if (!isStarted) {
        if (isTold) reportFailedStart();
        callDriver(cameraDriver.close, index);
        forget();
        return false;
    }
    isOpen = true;
    isWorking = true;
    return true;
}

bool TCamera::stop() {
    ++session_->hostChanges;
    if (!isOpen || !callDriver(cameraDriver.stop, index)) return false;
    isWorking = false;
    return true;
}

bool TCamera::close() {
    const zul::LockGuard lock(cameraCallMutex);
    ++session_->hostChanges;
    if (isOpen) {
        callDriver(cameraDriver.stop, index);
        callDriver(cameraDriver.close, index);
        forget();
    }
    return true;
}

bool TCamera::haveOpen() {
    const zul::LockGuard lock(cameraCallMutex);
    return isOpen;
}

cv::Size TCamera::getImgSize() const { return {width, height}; }

bool TCamera::GetImage(cv::Mat& out, int scale) {
    FrameOrigin ignored;
    return fetch(out, scale, ignored);
}

bool TCamera::fetch(cv::Mat& out, int scale, FrameOrigin& origin) {
    const auto end = std::chrono::steady_clock::now() + kLongestWaitForFirst;
    for (;;) {
        const bool isLast = std::chrono::steady_clock::now() >= end;
        if (!fetchOnce(out, scale, isLast, origin)) return false;
        if (isLast || !origin.isFirstPending) return true;
        std::this_thread::sleep_for(kBetweenLooks);  // the other cameras go on meanwhile
    }
}

bool TCamera::fetchOnce(cv::Mat& out, int scale, bool takesBlack, FrameOrigin& origin) {
    const zul::LockGuard lock(cameraCallMutex);
    ownBuffer = false;
    VDImage picture = {};
    if (!isOpen) return false;
    const bool isFetched = callDriver(cameraDriver.getImage, &picture, index);
    VDFrameInfo info;
    const VDFrameInfo* const answer = askFrameInfo(info, index) ? &info : nullptr;
    if (!isFetched) {  // the rest is still that of the last picture
        origin.returns = answer != nullptr && (answer->flags & VD_FRAME_RETURNS) != 0;
        return false;
    }
    {
        const zul::LockGuard session(session_->mutex);
        origin = session_->numbers.take(answer);
    }
    if (origin.isFirstPending && !takesBlack) return true;
    const ImageTreatment treatment = {scale, reverseXFlag, rotationAngle};
    ownBuffer = treatment.scales() || treatment.turnsByQuarter();
    treatImage({picture.width, picture.height, picture.channels, picture.data}, treatment, out);
    return true;
}

NewerPicture TCamera::newerPicture() {
    const zul::LockGuard lock(cameraCallMutex);
    if (!isOpen) return NewerPicture::kUnknown;
    VDFrameInfo info;
    const VDFrameInfo* const answer = askFrameInfo(info, index) ? &info : nullptr;
    const zul::LockGuard session(session_->mutex);
    return session_->numbers.newer(answer);
}

void TCamera::rotation(cv::Mat& img) {
    switch (rotationAngle % 360) {
        case 90:
            cv::transpose(img, img);
            cv::flip(img, img, 0);
            ownBuffer = true;
            break;
        case 180:
            cv::flip(img, img, -1);
            break;
        case 270:
            cv::transpose(img, img);
            cv::flip(img, img, 1);
            ownBuffer = true;
            break;
        default:
            break;
    }
}

void TCamera::reverseX(cv::Mat& img) const {
    if (reverseXFlag) cv::flip(img, img, 0);
}

float TCamera::GetParam(int id) {
    const zul::LockGuard lock(cameraCallMutex);
    const auto getParam = cameraDriver.getParam.load();
    return isOpen && getParam != nullptr ? getParam(index, id) : std::numeric_limits<float>::quiet_NaN();
}

bool TCamera::SetParam(long value, int id) {
    const zul::LockGuard lock(cameraCallMutex);
    if (!isOpen || !callDriver(cameraDriver.setParam, index, id, value)) return false;
    session_->keepSetting(id, value);
    return true;
}

int TCamera::getCameraType() { return detectCameraType(); }

bool TCamera::CheckCameraType(int type) {
    if (type == VD_TYPE_ANY) return true;
    const int connected = getCameraType();
    showPlain("CurrrentCameraType:" + std::to_string(connected));  // spelled so
    if (connected == type) return true;
    showError(connected == VD_TYPE_MIXED ? CameraMessage::kMixedBrands : CameraMessage::kWrongBrand);
    return false;
}

void TCamera::reportFailedStart() const {
    showPlain("camera" + std::to_string(index + 1LL) + " start failed");
}

void TCamera::forget() {
    isOpen = false;
    isWorking = false;
}

}  // namespace orx
