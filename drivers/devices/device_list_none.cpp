#include "drivers/devices/device_list.h"

namespace vision {

bool canListDevices() { return false; }

std::vector<Device> listDevices() { return {}; }

}  // namespace vision
