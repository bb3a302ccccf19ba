// The camera driver module (drivers/vision_driver.h) and its procedures.
#ifndef ORXFUNCTIONS_CAMERA_CAMERA_DRIVER_INTERNAL_H
#define ORXFUNCTIONS_CAMERA_CAMERA_DRIVER_INTERNAL_H

#include <atomic>
#include <exception>
#include <string>
#include <type_traits>
#include <vector>

#include "ZULLib/sync_internal.h"
#include "ZULLib/zullib.h"
#include "drivers/vision_driver.h"
#include "orxFunctions/platform/module_internal.h"

namespace orx {

// Serialises the calls of all cameras, except those that start and stop them. Defined in orxfunctions.cpp.
extern zul::Mutex cameraCallMutex;

// One pointer for each procedure of the module, shared by the whole process and null while no module is
// loaded.
struct CameraDriver {
    template <typename Function>
    using Pointer = std::atomic<Function*>;

    Pointer<decltype(VDInitCamera)> initCamera{nullptr};
    Pointer<decltype(VDOpen)> open{nullptr};
    Pointer<decltype(VDStart)> start{nullptr};
    Pointer<decltype(VDStop)> stop{nullptr};
    Pointer<decltype(VDGetImage)> getImage{nullptr};
    Pointer<decltype(VDSetParam)> setParam{nullptr};
    Pointer<decltype(VDClose)> close{nullptr};
    // Optional: null also when the module lacks them.
    Pointer<decltype(VDGetParam)> getParam{nullptr};
    Pointer<decltype(VDDestoryCamera)> destroyCamera{nullptr};
    Pointer<decltype(VDGetFrameInfo)> getFrameInfo{nullptr};

    // Calls visit(pointer, name of the procedure, whether it is required) for each.
    template <typename Visit>
    void forEach(const Visit& visit) {
        visit(initCamera, "VDInitCamera", true);
        visit(open, "VDOpen", true);
        visit(start, "VDStart", true);
        visit(stop, "VDStop", true);
        visit(getImage, "VDGetImage", true);
        visit(setParam, "VDSetParam", true);
        visit(close, "VDClose", true);
        visit(getParam, "VDGetParam", false);
        visit(destroyCamera, "VDDestoryCamera", false);
        visit(getFrameInfo, "VDGetFrameInfo", false);
    }

    // The modules of the successful loads that have not been released, the bound one last.
    std::vector<platform::ModuleHandle> loads ZUL_GUARDED_BY(cameraCallMutex);
};

// Defined in orxfunctions.cpp.
extern CameraDriver cameraDriver;

// What came of a call of the module's.
struct DriverAnswer {
    bool isTrue = false;
    bool hasThrown = false;
    std::string thrown{};  // its text

    explicit operator bool() const { return isTrue; }
};

// Makes a call of a module, which must not throw: one that does has failed, and its text is traced; one that
// answers nothing has not. (Where a thread is cancelled inside of a module the system demands that the
// process ends.)
template <typename Call>
DriverAnswer callModule(const Call& call) {
    DriverAnswer answer;
    try {
        if constexpr (std::is_void_v<decltype(call())>) {
            call();
            answer.isTrue = true;
        } else {
            answer.isTrue = call();
        }
        return answer;
    } catch (const std::exception& error) {
        answer.thrown = error.what();  // copied: the text may be the module's
    } catch (...) {
        answer.thrown = "?";
    }
    answer.hasThrown = true;
    zul::outPutDebugString(zul::toAnsi("相机驱动异常:"), answer.thrown);
    return answer;
}

// Calls a procedure that answers whether it succeeded; false where there is none.
template <typename Function, typename... Arguments>
DriverAnswer callDriver(const std::atomic<Function*>& procedure, Arguments... arguments) {
    Function* const function = procedure.load();
    if (function == nullptr) return {};
    return callModule([&] { return function(arguments...); });
}

// Loads the module and binds its procedures, with the traces and the message that belong to each outcome.
// Null when the module can't be loaded or lacks a required procedure.
platform::ModuleHandle loadCameraDriver();

// Gives back what loadCameraDriver answered. The procedures are then those of the last load that is left, or
// none, so that later calls fail instead of running into a module that is gone.
void releaseCameraDriver(platform::ModuleHandle module);

}  // namespace orx

#endif
