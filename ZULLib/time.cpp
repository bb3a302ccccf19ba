// The local time as text.
#include "ZULLib/zullib.h"

#include <chrono>
#include <ctime>
#include <string>

#include "ZULLib/platform_internal.h"

namespace zul {
namespace {

// At least `width` digits, the same in every locale.
std::string digits(int value, std::size_t width) {
    const std::string text = std::to_string(value);
    return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

std::string date(const std::tm& time, const std::string& separator) {
    return digits(time.tm_year + 1900, 4) + separator + digits(time.tm_mon + 1, 2) + separator +
           digits(time.tm_mday, 2);
}

std::string clock(const std::tm& time, const std::string& separator) {
    return digits(time.tm_hour, 2) + separator + digits(time.tm_min, 2) + separator + digits(time.tm_sec, 2);
}

}  // namespace

std::string getCurrentTime(int format) {
    using std::chrono::milliseconds;
    using std::chrono::seconds;
    using std::chrono::system_clock;
    const auto now = system_clock::now();
    const auto second = std::chrono::floor<seconds>(now);
    const auto millisecond = std::chrono::floor<milliseconds>(now - second).count();
    const std::tm time = platform::localTime(system_clock::to_time_t(second));
    switch (format) {
        case 1:
            return date(time, "-");
        case 2:
            return clock(time, ":");
        case 3:
            return date(time, "") + clock(time, "");
        case 4:
            return date(time, "") + "_" + clock(time, "") + "_" + digits(static_cast<int>(millisecond), 3);
        default:
            return date(time, "-") + " " + clock(time, ":") + " ";
    }
}

}  // namespace zul
