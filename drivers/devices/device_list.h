// The GigE Vision and USB3 Vision cameras that are connected.
#ifndef DRIVERS_DEVICES_DEVICE_LIST_H
#define DRIVERS_DEVICES_DEVICE_LIST_H

#include <string>
#include <vector>

namespace vision {

struct Device {
    std::string serial;
    std::string vendor;
    std::string model;
    std::string id;       // Aravis' name for it
    std::string address;  // of a GigE camera, "192.168.1.5"; empty for a USB camera
};

// False when these modules were built without Aravis; there are no devices then.
bool canListDevices();

// Searches for cameras, which takes about a second, and sorts them by serial number (then by name), so that
// the order stays the same as long as the cameras do. Thread-safe.
std::vector<Device> listDevices();

}  // namespace vision

#endif
