// The conversion tables of code page 936 on Windows, which come with the system. Unlike iconv's they give the
// user-defined areas of the code page characters of Unicode's private area.
#include "ZULLib/code_page_internal.h"

#include <string>

#include "ZULLib/win32_internal.h"

namespace zul {
namespace {

std::string narrowFrom(UINT codePage, DWORD flags, const char* replacement, const std::wstring& wide) {
    const int size = static_cast<int>(wide.size());
    const int needed =
        WideCharToMultiByte(codePage, flags, wide.data(), size, nullptr, 0, replacement, nullptr);
    if (needed <= 0) return {};
    std::string result(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(codePage, flags, wide.data(), size, result.data(), needed, replacement, nullptr);
    return result;
}

}  // namespace

std::wstring win32::wideFrom(UINT codePage, const std::string& text) {
    const int size = static_cast<int>(text.size());
    const int needed = MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0);
    if (needed <= 0) return {};
    std::wstring result(static_cast<std::size_t>(needed), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), size, result.data(), needed);
    return result;
}

std::string win32::ansiFromWide(const std::wstring& wide) {
    return narrowFrom(kCodePage, WC_NO_BEST_FIT_CHARS, "?", wide);
}

std::string code_page::ansiFromUtf8(const std::string& utf8) {
    return win32::ansiFromWide(win32::wideFrom(CP_UTF8, utf8));
}

std::string code_page::utf8FromAnsi(const std::string& ansi) {
    return narrowFrom(CP_UTF8, 0, nullptr, win32::wideFrom(win32::kCodePage, ansi));
}

}  // namespace zul
