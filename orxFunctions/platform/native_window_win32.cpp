#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <exception>
#include <opencv2/highgui.hpp>

#include "orxFunctions/platform/highgui_window_win32_internal.h"

namespace orx::platform {

// Nearly always: a window station without a screen opens windows, too. Wine without an X server does not.
bool displayIsAvailable() {
    const HWND window =
        CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    return window != nullptr && DestroyWindow(window) != FALSE;
}

std::unique_ptr<NativeWindow> createNativeWindow(const std::string& name) {
    return std::make_unique<HighguiWindow>(name);
}

// With them every other window of highgui's in this process, as intended.
void destroyAllNativeWindows() {
    try {
        cv::destroyAllWindows();
    } catch (const std::exception&) {  // one that was going already
    }
}

}  // namespace orx::platform
