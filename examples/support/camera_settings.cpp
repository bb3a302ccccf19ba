#include "support/camera_settings.h"

#include <chrono>
#include <cstdlib>
#include <fstream>

#include "support/command_line.h"

namespace host {
namespace {

constexpr const char* kVariable = "TQVISION_CONFIG";

// Of no other program's.
std::filesystem::path newFile() {
    const auto now = std::chrono::system_clock::now().time_since_epoch().count();
    return std::filesystem::temp_directory_path() / ("cameras-" + std::to_string(now) + ".ini");
}

}  // namespace

CameraSettings::CameraSettings(const std::string& text) {
    const char* const named = std::getenv(kVariable);
    if (named != nullptr && *named != '\0') return;
    file_ = newFile();
    std::ofstream(file_) << text;
    setVariable(kVariable, file_);
}

CameraSettings::~CameraSettings() {
    if (file_.empty()) return;
    setVariable(kVariable, {});
    std::error_code ignored;
    std::filesystem::remove(file_, ignored);
}

}  // namespace host
