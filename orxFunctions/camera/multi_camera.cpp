#include "orxFunctions/camera/multi_camera.h"

#include <algorithm>
#include <limits>

#include "orxFunctions/camera/camera_brands_internal.h"
#include "orxFunctions/camera/camera_driver_internal.h"
#include "orxFunctions/camera/camera_messages_internal.h"
#include "orxFunctions/camera/camera_states_internal.h"
#include "orxFunctions/camera/frame_origin_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

bool refuseWithoutModule(const char* function) {
    return refuse(rcDriver, function, "no driver module is loaded");
}

}  // namespace

TMultiCamera::TMultiCamera() {
    for (int i = 0; i < MAXCameraNum; ++i) sortedIdx[static_cast<std::size_t>(i)] = i;
    loadDll();
}

TMultiCamera::~TMultiCamera() {
    for (const TCamera* const camera : cameras) delete camera;
}

bool TMultiCamera::loadDll() {
    dllLoaded = 0;
    hDriver = loadCameraDriver();
    mustFree_ = hDriver != nullptr;
    dllLoaded = mustFree_ ? 1 : 0;
    return mustFree_ || refuse(rcDriver, "TMultiCamera", "the driver module TQVisionDriver can't be loaded");
}

void TMultiCamera::freeDll() {
    if (mustFree_) releaseCameraDriver(hDriver);
    mustFree_ = false;
}

bool TMultiCamera::CheckCameraDriverValid(int type, std::string* msg) { return checkCameraDriver(type, msg); }

bool TMultiCamera::InitCamera(int type, long long* handles, bool a, bool checkBrand) {
    zul::outPutDebugString("cameraType:" + std::to_string(type));
    initFlag = checkBrand;
    if (dllLoaded == 0) return refuseWithoutModule("InitCamera");
    DriverAnswer answer;
    {
        const zul::LockGuard lock(cameraCallMutex);
        answer = callDriver(cameraDriver.initCamera, type, handles, a);
        inited = answer.isTrue;
    }
    if (inited) return true;
    showError(CameraMessage::kInitFailed);
    if (answer.hasThrown)
        return refuse(rcDriver, "InitCamera", "the driver threw \"%s\"", answer.thrown.c_str());
    return refuse(rcDriver, "InitCamera", "the driver found no camera of type %d", type);
}

void TMultiCamera::setCameraNumber(int n) {
    if (n > MAXCameraNum) {
        showError(CameraMessage::kTooManyCameras, MAXCameraNum);
        refuse(rcTooMany, "setCameraNumber", "%d cameras; %d at the most are taken", n, MAXCameraNum);
        return;
    }
    for (int i = 0; i < n; ++i) {
        TCamera*& camera = cameras[static_cast<std::size_t>(i)];
        if (camera == nullptr) camera = new TCamera(i);
    }
    cameraNumber = n;  // last: whoever reads it finds the cameras
}

bool TMultiCamera::SetSortedCameraIdx(int* idx) {
    for (std::size_t i = 0; idx != nullptr && i < sortedIdx.size(); ++i) sortedIdx[i] = idx[i];
    return true;
}

bool TMultiCamera::checkCameraIdx(int i, const char* function) const {
    const int count = std::min<int>(cameraNumber, MAXCameraNum);  // a host may have set any number
    if (dllLoaded != 0 && i >= 0 && i < count) return true;
    if (dllLoaded == 0) {
        showError(CameraMessage::kNoDriver);
        return refuseWithoutModule(function);
    }
    showError(i >= count ? CameraMessage::kIndexTooLarge : CameraMessage::kIndexNegative);
    return refuse(rcNoCamera, function, "there is no camera %d; %d are in use", i, count);
}

// The camera of a logical number; null, with a message, when there is none.
TCamera* TMultiCamera::cameraOf(int i, const char* function) const {
    if (!checkCameraIdx(i, function)) return nullptr;
    const int slot = sortedIdx[static_cast<std::size_t>(i)];
    return checkCameraIdx(slot, function) ? cameras[static_cast<std::size_t>(slot)] : nullptr;
}

// As cameraOf, without the message.
TCamera* TMultiCamera::quietCameraOf(int i) const {
    const auto isCamera = [this](int number) {
        return number >= 0 && number < std::min<int>(cameraNumber, MAXCameraNum);
    };
    if (dllLoaded == 0 || !isCamera(i)) return nullptr;
    const int slot = sortedIdx[static_cast<std::size_t>(i)];
    return isCamera(slot) ? cameras[static_cast<std::size_t>(slot)] : nullptr;
}

void TMultiCamera::state(int i, bool& isOpen, bool& isWorking) const {
    const TCamera* const camera = quietCameraOf(i);
    isOpen = camera != nullptr && camera->isOpen;
    isWorking = camera != nullptr && camera->isWorking;
}

// Tells what an operation of the host has made of the camera. The answer is the operation's.
bool TMultiCamera::reported(int i, bool answer) const {
    cameraStates.report(i, [=](CameraFacts& facts) {
        state(i, facts.isOpen, facts.isWorking);
        facts.loss = Loss::kNone;
        facts.hasReturned = false;
        facts.closedReason = answer ? crAsked : crRefused;
    });
    return answer;
}

bool TMultiCamera::open(int i, int type) {
    TCamera* const camera = cameraOf(i, "open");
    return camera != nullptr && (camera->isOpen || reported(i, camera->open(type, initFlag)));
}

bool TMultiCamera::connectCamera(int i, int type) {
    TCamera* const camera = cameraOf(i, "connectCamera");
    return camera != nullptr && (camera->isOpen || reported(i, camera->connectCamera(type, initFlag)));
}

bool TMultiCamera::start(int i) {
    TCamera* const camera = cameraOf(i, "start");
    if (camera == nullptr) return false;
    if (!camera->isOpen) return refuse(rcNotReady, "start", "camera %d is not open", i);
    return reported(i, camera->start());
}

bool TMultiCamera::stop(int i) {
    TCamera* const camera = cameraOf(i, "stop");
    return camera != nullptr && reported(i, camera->stop());
}

bool TMultiCamera::close(int i) {
    TCamera* const camera = cameraOf(i, "close");
    return camera != nullptr && reported(i, camera->close());
}

bool TMultiCamera::haveOpen(int i) {
    TCamera* const camera = cameraOf(i, "haveOpen");
    return camera != nullptr && camera->haveOpen();
}

cv::Size TMultiCamera::getImgSize(int i) {
    const TCamera* const camera = cameraOf(i, "getImgSize");
    return camera == nullptr ? cv::Size() : camera->getImgSize();
}

float TMultiCamera::GetParam(int i, int id) {
    TCamera* const camera = cameraOf(i, "GetParam");
    return camera == nullptr ? std::numeric_limits<float>::quiet_NaN() : camera->GetParam(id);
}

bool TMultiCamera::SetParam(int i, long value, int id) {
    TCamera* const camera = cameraOf(i, "SetParam");
    return camera != nullptr && camera->SetParam(value, id);
}

bool TMultiCamera::GetImage(cv::Mat& out, int i, bool scaled, int scale) {
    TCamera* const camera = cameraOf(i, "GetImage");
    return camera != nullptr && camera->GetImage(out, scaled ? scale : 0);
}

bool TMultiCamera::fetch(cv::Mat& out, int i, int scale, FrameOrigin& origin) {
    TCamera* const camera = cameraOf(i, "GetImage");
    return camera != nullptr && camera->fetch(out, scale, origin);
}

NewerPicture TMultiCamera::newerPicture(int i) const {
    TCamera* const camera = quietCameraOf(i);
    return camera == nullptr ? NewerPicture::kUnknown : camera->newerPicture();
}

bool TMultiCamera::reopen(int i, std::uint64_t hostChanges) {
    TCamera* const camera = quietCameraOf(i);
    return camera != nullptr && camera->reopen(hostChanges);
}

std::uint64_t TMultiCamera::hostChanges(int i) const {
    const TCamera* const camera = quietCameraOf(i);
    return camera == nullptr ? 0 : camera->hostChanges();
}

int TMultiCamera::getCameraType() { return detectCameraType(); }

bool TMultiCamera::checkRotation(int angle) const {
    const int remainder = angle % 360;
    return remainder == 0 || remainder == 90 || remainder == 180 || remainder == 270;
}

bool TMultiCamera::DestoryCamera() {
    for (TCamera* const camera : cameras) {
        if (camera != nullptr) camera->close();
    }
    for (int i = 0; i < MAXCameraNum; ++i) {
        if (quietCameraOf(i) != nullptr) reported(i, true);
    }
    const zul::LockGuard lock(cameraCallMutex);
    const auto destroy = cameraDriver.destroyCamera.load();
    if (dllLoaded == 0) return refuseWithoutModule("DestoryCamera");
    if (destroy == nullptr) return refuse(rcDriver, "DestoryCamera", "the driver has no VDDestoryCamera");
    const DriverAnswer answer = callModule(destroy);
    inited = false;
    return answer.isTrue ||
           refuse(rcDriver, "DestoryCamera", "the driver threw \"%s\"", answer.thrown.c_str());
}

}  // namespace orx
