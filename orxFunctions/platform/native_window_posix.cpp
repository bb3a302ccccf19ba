#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>

#include "orxFunctions/platform/native_window.h"

namespace orx::platform {

bool displayIsAvailable() {
    // Qt without a screen: draws into memory and never fails.
    const char* qtPlatform = std::getenv("QT_QPA_PLATFORM");
    if (qtPlatform != nullptr && std::strncmp(qtPlatform, "offscreen", 9) == 0) return true;

    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const bool available = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return available;
}

}  // namespace orx::platform
