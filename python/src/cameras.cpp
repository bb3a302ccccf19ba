#include "cameras.h"

#include <algorithm>
#include <cmath>

#include "ZULLib/zullib.h"
#include "orxFunctions/camera/camera_state.h"
#include "orxFunctions/camera/image_thread_manager.h"
#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/refusal.h"

namespace orxpy {

namespace {

constexpr int kFrameRate = 3;       // VD_PARAM_FRAME_RATE
constexpr int kFastestPace = 1000;  // pictures per second

void forgetMessages() {
    std::string text;
    int colour = 0;
    while (orx::APPgetMessage(text, colour)) {
    }
}

std::string messages() {
    std::vector<std::string> all;
    std::string text;
    int colour = 0;
    while (orx::APPgetMessage(text, colour)) {
        if (std::find(all.begin(), all.end(), text) == all.end()) all.push_back(text);
    }
    std::string joined;
    for (const std::string& message : all) joined += (joined.empty() ? "" : "; ") + zul::toUtf8(message);
    return joined;
}

std::string lastReason() {
    const orx::TRefusal refusal = orx::lastRefusal();
    if (refusal.code == orx::rcNone) return "the library gave no reason";
    const std::string front = refusal.function + ": ";
    const bool isNamed = refusal.text.compare(0, front.size(), front) == 0;
    return isNamed ? refusal.text.substr(front.size()) : refusal.text;
}

[[noreturn]] void fail(CameraTrouble trouble, const std::string& text) { throw CameraFailure{trouble, text}; }

// Before a call that may fail: what was said before is not of it.
void listen() {
    orx::clearLastRefusal();
    forgetMessages();
}

}  // namespace

void failCamera(CameraTrouble trouble) {
    const std::string reason = lastReason();
    const std::string told = messages();
    fail(trouble, told.empty() ? reason : reason + " (" + told + ")");
}

Cameras& cameras() {
    static auto* const only = new Cameras;
    return *only;
}

void Cameras::load() {
    if (cameras_ != nullptr && cameras_->dllLoaded != 0) return;
    listen();
    delete cameras_;
    cameras_ = new orx::TMultiCamera;
    if (cameras_->dllLoaded == 0) failCamera(CameraTrouble::kOther);
    cameras_->setCameraNumber(orx::MAXCameraNum);
}

bool Cameras::isAnyOpen() const {
    return std::any_of(slots_.begin(), slots_.end(), [](const Slot& slot) { return slot.session != 0; });
}

// Finding closes all cameras.
void Cameras::find(int type) {
    load();
    if (isAnyOpen()) {
        if (type == type_) return;
        fail(CameraTrouble::kOther,
             "cameras that were looked for by another brand are open: close them first");
    }
    listen();
    if (!cameras_->InitCamera(type, nullptr, false, false)) failCamera(CameraTrouble::kNotFound);
    type_ = type;
}

std::uint64_t Cameras::open(int index, const CameraOptions& options) {
    const std::lock_guard<std::mutex> lock(mutex_);
    Slot& slot = slots_[static_cast<std::size_t>(index)];
    if (slot.session != 0)
        fail(CameraTrouble::kOther, "camera " + std::to_string(index) + " is open already in this process");
    find(options.type);
    listen();
    orx::TReconnect reconnect;
    reconnect.policy = options.reconnects ? orx::lpReconnect : orx::lpThisOneWaits;
    orx::setReconnect(index, reconnect);
    orx::TFrameOptions frames;
    frames.policy = options.everyOne ? orx::fpEveryOne : orx::fpNewest;
    frames.capacity = options.capacity;
    orx::openFrames(index, frames);  // before the camera: counting begins with its first frame
    try {
        openAndGrab(index, options);
    } catch (...) {
        closeSlot(index);
        throw;
    }
    slot.session = ++sessions_;
    return sessions_;
}

void Cameras::openAndGrab(int index, const CameraOptions& options) {
    const auto place = static_cast<std::size_t>(index);
    cameras_->cameras[place]->rotationAngle = options.rotation;
    cameras_->cameras[place]->reverseXFlag = options.flips;
    if (!cameras_->open(index, options.type)) failCamera(CameraTrouble::kNotFound);
    if (options.frameRate > 0 && !cameras_->SetParam(index, options.frameRate, kFrameRate))
        failCamera(CameraTrouble::kOther);
    orx::TCameraConfig& config = slots_[place].config;
    config.scaleEnable = options.scale != 1;
    config.scaleFactor = options.scale;
    const float rate = cameras_->GetParam(index, kFrameRate);
    const int usual = orx::TCameraConfig().frameRate;
    config.frameRate = std::isfinite(rate) && rate > 0.0F
                           ? static_cast<int>(std::min(std::ceil(rate), static_cast<float>(kFastestPace)))
                           : usual;
    grab(index);
    orx::APPaddOrSetParamBool(orx::kCameraReady, true);
}

void Cameras::grab(int index) {
    Slot& slot = slots_[static_cast<std::size_t>(index)];
    listen();
    orx::imgThreadManager.startThread(cameras_, &slot.config, index);
    if (orx::lastRefusal().code != orx::rcNone) failCamera(CameraTrouble::kOther);
    slot.isGrabbing = true;
}

// The manager ends the threads from a number on; those of other cameras begin again at once.
void Cameras::endGrabbing(int index) {
    orx::imgThreadManager.setCameraCntSame2ThreadCnt(index);
    slots_[static_cast<std::size_t>(index)].isGrabbing = false;
    for (int other = index + 1; other < orx::MAXCameraNum; ++other) {
        if (slots_[static_cast<std::size_t>(other)].isGrabbing) grab(other);
    }
}

void Cameras::closeSlot(int index) {
    slots_[static_cast<std::size_t>(index)].session = 0;
    orx::closeFrames(index);  // first: whoever waits for a frame need not wait for what follows
    endGrabbing(index);
    cameras_->close(index);
}

void Cameras::close(int index, std::uint64_t session) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (isOpen(index, session)) closeSlot(index);
}

void Cameras::closeAll() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (cameras_ == nullptr || cameras_->dllLoaded == 0) return;
    for (int i = orx::MAXCameraNum - 1; i >= 0; --i) {
        if (slots_[static_cast<std::size_t>(i)].session != 0) closeSlot(i);
    }
    cameras_->DestoryCamera();
    forgetMessages();
}

bool Cameras::isOpen(int index, std::uint64_t session) const {
    return slots_[static_cast<std::size_t>(index)].session == session && session != 0;
}

Cameras::Slot& Cameras::openSlot(int index, std::uint64_t session) {
    if (!isOpen(index, session))
        fail(CameraTrouble::kOther, "camera " + std::to_string(index) + " is closed");
    listen();
    return slots_[static_cast<std::size_t>(index)];
}

void Cameras::stop(int index, std::uint64_t session) {
    const std::lock_guard<std::mutex> lock(mutex_);
    openSlot(index, session);
    endGrabbing(index);
    listen();
    if (!cameras_->stop(index)) failCamera(CameraTrouble::kOther);
}

void Cameras::start(int index, std::uint64_t session) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (openSlot(index, session).isGrabbing) return;
    if (!cameras_->start(index)) failCamera(CameraTrouble::kOther);
    grab(index);
}

void Cameras::setParameter(int index, std::uint64_t session, int id, long value) {
    const std::lock_guard<std::mutex> lock(mutex_);
    Slot& slot = openSlot(index, session);
    if (!cameras_->SetParam(index, value, id)) failCamera(CameraTrouble::kOther);
    if (id == kFrameRate) slot.config.frameRate = static_cast<int>(std::clamp(value, 1L, long{kFastestPace}));
}

float Cameras::parameter(int index, std::uint64_t session, int id) {
    const std::lock_guard<std::mutex> lock(mutex_);
    openSlot(index, session);
    const float value = cameras_->GetParam(index, id);
    if (!std::isfinite(value)) failCamera(CameraTrouble::kOther);
    return value;
}

cv::Size Cameras::size(int index, std::uint64_t session) {
    const std::lock_guard<std::mutex> lock(mutex_);
    openSlot(index, session);
    return cameras_->getImgSize(index);
}

std::vector<CameraFormat> Cameras::list(int type) {
    const std::lock_guard<std::mutex> lock(mutex_);
    try {
        find(type);
    } catch (const CameraFailure& failure) {
        if (failure.trouble == CameraTrouble::kNotFound) return {};
        throw;
    }
    std::vector<CameraFormat> found;
    for (int i = 0; i < orx::MAXCameraNum; ++i) {
        const auto place = static_cast<std::size_t>(i);
        const bool isHere = slots_[place].session != 0;
        if (!isHere && !cameras_->open(i, type)) continue;
        found.push_back({i, cameras_->getImgSize(i), cameras_->cameras[place]->channels, isHere});
        if (!isHere) cameras_->close(i);
    }
    forgetMessages();
    return found;
}

int Cameras::connectedType() {
    const std::lock_guard<std::mutex> lock(mutex_);
    load();
    listen();
    const int type = cameras_->getCameraType();
    if (type == -3) failCamera(CameraTrouble::kOther);
    return type;
}

bool Cameras::hasRuntime(int type) {
    const std::lock_guard<std::mutex> lock(mutex_);
    load();
    return cameras_->CheckCameraDriverValid(type, nullptr);
}

}  // namespace orxpy
