// Numbers as text, the same in every locale.
#include "ZULLib/zullib.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

namespace zul {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// What std::from_chars can start on: without the leading blanks and without a plus sign.
std::string_view numberIn(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.empty() || text.front() != '+') return text;
    text.remove_prefix(1);
    return !text.empty() && text.front() == '-' ? std::string_view() : text;
}

// Whether a decimal number that no double can hold is too large; else it is too small. `number` is exactly
// the characters of the number.
bool isTooLarge(std::string_view number) {
    const std::size_t mark = number.find_first_of("eE");
    const std::string_view mantissa = number.substr(0, mark);
    long long exponent = mark == std::string_view::npos ? 0 : strToInt(std::string(number.substr(mark + 1)));
    bool afterPoint = false;
    bool significant = false;
    for (const char c : mantissa) {
        afterPoint = afterPoint || c == '.';
        if (!isDigit(c)) continue;
        significant = significant || c != '0';
        if (significant && !afterPoint) ++exponent;
        if (!significant && afterPoint) --exponent;
    }
    return exponent > 0;
}

}  // namespace

std::string intToStr(int value) { return std::to_string(value); }

int strToInt(std::string text) {
    const std::string_view number = numberIn(text);
    int value = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec != std::errc::result_out_of_range) return value;
    return number.front() == '-' ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
}

double strToDouble(std::string text) {
    const std::string_view number = numberIn(text);
    double value = 0.0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec != std::errc::result_out_of_range) return value;
    const auto length = static_cast<std::size_t>(result.ptr - number.data());
    const double limit = isTooLarge(number.substr(0, length)) ? std::numeric_limits<double>::infinity() : 0.0;
    return number.front() == '-' ? -limit : limit;
}

std::string doubleToStr(double value, int decimals) {
    if (std::isnan(value)) return "nan";
    // The largest double has 309 digits before the point; a sign, the point and 100 decimals join them.
    char buffer[512];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed,
                                      std::clamp(decimals, 0, 100));
    return {buffer, result.ptr};
}

}  // namespace zul
