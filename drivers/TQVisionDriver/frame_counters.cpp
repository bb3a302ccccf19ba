#include "drivers/TQVisionDriver/frame_counters.h"

namespace vision {

std::uint64_t framesBetween(std::uint64_t last, std::uint64_t number) {
    constexpr std::uint64_t kHighestShort = 65535;
    // More than that is no loss but nonsense.
    constexpr std::uint64_t kMostBelievable = 10000;
    if (last == 0 || number == 0 || number == last) return 0;
    std::uint64_t between = 0;
    if (number > last) {
        between = number - last - 1;
    } else if (last <= kHighestShort && last - number > kHighestShort / 2) {
        between = kHighestShort - last + number - 1;
    }
    return between > kMostBelievable ? 0 : between;
}

void FrameCounters::reset() {
    const zul::LockGuard lock(mutex_);
    counts_ = FrameCounts();
    lastNumber_ = 0;
    hasComplete_ = false;
}

void FrameCounters::beginStream() {
    const zul::LockGuard lock(mutex_);
    counts_.lastSign = Clock::now();
    lastNumber_ = 0;
    hasComplete_ = false;
}

void FrameCounters::follow(std::uint64_t number) {
    counts_.lastSign = Clock::now();
    const std::uint64_t missing = framesBetween(lastNumber_, number);
    counts_.lost += missing;
    counts_.frames += missing + 1;
    if (number != 0) lastNumber_ = number;
}

std::uint64_t FrameCounters::complete(std::uint64_t number, std::size_t bytes) {
    const zul::LockGuard lock(mutex_);
    follow(number);
    ++counts_.complete;
    counts_.bytes += static_cast<double>(bytes);
    if (hasComplete_) counts_.lastInterval = counts_.lastSign - lastComplete_;
    lastComplete_ = counts_.lastSign;
    hasComplete_ = true;
    return counts_.frames;
}

void FrameCounters::incomplete(std::uint64_t number) {
    const zul::LockGuard lock(mutex_);
    follow(number);
    ++counts_.lost;
}

void FrameCounters::unusable() {
    const zul::LockGuard lock(mutex_);
    ++counts_.lost;
}

FrameCounts FrameCounters::counts() {
    const zul::LockGuard lock(mutex_);
    return counts_;
}

}  // namespace vision
