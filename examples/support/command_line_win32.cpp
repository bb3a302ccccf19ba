#include "support/command_line.h"

#include <windows.h>

#include <shellapi.h>

#include <cstdlib>

namespace host {
namespace {

// With the NUL at its end.
std::string toUtf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), size, nullptr, nullptr);
    return utf8;
}

// Ends with the result.
std::shared_ptr<void> showUtf8() {
    const UINT before = GetConsoleOutputCP();
    if (before == 0 || SetConsoleOutputCP(CP_UTF8) == 0) return nullptr;
    return {nullptr, [before](void*) { SetConsoleOutputCP(before); }};
}

}  // namespace

CommandLine::CommandLine(int count, char** texts) : texts_(texts, texts + count), console_(showUtf8()) {
    int wideCount = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &wideCount);
    if (wide == nullptr) return;
    for (int i = 0; i < wideCount; ++i) converted_.push_back(toUtf8(wide[i]));
    LocalFree(wide);
    texts_.clear();
    for (const std::string& text : converted_) texts_.push_back(text.c_str());
}

// Nothing is left of a variable that is set to "".
void setVariable(const std::string& name, const std::filesystem::path& value) {
    _wputenv_s(std::filesystem::u8path(name).c_str(), value.c_str());
}

}  // namespace host
