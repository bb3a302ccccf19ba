// Options of functions against the ranges that their headers state.
#ifndef ORXFUNCTIONS_FOUNDATION_OPTION_RANGE_INTERNAL_H
#define ORXFUNCTIONS_FOUNDATION_OPTION_RANGE_INTERNAL_H

#include <initializer_list>
#include <limits>

namespace orx {

// As `high`: no end above, infinity included.
constexpr double kNoHighEnd = std::numeric_limits<double>::infinity();

struct TOptionRange {
    const char* name;
    double value;
    double low;
    double high;
    bool above = false;  // `low` itself is not taken
};

// Whether each lies in its range, the ends included and not-a-number in none. Where one does not, rcOption
// with the name and the value of the first, refused in the name of the public function.
bool takesOptions(const char* function, std::initializer_list<TOptionRange> options) noexcept;

}  // namespace orx

#endif
