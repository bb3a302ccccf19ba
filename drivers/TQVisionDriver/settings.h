// What the module is told to use, and the file that tells it.
#ifndef DRIVERS_TQVISIONDRIVER_SETTINGS_H
#define DRIVERS_TQVISIONDRIVER_SETTINGS_H

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>

#include "drivers/vision_driver.h"

namespace vision {

// The synthetic moving part (scene_source.h).
struct SceneSettings {
    int width = 1280;  // pixels, 64 to 8192
    int height = 1024;
    int channels = 1;    // 1 or 3
    double rate = 25.0;  // pictures per second, 0.01 to 1000
    double noise = 2.0;  // grey levels, standard deviation, 0 to 50
    int seed = 0;        // of the noise; 0 takes the number of the camera
};

// A folder of pictures (replay_source.h).
struct ReplaySettings {
    std::filesystem::path folder;
    double rate = 10.0;
    bool loop = true;
};

// How a camera is reached. The values for all cameras, unless a camera has its own.
struct DeviceSettings {
    int packetSize = 0;        // bytes, 576 to 16000; 0 lets the module find what the path carries
    bool packetSocket = true;  // where permitted
    int socketBuffer = 0;      // bytes, up to 1 GiB; 0 is twice the picture
};

// The camera with this serial number, whether it is connected or not.
struct PinnedDevice {
    std::string serial;
    DeviceSettings device;
};

using CameraSettings = std::variant<SceneSettings, ReplaySettings, PinnedDevice>;

struct Settings {
    std::array<std::optional<CameraSettings>, VD_MAX_CAMERAS> cameras;  // by slot
    DeviceSettings devices;

    bool namesCameras() const;
};

// The settings that a text stands for; relative folders are relative to `base`. What is wrong is traced and
// left out, and a value out of range or unreadable keeps its default.
Settings parseSettings(const std::string& text, const std::filesystem::path& base);

// Reads the file that the environment variable TQVISION_CONFIG names, else TQVisionDriver.ini beside the
// module; where there is none, the settings name nothing. False when the variable names a file that can't be
// read: a host that asked for certain pictures must not silently get others.
bool readSettings(Settings& settings);

}  // namespace vision

#endif
