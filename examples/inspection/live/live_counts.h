// What the cameras of a run have come to so far.
#ifndef EXAMPLES_INSPECTION_LIVE_LIVE_COUNTS_H
#define EXAMPLES_INSPECTION_LIVE_LIVE_COUNTS_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace inspection {

// Of one camera.
class LiveCount {
  public:
    void add(orx::TVerdict verdict) { ++verdicts_[static_cast<std::size_t>(verdict)]; }
    std::int64_t of(orx::TVerdict verdict) const { return verdicts_[static_cast<std::size_t>(verdict)]; }
    std::int64_t measured() const;  // pictures that were looked at

    // "118 pass, 3 fail, 1 undecided, 0 not measured"; those without limits only where there are some.
    std::string text() const;

  private:
    std::array<std::int64_t, 5> verdicts_{};
};

// Names of pictures in the order they were written; more than a number of them make room.
class NewestPictures {
  public:
    explicit NewestPictures(int most) : names_(static_cast<std::size_t>(most)) {}

    // The one that has to go, "" where there is still room.
    std::string add(const std::string& name);

  private:
    std::vector<std::string> names_;  // a ring
    std::size_t next_ = 0;
};

}  // namespace inspection

#endif
