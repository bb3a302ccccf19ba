// What differs between Windows and POSIX inside this library, beyond the functions of zullib.h that
// system_posix.cpp and system_win32.cpp define whole.
#ifndef ZULLIB_PLATFORM_INTERNAL_H
#define ZULLIB_PLATFORM_INTERNAL_H

#include <string>

namespace zul::platform {

// The default sink of trace lines; `ansiLine` is in code page 936.
void writeTrace(const std::string& ansiLine);

}  // namespace zul::platform

#endif
