// Asks a GigE camera by unicast whether it lives. Needs no control of the camera and waits no longer than
// told, unlike a register access through Aravis, which repeats itself for seconds.
#ifndef DRIVERS_TQVISIONDRIVER_CAMERA_PROBE_H
#define DRIVERS_TQVISIONDRIVER_CAMERA_PROBE_H

#include <chrono>
#include <optional>
#include <string>

namespace vision {

enum class ProbeAnswer {
    kSilent,     // no answer in time
    kFree,       // it lives, and nobody controls it
    kControlled  // it lives, and somebody controls it, or it does not say
};

ProbeAnswer probeCamera(const std::string& address, std::chrono::milliseconds wait);

// The serial number, which may be empty, that the device at `address` reports; nothing when there is no
// answer in time.
std::optional<std::string> serialAt(const std::string& address, std::chrono::milliseconds wait);

}  // namespace vision

#endif
