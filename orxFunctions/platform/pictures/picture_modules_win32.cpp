#include "orxFunctions/platform/pictures/picture_modules.h"

namespace orx::platform {

PictureModules::PictureModules() = default;
PictureModules::~PictureModules() = default;

const PictureCodecs* PictureModules::codecs(std::string* /*reason*/) { return &opencvCodecs; }
const PictureWindows* PictureModules::windows(std::string* /*reason*/) { return &opencvWindows; }

}  // namespace orx::platform
