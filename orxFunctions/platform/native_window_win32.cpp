#include "orxFunctions/platform/native_window.h"

namespace orx::platform {

// A window station without a screen still opens windows.
bool displayIsAvailable() { return true; }

}  // namespace orx::platform
