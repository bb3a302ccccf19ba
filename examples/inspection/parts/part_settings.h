// What is asked about parts: teach one, or find those of a model.
#ifndef EXAMPLES_INSPECTION_PARTS_PART_SETTINGS_H
#define EXAMPLES_INSPECTION_PARTS_PART_SETTINGS_H

#include <opencv2/core.hpp>
#include <optional>
#include <string>

#include "orxFunctions/matching/part_finder.h"

namespace inspection {

struct PartSettings {
    std::optional<cv::Rect> region;  // of the picture that teaches a part
    std::string modelFile;           // of the part to be found, UTF-8; "" when none is
    orx::TPartModel model;           // what was read from it
    orx::TFindOptions find;

    // Pictures are then looked at for parts, not measured.
    bool wanted() const { return region.has_value() || !modelFile.empty(); }
};

}  // namespace inspection

#endif
