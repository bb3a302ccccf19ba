// The one name that liborxPictureWindows.so exports.
#include "orxFunctions/platform/pictures/module_end_posix.h"
#include "orxFunctions/platform/pictures/picture_modules.h"

using orx::platform::PictureModule;
using orx::platform::PictureWindows;

extern "C" ORX_API const PictureModule<PictureWindows>* orxPictureWindows(unsigned version) {
    static const PictureModule<PictureWindows> kModule = {&orx::platform::opencvWindows,
                                                          &orx::platform::moduleEnded};
    return version == orx::platform::kPictureModuleVersion ? &kModule : nullptr;
}
