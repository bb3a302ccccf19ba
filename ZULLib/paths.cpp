// The parts of a path, by its text alone.
#include "ZULLib/paths_internal.h"

#include <string>

#include "ZULLib/zullib.h"

namespace zul {
namespace {

std::size_t nameStart(const std::string& path) {
#if defined(_WIN32)
    return paths::windowsNameStart(path);
#else
    return paths::posixNameStart(path);
#endif
}

}  // namespace

std::string extractFilePath(std::string path) { return path.substr(0, nameStart(path)); }

std::string extractFileName(std::string path) { return path.substr(nameStart(path)); }

std::string extractFileExt(std::string path) {
    const std::string name = extractFileName(path);
    const std::size_t point = name.find_last_of('.');
    if (point == std::string::npos || point == 0 || name == "..") return {};
    return name.substr(point);
}

}  // namespace zul
