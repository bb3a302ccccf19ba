// The camera module that comes with the library, with a plug at each camera and a tally of what went through.
#ifndef ORX_TESTS_FAKE_DRIVER_FLAKY_DRIVER_H
#define ORX_TESTS_FAKE_DRIVER_FLAKY_DRIVER_H

#include <array>
#include <atomic>
#include <cstdint>

namespace flaky {

// Sums over all starts of a camera. A start's frames are added when it ends.
struct Camera {
    std::atomic<bool> isPlugged{true};
    std::atomic<std::uint64_t> starts{0};
    std::atomic<std::uint64_t> sent{0};      // by the source
    std::atomic<std::uint64_t> handed{0};    // up to the last that VDGetImage gave
    std::atomic<std::uint64_t> failures{0};  // of calls, because it was not plugged in
};

struct Driver {
    std::array<Camera, 9> cameras;
};

// What the module exports as flakyDriver. Where the environment variable ORX_TEST_UNPLUG says "CAMERA
// PICTURES FAILURES", that camera (from 0) is unplugged after so many pictures, until so many calls have
// failed.
using GetDriver = Driver*();

}  // namespace flaky

#endif
