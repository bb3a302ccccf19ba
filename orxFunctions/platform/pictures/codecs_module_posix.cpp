// The one name that liborxPictureCodecs.so exports.
#include "orxFunctions/platform/pictures/module_end_posix.h"
#include "orxFunctions/platform/pictures/picture_modules.h"

using orx::platform::PictureCodecs;
using orx::platform::PictureModule;

extern "C" ORX_API const PictureModule<PictureCodecs>* orxPictureCodecs(unsigned version) {
    static const PictureModule<PictureCodecs> kModule = {&orx::platform::opencvCodecs,
                                                         &orx::platform::moduleEnded};
    return version == orx::platform::kPictureModuleVersion ? &kModule : nullptr;
}
