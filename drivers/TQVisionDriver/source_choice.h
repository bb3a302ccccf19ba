// Which source each slot gets.
#ifndef DRIVERS_TQVISIONDRIVER_SOURCE_CHOICE_H
#define DRIVERS_TQVISIONDRIVER_SOURCE_CHOICE_H

#include <array>
#include <memory>

#include "drivers/TQVisionDriver/source.h"

namespace vision {

struct SourceChoice {
    std::array<std::unique_ptr<Source>, VD_MAX_CAMERAS> sources;  // null where a slot has none
    // Whether at least one of them can give pictures now. (A camera that the settings name has its slot also
    // while it is not connected.)
    bool anyAvailable = false;
};

// For a brand: its cameras, those that the settings name in their slots, else all that are connected, sorted
// by serial number. For VD_TYPE_ANY: the sources that the settings name, else the cameras of any brand that
// are connected, else one scene.
SourceChoice chooseSources(int type);

}  // namespace vision

#endif
