// The points of a search as columns in a random order.
#ifndef ORXFUNCTIONS_FITTING_CONSENSUS_MIXED_POINTS_H
#define ORXFUNCTIONS_FITTING_CONSENSUS_MIXED_POINTS_H

#include <cstddef>
#include <memory>

#include "orxFunctions/fitting/consensus/seeded_numbers.h"
#include "orxFunctions/fitting/kernels/consensus.h"
#include "orxFunctions/fitting/kernels/distance.h"

namespace orx::consensus {

class MixedPoints {
  public:
    // Takes a random choice of `most` of the points where there are more.
    MixedPoints(const distance_kernels::Columns& points, std::size_t most, SeededNumbers& numbers);

    std::size_t count() const { return count_; }
    // There are more.
    bool choice() const { return choice_; }
    consensus_kernels::PointSpan span() const { return {x(), y(), size_, mixed_}; }
    // A random choice of so many points at least, or all; without weights.
    distance_kernels::Columns some(std::size_t least) const;
    distance_kernels::Columns all() const { return {x(), y(), nullptr, count_}; }

  private:
    const double* x() const { return columns_.get(); }
    const double* y() const { return columns_.get() + size_; }

    std::size_t count_;
    bool choice_;
    std::size_t size_;
    std::size_t mixed_;
    std::unique_ptr<double[]> columns_;
};

}  // namespace orx::consensus

#endif
