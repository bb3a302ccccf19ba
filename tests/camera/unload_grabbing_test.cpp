// Unloads the library while it grabs. This program does not link the library.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tests/support/loaded_module.h"

namespace {

struct Leftovers {
    alignas(std::max_align_t) unsigned char bytes[4096];
};
// What the grab threads borrowed stays as it was: a host that unloads without stopping them destroys nothing.
// Neither does this program when it ends, so that what hangs on it is no leak.
std::vector<Leftovers>& leftovers = *new std::vector<Leftovers>(21);

bool grabAndUnload(Leftovers& memory) {
    const test::LoadedModule plugin(ORX_TEST_PLUGIN);
    const auto needed = reinterpret_cast<std::size_t (*)()>(plugin.function("bytesNeeded"));
    const auto grab = reinterpret_cast<bool (*)(unsigned char*)>(plugin.function("grabAndReturn"));
    return needed() <= sizeof memory.bytes && grab(memory.bytes);
}

TEST(UnloadWhileGrabbing, EndsTheThreadsFirst) {
    const test::LoadedModule driver(std::string(FAKE_MODULES) + "/complete/" FAKE_PREFIX
                                                                "TQVisionDriver" FAKE_SUFFIX);
    ASSERT_TRUE(driver.loaded());
    ASSERT_TRUE(grabAndUnload(leftovers[0]));  // what OpenCV starts once for good is not ours to count
    const std::ptrdiff_t threadsBefore = test::threads();
    const std::ptrdiff_t handlesBefore = test::handles();
    for (std::size_t i = 1; i < leftovers.size(); ++i) {
        ASSERT_TRUE(grabAndUnload(leftovers[i]));
        EXPECT_FALSE(test::isLoaded(ORX_TEST_LIBRARY));
        EXPECT_EQ(test::threads(), threadsBefore);
    }
    EXPECT_EQ(test::handles(), handlesBefore);
}

}  // namespace
