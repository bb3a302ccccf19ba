// A camera driver that answers what it is told to: sizes that do not fit, pictures without data, numbers that
// go back, refusals at any moment. Only what the interface demands of every module is kept: a picture that it
// claims to hand over lies in memory.
#include "tests/fuzz/driver_answers.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <mutex>
#include <vector>

namespace {

std::mutex mutex;
std::vector<unsigned char> answers;
std::size_t next = 0;
std::array<std::vector<unsigned char>, VD_MAX_CAMERAS> buffers;

unsigned byteAnswer() {
    const std::lock_guard<std::mutex> lock(mutex);
    return next < answers.size() ? answers[next++] : 0;
}

// Three of four times true, so that calls behind it are reached.
bool yes() { return byteAnswer() % 4U != 3; }

int size() {
    static const std::array<int, 8> kWild = {
        -1, 0, 1, 65535, 65536, 1 << 30, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()};
    const unsigned kind = byteAnswer();
    return kind < 224 ? 1 + static_cast<int>(kind % 64U) : kWild[kind % kWild.size()];
}

int channels() {
    static const std::array<int, 8> kCounts = {1, 1, 1, 3, 3, 4, 2, -1};
    return kCounts[byteAnswer() % kCounts.size()];
}

}  // namespace

extern "C" {

VD_EXPORT void giveDriverAnswers(const unsigned char* bytes, std::size_t count) {
    const std::lock_guard<std::mutex> lock(mutex);
    answers.assign(bytes, bytes + count);
    next = 0;
}

VD_EXPORT bool VDInitCamera(int, long long*, bool) { return yes(); }
VD_EXPORT bool VDOpen(int, int) { return yes(); }
VD_EXPORT bool VDStop(int) { return yes(); }
VD_EXPORT bool VDClose(int) { return yes(); }
VD_EXPORT bool VDSetParam(int, int, long) { return yes(); }
VD_EXPORT void VDDestoryCamera(void) { byteAnswer(); }

VD_EXPORT bool VDStart(int* width, int* height, int* channelCount, int) {
    *width = size();
    *height = size();
    *channelCount = channels();
    return yes();
}

VD_EXPORT bool VDGetImage(VDImage* image, int index) {
    if (index < 0 || index >= VD_MAX_CAMERAS || !yes()) return false;
    image->width = size();
    image->height = size();
    image->channels = channels();
    std::vector<unsigned char>& buffer = buffers[static_cast<std::size_t>(index)];
    // As large as it claims, as long as that is a picture that a camera could send; beyond, there is none.
    const auto area = std::max<std::int64_t>(0, image->width) * std::max<std::int64_t>(0, image->height);
    constexpr std::int64_t kMost = 1 << 20;
    const std::int64_t bytes = area > kMost ? 0 : area * std::max(1, image->channels);
    const bool hasData = bytes > 0 && bytes <= kMost;
    if (hasData) buffer.assign(static_cast<std::size_t>(bytes), static_cast<unsigned char>(byteAnswer()));
    image->data = hasData ? buffer.data() : nullptr;
    return true;
}

VD_EXPORT float VDGetParam(int, int) {
    static const std::array<float, 4> kWild = {std::numeric_limits<float>::quiet_NaN(),
                                               std::numeric_limits<float>::infinity(), -1.0F, 1e30F};
    const unsigned kind = byteAnswer();
    return kind < 192 ? static_cast<float>(kind) : kWild[kind % kWild.size()];
}

VD_EXPORT bool VDGetFrameInfo(VDFrameInfo* info, int) {
    const unsigned kind = byteAnswer();
    info->number = kind % 16U == 15 ? std::numeric_limits<unsigned long long>::max() : kind % 16U;
    info->newest = info->number + byteAnswer() % 4U;
    info->device_time = kind % 8U == 7 ? std::numeric_limits<unsigned long long>::max() : kind;
    info->age = kind % 8U == 6 ? std::numeric_limits<unsigned long long>::max() : kind;
    info->flags = byteAnswer() % 8U;
    return yes();
}

}  // extern "C"
