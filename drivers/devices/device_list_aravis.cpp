#include "drivers/devices/device_list.h"

#include <arv.h>

#include <algorithm>
#include <tuple>

namespace vision {
namespace {

// Aravis keeps one list for the process, and its texts live until the next search. The lock is therefore one
// for both modules: that of the first to come, found through an object of Aravis.
class SearchLock {
  public:
    SearchLock() : mutex_(shared()) { g_mutex_lock(mutex_); }
    ~SearchLock() { g_mutex_unlock(mutex_); }
    SearchLock(const SearchLock&) = delete;
    SearchLock& operator=(const SearchLock&) = delete;

  private:
    static GMutex* shared() {
        constexpr const char* kName = "orxFunctions-device-list";
        static GMutex own;  // all zero is a valid mutex; modules stay loaded
        auto* const owner = G_OBJECT(arv_gv_interface_get_instance());
        g_object_replace_data(owner, kName, nullptr, &own, nullptr, nullptr);
        return static_cast<GMutex*>(g_object_get_data(owner, kName));
    }

    GMutex* const mutex_;
};

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
    const SearchLock lock;
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
