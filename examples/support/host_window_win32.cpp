// Win32, without a toolkit.
#include "support/host_window.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <algorithm>
#include <vector>

namespace host {
namespace {

constexpr int kGap = 4;  // between panes, pixels
constexpr int kSmallestPane = 60;
constexpr COLORREF kGapColour = RGB(0x30, 0x30, 0x30);
constexpr COLORREF kPaneColour = RGB(0x10, 0x10, 0x10);
constexpr const wchar_t* kWindowClass = L"orxFunctions host";
constexpr const wchar_t* kPaneClass = L"orxFunctions pane";

std::wstring wide(const std::string& utf8) {
    const int size = static_cast<int>(utf8.size());
    std::wstring text(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, text.data(), static_cast<int>(text.size()));
    return text;
}

void registerClass(const wchar_t* name, WNDPROC procedure, COLORREF colour) {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
    windowClass.hbrBackground = CreateSolidBrush(colour);  // the class's, for good
    windowClass.lpszClassName = name;
    if (RegisterClassW(&windowClass) == 0) DeleteObject(windowClass.hbrBackground);
}

class Win32HostWindow final : public HostWindow {
  public:
    ~Win32HostWindow() override {
        if (window_ != nullptr) DestroyWindow(window_);
    }

    bool open(const std::string& title, int panes, cv::Size paneSize) {
        registerClass(kWindowClass, &Win32HostWindow::procedure, kGapColour);
        registerClass(kPaneClass, &DefWindowProcW, kPaneColour);
        paneSize_ = paneSize;
        RECT rect = {0, 0, panes * paneSize.width + (panes - 1) * kGap, paneSize.height};
        AdjustWindowRect(&rect, WS_OVERLAPPEDWINDOW, FALSE);
        window_ = CreateWindowW(kWindowClass, wide(title).c_str(), WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                                CW_USEDEFAULT, rect.right - rect.left, rect.bottom - rect.top, nullptr,
                                nullptr, nullptr, nullptr);
        if (window_ == nullptr) return false;
        // [pane]
        for (int i = 0; i < panes; ++i) {
            panes_.push_back(CreateWindowW(kPaneClass, L"", WS_CHILD | WS_VISIBLE, 0, 0, paneSize.width,
                                           paneSize.height, window_, nullptr, nullptr, nullptr));
        }
        // [pane end]
        // From here on the procedure knows this object, and its messages change the sizes.
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        ShowWindow(window_, SW_SHOW);
        takeSize();
        return true;
    }

    void* pane(int index) const override { return panes_.at(static_cast<std::size_t>(index)); }
    cv::Size paneSize() const override { return paneSize_; }

    // [events]
    bool handleEvents(int milliseconds) override {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(milliseconds), QS_ALLINPUT);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        return !isClosed_;
    }
    // [events end]

    bool isDisplayLost() const override { return false; }

    cv::Mat capture() const override {
        RECT client = {};
        GetClientRect(window_, &client);
        cv::Mat pixels(client.bottom, client.right, CV_8UC4);
        if (pixels.empty()) return {};
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = pixels.cols;
        info.bmiHeader.biHeight = -pixels.rows;  // from the top
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        const HDC source = GetDC(window_);
        const HDC copy = CreateCompatibleDC(source);
        const HBITMAP bitmap = CreateCompatibleBitmap(source, pixels.cols, pixels.rows);
        const HGDIOBJ former = SelectObject(copy, bitmap);
        const bool copied = BitBlt(copy, 0, 0, pixels.cols, pixels.rows, source, 0, 0, SRCCOPY) != FALSE;
        SelectObject(copy, former);
        const int rows =
            GetDIBits(copy, bitmap, 0, static_cast<UINT>(pixels.rows), pixels.data, &info, DIB_RGB_COLORS);
        DeleteObject(bitmap);
        DeleteDC(copy);
        ReleaseDC(window_, source);
        if (!copied || rows != pixels.rows) return {};
        cv::Mat picture(pixels.size(), CV_8UC3);
        const int pairs[] = {0, 0, 1, 1, 2, 2};
        cv::mixChannels(&pixels, 1, &picture, 1, pairs, 3);
        return picture;
    }

  private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* const self = reinterpret_cast<Win32HostWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (self != nullptr && message == WM_CLOSE) {
            self->isClosed_ = true;
            return 0;
        }
        if (self != nullptr && message == WM_NCDESTROY) {
            self->isClosed_ = true;
            self->window_ = nullptr;
            self->panes_.clear();
        }
        if (self != nullptr && message == WM_SIZE && wParam != SIZE_MINIMIZED) self->takeSize();
        return DefWindowProcW(window, message, wParam, lParam);
    }

    void takeSize() {
        RECT client = {};
        GetClientRect(window_, &client);
        const int panes = static_cast<int>(panes_.size());
        paneSize_.width =
            std::max(kSmallestPane, (static_cast<int>(client.right) - (panes - 1) * kGap) / panes);
        paneSize_.height = std::max(kSmallestPane, static_cast<int>(client.bottom));
        int x = 0;
        for (const HWND pane : panes_) {
            MoveWindow(pane, x, 0, paneSize_.width, paneSize_.height, TRUE);
            x += paneSize_.width + kGap;
        }
    }

    HWND window_ = nullptr;
    std::vector<HWND> panes_;
    cv::Size paneSize_;
    bool isClosed_ = false;
};

}  // namespace

std::unique_ptr<HostWindow> openHostWindow(const std::string& title, int panes, cv::Size paneSize) {
    auto window = std::make_unique<Win32HostWindow>();
    if (!window->open(title, panes, paneSize)) return nullptr;
    return window;
}

}  // namespace host
