#include <arv.h>

#include <algorithm>
#include <tuple>

#include "ZULLib/sync_internal.h"
#include "drivers/devices/device_list.h"

namespace vision {
namespace {

std::string text(const char* given) { return given == nullptr ? "" : given; }

Device device(unsigned int index) {
    Device found;
    found.serial = text(arv_get_device_serial_nbr(index));
    found.vendor = text(arv_get_device_vendor(index));
    found.model = text(arv_get_device_model(index));
    found.id = text(arv_get_device_id(index));
    if (text(arv_get_device_protocol(index)) == "GigEVision")
        found.address = text(arv_get_device_address(index));
    return found;
}

}  // namespace

bool canListDevices() { return true; }

std::vector<Device> listDevices() {
    // Aravis keeps one list for the process, and its texts live until the next search.
    static zul::Mutex searching;
    const zul::LockGuard lock(searching);
    arv_update_device_list();
    std::vector<Device> devices;
    const unsigned int count = arv_get_n_devices();
    for (unsigned int i = 0; i < count; ++i) devices.push_back(device(i));
    std::sort(devices.begin(), devices.end(), [](const Device& a, const Device& b) {
        return std::tie(a.serial, a.id) < std::tie(b.serial, b.id);
    });
    return devices;
}

}  // namespace vision
