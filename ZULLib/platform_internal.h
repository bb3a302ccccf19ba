// What differs between Windows and POSIX inside this library, beyond the functions of zullib.h that the
// *_posix.cpp and *_win32.cpp files define whole.
#ifndef ZULLIB_PLATFORM_INTERNAL_H
#define ZULLIB_PLATFORM_INTERNAL_H

#include <ctime>
#include <string>

namespace zul::platform {

// The default sink of trace lines; `ansiLine` is in code page 936.
void writeTrace(const std::string& ansiLine);

// The fields of a moment in local time; all zero for one that has none.
std::tm localTime(std::time_t moment);

}  // namespace zul::platform

#endif
