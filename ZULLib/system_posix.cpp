// Files, the program, time and trace output on POSIX.
#include "ZULLib/platform_internal.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "ZULLib/files_posix_internal.h"
#include "ZULLib/zullib.h"

namespace zul {

void platform::writeTrace(const std::string& ansiLine) {
    // Asked once: the environment is not safe to read while another thread changes it.
    static const bool wanted = std::getenv("ZUL_TRACE") != nullptr;
    if (wanted) std::fprintf(stderr, "%s\n", toUtf8(ansiLine).c_str());
}

std::tm platform::localTime(std::time_t moment) {
    std::tm time = {};
    localtime_r(&moment, &time);
    return time;
}

bool dirExists(std::string path) {
    struct stat info = {};
    return stat(path.c_str(), &info) == 0;
}

std::string getExeFileName() { return posix::executableOf("self"); }

}  // namespace zul
