#include "inspection/live/live_counts.h"

#include <numeric>
#include <utility>

namespace inspection {

std::int64_t LiveCount::measured() const {
    return std::accumulate(verdicts_.begin(), verdicts_.end(), std::int64_t{0});
}

std::string LiveCount::text() const {
    std::string text;
    for (int i = orx::vdPass; i <= orx::vdNoLimits; ++i) {
        const auto verdict = static_cast<orx::TVerdict>(i);
        if (verdict == orx::vdNoLimits && of(verdict) == 0) continue;
        text += (text.empty() ? "" : ", ") + std::to_string(of(verdict)) + " " + orx::verdictText(verdict);
    }
    return text;
}

std::string NewestPictures::add(const std::string& name) {
    std::string old = std::exchange(names_[next_], name);
    next_ = (next_ + 1) % names_.size();
    return old;
}

}  // namespace inspection
