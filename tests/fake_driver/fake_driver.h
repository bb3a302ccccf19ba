// What tests can ask of the fake camera driver: its one export besides the procedures of
// drivers/vision_driver.h.
#ifndef ORX_TESTS_FAKE_DRIVER_FAKE_DRIVER_H
#define ORX_TESTS_FAKE_DRIVER_FAKE_DRIVER_H

#include <array>
#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "drivers/vision_driver.h"

namespace fake {

// What the next pictures are.
enum class Picture {
    kGood,
    kFailure,
    kEmpty,
    kNoData,
    kNegative,
    kHuge,
    kHugeColour,
    kNoChannels,
    kSevenChannels
};

// What a procedure throws instead of answering.
enum class Throw { kNothing, kException, kNumber };
constexpr const char* kThrown = "the fake driver is out of order";

// How a thread of the module's own ends.
enum class Crash { kException, kSignal };

struct Camera {
    // Set by tests.
    std::atomic<int> width{8};
    std::atomic<int> height{6};
    std::atomic<int> channels{1};
    std::atomic<Picture> picture{Picture::kGood};
    std::atomic<bool> isPlugged{true};  // unplugged: nothing succeeds but stopping and closing
    std::atomic<bool> starts{true};
    std::atomic<bool> stops{true};
    std::atomic<int> failures{0};     // so many fetches fail before the next picture
    std::atomic<bool> stalls{false};  // a fetch waits while this is set
    std::atomic<int> fetchMs{0};      // how long a fetch takes

    // What VDGetFrameInfo tells: nothing, the numbers of the pictures, or what tests set.
    std::atomic<bool> isNumbered{false};
    std::atomic<int> numberOffset{0};  // added to the number
    std::atomic<int> pending{0};       // so many fetches give the black picture, with the first on its way
    std::atomic<int> repeats{0};       // so many fetches give the last picture again
    std::atomic<unsigned> frameFlags{0};

    // Read by tests.
    std::atomic<bool> isBlack{false};  // the last picture was
    std::atomic<bool> isInFetch{false};
    std::atomic<int> fetches{0};  // asked for
    std::atomic<int> frames{0};   // handed out; the number of the last one lies in its first four bytes
};

struct Driver {
    std::array<Camera, VD_MAX_CAMERAS> cameras;
    std::atomic<bool> findsCameras{true};
    std::atomic<float> parameter{0.0F};          // what VDGetParam answers
    std::atomic<Throw> throws{Throw::kNothing};  // every procedure

    // The calls of all procedures but VDGetImage, as "VDOpen 12 0", since the last time this was asked.
    std::vector<std::string> takeCalls() {
        const std::lock_guard<std::mutex> lock(mutex);
        return std::exchange(calls, {});
    }
    // When each fetch of camera 0 began.
    std::vector<std::chrono::steady_clock::time_point> takeFetchTimes() {
        const std::lock_guard<std::mutex> lock(mutex);
        return std::exchange(fetchTimes, {});
    }

    std::mutex mutex;
    std::vector<std::string> calls;
    std::vector<std::chrono::steady_clock::time_point> fetchTimes;
};

// The value of a sample of every good picture, apart from the four bytes of the frame's number.
inline unsigned char sampleOf(int camera, int x, int y, int channel) {
    return static_cast<unsigned char>(7 * x + 31 * y + 3 * channel + 50 * camera);
}
constexpr int kNumberBytes = 4;

}  // namespace fake

// Each loaded module has a driver of its own, which lives as long as the module.
extern "C" VD_EXPORT fake::Driver* fakeDriver();
// Starts a thread of the module's that crashes.
extern "C" VD_EXPORT void crashFakeDriver(fake::Crash crash);

#endif
