// The byte structure of code page 936 and the platform's conversion tables for it.
#ifndef ZULLIB_CODE_PAGE_INTERNAL_H
#define ZULLIB_CODE_PAGE_INTERNAL_H

#include <cstddef>
#include <string>
#include <string_view>

namespace zul::code_page {

inline bool isLeadByte(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x81 && byte <= 0xFE;
}

inline bool isTrailByte(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x40 && byte <= 0xFE && byte != 0x7F;
}

// The bytes of the character at `at` of a text in code page 936: 2 for a lead byte and its trail byte,
// else 1.
inline std::size_t ansiLength(std::string_view ansi, std::size_t at) {
    return isLeadByte(ansi[at]) && at + 1 < ansi.size() && isTrailByte(ansi[at + 1]) ? 2 : 1;
}

// The bytes of the character at `at` of a UTF-8 text: 1 to 4, or 0 where no valid character begins (stray and
// overlong bytes, surrogates, beyond U+10FFFF, cut off at the end).
std::size_t utf8Length(std::string_view utf8, std::size_t at);

// The platform's tables. The texts are well-formed: valid UTF-8 of at most three bytes a character, and whole
// characters of code page 936. Characters without a counterpart become '?'.
std::string ansiFromUtf8(const std::string& utf8);
std::string utf8FromAnsi(const std::string& ansi);

}  // namespace zul::code_page

#endif
