// Process, modules, files and time on POSIX.
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "ZULLib/platform_internal.h"
#include "ZULLib/zullib.h"

namespace zul {

void platform::writeTrace(const std::string& ansiLine) {
    if (std::getenv("ZUL_TRACE") != nullptr) std::fprintf(stderr, "%s\n", toUtf8(ansiLine).c_str());
}

std::string toAnsi(const std::string& utf8) { return utf8; }
std::string toUtf8(const std::string& ansi) { return ansi; }

bool dirExists(std::string path) {
    struct stat info = {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string getCurrentTime(int /*format*/) {
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    char text[64];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S ", &local);
    return text;
}

std::string getDllPath(TModuleHandle /*module*/) { return extractFilePath(getExeFileName()); }

std::string getExeFileName() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return length <= 0 ? std::string() : std::string(path, static_cast<std::size_t>(length));
}

std::string getFileVersion(std::string /*file*/) { return {}; }

bool processIsExist(std::string /*name*/) { return false; }

}  // namespace zul
