#include "orxFunctions/platform/window/native_window.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <string>

#include "orxFunctions/platform/window/native_window_list.h"
#include "orxFunctions/platform/window/xcb_window_posix.h"

namespace orx::platform {

bool displayIsAvailable() {
    // Qt, when it is told which window system to use: without a screen it draws into memory and never fails;
    // with another than X, nobody can say.
    if (const char* const qtPlatform = std::getenv("QT_QPA_PLATFORM")) {
        const std::string name = qtPlatform;
        if (name.rfind("offscreen", 0) == 0) return true;
        if (!name.empty() && name.find("xcb") == std::string::npos) return false;
    }

    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const bool available = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return available;
}

std::unique_ptr<NativeWindow> createNativeWindow(const std::string& name) {
    return std::make_unique<XcbWindow>(name);
}

// Not of highgui: on Debian it is Qt, which can't be embedded from threads, and closing "all windows" there
// closes those of a Qt host, too.
void destroyAllNativeWindows() {
    nativeWindows.forEach([](NativeWindow& window) { window.close(); });
}

}  // namespace orx::platform
