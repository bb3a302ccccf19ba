#include "drivers/TQVisionDriver/camera_parameters.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "drivers/TQVisionDriver/frame_conversion.h"
#include "drivers/TQVisionDriver/glib_object.h"
#include "drivers/TQVisionDriver/trace.h"
#include "drivers/vision_driver.h"

namespace vision {
namespace {

bool adjustsItself(ArvCamera* camera, const char* feature) {
    Error error;
    if (arv_camera_is_feature_available(camera, feature, error.receive()) == FALSE) return false;
    const char* const mode = arv_camera_get_string(camera, feature, error.receive());
    return mode != nullptr && std::string(mode) != "Off";
}

// A camera refuses to be set by hand what it adjusts by itself.
void stopAdjusting(ArvCamera* camera, const char* feature) {
    Error error;
    if (adjustsItself(camera, feature)) arv_camera_set_string(camera, feature, "Off", error.receive());
}

bool setExposure(ArvCamera* camera, double microseconds) {
    if (!(microseconds > 0.0)) return false;
    stopAdjusting(camera, "ExposureAuto");
    Error error;
    arv_camera_set_exposure_time(camera, microseconds, error.receive());
    return !error.failed();
}

bool setGain(ArvCamera* camera, double tenthsOfDecibel) {
    stopAdjusting(camera, "GainAuto");
    Error error;
    arv_camera_set_gain(camera, tenthsOfDecibel / 10.0, error.receive());
    return !error.failed();
}

bool setFrameRate(ArvCamera* camera, double rate) {
    if (!(rate > 0.0)) return false;
    Error error;
    double lowest = 0.0;
    double highest = 0.0;
    // Aravis would take the nearest possible rate without a word.
    arv_camera_get_frame_rate_bounds(camera, &lowest, &highest, error.receive());
    if (!error.failed() && highest > 0.0 && (rate < lowest || rate > highest)) return false;
    arv_camera_set_frame_rate(camera, rate, error.receive());
    return !error.failed();
}

// The camera's inputs in the order of their names: some brands count them from 0, others from 1.
std::vector<std::string> inputLines(ArvCamera* camera) {
    Error error;
    guint count = 0;
    const char** const sources = arv_camera_dup_available_trigger_sources(camera, &count, error.receive());
    std::vector<std::string> lines;
    for (guint i = 0; sources != nullptr && i < count; ++i) {
        if (std::string(sources[i]).compare(0, 4, "Line") == 0) lines.emplace_back(sources[i]);
    }
    g_free(static_cast<gpointer>(sources));
    std::sort(lines.begin(), lines.end());
    return lines;
}

bool setTriggerMode(ArvCamera* camera, long mode) {
    Error error;
    if (mode == VD_TRIGGER_OFF) {
        arv_camera_clear_triggers(camera, error.receive());
        return !error.failed();
    }
    if (mode < VD_TRIGGER_OFF || mode > VD_TRIGGER_LINE_2) return false;
    std::string source = "Software";
    if (mode != VD_TRIGGER_SOFTWARE) {
        const std::vector<std::string> lines = inputLines(camera);
        const auto index = static_cast<std::size_t>(mode - VD_TRIGGER_LINE_1);
        if (index >= lines.size()) return false;
        source = lines[index];
    }
    arv_camera_set_trigger(camera, source.c_str(), error.receive());
    return !error.failed();
}

std::optional<double> triggerMode(ArvCamera* camera) {
    Error error;
    const char* const mode = arv_camera_get_string(camera, "TriggerMode", error.receive());
    if (error.failed() || mode == nullptr) return std::nullopt;
    if (std::string(mode) == "Off") return VD_TRIGGER_OFF;
    const char* const source = arv_camera_get_trigger_source(camera, error.receive());
    if (error.failed() || source == nullptr) return std::nullopt;
    if (std::string(source) == "Software") return VD_TRIGGER_SOFTWARE;
    const std::vector<std::string> lines = inputLines(camera);
    if (!lines.empty() && lines[0] == source) return VD_TRIGGER_LINE_1;
    if (lines.size() > 1 && lines[1] == source) return VD_TRIGGER_LINE_2;
    return std::nullopt;
}

constexpr std::array kRegionFeatures = {"Width", "Height", "OffsetX", "OffsetY"};

const char* regionFeature(int id) { return kRegionFeatures[static_cast<std::size_t>(id - VD_PARAM_WIDTH)]; }

bool setRegion(ArvCamera* camera, int id, double value) {
    constexpr double kLargest = 1 << 30;
    if (!(value >= 0.0 && value <= kLargest)) return false;
    Error error;
    gint64 lowest = 0;
    gint64 highest = 0;
    arv_camera_get_integer_bounds(camera, regionFeature(id), &lowest, &highest, error.receive());
    const auto wanted = static_cast<gint64>(value);
    if (error.failed() || wanted < lowest || wanted > highest) return false;
    const gint64 step = arv_camera_get_integer_increment(camera, regionFeature(id), error.receive());
    if (!error.failed() && step > 1 && (wanted - lowest) % step != 0) return false;
    arv_camera_set_integer(camera, regionFeature(id), wanted, error.receive());
    return !error.failed();
}

bool setPixelFormat(ArvCamera* camera, int format) {
    Error error;
    guint count = 0;
    gint64* const available = arv_camera_dup_available_pixel_formats(camera, &count, error.receive());
    bool set = false;
    for (const std::uint32_t code : pixelCodes(format)) {
        if (set || available == nullptr ||
            std::find(available, available + count, code) == available + count) {
            continue;
        }
        arv_camera_set_pixel_format(camera, code, error.receive());
        set = !error.failed();
    }
    g_free(available);
    return set;
}

std::optional<double> unlessFailed(const Error& error, double value) {
    return error.failed() ? std::nullopt : std::optional<double>(value);
}

}  // namespace

bool setCameraParameter(ArvCamera* camera, int id, double value) {
    switch (id) {
        case VD_PARAM_EXPOSURE:
            return setExposure(camera, value);
        case VD_PARAM_GAIN:
            return setGain(camera, value);
        case VD_PARAM_FRAME_RATE:
            return setFrameRate(camera, value);
        case VD_PARAM_TRIGGER_MODE:
            return setTriggerMode(camera, std::lround(value));
        case VD_PARAM_WIDTH:
        case VD_PARAM_HEIGHT:
        case VD_PARAM_OFFSET_X:
        case VD_PARAM_OFFSET_Y:
            return setRegion(camera, id, value);
        case VD_PARAM_PIXEL_FORMAT:
            return value >= 0.0 && value <= static_cast<int>(VD_PIXEL_BGR8) &&
                   setPixelFormat(camera, static_cast<int>(value));
        case VD_PARAM_SOFTWARE_TRIGGER: {
            if (triggerMode(camera) != VD_TRIGGER_SOFTWARE) return false;
            Error error;
            arv_camera_software_trigger(camera, error.receive());
            return !error.failed();
        }
        default:
            return false;
    }
}

std::optional<double> cameraParameter(ArvCamera* camera, int id) {
    Error error;
    switch (id) {
        case VD_PARAM_EXPOSURE: {
            const double exposure = arv_camera_get_exposure_time(camera, error.receive());
            return unlessFailed(error, exposure);
        }
        case VD_PARAM_GAIN: {
            const double gain = arv_camera_get_gain(camera, error.receive());
            return unlessFailed(error, gain * 10.0);
        }
        case VD_PARAM_FRAME_RATE: {
            const double rate = arv_camera_get_frame_rate(camera, error.receive());
            return unlessFailed(error, rate);
        }
        case VD_PARAM_TRIGGER_MODE:
            return triggerMode(camera);
        case VD_PARAM_WIDTH:
        case VD_PARAM_HEIGHT:
        case VD_PARAM_OFFSET_X:
        case VD_PARAM_OFFSET_Y: {
            const gint64 value = arv_camera_get_integer(camera, regionFeature(id), error.receive());
            return unlessFailed(error, static_cast<double>(value));
        }
        case VD_PARAM_PIXEL_FORMAT: {
            const int format = pixelFormat(arv_camera_get_pixel_format(camera, error.receive()));
            return error.failed() || format < 0 ? std::nullopt : std::optional<double>(format);
        }
        case VD_PARAM_SOFTWARE_TRIGGER:
            return 0.0;
        default:
            return std::nullopt;
    }
}

ParameterValues readCameraParameters(ArvCamera* camera) {
    ParameterValues values;
    for (int id = VD_PARAM_EXPOSURE; id <= VD_PARAM_PIXEL_FORMAT; ++id) {
        if (id == VD_PARAM_EXPOSURE && adjustsItself(camera, "ExposureAuto")) continue;
        if (id == VD_PARAM_GAIN && adjustsItself(camera, "GainAuto")) continue;
        if (const std::optional<double> value = cameraParameter(camera, id)) values[id] = *value;
    }
    return values;
}

void restoreCameraParameters(ArvCamera* camera, const ParameterValues& values) {
    // The region may be as large as the offsets leave room for, and the rate as high as format, region and
    // exposure allow.
    for (const int offset : {VD_PARAM_OFFSET_X, VD_PARAM_OFFSET_Y}) {
        if (values.count(offset) != 0) setCameraParameter(camera, offset, 0.0);
    }
    for (const int id :
         {VD_PARAM_PIXEL_FORMAT, VD_PARAM_WIDTH, VD_PARAM_HEIGHT, VD_PARAM_OFFSET_X, VD_PARAM_OFFSET_Y,
          VD_PARAM_EXPOSURE, VD_PARAM_GAIN, VD_PARAM_FRAME_RATE, VD_PARAM_TRIGGER_MODE}) {
        const auto value = values.find(id);
        if (value != values.end() && !setCameraParameter(camera, id, value->second)) {
            trace("parameter " + std::to_string(id) + " could not be restored to " +
                  std::to_string(value->second));
        }
    }
}

}  // namespace vision
