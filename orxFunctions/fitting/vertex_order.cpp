#include "orxFunctions/fitting/vertex_order_internal.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx {
namespace {

using Iterator = std::vector<AngledVertex>::iterator;

bool isBefore(const AngledVertex& a, const AngledVertex& b) { return a.angle > b.angle; }

// Few vertices are put in their places one by one: std::stable_sort asks for memory each time.
void sortStretch(Iterator begin, Iterator end) {
    constexpr std::ptrdiff_t kFew = 16;
    if (end - begin > kFew) {
        std::stable_sort(begin, end, isBefore);
        return;
    }
    for (Iterator next = begin; next != end; ++next) {
        std::rotate(std::upper_bound(begin, next, *next, isBefore), next, next + 1);
    }
}

}  // namespace

void sortByFallingAngle(std::vector<AngledVertex>& vertices) {
    constexpr std::size_t kWorthStretches = 64;
    const std::size_t count = vertices.size();
    if (count < kWorthStretches) {
        sortStretch(vertices.begin(), vertices.end());
        return;
    }
    // As many stretches of angle as vertices, and one for those without a direction. Rounded, a greater angle
    // still never comes into a later stretch.
    const double perRadian = static_cast<double>(count) / kPi;
    const auto stretchOf = [&](const AngledVertex& v) {
        if (v.angle < 0) return count;
        return std::min(static_cast<std::size_t>(std::max(kPi - v.angle, 0.0) * perRadian), count - 1);
    };
    std::vector<std::size_t> ends(count + 1);
    for (const AngledVertex& v : vertices) ++ends[stretchOf(v)];
    std::size_t begin = 0;
    for (std::size_t& end : ends) {
        const std::size_t size = end;
        end = begin;
        begin += size;
    }
    std::vector<AngledVertex> sorted(count);
    for (const AngledVertex& v : vertices) sorted[ends[stretchOf(v)]++] = v;
    auto from = sorted.begin();
    for (const std::size_t end : ends) {
        const auto to = sorted.begin() + static_cast<std::ptrdiff_t>(end);
        if (to - from > 1) sortStretch(from, to);
        from = to;
    }
    vertices.swap(sorted);
}

}  // namespace orx
