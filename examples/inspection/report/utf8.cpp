#include "inspection/report/utf8.h"

#include <cstdint>

namespace inspection {
namespace {

struct Character {
    char32_t code = 0;
    std::size_t length = 0;  // bytes; 0 for an invalid sequence
};

Character decodeAt(const std::string& text, std::size_t at) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[at + i]); };
    const unsigned char first = byte(0);
    if (first < 0x80) return {first, 1};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || at + length > text.size()) return {};
    char32_t code = first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) return {};
        code = (code << 6) | (byte(i) & 0x3FU);
    }
    const bool tooLong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (tooLong || surrogate || code > 0x10FFFF) return {};
    return {code, length};
}

bool isControl(char32_t code) { return code < 0x20 || (code >= 0x7F && code < 0xA0); }

int columnsOf(char32_t code) {
    if (code >= 0x300 && code <= 0x36F) return 0;
    const bool wide = (code >= 0x1100 && code <= 0x115F) || (code >= 0x2E80 && code <= 0xA4CF) ||
                      (code >= 0xAC00 && code <= 0xD7A3) || (code >= 0xF900 && code <= 0xFAFF) ||
                      (code >= 0xFE30 && code <= 0xFE6F) || (code >= 0xFF00 && code <= 0xFF60) ||
                      (code >= 0x1F300 && code <= 0x1FAFF) || (code >= 0x20000 && code <= 0x3FFFD);
    return wide ? 2 : 1;
}

}  // namespace

std::string cleanUtf8(const std::string& text) {
    std::string clean;
    clean.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const Character character = decodeAt(text, i);
        if (character.length == 0)
            clean += "\xEF\xBF\xBD";
        else if (isControl(character.code))
            clean += '?';
        else
            clean.append(text, i, character.length);
        i += character.length == 0 ? 1 : character.length;
    }
    return clean;
}

std::string escapeHtml(const std::string& text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\'':
                escaped += "&#39;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

int displayWidth(const std::string& utf8) {
    int width = 0;
    for (std::size_t i = 0; i < utf8.size();) {
        const Character character = decodeAt(utf8, i);
        width += character.length == 0 ? 1 : columnsOf(character.code);
        i += character.length == 0 ? 1 : character.length;
    }
    return width;
}

}  // namespace inspection
