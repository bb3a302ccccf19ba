// Real cameras, where this module was built with Aravis.
#ifndef DRIVERS_TQVISIONDRIVER_REAL_CAMERA_H
#define DRIVERS_TQVISIONDRIVER_REAL_CAMERA_H

#include <memory>

#include "drivers/TQVisionDriver/settings.h"
#include "drivers/TQVisionDriver/source.h"
#include "drivers/devices/device_list.h"

namespace vision {

// `device` needs no more than its serial number; where the camera is will be looked up when it is opened.
// Null without Aravis.
std::unique_ptr<Source> makeRealCamera(const Device& device, const DeviceSettings& settings);

}  // namespace vision

#endif
