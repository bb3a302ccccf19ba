#include "orxFunctions/camera/frame_queue_internal.h"

#include <algorithm>
#include <utility>

namespace orx {
namespace {

constexpr std::int32_t kLargestCapacity = 64;

}  // namespace

void FrameGap::begin(std::uint64_t startsBefore) {
    startsBefore_ = startsBefore;
    start_ = 0;
    last_ = 0;
}

bool FrameGap::isNew(const FrameOrigin& origin) const {
    return origin.number > 0 && (origin.start != start_ || origin.number > last_);
}

std::uint64_t FrameGap::follow(const FrameOrigin& origin) {
    if (origin.start != start_) last_ = origin.start > startsBefore_ ? 0 : origin.number - 1;
    start_ = origin.start;
    return origin.number - std::exchange(last_, origin.number) - 1;
}

void FrameQueue::open(const TFrameOptions& options) {
    const bool isEveryOne = options.policy == fpEveryOne;
    const zul::LockGuard lock(mutex_);
    capacity_ = isEveryOne ? static_cast<std::size_t>(std::clamp(options.capacity, 1, kLargestCapacity)) : 1;
    wantsEveryOne_ = isEveryOne;
    frames_.clear();
    counts_ = TFrameCounts();
    gap_.begin(FrameNumbers::starts());
    skipped_ = 0;
    ++opened_;
    isOpen_ = true;
    changed_.notify_all();
}

void FrameQueue::close() {
    const zul::LockGuard lock(mutex_);
    isOpen_ = false;
    wantsEveryOne_ = false;
    capacity_ = 0;
    frames_.clear();
    counts_ = TFrameCounts();
    ++opened_;
    changed_.notify_all();
}

bool FrameQueue::take(TFrame& frame, std::chrono::milliseconds timeout) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    const zul::LockGuard lock(mutex_);
    const std::uint64_t opened = opened_;
    while (isOpen_ && opened_ == opened && frames_.empty() &&
           changed_.wait_until(mutex_, end) == std::cv_status::no_timeout) {
    }
    if (opened_ != opened || frames_.empty()) return false;
    frame = std::move(frames_.front());
    frames_.pop_front();
    ++counts_.taken;
    return true;
}

TFrameCounts FrameQueue::counts() {
    const zul::LockGuard lock(mutex_);
    TFrameCounts counts = counts_;
    counts.waiting = frames_.size();
    return counts;
}

void FrameQueue::setCallback(TFrameCallback function, void* user) {
    const zul::LockGuard lock(mutex_);
    callback_.function = function;
    callback_.user = user;
    callback_.gap.begin(FrameNumbers::starts());
    hasCallback_ = function != nullptr;
}

bool FrameQueue::isNew(const FrameOrigin& origin) {
    const zul::LockGuard lock(mutex_);
    return (isOpen_ && gap_.isNew(origin)) || (hasCallback_ && callback_.gap.isNew(origin));
}

void FrameQueue::append(const TFrame& frame, const FrameOrigin& origin) {
    if (!gap_.isNew(origin)) {
        if (origin.number > 0) ++counts_.repeated;
        return;
    }
    frames_.push_back(frame);
    TFrame& added = frames_.back();
    const std::uint64_t lost = gap_.follow(origin);
    added.lostBefore = lost + std::exchange(skipped_, 0);
    counts_.lost += lost;
    counts_.delivered += lost + 1;
    if (frames_.size() > capacity_) {
        TFrame& next = frames_[1];
        next.lostBefore += frames_.front().lostBefore;
        next.droppedBefore += frames_.front().droppedBefore + 1;
        ++counts_.dropped;
        frames_.pop_front();
    }
    changed_.notify_one();
}

void FrameQueue::skip(const FrameOrigin& origin) {
    const zul::LockGuard lock(mutex_);
    if (!isOpen_ || !gap_.isNew(origin)) return;
    const std::uint64_t lost = gap_.follow(origin) + 1;
    skipped_ += lost;
    counts_.lost += lost;
    counts_.delivered += lost;
}

void FrameQueue::add(int camera, const cv::Mat& image, const FrameOrigin& origin) {
    TFrame frame;
    frame.image = image;
    frame.camera = camera;
    frame.start = origin.start;
    frame.number = origin.number;
    frame.isNumbered = origin.isNumbered;
    frame.deviceTime = origin.deviceTime;
    frame.hostTime = origin.hostTime;
    TFrameCallback function = nullptr;
    void* user = nullptr;
    {
        const zul::LockGuard lock(mutex_);
        if (isOpen_) append(frame, origin);
        if (hasCallback_ && callback_.gap.isNew(origin)) {
            frame.lostBefore = callback_.gap.follow(origin);
            function = callback_.function;
            user = callback_.user;
        }
    }
    if (function != nullptr) function(frame, user);
}

}  // namespace orx
