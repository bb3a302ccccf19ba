#include "drivers/TQVisionDriver/source_choice.h"

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "drivers/TQVisionDriver/paced_source.h"
#include "drivers/TQVisionDriver/replay_source.h"
#include "drivers/TQVisionDriver/scene_source.h"
#include "drivers/TQVisionDriver/settings.h"
#include "drivers/TQVisionDriver/trace.h"

namespace vision {
namespace {

struct Choice {
    std::unique_ptr<Source> source;
    bool available = false;
};

Choice sourceFor(SceneSettings scene, std::size_t slot) {
    if (scene.seed == 0) scene.seed = static_cast<int>(slot) + 1;
    return {std::make_unique<PacedSource>(std::make_unique<SceneMaker>(scene), scene.rate), true};
}

Choice sourceFor(const ReplaySettings& replay, std::size_t /*slot*/) {
    auto maker = std::make_unique<ReplayMaker>(replay);
    const bool available = maker->available();
    return {std::make_unique<PacedSource>(std::move(maker), replay.rate), available};
}

Choice sourceFor(const PinnedDevice& pinned, std::size_t /*slot*/) {
    trace("camera " + pinned.serial + ": this module was built without Aravis");
    return {};
}

}  // namespace

SourceChoice chooseSources(int type) {
    SourceChoice choice;
    Settings settings;
    if (!readSettings(settings)) return choice;
    if (type != VD_TYPE_ANY) {
        trace("type " + std::to_string(type) +
              ": this module was built without Aravis and has the sources of type " +
              std::to_string(VD_TYPE_ANY) + " only");
        return choice;
    }
    if (!settings.namesCameras()) settings.cameras[0] = SceneSettings();
    for (std::size_t slot = 0; slot < settings.cameras.size(); ++slot) {
        if (!settings.cameras[slot]) continue;
        Choice made = std::visit([slot](const auto& camera) { return sourceFor(camera, slot); },
                                 *settings.cameras[slot]);
        choice.sources[slot] = std::move(made.source);
        choice.anyAvailable = choice.anyAvailable || made.available;
    }
    return choice;
}

}  // namespace vision
