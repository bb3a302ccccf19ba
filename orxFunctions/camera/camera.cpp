#include "orxFunctions/camera/camera.h"

#include <chrono>
#include <limits>
#include <opencv2/core.hpp>
#include <string>
#include <thread>

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
};

TCamera::TCamera(int cameraIndex) : index(cameraIndex), session_(std::make_unique<Session>()) {}
TCamera::~TCamera() = default;

bool TCamera::open(int type, bool checkType) {
    const zul::LockGuard lock(cameraCallMutex);
    if (isOpen) return true;
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
    return startAcquisition();
}

bool TCamera::connectCamera(int type, bool checkType) { return open(type, checkType); }

bool TCamera::start() { return isOpen && startAcquisition(); }

// Closes the camera when it does not start.
bool TCamera::startAcquisition() {
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
        reportFailedStart();
        callDriver(cameraDriver.close, index);
        forget();
        return false;
    }
    isOpen = true;
    isWorking = true;
    return true;
}

bool TCamera::stop() {
    if (!isOpen || !callDriver(cameraDriver.stop, index)) return false;
    isWorking = false;
    return true;
}

bool TCamera::close() {
    const zul::LockGuard lock(cameraCallMutex);
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
    if (!isOpen || !callDriver(cameraDriver.getImage, &picture, index)) return false;
    VDFrameInfo info;
    const VDFrameInfo* const answer = askFrameInfo(info, index) ? &info : nullptr;
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
    return isOpen && callDriver(cameraDriver.setParam, index, id, value);
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
