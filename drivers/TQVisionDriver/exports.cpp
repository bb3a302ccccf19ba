// The procedures that the module exports. No exception leaves them.
#include "drivers/vision_driver.h"

#include <exception>
#include <string>

#include "drivers/TQVisionDriver/module_file.h"
#include "drivers/TQVisionDriver/releaser.h"
#include "drivers/TQVisionDriver/slots.h"
#include "drivers/TQVisionDriver/trace.h"

namespace {

// The one object of the module that outlives a call. Never destroyed: what must happen at the end of the
// process happens in VDDestoryCamera, which atProcessEnd calls before the objects of other libraries are
// gone.
vision::SlotTable& table() {
    static vision::SlotTable* const only = [] {
        auto* const created = new vision::SlotTable;
        vision::keepModuleLoaded();
        vision::atProcessEnd(&VDDestoryCamera);
        return created;
    }();
    return *only;
}

// What `call` answers, or `failed` when it throws.
template <typename Result, typename Call>
Result guarded(const char* name, Result failed, const Call& call) noexcept {
    try {
        try {
            return call();
        } catch (const std::exception& failure) {
            vision::trace(std::string(name) + ": " + failure.what());
        }
    } catch (...) {  // also what tracing may throw
    }
    return failed;
}

}  // namespace

extern "C" {

bool VDInitCamera(int type, long long* /*handles*/, bool /*flag*/) {
    return guarded("VDInitCamera", false, [=] { return table().initialise(type); });
}

bool VDOpen(int /*type*/, int index) {
    return guarded("VDOpen", false, [=] {
        const auto slot = table().at(index);
        return slot && slot->open();
    });
}

bool VDStart(int* width, int* height, int* channels, int index) {
    return guarded("VDStart", false, [=] {
        const auto slot = table().at(index);
        vision::PictureFormat format;
        if (!slot || width == nullptr || height == nullptr || channels == nullptr || !slot->start(format)) {
            return false;
        }
        *width = format.width;
        *height = format.height;
        *channels = format.channels;
        return true;
    });
}

bool VDStop(int index) {
    return guarded("VDStop", false, [=] {
        const auto slot = table().at(index);
        return slot && slot->stop();
    });
}

bool VDGetImage(VDImage* image, int index) {
    return guarded("VDGetImage", false, [=] {
        const auto slot = table().at(index);
        return slot && image != nullptr && slot->fetch(*image);
    });
}

bool VDSetParam(int index, int id, long value) {
    return guarded("VDSetParam", false, [=] {
        const auto slot = table().at(index);
        return slot && slot->setParameter(id, value);
    });
}

float VDGetParam(int index, int id) {
    return guarded("VDGetParam", vision::kNoValue, [=] {
        const auto slot = table().at(index);
        return slot ? slot->parameter(id) : vision::kNoValue;
    });
}

bool VDClose(int index) {
    return guarded("VDClose", false, [=] {
        const auto slot = table().at(index);
        return slot && slot->close();
    });
}

void VDDestoryCamera(void) {
    guarded("VDDestoryCamera", false, [] {
        table().clear();
        vision::finishReleases();
        return true;
    });
}

bool VDGetFrameInfo(VDFrameInfo* info, int index) {
    return guarded("VDGetFrameInfo", false, [=] {
        const auto slot = table().at(index);
        return slot && info != nullptr && slot->frameInfo(*info);
    });
}

}  // extern "C"
