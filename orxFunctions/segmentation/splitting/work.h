// What splitting a contour may cost.
#ifndef ORXFUNCTIONS_SEGMENTATION_SPLITTING_WORK_H
#define ORXFUNCTIONS_SEGMENTATION_SPLITTING_WORK_H

#include <cstddef>

namespace orx::splitting {

// Counts looks at a point or at a box of points, 5 ns or less each; once the limit is passed the steps stop.
class Work {
  public:
    static constexpr std::size_t kLimit = std::size_t{1} << 32;
    static constexpr std::size_t kMostPoints = 10000000;
    // A point that a chord collects is kept, and fitted later.
    static constexpr std::size_t kCollected = 64;
    // A point of an arc is copied and fitted at once where it is near the circle; where points are not, it is
    // weighed and fitted some thirty times more.
    static constexpr std::size_t kFitted = 8;
    static constexpr std::size_t kFittedAgain = 56;
    // An end that lies near another one is put in order with the others there.
    static constexpr std::size_t kNeighbour = 64;

    explicit Work(std::size_t limit = kLimit) : limit_(limit) {}

    void spend(std::size_t looks) { spent_ += looks; }
    std::size_t spent() const { return spent_; }
    bool isTooMuch() const { return spent_ > limit_; }

  private:
    std::size_t limit_;
    std::size_t spent_ = 0;
};

}  // namespace orx::splitting

#endif
