// A brand probe module that answers what tests tell it. Built with and without its procedure.
#include <atomic>

#include "drivers/vision_driver.h"

namespace {

std::atomic<int> cameraType{VD_TYPE_NONE};

}  // namespace

extern "C" VD_EXPORT void setCameraType(int type);
void setCameraType(int type) { cameraType = type; }

int VDGetCameraType() { return cameraType; }
