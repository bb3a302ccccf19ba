#include "orxFunctions/platform/window/native_window.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <exception>
#include <functional>
#include <opencv2/highgui.hpp>
#include <string_view>
#include <vector>

#include "orxFunctions/platform/window/highgui_window_win32.h"
#include "orxFunctions/platform/window/native_window_list.h"

namespace orx::platform {
namespace {

constexpr UINT kMilliseconds = 1000;  // that another thread is given to close its window

bool isHighguiFrame(HWND window) {
    wchar_t name[32] = {};
    GetClassNameW(window, name, 32);
    return std::wstring_view(name) == L"Main HighGUI class";
}

BOOL CALLBACK closeIfOfOtherThread(HWND window, LPARAM allClosed) {
    DWORD process = 0;
    const DWORD thread = GetWindowThreadProcessId(window, &process);
    if (process != GetCurrentProcessId() || thread == GetCurrentThreadId() || !isHighguiFrame(window))
        return TRUE;
    DWORD_PTR ignored = 0;
    SendMessageTimeoutW(window, WM_CLOSE, 0, 0, SMTO_NORMAL, kMilliseconds, &ignored);
    if (IsWindow(window) != FALSE) *reinterpret_cast<bool*>(allClosed) = false;
    return TRUE;
}

// Without the list's lock: a thread that is asked to close its window may be waiting for that lock.
void closeOwnWindows() {
    std::vector<std::function<void()>> closers;
    nativeWindows.forEach(
        [&](NativeWindow& window) { closers.push_back(static_cast<HighguiWindow&>(window).closer()); });
    for (const auto& close : closers) close();
}

bool closeWindowsOfOtherThreads() {
    bool allClosed = true;
    EnumWindows(&closeIfOfOtherThread, reinterpret_cast<LPARAM>(&allClosed));
    return allClosed;
}

}  // namespace

// Nearly always: a window station without a screen opens windows, too. Wine without an X server does not.
bool displayIsAvailable() {
    const HWND window =
        CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    return window != nullptr && DestroyWindow(window) != FALSE;
}

std::unique_ptr<NativeWindow> createNativeWindow(const std::string& name) {
    return std::make_unique<HighguiWindow>(name);
}

// With them every other window of highgui's in this process, as intended. highgui itself would wait for ever
// for windows of another thread: it holds its lock meanwhile, which that thread needs to close them.
void destroyAllNativeWindows() {
    closeOwnWindows();
    if (!closeWindowsOfOtherThreads()) return;
    try {
        cv::destroyAllWindows();
    } catch (const std::exception&) {  // one that was going already
    }
}

}  // namespace orx::platform
