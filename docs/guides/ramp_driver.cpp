// A driver module, small and whole: one camera that sends a bright bar moving over a ramp of grey. It needs
// no device and no thread; which picture is the newest follows from the clock. See driver-module.md.
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <mutex>

#ifdef ORX_IN_TREE
#include "drivers/vision_driver.h"
#else
#include "orxFunctions/vision_driver.h"
#endif

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 200;

// [state]
using Clock = std::chrono::steady_clock;

// What the module knows of its one camera. VDStart and VDStop may come without the library's lock: hence
// this one.
struct Camera {
    std::mutex mutex;
    bool found = false;
    bool open = false;
    bool running = false;
    Clock::time_point start;
    long rate = 50;        // pictures a second
    long exposure = 5000;  // microseconds
    unsigned long long number = 0;
    std::array<unsigned char, std::size_t{kWidth} * kHeight> picture{};  // what VDGetImage gave last

    unsigned long long newest() const {
        const std::chrono::duration<double> time = Clock::now() - start;
        return 1 + static_cast<unsigned long long>(time.count() * static_cast<double>(rate));
    }
};

// Nothing in it needs an end: procedures may be called while the process ends, and the module may be
// unloaded.
Camera& camera() {
    static Camera only;
    return only;
}

// Slots and types that we do not know are answered with false, whoever asks.
bool isOurs(int index) { return index == 0; }
// [state end]

void expose(Camera& own) {
    const int bar = static_cast<int>(own.number * 3 % kWidth);
    for (int x = 0; x < kWidth; ++x) {
        const double light = std::abs(x - bar) < 12 ? 230.0 : 30.0 + 100.0 * x / kWidth;
        const double level = std::min(255.0, light * static_cast<double>(own.exposure) / 5000.0);
        own.picture[static_cast<std::size_t>(x)] = static_cast<unsigned char>(level);
    }
    for (int y = 1; y < kHeight; ++y) std::memcpy(&own.picture[y * kWidth], own.picture.data(), kWidth);
}

}  // namespace

extern "C" {

// [open]
bool VDInitCamera(int type, long long* /*handles*/, bool /*flag*/) {
    Camera& own = camera();
    const std::lock_guard<std::mutex> lock(own.mutex);
    own.open = own.running = false;
    own.found = type == VD_TYPE_ANY;
    return own.found;
}

bool VDOpen(int /*type*/, int index) {
    Camera& own = camera();
    const std::lock_guard<std::mutex> lock(own.mutex);
    if (!isOurs(index) || !own.found) return false;
    own.open = true;
    return true;
}

bool VDStart(int* width, int* height, int* channels, int index) {
    Camera& own = camera();
    const std::lock_guard<std::mutex> lock(own.mutex);
    if (!isOurs(index) || !own.open || width == nullptr || height == nullptr || channels == nullptr)
        return false;
    if (!own.running) {  // numbers begin anew with a start that starts
        own.running = true;
        own.start = Clock::now();
        own.number = 0;
    }
    *width = kWidth;
    *height = kHeight;
    *channels = 1;
    return true;
}
// [open end]

bool VDStop(int index) {
    Camera& own = camera();
    const std::lock_guard<std::mutex> lock(own.mutex);
    if (!isOurs(index) || !own.found) return false;
    own.running = false;
    return true;
}

bool VDClose(int index) {
    Camera& own = camera();
    const std::lock_guard<std::mutex> lock(own.mutex);
    if (!isOurs(index) || !own.found) return false;
    own.open = own.running = false;
    return true;
}

// [image]
bool VDGetImage(VDImage* image, int index) {
    Camera& own = camera();
    const std::lock_guard<std::mutex> lock(own.mutex);
    if (!isOurs(index) || !own.running || image == nullptr) return false;
    const unsigned long long newest = own.newest();
    if (newest != own.number) {  // else the last one again
        own.number = newest;
        expose(own);
    }
    *image = {kWidth, kHeight, 1, own.picture.data()};
    return true;
}

bool VDGetFrameInfo(VDFrameInfo* info, int index) {
    Camera& own = camera();
    const std::lock_guard<std::mutex> lock(own.mutex);
    if (!isOurs(index) || !own.running || info == nullptr) return false;
    const std::chrono::nanoseconds since = Clock::now() - own.start;
    const auto sent =
        (own.number == 0 ? 0 : own.number - 1) * 1000000000ULL / static_cast<unsigned long>(own.rate);
    const auto now = static_cast<unsigned long long>(since.count());
    *info = {own.number, own.newest(), 0, now > sent ? now - sent : 0, 0};
    return true;
}
// [image end]

// [parameters]
bool VDSetParam(int index, int id, long value) {
    Camera& own = camera();
    const std::lock_guard<std::mutex> lock(own.mutex);
    if (!isOurs(index) || !own.open) return false;
    if (id == VD_PARAM_EXPOSURE && value >= 10 && value <= 10000) {
        own.exposure = value;
        return true;
    }
    if (id == VD_PARAM_FRAME_RATE && value >= 1 && value <= 200 && !own.running) {
        own.rate = value;
        return true;
    }
    return false;  // another one, out of range, or not while it runs
}

float VDGetParam(int index, int id) {
    Camera& own = camera();
    const std::lock_guard<std::mutex> lock(own.mutex);
    if (isOurs(index) && own.open) {
        if (id == VD_PARAM_EXPOSURE) return static_cast<float>(own.exposure);
        if (id == VD_PARAM_FRAME_RATE) return static_cast<float>(own.rate);
        if (id == VD_PARAM_FRAME_NUMBER && own.running) return static_cast<float>(own.newest());
    }
    return std::numeric_limits<float>::quiet_NaN();
}
// [parameters end]

void VDDestoryCamera() {
    Camera& own = camera();
    const std::lock_guard<std::mutex> lock(own.mutex);
    own.found = own.open = own.running = false;
}

}  // extern "C"
