// The one procedure of LumoCfg. No exception leaves it.
#include "drivers/vision_driver.h"

#include <exception>
#include <vector>

#include "drivers/devices/brands.h"
#include "drivers/devices/device_list.h"

extern "C" int VDGetCameraType(void) {
    try {
        std::vector<std::string> vendors;
        for (const vision::Device& device : vision::listDevices()) vendors.push_back(device.vendor);
        return vision::commonBrand(vendors);
    } catch (const std::exception&) {
        return VD_TYPE_NONE;
    }
}
