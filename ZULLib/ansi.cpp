// Between UTF-8 and code page 936: what is not well-formed is replaced here, alike on every platform, before
// the platform's tables see it.
#include "ZULLib/zullib.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "ZULLib/code_page_internal.h"

namespace zul {
namespace {

bool isAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Code page 936 has no character beyond U+FFFF, that is of four bytes.
std::string cleanUtf8(const std::string& utf8) {
    std::string clean;
    clean.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const std::size_t length = code_page::utf8Length(utf8, at);
        if (length >= 1 && length <= 3) {
            clean.append(utf8, at, length);
        } else {
            clean.push_back('?');
        }
        at += std::max<std::size_t>(length, 1);
    }
    return clean;
}

// A single byte is a character up to 0x80, which is the euro sign.
std::string cleanAnsi(const std::string& ansi) {
    std::string clean;
    clean.reserve(ansi.size());
    for (std::size_t at = 0; at < ansi.size();) {
        const std::size_t length = code_page::ansiLength(ansi, at);
        if (length == 2 || static_cast<unsigned char>(ansi[at]) <= 0x80) {
            clean.append(ansi, at, length);
        } else {
            clean.push_back('?');
        }
        at += length;
    }
    return clean;
}

}  // namespace

std::size_t code_page::utf8Length(std::string_view utf8, std::size_t at) {
    const auto byte = [&](std::size_t i) -> unsigned { return static_cast<unsigned char>(utf8[at + i]); };
    const unsigned first = byte(0);
    if (first < 0x80) return 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (utf8.size() - at < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) return 0;
    }
    const unsigned second = byte(1);
    const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool surrogate = first == 0xED && second >= 0xA0;
    const bool beyondTheLast = first == 0xF4 && second >= 0x90;
    return overlong || surrogate || beyondTheLast ? 0 : length;
}

std::string toAnsi(const std::string& utf8) {
    return isAscii(utf8) ? utf8 : code_page::ansiFromUtf8(cleanUtf8(utf8));
}

std::string toUtf8(const std::string& ansi) {
    return isAscii(ansi) ? ansi : code_page::utf8FromAnsi(cleanAnsi(ansi));
}

}  // namespace zul
