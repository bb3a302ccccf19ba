// Unloads the library while it grabs. This program does not link the library.
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/fake_driver/fake_driver.h"
#include "tests/fake_driver/fake_module.h"
#include "tests/support/loaded_module.h"

namespace {

struct Leftovers {
    alignas(std::max_align_t) unsigned char bytes[4096];
};
// What the grab threads borrowed stays as it was: a host that unloads without stopping them destroys nothing.
// Neither does this program when it ends, so that what hangs on it is no leak.
std::vector<Leftovers>& leftovers = *new std::vector<Leftovers>(21);

bool grab(const test::LoadedModule& plugin, Leftovers& memory) {
    const auto needed = reinterpret_cast<std::size_t (*)()>(plugin.function("bytesNeeded"));
    const auto start = reinterpret_cast<bool (*)(unsigned char*)>(plugin.function("grabAndReturn"));
    return needed() <= sizeof memory.bytes && start(memory.bytes);
}

bool grabAndUnload(Leftovers& memory) {
    const test::LoadedModule plugin(ORX_TEST_PLUGIN);
    return grab(plugin, memory);
}

void call(const test::LoadedModule& plugin, const char* name) {
    reinterpret_cast<void (*)()>(plugin.function(name))();
}

// Waits up to ten seconds.
bool eventually(const std::function<bool()>& condition) {
    for (int i = 0; i < 1000 && !condition(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return condition();
}

void expectThreadsEndFirst() {
    // What OpenCV starts once for good is not ours to count.
    ASSERT_TRUE(grabAndUnload(leftovers[0]));
    const std::ptrdiff_t threadsBefore = test::threads();
    const std::ptrdiff_t handlesBefore = test::handles();
    for (std::size_t i = 1; i < leftovers.size(); ++i) {
        ASSERT_TRUE(grabAndUnload(leftovers[i]));
        EXPECT_FALSE(test::isLoaded(ORX_TEST_LIBRARY));
        EXPECT_EQ(test::threads(), threadsBefore);
    }
    EXPECT_EQ(test::handles(), handlesBefore);
}

void expectThreadsKeepTheLibrary(const fake::Camera& camera) {
    for (std::size_t i = 0; i < 5; ++i) {
        {
            const test::LoadedModule plugin(ORX_TEST_PLUGIN);
            ASSERT_TRUE(grab(plugin, leftovers[i]));
            call(plugin, "dropCallbacks");
        }
        EXPECT_FALSE(test::isLoaded(ORX_TEST_PLUGIN));
        const int fetches = camera.fetches;
        EXPECT_TRUE(eventually([&] { return camera.fetches > fetches + 10; }));
        EXPECT_TRUE(test::isLoaded(ORX_TEST_LIBRARY));
        {
            const test::LoadedModule plugin(ORX_TEST_PLUGIN);
            call(plugin, "endGrabbing");
        }
        EXPECT_TRUE(eventually([] { return !test::isLoaded(ORX_TEST_LIBRARY); }));
    }
}

TEST(UnloadWhileGrabbing, NoThreadOutlivesTheLibrary) {
    const test::LoadedModule driver(test::fakeModule("complete", "TQVisionDriver"));
    ASSERT_TRUE(driver.loaded());
    if (test::kUnloadsLater) {
        const auto fakeDriver = reinterpret_cast<fake::Driver* (*)()>(driver.function("fakeDriver"));
        expectThreadsKeepTheLibrary(fakeDriver()->cameras[1]);
    } else {
        expectThreadsEndFirst();
    }
}

}  // namespace
