#include "orxFunctions/camera/frame_origin_internal.h"

#include <atomic>
#include <string>

#include "ZULLib/zullib.h"

namespace orx {
namespace {

// More frames than any camera sends between two fetches.
constexpr std::uint64_t kLongestGap = 1'000'000'000;
constexpr std::uint64_t kOldestPicture = std::uint64_t{1'000'000'000} * 86400 * 365;  // nanoseconds
constexpr std::uint64_t kLatestTime = std::uint64_t{1} << 63U;

std::atomic<std::uint64_t> startCount{0};

}  // namespace

std::uint64_t FrameNumbers::starts() { return startCount; }

void FrameNumbers::begin() {
    start_ = ++startCount;
    last_ = 0;
    isRefused_ = false;
}

bool FrameNumbers::isCredible(const VDFrameInfo& info) const {
    return info.number >= last_ && info.number - last_ <= kLongestGap;
}

FrameOrigin FrameNumbers::take(const VDFrameInfo* info) {
    FrameOrigin origin;
    origin.start = start_;
    origin.hostTime = std::chrono::system_clock::now();
    if (info != nullptr) origin.returns = (info->flags & VD_FRAME_RETURNS) != 0;
    if (info != nullptr && !isRefused_ && !isCredible(*info)) {
        isRefused_ = true;
        zul::outPutDebugString("TQVisionDriver: VDGetFrameInfo gives number " + std::to_string(info->number) +
                               " after " + std::to_string(last_) + " and is no longer believed");
    }
    if (info == nullptr || isRefused_) {
        origin.number = ++last_;
        return origin;
    }
    origin.isNumbered = true;
    origin.number = last_ = info->number;
    if (info->device_time < kLatestTime) origin.deviceTime = static_cast<std::int64_t>(info->device_time);
    if (info->age < kOldestPicture) {
        origin.hostTime -= std::chrono::duration_cast<std::chrono::system_clock::duration>(
            std::chrono::nanoseconds(static_cast<std::int64_t>(info->age)));
    }
    origin.isFirstPending = origin.number == 0 && (info->flags & VD_FRAME_FIRST_PENDING) != 0;
    return origin;
}

NewerPicture FrameNumbers::newer(const VDFrameInfo* info) const {
    if (info == nullptr || isRefused_) return NewerPicture::kUnknown;
    return info->newest > last_ ? NewerPicture::kThere : NewerPicture::kNone;
}

}  // namespace orx
