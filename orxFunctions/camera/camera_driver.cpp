#include "orxFunctions/camera/camera_driver_internal.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "orxFunctions/camera/camera_messages_internal.h"
#include "orxFunctions/foundation/host_bridge.h"

namespace orx {
namespace {

constexpr platform::ModuleName kDriverName = {"TQVisionDriver.dll"};

// The required procedures that the module lacks, as a list; "" when it is complete.
std::string missingIn(platform::ModuleHandle module) {
    std::string names;
    cameraDriver.forEach([&](const auto& /*pointer*/, const char* name, bool isRequired) {
        if (isRequired && platform::findProcedure(module, name) == nullptr) names += std::string(" ") + name;
    });
    return names;
}

void bind(platform::ModuleHandle module) {
    cameraDriver.forEach([&](auto& pointer, const char* name, bool /*isRequired*/) {
        pointer = reinterpret_cast<decltype(pointer.load())>(platform::findProcedure(module, name));
    });
}

void unbind() {
    cameraDriver.forEach([](auto& pointer, const char* /*name*/, bool /*isRequired*/) { pointer = nullptr; });
}

}  // namespace

platform::ModuleHandle loadCameraDriver() {
    std::string reason;
    const platform::ModuleHandle module = platform::loadModule(kDriverName, &reason);
    if (module == nullptr) {
        showError(CameraMessage::kNoDriver);
        zul::outPutDebugString(zul::toAnsi("TQVisionDriver Handle 为空！"));
        zul::outPutDebugString("TQVisionDriver:", zul::toAnsi(reason));
        return nullptr;
    }
    zul::outPutDebugString(zul::toAnsi("TQVisionDriver Handle 不为空！"));
    const std::string missing = missingIn(module);
    if (!missing.empty()) {
        platform::freeModule(module);
        zul::outPutDebugString(zul::toAnsi("TQVisionDriver 函数加载失败！"));
        zul::outPutDebugString("TQVisionDriver lacks" + missing);
        showError(CameraMessage::kNoDriver);
        return nullptr;
    }
    const zul::LockGuard lock(cameraCallMutex);
    bind(module);
    cameraDriver.loads.push_back(module);
    return module;
}

void releaseCameraDriver(platform::ModuleHandle module) {
    const zul::LockGuard lock(cameraCallMutex);
    // Two loads can find two files: the search folders may have changed between them.
    std::vector<platform::ModuleHandle>& loads = cameraDriver.loads;
    const auto load = std::find(loads.rbegin(), loads.rend(), module);
    if (load != loads.rend()) loads.erase(std::next(load).base());
    if (loads.empty()) {
        unbind();
    } else {
        bind(loads.back());
    }
    platform::freeModule(module);
}

}  // namespace orx
