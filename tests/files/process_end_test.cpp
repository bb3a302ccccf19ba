// The end of a process that has images to save.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <opencv2/core.hpp>
#include <string>
#include <thread>

#include "orxFunctions/files/file_operator.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

namespace {

constexpr int kImages = 12;
constexpr const char* kFolderVariable = "ORX_TEST_IMAGE_FOLDER";

void endWhileAThreadWaits(const std::string& folder) {
    cv::Mat noise(1000, 1000, CV_8UC3);  // takes its time to be packed
    cv::randu(noise, 0, 256);
    for (int i = 0; i < kImages; ++i) {
        FileOperator::saveImage(noise, folder, "", i % 3 == 0 ? ".jpg" : ".png");
    }
    std::atomic<bool> waits{false};
    std::thread([&waits] {
        waits = true;
        FileOperator::flush();
    }).detach();
    while (!waits) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    std::exit(0);
}

TEST(EndOfTheProcess, SavesTheImagesThatAThreadWaitsFor) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const test::TemporaryFolder folder;
    // The process that ends runs this test from its beginning, with a folder of its own.
    const char* const given = std::getenv(kFolderVariable);
    const std::string target = given != nullptr ? given : folder.name();
    test::setEnvironment(kFolderVariable, target);
    EXPECT_EXIT(endWhileAThreadWaits(target), testing::ExitedWithCode(0), "");
    test::setEnvironment(kFolderVariable, "");
    // Windows ends the saving thread in the middle of its image.
    const auto saved = std::distance(std::filesystem::directory_iterator(folder.path()), {});
    EXPECT_GE(saved, kImages - 1);
}

}  // namespace
