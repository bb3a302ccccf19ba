// Loads the library, uses it and unloads it, again and again. This program does not link the library. It
// links OpenCV and the companion library, as a host does: those stay loaded, and only this one comes and
// goes.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <opencv2/core.hpp>

#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

std::ptrdiff_t entries(const char* folder) {
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}
std::ptrdiff_t threads() { return entries("/proc/self/task"); }
std::ptrdiff_t handles() { return entries("/proc/self/fd"); }

bool isLoaded() {
    void* const library = dlopen(ORX_TEST_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    return library != nullptr && dlclose(library) == 0;
}

// Loads, uses, unloads. Returns how many images were taken for saving.
int useOnce(const std::string& folder, int images) {
    void* const plugin = dlopen(ORX_TEST_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(plugin, nullptr) << dlerror();
    if (plugin == nullptr) return -1;
    EXPECT_TRUE(isLoaded());
    const auto use = reinterpret_cast<int (*)(const char*, int)>(dlsym(plugin, "useLibrary"));
    const int taken = use(folder.c_str(), images);
    EXPECT_EQ(dlclose(plugin), 0);
    EXPECT_FALSE(isLoaded());
    return taken;
}

class LoadAndUnload : public testing::TestWithParam<int> {};

TEST_P(LoadAndUnload, LeavesNothingBehind) {
    const test::TemporaryFolder folder;
    const int images = GetParam();
    useOnce(folder.name(), images);  // what OpenCV starts once for good is not ours to count
    const std::ptrdiff_t threadsBefore = threads();
    const std::ptrdiff_t handlesBefore = handles();
    std::ptrdiff_t saved = images;
    for (int i = 0; i < 200; ++i) {
        const int taken = useOnce(folder.name(), images);
        ASSERT_EQ(taken, images);
        saved += taken;
        ASSERT_EQ(threads(), threadsBefore) << "after " << i;
    }
    EXPECT_EQ(handles(), handlesBefore);
    EXPECT_EQ(entries(folder.name().c_str()), saved) << "images in flight are saved before the library goes";
}

INSTANTIATE_TEST_SUITE_P(ImagesInFlight, LoadAndUnload, testing::Values(0, 8));

}  // namespace
