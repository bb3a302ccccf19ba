// The settings text of the driver module: every value in its range, whatever the text says.
#include <algorithm>

#include "ZULLib/zullib.h"
#include "drivers/TQVisionDriver/ini_file.h"
#include "drivers/TQVisionDriver/settings.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;

void checkDevice(const vision::DeviceSettings& device) {
    require(device.packetSize == 0 || (device.packetSize >= 576 && device.packetSize <= 16000),
            "packet sizes");
    require(device.socketBuffer >= 0 && device.socketBuffer <= (1 << 30), "socket buffers");
}

void checkCamera(const vision::CameraSettings& camera) {
    if (const auto* scene = std::get_if<vision::SceneSettings>(&camera)) {
        require(scene->width >= 64 && scene->width <= 8192 && scene->height >= 64 && scene->height <= 8192,
                "sizes of scenes");
        require(scene->channels == 1 || scene->channels == 3, "channels of scenes");
        require(scene->rate >= 0.01 && scene->rate <= 1000 && scene->noise >= 0 && scene->noise <= 50,
                "rate and noise of scenes");
    } else if (const auto* replay = std::get_if<vision::ReplaySettings>(&camera)) {
        require(replay->rate >= 0.01 && replay->rate <= 1000, "rates of folders");
    } else {
        checkDevice(std::get<vision::PinnedDevice>(camera).device);
    }
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

// What was read, written plainly, is read as the same.
void checkWrittenAgain(const vision::IniFile& file) {
    std::string text;
    for (const vision::IniSection& section : file.sections) {
        require(section.name == lower(section.name), "names are lower case");
        text += "[" + section.name + "]\n";
        for (const vision::IniEntry& entry : section.entries) text += entry.key + " = " + entry.value + "\n";
    }
    const vision::IniFile again = vision::parseIni(text);
    require(again.problems.empty() && again.sections.size() == file.sections.size(),
            "as many sections again");
    for (std::size_t i = 0; i < file.sections.size(); ++i) {
        const auto& a = file.sections[i].entries;
        const auto& b = again.sections[i].entries;
        require(a.size() == b.size(), "as many entries again");
        for (std::size_t k = 0; k < a.size(); ++k)
            require(a[k].key == b[k].key && a[k].value == b[k].value, "the same entries again");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    const vision::IniFile file = vision::parseIni(text);
    require(file.problems.size() <= 20, "so many problems at the most");
    checkWrittenAgain(file);
    const vision::Settings settings = vision::parseSettings(text, "base");
    bool named = false;
    for (const auto& camera : settings.cameras) {
        named = named || camera.has_value();
        if (camera) checkCamera(*camera);
    }
    require(named == settings.namesCameras(), "cameras are named or not");
    checkDevice(settings.devices);
    return 0;
}
