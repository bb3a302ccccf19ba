// Texts: code page 936 and UTF-8, numbers, cutting, paths, parameters and messages, against plain versions.
#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "ZULLib/zullib.h"
#include "orxFunctions/foundation/text.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;

// Every character whole, of its shortest form, no surrogate.
bool isUtf8(const std::string& text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<unsigned char>(text[i]);
        const std::size_t more = first < 0x80 ? 0 : first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
        if (first >= 0x80 && (first < 0xC2 || first > 0xF4)) return false;
        if (i + more >= text.size()) return false;
        std::uint32_t code = more == 0 ? first : first & (0x3FU >> more);
        for (std::size_t k = 1; k <= more; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0U) != 0x80) return false;
            code = code << 6U | (next & 0x3FU);
        }
        const std::uint32_t least = more == 2 ? 0x800U : more == 3 ? 0x10000U : 0U;
        if (code < least || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return false;
        i += more + 1;
    }
    return true;
}

void checkCodePages(const std::string& text) {
    const std::string utf8 = zul::toUtf8(text);
    require(isUtf8(utf8), "every text comes out as UTF-8");
    require(zul::toUtf8(zul::toAnsi(utf8)) == utf8, "to the code page and back");
    const std::string ansi = zul::toAnsi(text);
    require(zul::toAnsi(zul::toUtf8(ansi)) == ansi, "from the code page and back");
    bool ascii = true;
    for (const char c : text) ascii = ascii && static_cast<unsigned char>(c) < 0x80;
    require(!ascii || (utf8 == text && ansi == text), "ASCII stays");
}

void checkNumbers(fuzz::Input& input) {
    const int whole = input.integer();
    const double value = input.number();
    const int decimals = input.between(-3, 110);
    const std::string digits = input.text(40);
    require(zul::strToInt(zul::intToStr(whole)) == whole, "whole numbers there and back");
    const std::string text = zul::doubleToStr(value, decimals);
    const double back = zul::strToDouble(text);
    if (std::isfinite(value)) {
        const int used = std::min(100, std::max(0, decimals));
        require(std::abs(back - value) <= 0.5000001 * std::pow(10.0, -used) + 1e-15 * std::abs(value),
                "numbers there and back, but for the rounding");
        char plain[512];
        std::snprintf(plain, sizeof plain, "%.*f", used, value);
        require(text == plain, "as the C library writes it");
    } else {
        require(fuzz::nearly(back, value), "what is no number, there and back");
    }
    const std::string cut = digits.substr(0, digits.find('\0'));
    const long long plain = std::strtoll(cut.c_str(), nullptr, 10);
    const long long limited = std::min<long long>(2147483647, std::max<long long>(-2147483648LL, plain));
    require(zul::strToInt(cut) == limited, "digits as the C library reads them");
}

void checkCutting(const std::string& text, const std::string& start, const std::string& end) {
    const std::size_t at = text.find(start);
    if (at != std::string::npos && !start.empty()) {
        require(orx::getStartStr(text, start) == text.substr(0, at), "before the separator");
        require(orx::getEndStr(text, start) == text.substr(at + start.size()), "after the separator");
    } else {
        orx::getStartStr(text, start);
        orx::getEndStr(text, start);
    }
    const std::string middle = orx::getMiddleStr(text, start, end);
    require(text.find(middle) != std::string::npos, "the middle is part of the text");
}

void checkPaths(const std::string& path) {
    const std::string folder = zul::extractFilePath(path);
    const std::string name = zul::extractFileName(path);
    const std::string extension = zul::extractFileExt(path);
    require(folder + name == path, "folder and name make the path");
    require(name.find('/') == std::string::npos, "a name has no separator");
    require(name.size() >= extension.size() && name.substr(name.size() - extension.size()) == extension,
            "a name ends with its extension");
    require(extension.empty() || (extension[0] == '.' && extension.rfind('.') == 0), "one point, in front");
    if (path.find('\0') == std::string::npos && path.size() < 200) {
        std::error_code ignored;
        const bool exists = std::filesystem::exists(std::filesystem::path(path), ignored);
        require(zul::dirExists(path) == exists || path.find('\\') != std::string::npos,
                "what exists is seen");
    }
}

void checkStore(const std::string& name, const std::string& text, int value) {
    zul::APPaddOrSetParamString(name, text);
    zul::APPaddOrSetParamInt(name, value);
    require(zul::APPgetParamString(name) == text && zul::APPgetParamInt(name) == value,
            "parameters are kept");
    zul::APPaddOrSetParamString(name, "");
    fuzz::forgetMessages();
    zul::APPshowMessage(text, value);
    std::string told;
    int color = 0;
    require(zul::APPgetMessage(told, color) && told == text && color == value, "messages are kept");
    require(!zul::APPgetMessage(told, color), "and told once");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Input input(bytes, size);
    switch (input.between(0, 4)) {
        case 0:
            checkCodePages(input.rest());
            break;
        case 1:
            checkNumbers(input);
            break;
        case 2: {
            const std::string start = input.text(3);
            const std::string end = input.text(3);
            checkCutting(input.rest(), start, end);
            break;
        }
        case 3:
            checkPaths(input.rest());
            break;
        default: {
            // Few names: the store keeps each for ever.
            const std::string name(1, static_cast<char>('a' + input.between(0, 15)));
            const int value = input.integer();
            checkStore(name, input.rest(), value);
        }
    }
    return 0;
}
