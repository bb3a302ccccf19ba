// Cameras for a program that is tried without any.
#ifndef EXAMPLES_SUPPORT_CAMERA_SETTINGS_H
#define EXAMPLES_SUPPORT_CAMERA_SETTINGS_H

#include <filesystem>
#include <string>

namespace host {

// While it lives, the camera module's settings (drivers/README.md) are these, unless the environment variable
// TQVISION_CONFIG names others already. One thread at a time, before the module is asked for cameras.
class CameraSettings {
  public:
    explicit CameraSettings(const std::string& text);
    ~CameraSettings();
    CameraSettings(const CameraSettings&) = delete;
    CameraSettings& operator=(const CameraSettings&) = delete;

  private:
    std::filesystem::path file_;  // "" where the environment names others
};

}  // namespace host

#endif
