// What the program and the module that holds the library tell each other. The module is unloaded after each
// round, so everything here lives in the program.
#ifndef ORX_TESTS_SOAK_SOAK_ROUND_H
#define ORX_TESTS_SOAK_SOAK_ROUND_H

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>

#include "tests/fake_driver/flaky_driver.h"

namespace soak {

constexpr int kCameras = 9;
constexpr int kBoxes = 2;      // each on a display of its own
constexpr int kScenes = 5;     // cameras 0 to 4
constexpr int kDevices = 2;    // the next, where there is a network for them; the others replay a folder
constexpr int kPictures = 97;  // in the folder: picture i is grey level i throughout

// What a thread is doing, and since when.
struct Beat {
    std::atomic<std::int64_t> since{0};  // milliseconds; 0: it does not run
    std::atomic<const char*> doing{""};

    void at(const char* what) {
        doing = what;
        since = std::chrono::duration_cast<std::chrono::milliseconds>(
                    std::chrono::steady_clock::now().time_since_epoch())
                    .count();
    }
    void end() { since = 0; }
};

// Of one camera, added up over all rounds.
struct CameraTally {
    std::uint64_t sent = 0;       // by the source, as the driver counted
    std::uint64_t handed = 0;     // to the library, likewise
    std::uint64_t starts = 0;     // of the camera, likewise
    std::uint64_t delivered = 0;  // as frameCounts says
    std::uint64_t taken = 0;      // as the worker counted, like the next two
    std::uint64_t dropped = 0;
    std::uint64_t lost = 0;
    std::uint64_t untold = 0;  // lost after the last frame taken, as frameCounts says
    std::uint64_t measured = 0;

    void add(const CameraTally& other) {
        sent += other.sent;
        handed += other.handed;
        starts += other.starts;
        delivered += other.delivered;
        taken += other.taken;
        dropped += other.dropped;
        lost += other.lost;
        untold += other.untold;
        measured += other.measured;
    }
};

struct Tally {
    std::array<CameraTally, kCameras> cameras;
    std::uint64_t unpluggings = 0;
    std::uint64_t losses = 0;    // as the library told
    std::uint64_t returns = 0;   // likewise
    std::uint64_t silences = 0;  // of GigE cameras
    std::uint64_t stops = 0;     // of a display
    std::uint64_t changes = 0;   // of settings, pauses, restarts, views
    std::uint64_t saved = 0;     // pictures, found in their folder
    std::uint64_t notSaved = 0;  // refused, because too many waited
};

struct Round {
    std::uint32_t seed = 1;
    double seconds = 60.0;
    const char* folder = nullptr;  // for saved pictures, empty
    flaky::Driver* driver = nullptr;
    int devices = 0;  // GigE cameras
    std::array<const char*, kBoxes> displays{};
    // Make a GigE camera or a display stop, and go on.
    void (*silence)(int device, bool isSilent) = nullptr;
    void (*stop)(int display, bool isStopped) = nullptr;
    std::array<Beat, kCameras + 1>* beats = nullptr;  // the workers', then that of the thread of the round
    Tally* tally = nullptr;
    void (*complain)(const char* problem) = nullptr;  // thread-safe
};

// What the module exports as soakRound.
using RunRound = void(const Round*);

}  // namespace soak

#endif
