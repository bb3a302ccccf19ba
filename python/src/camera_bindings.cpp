// Cameras for Python: cameras.h.
#include <pybind11/pybind11.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "cameras.h"
#include "orxFunctions/camera/camera_state.h"
#include "orxFunctions/camera/frames.h"
#include "orxFunctions/camera/image_thread_manager.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenSignals{50};

const char* errorOf(CameraTrouble trouble) {
    switch (trouble) {
        case CameraTrouble::kNotFound:
            return "CameraNotFound";
        case CameraTrouble::kLost:
            return "CameraLost";
        case CameraTrouble::kTimeout:
            return "CameraTimeout";
        case CameraTrouble::kOther:
            break;
    }
    return "CameraError";
}

void translate(std::exception_ptr thrown) {
    try {
        if (thrown) std::rethrow_exception(thrown);
    } catch (const CameraFailure& failure) {
        const py::object kind = py::module_::import("orxfunctions.errors").attr(errorOf(failure.trouble));
        PyErr_SetString(kind.ptr(), failure.text.c_str());
    }
}

std::int64_t nanosecondsOf(std::chrono::system_clock::time_point time) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count();
}

std::uint64_t open(int index, int type, bool everyOne, int capacity, bool reconnects, long frameRate,
                   int scale, int rotation, bool flips) {
    if (index < 0 || index >= orx::MAXCameraNum) {
        throw CameraFailure{CameraTrouble::kNotFound, "there can't be a camera " + std::to_string(index) +
                                                          "; 0 to " + std::to_string(orx::MAXCameraNum - 1)};
    }
    CameraOptions options;
    options.type = type;
    options.everyOne = everyOne;
    options.capacity = capacity;
    options.reconnects = reconnects;
    options.frameRate = frameRate;
    options.scale = scale;
    options.rotation = rotation;
    options.flips = flips;
    return unlocked([&] { return cameras().open(index, options); });
}

enum class Wait { kFrame, kNothing, kClosed, kLost };

Wait waitForFrame(int index, std::uint64_t session, std::chrono::milliseconds time, orx::TFrame& frame) {
    if (!cameras().isOpen(index, session)) return Wait::kClosed;
    if (orx::takeFrame(index, frame, static_cast<int>(time.count()))) return Wait::kFrame;
    if (!cameras().isOpen(index, session)) return Wait::kClosed;
    const orx::TCameraState state = orx::cameraStatus(index).state;
    return state == orx::csLost || state == orx::csReconnecting ? Wait::kLost : Wait::kNothing;
}

[[noreturn]] void failWaiting(int index, double seconds) {
    const orx::TCameraStatus status = orx::cameraStatus(index);
    const std::string name = "camera " + std::to_string(index);
    if (status.state == orx::csLost || status.state == orx::csReconnecting) {
        std::string text = name + " is lost: " + orx::cameraReasonText(status.reason);
        if (status.attempts > 0) text += ", " + std::to_string(status.attempts) + " attempts to reconnect";
        throw CameraFailure{CameraTrouble::kLost, text};
    }
    throw CameraFailure{CameraTrouble::kTimeout, name + " (" + orx::cameraStateText(status.state) +
                                                     "): no frame within " +
                                                     std::string(py::str(py::float_(seconds))) + " s"};
}

using FrameRecord = std::tuple<ArrayOf<unsigned char>, std::uint64_t, std::int64_t, std::int64_t, int,
                               std::uint64_t, bool, std::uint64_t, std::uint64_t>;

FrameRecord recordOf(orx::TFrame&& frame) {
    return {bytesFrom(std::move(frame.image)),
            frame.number,
            nanosecondsOf(frame.hostTime),
            frame.deviceTime,
            frame.camera,
            frame.start,
            frame.isNumbered,
            frame.lostBefore,
            frame.droppedBefore};
}

// Waits in pieces, between which Python sees its signals; none when the camera was closed. Without
// `seconds` it waits for ever.
std::optional<FrameRecord> take(int index, std::uint64_t session, std::optional<double> seconds,
                                bool waitsForReturn) {
    constexpr double kLongest = 1e9;
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(
                                        std::min(seconds.value_or(kLongest), kLongest)));
    orx::TFrame frame;
    while (true) {
        const Wait wait = unlocked([&] {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
            return waitForFrame(index, session, std::clamp(left, left.zero(), kBetweenSignals), frame);
        });
        if (wait == Wait::kFrame) return recordOf(std::move(frame));
        if (wait == Wait::kClosed) return std::nullopt;
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        if ((wait == Wait::kLost && !waitsForReturn) || Clock::now() >= end)
            failWaiting(index, seconds.value_or(kLongest));
    }
}

AnyArray latest(int index, std::uint64_t session) {
    cv::Mat image = unlocked([&] {
        return cameras().isOpen(index, session) ? orx::imgThreadManager.getThreadImage(index) : cv::Mat();
    });
    if (image.empty())
        throw CameraFailure{CameraTrouble::kOther, "camera " + std::to_string(index) + " is closed"};
    return arrayFrom(std::move(image));
}

using Counts =
    std::tuple<std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t>;

Counts counts(int index) {
    const orx::TFrameCounts counts = unlocked([&] { return orx::frameCounts(index); });
    return {counts.delivered, counts.taken, counts.waiting, counts.dropped, counts.lost, counts.repeated};
}

std::tuple<std::string, std::string, std::int64_t, int> status(int index) {
    const orx::TCameraStatus status = unlocked([&] { return orx::cameraStatus(index); });
    return {orx::cameraStateText(status.state), orx::cameraReasonText(status.reason),
            nanosecondsOf(status.since), status.attempts};
}

std::vector<std::tuple<int, int, int, int, bool>> list(int type) {
    std::vector<std::tuple<int, int, int, int, bool>> found;
    for (const CameraFormat& format : unlocked([&] { return cameras().list(type); }))
        found.emplace_back(format.index, format.size.width, format.size.height, format.channels,
                           format.isOpen);
    return found;
}

std::pair<int, int> sizeOf(int index, std::uint64_t session) {
    const cv::Size size = unlocked([&] { return cameras().size(index, session); });
    return {size.width, size.height};
}

}  // namespace

void bindCameras(py::module_& core) {
    py::register_exception_translator(&translate);
    core.def("camera_open", &open, py::arg("index"), py::arg("type"), py::arg("every_one"),
             py::arg("capacity"), py::arg("reconnects"), py::arg("frame_rate"), py::arg("scale"),
             py::arg("rotation"), py::arg("flips"));
    core.def(
        "camera_close",
        [](int index, std::uint64_t session) { unlocked([&] { cameras().close(index, session); }); },
        py::arg("index"), py::arg("session"));
    core.def("cameras_close", [] { unlocked([] { cameras().closeAll(); }); });
    core.def(
        "camera_is_open", [](int index, std::uint64_t session) { return cameras().isOpen(index, session); },
        py::arg("index"), py::arg("session"));
    core.def(
        "camera_stop",
        [](int index, std::uint64_t session) { unlocked([&] { cameras().stop(index, session); }); },
        py::arg("index"), py::arg("session"));
    core.def(
        "camera_start",
        [](int index, std::uint64_t session) { unlocked([&] { cameras().start(index, session); }); },
        py::arg("index"), py::arg("session"));
    core.def(
        "camera_set",
        [](int index, std::uint64_t session, int id, long value) {
            unlocked([&] { cameras().setParameter(index, session, id, value); });
        },
        py::arg("index"), py::arg("session"), py::arg("id"), py::arg("value"));
    core.def(
        "camera_get",
        [](int index, std::uint64_t session, int id) {
            return unlocked([&] { return cameras().parameter(index, session, id); });
        },
        py::arg("index"), py::arg("session"), py::arg("id"));
    core.def("camera_size", &sizeOf, py::arg("index"), py::arg("session"));
    core.def("camera_take", &take, py::arg("index"), py::arg("session"), py::arg("seconds"),
             py::arg("waits_for_return"));
    core.def("camera_latest", &latest, py::arg("index"), py::arg("session"));
    core.def("camera_counts", &counts, py::arg("index"));
    core.def("camera_status", &status, py::arg("index"));
    core.def("cameras_list", &list, py::arg("type"));
    core.def("cameras_brand", [] { return unlocked([] { return cameras().connectedType(); }); });
    core.def(
        "cameras_runtime", [](int type) { return unlocked([&] { return cameras().hasRuntime(type); }); },
        py::arg("type"));
}

}  // namespace orxpy
