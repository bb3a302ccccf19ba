#include "orxFunctions/platform/file_name_internal.h"

#include "ZULLib/zullib.h"

namespace orx::platform {
namespace {

namespace fs = std::filesystem;

// 0 for a byte that begins no character. Which of the longer ones are in use does not matter here.
std::size_t utf8Length(unsigned char first) {
    if (first < 0x80) return 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
}

bool isUtf8(const std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = utf8Length(static_cast<unsigned char>(text[at]));
        if (length == 0 || at + length > text.size()) return false;
        for (std::size_t i = 1; i < length; ++i) {
            if ((static_cast<unsigned char>(text[at + i]) & 0xC0U) != 0x80U) return false;
        }
        at += length;
    }
    return true;
}

}  // namespace

fs::path toPath(const std::string& name) { return name; }
std::string toName(const fs::path& path) { return path.string(); }

std::string shownName(const fs::path& path) {
    return isUtf8(path.native()) ? path.native() : zul::toUtf8(path.native());
}

bool hasAnyOf(const std::string& characters, const std::string& name) {
    if (isUtf8(name)) return name.find_first_of(characters) != std::string::npos;
    for (std::size_t at = 0; at < name.size(); ++at) {
        if (characters.find(name[at]) != std::string::npos) return true;
        const bool isDouble = static_cast<unsigned char>(name[at]) > 0x80 && at + 1 < name.size() &&
                              static_cast<unsigned char>(name[at + 1]) >= 0x40;
        if (isDouble) ++at;
    }
    return false;
}

}  // namespace orx::platform
