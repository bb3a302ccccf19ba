// Loads the library, uses it and unloads it, again and again. This program does not link the library. It
// links OpenCV and the companion library, as a host does: those stay loaded, and only this one comes and
// goes.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <iterator>
#include <opencv2/core.hpp>
#include <string>
#include <thread>

#include "tests/support/loaded_module.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

std::ptrdiff_t entries(const std::string& folder) {
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

// A library that finishes its work before it goes is given the time to.
bool isGone() {
    for (int i = 0; test::kUnloadsLater && i < 1000 && test::isLoaded(ORX_TEST_LIBRARY); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return !test::isLoaded(ORX_TEST_LIBRARY);
}

// A thread of the library leaves the process shortly after it let go of the library.
bool threadsAreAtMost(std::ptrdiff_t most) {
    for (int i = 0; test::kUnloadsLater && i < 1000 && test::threads() > most; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return test::threads() <= most;
}

// Loads, uses, unloads. Returns how many images were taken for saving.
int useOnce(const std::string& folder, int images) {
    int taken = -1;
    {
        const test::LoadedModule plugin(ORX_TEST_PLUGIN);
        EXPECT_TRUE(plugin.loaded());
        if (!plugin.loaded()) return -1;
        EXPECT_TRUE(test::isLoaded(ORX_TEST_LIBRARY));
        const auto use = reinterpret_cast<int (*)(const char*, int)>(plugin.function("useLibrary"));
        taken = use(folder.c_str(), images);
    }
    EXPECT_TRUE(isGone());
#ifdef ORX_TEST_CODECS  // where these are a module of their own
    EXPECT_FALSE(test::isLoaded(ORX_TEST_CODECS));
#endif
    return taken;
}

class LoadAndUnload : public testing::TestWithParam<int> {};

TEST_P(LoadAndUnload, LeavesNothingBehind) {
    const test::TemporaryFolder folder;
    const int images = GetParam();
    useOnce(folder.name(), images);  // what OpenCV starts once for good is not ours to count
    if (test::kUnloadsLater) std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const std::ptrdiff_t threadsBefore = test::threads();
    const std::ptrdiff_t handlesBefore = test::handles();
    std::ptrdiff_t saved = images;
    for (int i = 0; i < 200; ++i) {
        const int taken = useOnce(folder.name(), images);
        ASSERT_EQ(taken, images);
        saved += taken;
        ASSERT_TRUE(threadsAreAtMost(threadsBefore)) << "after " << i;
    }
    EXPECT_LE(test::handles(), handlesBefore);
    EXPECT_EQ(entries(folder.name()), saved) << "images in flight are saved before the library goes";
}

INSTANTIATE_TEST_SUITE_P(ImagesInFlight, LoadAndUnload, testing::Values(0, 8));

}  // namespace
