// Numbers and paths as text.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "ZULLib/zullib.h"

namespace zul {

std::string intToStr(int value) { return std::to_string(value); }

int strToInt(std::string text) { return static_cast<int>(std::strtol(text.c_str(), nullptr, 10)); }

double strToDouble(std::string text) { return std::strtod(text.c_str(), nullptr); }

std::string doubleToStr(double value, int decimals) {
    char buffer[512];
    std::snprintf(buffer, sizeof buffer, "%.*f", std::clamp(decimals, 0, 100), value);
    return buffer;
}

std::string extractFilePath(std::string path) { return path.substr(0, path.find_last_of('/') + 1); }

std::string extractFileName(std::string path) { return path.substr(path.find_last_of('/') + 1); }

std::string extractFileExt(std::string path) {
    const std::string name = extractFileName(path);
    const std::size_t point = name.find_last_of('.');
    return point == std::string::npos || point == 0 ? std::string() : name.substr(point);
}

}  // namespace zul
