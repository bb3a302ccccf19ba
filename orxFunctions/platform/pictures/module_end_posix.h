// Tells the library whether a module of pictures has ended before it: see PictureModule.
#ifndef ORXFUNCTIONS_PLATFORM_PICTURES_MODULE_END_POSIX_H
#define ORXFUNCTIONS_PLATFORM_PICTURES_MODULE_END_POSIX_H

#include <atomic>

namespace orx::platform {

extern std::atomic<bool> moduleEnded;  // of the module that this is linked into

}  // namespace orx::platform

#endif
