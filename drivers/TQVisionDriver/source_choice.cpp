#include "drivers/TQVisionDriver/source_choice.h"

#include <algorithm>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "drivers/TQVisionDriver/paced_source.h"
#include "drivers/TQVisionDriver/real_camera.h"
#include "drivers/TQVisionDriver/replay_source.h"
#include "drivers/TQVisionDriver/scene_source.h"
#include "drivers/TQVisionDriver/settings.h"
#include "drivers/TQVisionDriver/trace.h"
#include "drivers/devices/brands.h"
#include "drivers/devices/device_list.h"

namespace vision {
namespace {

// Puts sources into slots.
class Chooser {
  public:
    explicit Chooser(std::vector<Device> devices) : devices_(std::move(devices)) {}

    void place(std::size_t slot, SceneSettings scene) {
        if (scene.seed == 0) scene.seed = static_cast<int>(slot) + 1;
        put(slot, std::make_unique<PacedSource>(std::make_unique<SceneMaker>(scene), scene.rate), true);
    }

    void place(std::size_t slot, const ReplaySettings& replay) {
        auto maker = std::make_unique<ReplayMaker>(replay);
        const bool available = maker->available();
        put(slot, std::make_unique<PacedSource>(std::move(maker), replay.rate), available);
    }

    void place(std::size_t slot, const PinnedDevice& pinned) {
        const auto found = std::find_if(devices_.begin(), devices_.end(), [&pinned](const Device& device) {
            return device.serial == pinned.serial;
        });
        Device absent;
        absent.serial = pinned.serial;
        const bool connected = found != devices_.end();
        put(slot, makeRealCamera(connected ? *found : absent, pinned.device), connected);
    }

    void placeAllDevices(const DeviceSettings& settings) {
        if (devices_.size() > choice_.sources.size()) {
            trace(std::to_string(devices_.size()) + " cameras, of which the first " +
                  std::to_string(choice_.sources.size()) + " are used");
        }
        for (std::size_t slot = 0; slot < std::min(devices_.size(), choice_.sources.size()); ++slot) {
            put(slot, makeRealCamera(devices_[slot], settings), true);
        }
    }

    bool hasDevices() const { return !devices_.empty(); }
    SourceChoice take() { return std::move(choice_); }

  private:
    void put(std::size_t slot, std::unique_ptr<Source> source, bool available) {
        choice_.anyAvailable = choice_.anyAvailable || (available && source);
        choice_.sources[slot] = std::move(source);
    }

    const std::vector<Device> devices_;
    SourceChoice choice_;
};

std::vector<Device> devicesOf(int type) {
    std::vector<Device> devices = listDevices();
    if (type != VD_TYPE_ANY) {
        devices.erase(std::remove_if(devices.begin(), devices.end(),
                                     [type](const Device& device) { return brandOf(device.vendor) != type; }),
                      devices.end());
    }
    for (const Device& device : devices) {
        trace("found " + device.vendor + " " + device.model + ", serial number " + device.serial +
              (device.address.empty() ? "" : ", at " + device.address));
    }
    return devices;
}

bool namesDevices(const Settings& settings) {
    return std::any_of(settings.cameras.begin(), settings.cameras.end(), [](const auto& camera) {
        return camera && std::holds_alternative<PinnedDevice>(*camera);
    });
}

SourceChoice chooseOfBrand(int type, const Settings& settings) {
    Chooser chooser(devicesOf(type));
    if (!namesDevices(settings)) {
        chooser.placeAllDevices(settings.devices);
        return chooser.take();
    }
    for (std::size_t slot = 0; slot < settings.cameras.size(); ++slot) {
        const auto& camera = settings.cameras[slot];
        const auto* const pinned = camera ? std::get_if<PinnedDevice>(&*camera) : nullptr;
        if (pinned != nullptr) chooser.place(slot, *pinned);
    }
    return chooser.take();
}

SourceChoice chooseOfAny(const Settings& settings) {
    // Searching takes a second.
    const bool search = namesDevices(settings) || !settings.namesCameras();
    Chooser chooser(search ? devicesOf(VD_TYPE_ANY) : std::vector<Device>());
    if (!settings.namesCameras()) {
        if (chooser.hasDevices()) {
            chooser.placeAllDevices(settings.devices);
        } else {
            chooser.place(0, SceneSettings());
        }
        return chooser.take();
    }
    for (std::size_t slot = 0; slot < settings.cameras.size(); ++slot) {
        if (!settings.cameras[slot]) continue;
        std::visit([&chooser, slot](const auto& camera) { chooser.place(slot, camera); },
                   *settings.cameras[slot]);
    }
    return chooser.take();
}

}  // namespace

SourceChoice chooseSources(int type) {
    Settings settings;
    if (!readSettings(settings)) return {};
    if (type == VD_TYPE_ANY) return chooseOfAny(settings);
    if (!isBrand(type)) {
        trace("there is no camera type " + std::to_string(type));
        return {};
    }
    if (!canListDevices()) {
        trace("camera type " + std::to_string(type) +
              ": this module was built without Aravis and has only the " + "sources of type " +
              std::to_string(VD_TYPE_ANY));
        return {};
    }
    return chooseOfBrand(type, settings);
}

}  // namespace vision
