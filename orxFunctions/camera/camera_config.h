// What a host settles for each camera.
#ifndef ORXFUNCTIONS_CAMERA_CAMERA_CONFIG_H
#define ORXFUNCTIONS_CAMERA_CAMERA_CONFIG_H

#include <cstdint>
#include <string>

#include "orxFunctions/camera/polled.h"
#include "orxFunctions/foundation/rect.h"

namespace orx {

// The settings of one grab thread (camera/image_thread_manager.h), owned by the host. Fields marked "polled"
// may be changed while the thread runs and count from the next picture on; the thread reads nothing else of
// it.
struct TCameraConfig {
    std::string name;
    std::int32_t hostInt1 = 2;  // hostInt1 to hostInt3, hostValue and the rectangles: the host's own
    std::int32_t hostInt2 = 0;
    std::int32_t hostInt3 = 1;
    TPolled<std::int32_t> frameRate = 10;  // polled: pictures per second aimed at; values below 1 count as 1
    std::int64_t hostValue = 0;
    TPolled<bool> scaleEnable = false;      // polled: scale pictures down
    TPolled<std::int32_t> scaleFactor = 2;  // polled: by 2 or 4; any other value does not scale
    TORXRect hostRect1;
    TORXRect hostRect2;
};

}  // namespace orx

#endif
