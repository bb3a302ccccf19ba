// A brand probe module that answers what tests tell it. Built with and without its procedure.
#include <atomic>
#include <stdexcept>

#include "drivers/vision_driver.h"

namespace {

std::atomic<int> cameraType{VD_TYPE_NONE};
constexpr int kOutOfOrder = 1000;

}  // namespace

extern "C" VD_EXPORT void setCameraType(int type);
void setCameraType(int type) { cameraType = type; }

int VDGetCameraType() {
    if (cameraType == kOutOfOrder) throw std::runtime_error("the fake probe is out of order");
    return cameraType;
}
