#include "tests/windows/host_window.h"

#include <chrono>
#include <future>

namespace test {
namespace {

constexpr UINT kRun = WM_APP + 100;
constexpr const wchar_t* kClass = L"orx test host";

}  // namespace

HostWindow::HostWindow(int width, int height) {
    std::promise<void> opened;
    thread_ = std::thread([this, width, height, &opened] {
        open(width, height);
        opened.set_value();
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    });
    opened.get_future().wait();
}

HostWindow::~HostWindow() {
    destroy();
    run([] { PostQuitMessage(0); });
    thread_.join();
}

void HostWindow::open(int width, int height) {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = &HostWindow::procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    windowClass.lpszClassName = kClass;
    RegisterClassW(&windowClass);
    messages_ = CreateWindowW(kClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    window_ = CreateWindowW(kClass, L"host", WS_POPUP | WS_VISIBLE | WS_CLIPCHILDREN, 20, 20, width, height,
                            nullptr, nullptr, nullptr, nullptr);
}

LRESULT CALLBACK HostWindow::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != kRun) return DefWindowProcW(window, message, wParam, lParam);
    (*reinterpret_cast<const std::function<void()>*>(lParam))();
    return 0;
}

void HostWindow::run(const std::function<void()>& body) const {
    SendMessageW(messages_, kRun, 0, reinterpret_cast<LPARAM>(&body));
}

void HostWindow::destroy() {
    if (window_ != nullptr) run([this] { DestroyWindow(window_); });
    window_ = nullptr;
}

unsigned pixelOf(HWND window, int x, int y) {
    const HDC context = GetDC(window);
    const COLORREF colour = GetPixel(context, x, y);
    ReleaseDC(window, context);
    if (colour == CLR_INVALID) return kNoPixel;
    return static_cast<unsigned>(GetRValue(colour)) << 16 | static_cast<unsigned>(GetGValue(colour)) << 8 |
           GetBValue(colour);
}

bool eventually(const std::function<bool()>& condition) {
    for (int i = 0; i < 1000; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return condition();
}

}  // namespace test
