#include "orxFunctions/fitting/consensus/mixed_points.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

namespace orx::consensus {
namespace {

// More than these need not be mixed: the gain of a shape that is none is told before.
constexpr std::size_t kMixed = 1024;

}  // namespace

// R. A. Fisher and F. Yates' shuffle of the first ones.
MixedPoints::MixedPoints(const distance_kernels::Columns& points, std::size_t most, SeededNumbers& numbers)
    : count_(std::min(points.count, most)),
      choice_(points.count > most),
      size_((count_ + consensus_kernels::kPointsPerStep - 1) / consensus_kernels::kPointsPerStep *
            consensus_kernels::kPointsPerStep),
      mixed_(choice_ ? count_ : std::min(count_, kMixed)),
      columns_(new double[2 * size_]) {
    std::vector<std::uint32_t> order(points.count);
    std::iota(order.begin(), order.end(), 0U);
    double* x = columns_.get();
    double* y = x + size_;
    for (std::size_t i = 0; i < count_; ++i) {
        if (i < mixed_) std::swap(order[i], order[i + numbers.below(points.count - i)]);
        x[i] = points.x[order[i]];
        y[i] = points.y[order[i]];
    }
    std::fill(x + count_, x + size_, std::numeric_limits<double>::quiet_NaN());
    std::fill(y + count_, y + size_, std::numeric_limits<double>::quiet_NaN());
}

distance_kernels::Columns MixedPoints::some(std::size_t least) const {
    return {x(), y(), nullptr, least <= mixed_ ? least : count_};
}

}  // namespace orx::consensus
