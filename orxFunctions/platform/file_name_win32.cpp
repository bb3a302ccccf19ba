#include "orxFunctions/platform/file_name_internal.h"

#include <windows.h>

#include <algorithm>

namespace orx::platform {
namespace {

namespace fs = std::filesystem;

constexpr UINT kAnsi = 936;

// False when the bytes are not text in that code page.
bool decode(UINT codePage, const std::string& bytes, std::wstring& wide) {
    const int size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.data(), size, nullptr, 0);
    wide.resize(static_cast<std::size_t>(length));
    return MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.data(), size, wide.data(), length) > 0;
}

// False when the code page lacks a character of the text.
bool encode(UINT codePage, const std::wstring& wide, std::string& bytes) {
    const bool utf8 = codePage == CP_UTF8;
    const DWORD flags = utf8 ? 0 : WC_NO_BEST_FIT_CHARS;
    const int size = static_cast<int>(wide.size());
    const int length = WideCharToMultiByte(codePage, flags, wide.data(), size, nullptr, 0, nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(length));
    BOOL lost = FALSE;
    WideCharToMultiByte(codePage, flags, wide.data(), size, bytes.data(), length, nullptr,
                        utf8 ? nullptr : &lost);
    return length > 0 && lost == FALSE;
}

bool hasLongCharacter(const std::string& utf8) {
    return std::any_of(utf8.begin(), utf8.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) >= 0xE0; });
}

bool isThere(const fs::path& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

// Whether `path` exists and `usual` does not; where neither does, the same of the folders that they are in.
// Both have the same separators, since characters of 2 bytes stand in the same places in both encodings.
bool leadsFurther(fs::path path, fs::path usual) {
    while (path != usual && usual.has_relative_path() && !isThere(usual)) {
        if (isThere(path)) return true;
        path = path.parent_path();
        usual = usual.parent_path();
    }
    return false;
}

}  // namespace

fs::path toPath(const std::string& name) {
    std::wstring utf8;
    std::wstring ansi;
    const bool isAnsi = decode(kAnsi, name, ansi);
    if (!decode(CP_UTF8, name, utf8)) return isAnsi ? fs::path(ansi) : fs::path();
    if (!isAnsi || ansi == utf8 || hasLongCharacter(name) || leadsFurther(utf8, ansi)) return utf8;
    return ansi;
}

std::string toName(const fs::path& path) {
    const std::wstring wide = path.wstring();
    std::string utf8;
    std::string ansi;
    encode(CP_UTF8, wide, utf8);
    if (encode(kAnsi, wide, ansi) && (ansi == utf8 || toPath(ansi).wstring() == wide)) return ansi;
    return utf8;
}

std::string shownName(const fs::path& path) {
    std::string utf8;
    encode(CP_UTF8, path.wstring(), utf8);
    return utf8;
}

bool hasAnyOf(const std::string& characters, const std::string& name) {
    const std::wstring wide = toPath(name).wstring();
    if (wide.empty()) return !name.empty();
    return wide.find_first_of(std::wstring(characters.begin(), characters.end())) != std::wstring::npos;
}

}  // namespace orx::platform
