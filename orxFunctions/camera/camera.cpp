#include "orxFunctions/camera/camera.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
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
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr std::chrono::seconds kLongestWaitForFirst{1};
constexpr std::chrono::milliseconds kBetweenLooks{2};

// What the module tells of the camera's last picture; false when it does not.
bool askFrameInfo(VDFrameInfo& info, int index) {
    info = {};
    return callDriver(cameraDriver.getFrameInfo, &info, index).isTrue;
}

bool refuseClosed(const char* function, int index) {
    return refuse(rcNotReady, function, "camera %d is not open", index);
}

// The driver did not do `what`, such as "open".
template <typename Function>
bool refuseDriver(const std::atomic<Function*>& procedure, const DriverAnswer& answer, const char* function,
                  const char* what, int index) {
    if (procedure.load() == nullptr)
        return refuse(rcDriver, function, "no driver module that can %s camera %d is loaded", what, index);
    return answer.hasThrown ? refuse(rcDriver, function, "the driver did not %s camera %d: it threw \"%s\"",
                                     what, index, answer.thrown.c_str())
                            : refuse(rcDriver, function, "the driver did not %s camera %d", what, index);
}

template <typename Function>
bool refuseParameter(const std::atomic<Function*>& procedure, const DriverAnswer& answer,
                     const char* function, int id, int index) {
    if (procedure.load() == nullptr)
        return refuse(rcDriver, function, "no driver module with parameters is loaded");
    return answer.hasThrown
               ? refuse(rcDriver, function, "parameter %d of camera %d: the driver threw \"%s\"", id, index,
                        answer.thrown.c_str())
               : refuse(rcDriver, function, "the driver refused parameter %d of camera %d", id, index);
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

bool TCamera::open(int type, bool checkType) { return openAs("open", type, checkType); }

bool TCamera::connectCamera(int type, bool checkType) { return openAs("connectCamera", type, checkType); }

bool TCamera::openAs(const char* function, int type, bool checkType) {
    const zul::LockGuard lock(cameraCallMutex);
    if (isOpen) return true;
    ++session_->hostChanges;
    {
        const zul::LockGuard session(session_->mutex);
        session_->type = type;
        session_->settings.clear();
    }
    if (checkType && !hasBrand(function, type)) {
        isWorking = false;
        return false;
    }
    if (const DriverAnswer answer = callDriver(cameraDriver.open, type, index); !answer) {
        reportFailedStart();
        showError(CameraMessage::kCannotConnect, index + 1LL);
        forget();
        return refuseDriver(cameraDriver.open, answer, function, "open", index);
    }
    return startAcquisition(function);
}

bool TCamera::start() {
    ++session_->hostChanges;
    return isOpen ? startAcquisition("start") : refuseClosed("start", index);
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
    return startAcquisition(nullptr);
}

std::uint64_t TCamera::hostChanges() const { return session_->hostChanges; }

// Closes the camera when it does not start; told in the name of `function`, where there is one.
bool TCamera::startAcquisition(const char* function) {
    int columns = width;
    int rows = height;
    int samples = channels;
    {
        const zul::LockGuard session(session_->mutex);
        session_->numbers.begin();
    }
    const DriverAnswer answer = callDriver(cameraDriver.start, &columns, &rows, &samples, index);
    width = columns;
    height = rows;
    channels = samples;
    if (!answer) {
        if (function != nullptr) reportFailedStart();
        callDriver(cameraDriver.close, index);
        forget();
        return function != nullptr && refuseDriver(cameraDriver.start, answer, function, "start", index);
    }
    isOpen = true;
    isWorking = true;
    return true;
}

bool TCamera::stop() {
    ++session_->hostChanges;
    if (!isOpen) return refuseClosed("stop", index);
    if (const DriverAnswer answer = callDriver(cameraDriver.stop, index); !answer)
        return refuseDriver(cameraDriver.stop, answer, "stop", "stop", index);
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
    DriverAnswer answer;
    if (fetch(out, scale, ignored, answer)) return true;
    return isOpen ? refuseDriver(cameraDriver.getImage, answer, "GetImage", "give a picture of", index)
                  : refuseClosed("GetImage", index);
}

bool TCamera::fetch(cv::Mat& out, int scale, FrameOrigin& origin) {
    DriverAnswer ignored;
    return fetch(out, scale, origin, ignored);
}

bool TCamera::fetch(cv::Mat& out, int scale, FrameOrigin& origin, DriverAnswer& answer) {
    const auto end = std::chrono::steady_clock::now() + kLongestWaitForFirst;
    for (;;) {
        const bool isLast = std::chrono::steady_clock::now() >= end;
        if (!fetchOnce(out, scale, isLast, origin, answer)) return false;
        if (isLast || !origin.isFirstPending) return true;
        std::this_thread::sleep_for(kBetweenLooks);  // the other cameras go on meanwhile
    }
}

bool TCamera::fetchOnce(cv::Mat& out, int scale, bool takesBlack, FrameOrigin& origin, DriverAnswer& answer) {
    const zul::LockGuard lock(cameraCallMutex);
    ownBuffer = false;
    VDImage picture = {};
    if (!isOpen) return false;
    answer = callDriver(cameraDriver.getImage, &picture, index);
    VDFrameInfo info;
    const VDFrameInfo* const told = askFrameInfo(info, index) ? &info : nullptr;
    if (!answer) {  // the rest is still that of the last picture
        origin.returns = told != nullptr && (told->flags & VD_FRAME_RETURNS) != 0;
        return false;
    }
    {
        const zul::LockGuard session(session_->mutex);
        origin = session_->numbers.take(told);
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
    constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();
    const zul::LockGuard lock(cameraCallMutex);
    if (!isOpen) {
        refuseClosed("GetParam", index);
        return kNoValue;
    }
    float value = kNoValue;
    const auto getParam = cameraDriver.getParam.load();
    const DriverAnswer answer = callModule([&] {
        if (getParam != nullptr) value = getParam(index, id);
    });
    if (std::isnan(value)) refuseParameter(cameraDriver.getParam, answer, "GetParam", id, index);
    return value;
}

bool TCamera::SetParam(long value, int id) {
    const zul::LockGuard lock(cameraCallMutex);
    if (!isOpen) return refuseClosed("SetParam", index);
    if (const DriverAnswer answer = callDriver(cameraDriver.setParam, index, id, value); !answer)
        return refuseParameter(cameraDriver.setParam, answer, "SetParam", id, index);
    session_->keepSetting(id, value);
    return true;
}

int TCamera::getCameraType() { return detectCameraType(); }

bool TCamera::CheckCameraType(int type) { return hasBrand("CheckCameraType", type); }

bool TCamera::hasBrand(const char* function, int type) {
    if (type == VD_TYPE_ANY) return true;
    const int connected = getCameraType();
    showPlain("CurrrentCameraType:" + std::to_string(connected));  // spelled so
    if (connected == type) return true;
    showError(connected == VD_TYPE_MIXED ? CameraMessage::kMixedBrands : CameraMessage::kWrongBrand);
    return refuse(rcNoCamera, function, "type %d was asked for; the probe module says %d (%s)", type,
                  connected, cameraTypeText(connected));
}

void TCamera::reportFailedStart() const {
    showPlain("camera" + std::to_string(index + 1LL) + " start failed");
}

void TCamera::forget() {
    isOpen = false;
    isWorking = false;
}

}  // namespace orx
