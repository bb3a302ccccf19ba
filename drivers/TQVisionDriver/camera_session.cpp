#include "drivers/TQVisionDriver/camera_session.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "drivers/TQVisionDriver/camera_probe.h"
#include "drivers/TQVisionDriver/frame_conversion.h"
#include "drivers/TQVisionDriver/releaser.h"
#include "drivers/TQVisionDriver/trace.h"

namespace vision {
namespace {

constexpr std::chrono::milliseconds kHostProbe{100};

RawFrame rawFrame(ArvBuffer* buffer) {
    RawFrame frame;
    if (arv_buffer_get_n_parts(buffer) == 0) return frame;
    constexpr guint kFirst = 0;
    frame.data = static_cast<const unsigned char*>(arv_buffer_get_part_data(buffer, kFirst, &frame.size));
    frame.code = arv_buffer_get_part_pixel_format(buffer, kFirst);
    frame.width = arv_buffer_get_part_width(buffer, kFirst);
    frame.height = arv_buffer_get_part_height(buffer, kFirst);
    gint rowPadding = 0;
    gint endPadding = 0;
    arv_buffer_get_part_padding(buffer, kFirst, &rowPadding, &endPadding);
    frame.rowPadding = rowPadding;
    return frame;
}

bool formatOf(ArvCamera* camera, PictureFormat& format) {
    Error error;
    gint left = 0;
    gint top = 0;
    arv_camera_get_region(camera, &left, &top, &format.width, &format.height, error.receive());
    if (error.failed()) return false;
    const ArvPixelFormat code = arv_camera_get_pixel_format(camera, error.receive());
    format.channels = channelsOf(code);
    if (format.channels == 0) trace("pixel format " + std::to_string(code) + " can't be converted");
    return format.channels != 0 && format.width > 0 && format.height > 0;
}

}  // namespace

CameraSession::CameraSession(const Device& device, const DeviceSettings& settings)
    : settings_(settings), device_(device) {}

std::shared_ptr<CameraSession> CameraSession::open(const Device& device, const DeviceSettings& settings) {
    auto session = std::make_shared<CameraSession>(device, settings);
    auto opened = CameraLink::open(device, settings, session->closing_);
    if (!opened) return nullptr;
    const std::optional<double> trigger = cameraParameter(opened->camera(), VD_PARAM_TRIGGER_MODE);
    session->triggered_ = trigger && *trigger > 0.0;
    {
        const zul::LockGuard lock(session->mutex_);
        session->parameters_ = readCameraParameters(opened->camera());
        session->link_ = std::move(opened);
    }
    // It keeps the session alive: it may be in the middle of a connection when the host closes.
    session->watcher_ = std::thread([session] { session->watch(); });
    return session;
}

void CameraSession::close() {
    closing_ = true;
    std::shared_ptr<CameraLink> last;
    {
        const zul::LockGuard lock(mutex_);
        running_ = false;
        last.swap(link_);
    }
    forgetPicture();
    if (last && !answers(last)) last->markDead();
    last.reset();
    wake_.notify_all();
    const auto watcher = std::make_shared<std::thread>(std::move(watcher_));
    releaseLater([watcher] { watcher->join(); });
}

std::shared_ptr<CameraLink> CameraSession::link() {
    const zul::LockGuard lock(mutex_);
    return link_;
}

bool CameraSession::answers(const std::shared_ptr<CameraLink>& link) {
    if (link->controlLost()) return false;
    if (arv_camera_is_gv_device(link->camera()) == FALSE) return true;
    std::string address;
    {
        const zul::LockGuard lock(mutex_);
        address = device_.address;
    }
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (probeCamera(address, kHostProbe) != ProbeAnswer::kSilent) return true;
    }
    drop(link, "does not answer");
    return false;
}

void CameraSession::drop(const std::shared_ptr<CameraLink>& link, const std::string& reason) {
    link->markDead();
    const zul::LockGuard lock(mutex_);
    if (link_ != link) return;
    trace("camera " + device_.serial + " at " + device_.address + " is lost: it " + reason);
    link_.reset();
}

bool CameraSession::start(PictureFormat& format) {
    const std::shared_ptr<CameraLink> current = link();
    if (!current || !answers(current) || !formatOf(current->camera(), format)) return false;
    counters_->reset();
    converted_ = cv::Mat::zeros(format.height, format.width, CV_8UC(format.channels));
    given_ = {format.width, format.height, format.channels, converted_.data};
    givenArrived_ = started_ = Clock::now();
    givenNumber_ = givenTime_ = 0;
    ParameterValues values = readCameraParameters(current->camera());
    updatePatience(current->camera());
    if (!current->startStream(counters_)) return false;
    {
        const zul::LockGuard lock(mutex_);
        parameters_ = std::move(values);
        running_ = true;
        waitingSince_ = Clock::now();
    }
    return true;
}

void CameraSession::stop() {
    {
        const zul::LockGuard lock(mutex_);
        running_ = false;
    }
    const std::shared_ptr<CameraLink> current = link();
    forgetPicture();
    if (current && answers(current)) current->stopStream();
}

void CameraSession::forgetPicture() {
    given_ = {};
    held_ = {};
}

bool CameraSession::fetch(VDImage& image) {
    const std::shared_ptr<CameraLink> current = link();
    const std::shared_ptr<CameraStream> stream = current ? current->stream() : nullptr;
    if (!stream) return false;
    ReceivedFrame frame;
    if (stream->take(kLongestFetch, frame)) {
        adopt(stream, std::move(frame));
    } else if (!isPatient()) {
        return false;
    }
    image = given_;
    return true;
}

VDFrameInfo CameraSession::frameInfo() {
    const std::shared_ptr<CameraLink> current = link();
    const std::shared_ptr<CameraStream> stream = current ? current->stream() : nullptr;
    VDFrameInfo info = {};
    info.number = givenNumber_;
    info.newest = std::max(givenNumber_, stream ? stream->newestNumber() : 0);
    info.device_time = givenTime_;
    info.age = nanosecondsSince(givenArrived_);
    info.flags = VD_FRAME_RETURNS;
    if (givenNumber_ == 0 && !triggered_ && Clock::now() - started_ < kLongestStart) {
        info.flags |= VD_FRAME_FIRST_PENDING;
    }
    return info;
}

void CameraSession::adopt(const std::shared_ptr<CameraStream>& stream, ReceivedFrame frame) {
    const RawFrame raw = rawFrame(frame.buffer.get());
    const Clock::time_point arrived = frame.arrived;
    const std::uint64_t number = frame.number;
    const std::uint64_t time = arv_buffer_get_timestamp(frame.buffer.get());
    if (isPlainPicture(raw)) {
        // Handed out as it is, and given back when the host comes for the next one.
        std::swap(held_, frame);
        given_ = {raw.width, raw.height, channelsOf(raw.code), const_cast<unsigned char*>(raw.data)};
        const std::shared_ptr<CameraStream> before = heldFrom_.lock();
        heldFrom_ = stream;
        if (before == stream) stream->giveBack(std::move(frame.buffer));
    } else {
        const bool usable = toPicture(raw, converted_);
        stream->giveBack(std::move(frame.buffer));
        if (!usable) {
            counters_->unusable();
            return;
        }
        given_ = {converted_.cols, converted_.rows, converted_.channels(), converted_.data};
    }
    givenArrived_ = arrived;
    givenNumber_ = number;
    givenTime_ = time;
    const zul::LockGuard lock(mutex_);
    waitingSince_ = arrived;
}

void CameraSession::updatePatience(ArvCamera* camera) {
    const double rate = cameraParameter(camera, VD_PARAM_FRAME_RATE).value_or(0.0);
    const double exposure = cameraParameter(camera, VD_PARAM_EXPOSURE).value_or(0.0) / 1e6;
    const zul::LockGuard lock(mutex_);
    secondsPerPicture_ = std::max(exposure, rate > 0.0 ? 1.0 / rate : 0.0);
}

bool CameraSession::isPatient() {
    if (triggered_) return true;
    const double measured = std::chrono::duration<double>(counters_->counts().lastInterval).count();
    const zul::LockGuard lock(mutex_);
    return Clock::now() - waitingSince_ <= patience(std::max(measured, secondsPerPicture_));
}

bool CameraSession::setParameter(int id, long value) {
    const std::shared_ptr<CameraLink> current = link();
    if (!current || !answers(current)) return false;
    const bool changesSize = id == VD_PARAM_WIDTH || id == VD_PARAM_HEIGHT || id == VD_PARAM_PIXEL_FORMAT;
    if (changesSize && current->stream()) return false;
    if (!setCameraParameter(current->camera(), id, static_cast<double>(value))) return false;
    if (id == VD_PARAM_TRIGGER_MODE) triggered_ = value != VD_TRIGGER_OFF;
    if (id != VD_PARAM_SOFTWARE_TRIGGER) updatePatience(current->camera());
    const zul::LockGuard lock(mutex_);
    if (id != VD_PARAM_SOFTWARE_TRIGGER) parameters_[id] = static_cast<double>(value);
    if (id == VD_PARAM_TRIGGER_MODE) waitingSince_ = Clock::now();
    return true;
}

float CameraSession::parameter(int id) {
    const FrameCounts counts = counters_->counts();
    switch (id) {
        case VD_PARAM_FRAME_NUMBER:
            return static_cast<float>(counts.complete);
        case VD_PARAM_FRAME_AGE:
            return std::chrono::duration<float, std::milli>(Clock::now() - givenArrived_).count();
        case VD_PARAM_FRAMES_LOST:
            return static_cast<float>(counts.lost);
        case VD_PARAM_BYTES_RECEIVED:
            return static_cast<float>(counts.bytes);
        default:
            break;
    }
    const std::shared_ptr<CameraLink> current = link();
    if (!current || !answers(current)) return kNoValue;
    const std::optional<double> value = cameraParameter(current->camera(), id);
    return value ? static_cast<float>(*value) : kNoValue;
}

}  // namespace vision
