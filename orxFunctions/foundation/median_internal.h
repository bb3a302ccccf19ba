// The median of some numbers.
#ifndef ORXFUNCTIONS_FOUNDATION_MEDIAN_INTERNAL_H
#define ORXFUNCTIONS_FOUNDATION_MEDIAN_INTERNAL_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace orx {

// The upper one of the two in the middle of an even count; 0 for none. Numbers that are not finite are not
// to be given.
template <typename Number>
Number medianOf(std::vector<Number> numbers) {
    if (numbers.empty()) return Number();
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    return *middle;
}

}  // namespace orx

#endif
