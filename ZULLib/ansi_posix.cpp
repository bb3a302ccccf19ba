// The conversion tables of code page 936 on POSIX: iconv. A descriptor is opened for each call (texts without
// Chinese never come here): one kept per thread would be gone while a thread's last destructors still trace.
#include "ZULLib/code_page_internal.h"

#include <iconv.h>

#include <cerrno>
#include <string>
#include <string_view>

namespace zul::code_page {
namespace {

using CharacterLength = std::size_t (*)(std::string_view text, std::size_t at);

class Descriptor {
  public:
    Descriptor(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    ~Descriptor() {
        if (valid()) iconv_close(handle_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    // iconv_open marks failure by -1 in place of a pointer.
    bool valid() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

    // Converts from `at` up to the end or the first character without a counterpart, appends the result and
    // advances `at`.
    void convert(const std::string& text, std::size_t& at, std::string& result) const {
        char* in = const_cast<char*>(text.data()) + at;
        std::size_t inLeft = text.size() - at;
        bool full = true;
        while (inLeft > 0 && full) {
            char buffer[1024];
            char* out = buffer;
            std::size_t outLeft = sizeof buffer;
            full = iconv(handle_, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1) &&
                   errno == E2BIG;
            result.append(buffer, sizeof buffer - outLeft);
        }
        at = text.size() - inLeft;
    }

  private:
    iconv_t handle_;
};

// A system without iconv's table of this code page (in Debian a file of libc6 itself) keeps ASCII and gives
// '?' for every other character.
std::string convertWithoutTable(const std::string& text, CharacterLength characterLength) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); at += characterLength(text, at)) {
        result.push_back(static_cast<unsigned char>(text[at]) < 0x80 ? text[at] : '?');
    }
    return result;
}

std::string convert(const char* to, const char* from, const std::string& text,
                    CharacterLength characterLength) {
    const Descriptor descriptor(to, from);
    if (!descriptor.valid()) return convertWithoutTable(text, characterLength);
    std::string result;
    result.reserve(text.size() + text.size() / 2);
    for (std::size_t at = 0; at < text.size();) {
        descriptor.convert(text, at, result);
        if (at == text.size()) break;
        result.push_back('?');
        at += characterLength(text, at);
    }
    return result;
}

}  // namespace

// GBK is this code page's other name; both put the euro sign at 0x80.
std::string ansiFromUtf8(const std::string& utf8) { return convert("GBK", "UTF-8", utf8, utf8Length); }
std::string utf8FromAnsi(const std::string& ansi) { return convert("UTF-8", "GBK", ansi, ansiLength); }

}  // namespace zul::code_page
