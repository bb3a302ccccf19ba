#include "drivers/TQVisionDriver/settings.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>
#include <vector>

#include "drivers/TQVisionDriver/ini_file.h"
#include "drivers/TQVisionDriver/module_file.h"
#include "drivers/TQVisionDriver/trace.h"

namespace vision {
namespace {

// Reads the entries of a section and, at the end, names those that nobody asked for.
class SectionReader {
  public:
    explicit SectionReader(const IniSection& section)
        : section_(section), used_(section.entries.size(), false) {}

    std::string text(std::string_view key) {
        std::string value;
        for (std::size_t i = 0; i < used_.size(); ++i) {
            if (section_.entries[i].key != key) continue;
            used_[i] = true;
            value = section_.entries[i].value;
        }
        return value;
    }

    // Leaves `value` as it is when the key is missing, and when what stands there is no number of the range.
    template <typename Number>
    void number(std::string_view key, Number lowest, Number highest, Number& value) {
        const std::string given = text(key);
        if (given.empty()) return;
        Number parsed{};
        const auto [end, error] = std::from_chars(given.data(), given.data() + given.size(), parsed);
        // Written so that not-a-number is refused.
        if (error == std::errc() && end == given.data() + given.size() && parsed >= lowest &&
            parsed <= highest) {
            value = parsed;
        } else {
            complain(key, given);
        }
    }

    void flag(std::string_view key, bool& value) {
        const std::string given = text(key);
        if (given.empty()) return;
        if (given == "1" || given == "yes" || given == "true" || given == "on") {
            value = true;
        } else if (given == "0" || given == "no" || given == "false" || given == "off") {
            value = false;
        } else {
            complain(key, given);
        }
    }

    void complain(std::string_view key, const std::string& given) const {
        trace("settings, [" + section_.name + "]: " + std::string(key) + " can't be \"" + given + "\"");
    }

    void nameUnused() const {
        for (std::size_t i = 0; i < used_.size(); ++i) {
            if (used_[i]) continue;
            trace("settings, line " + std::to_string(section_.entries[i].line) + ": \"" +
                  section_.entries[i].key + "\" is not known in [" + section_.name + "]");
        }
    }

  private:
    const IniSection& section_;
    std::vector<bool> used_;
};

constexpr double kLowestRate = 0.01;
constexpr double kHighestRate = 1000.0;

SceneSettings sceneOf(SectionReader& section) {
    SceneSettings scene;
    section.number("width", 64, 8192, scene.width);
    section.number("height", 64, 8192, scene.height);
    section.number("channels", 1, 3, scene.channels);
    if (scene.channels == 2) scene.channels = 1;
    section.number("rate", kLowestRate, kHighestRate, scene.rate);
    section.number("noise", 0.0, 50.0, scene.noise);
    section.number("seed", 0, 1 << 30, scene.seed);
    return scene;
}

ReplaySettings replayOf(SectionReader& section, const std::filesystem::path& base) {
    ReplaySettings replay;
    replay.folder = base / std::filesystem::u8path(section.text("folder"));
    section.number("rate", kLowestRate, kHighestRate, replay.rate);
    section.flag("loop", replay.loop);
    return replay;
}

void readDevice(SectionReader& section, DeviceSettings& device) {
    constexpr int kAutomatic = 0;
    section.number("packet_size", kAutomatic, 16000, device.packetSize);
    if (device.packetSize > kAutomatic && device.packetSize < 576) {
        section.complain("packet_size", std::to_string(device.packetSize));
        device.packetSize = kAutomatic;
    }
    section.flag("packet_socket", device.packetSocket);
    section.number("socket_buffer", 0, 1 << 30, device.socketBuffer);
}

std::optional<CameraSettings> cameraOf(SectionReader& section, const std::filesystem::path& base,
                                       const DeviceSettings& devices) {
    const std::string source = section.text("source");
    if (source == "scene") return sceneOf(section);
    if (source == "replay") return replayOf(section, base);
    if (source == "device") {
        PinnedDevice pinned{section.text("serial"), devices};
        readDevice(section, pinned.device);
        if (!pinned.serial.empty()) return pinned;
        section.complain("serial", "");
        return std::nullopt;
    }
    section.complain("source", source);
    return std::nullopt;
}

// "camera1" is slot 0; -1 for any other name.
int slotOf(const std::string& section) {
    constexpr std::string_view kPrefix = "camera";
    if (section.size() != kPrefix.size() + 1 || section.compare(0, kPrefix.size(), kPrefix) != 0) return -1;
    const int slot = section.back() - '1';
    return slot >= 0 && slot < VD_MAX_CAMERAS ? slot : -1;
}

}  // namespace

bool Settings::namesCameras() const {
    return std::any_of(cameras.begin(), cameras.end(), [](const auto& camera) { return camera.has_value(); });
}

Settings parseSettings(const std::string& text, const std::filesystem::path& base) {
    const IniFile file = parseIni(text);
    for (const std::string& problem : file.problems) trace("settings, " + problem);

    Settings settings;
    // First what holds for all cameras, wherever it stands.
    for (const IniSection& section : file.sections) {
        if (section.name != "devices") continue;
        SectionReader reader(section);
        readDevice(reader, settings.devices);
        reader.nameUnused();
    }
    for (const IniSection& section : file.sections) {
        if (section.name == "devices") continue;
        const int slot = slotOf(section.name);
        if (slot < 0) {
            trace("settings, line " + std::to_string(section.line) + ": [" + section.name + "] is not known");
            continue;
        }
        SectionReader reader(section);
        settings.cameras[static_cast<std::size_t>(slot)] = cameraOf(reader, base, settings.devices);
        reader.nameUnused();
    }
    return settings;
}

bool readSettings(Settings& settings) {
    settings = Settings();
    const std::filesystem::path named = pathFromEnvironment("TQVISION_CONFIG");
    const bool asked = !named.empty();
    const std::filesystem::path file = asked ? named : moduleFolder() / "TQVisionDriver.ini";
    std::error_code failed;
    // A folder or a device opens like a file, and a device may never end.
    if (!std::filesystem::is_regular_file(file, failed)) {
        if (asked) trace("the settings file " + file.u8string() + " is missing");
        return !asked;
    }
    std::ifstream stream(file, std::ios::binary);
    std::string text(kLargestIniText + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    if (stream.bad() || (text.empty() && !stream.eof())) {
        trace("the settings file " + file.u8string() + " can't be read");
        return !asked;
    }
    trace("settings from " + file.u8string());
    settings = parseSettings(text, file.parent_path());
    return true;
}

}  // namespace vision
