#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <regex>
#include <thread>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/temporary_folder.h"

namespace {

cv::Mat numbered(int number) { return cv::Mat(2, 3, CV_8U, cv::Scalar(number)); }

void forgetMessages() {
    std::string text;
    int color = 0;
    while (orx::APPgetMessage(text, color)) continue;
}

std::vector<std::string> messages() {
    std::vector<std::string> texts;
    std::string text;
    int color = 0;
    while (orx::APPgetMessage(text, color)) {
        EXPECT_EQ(color, 1);
        texts.push_back(zul::toUtf8(text));
    }
    return texts;
}

class SaveImage : public testing::Test {
  protected:
    void SetUp() override { forgetMessages(); }

    test::TemporaryFolder folder;
};

TEST_F(SaveImage, WritesPixelsUnderATimeStampedName) {
    cv::Mat image = (cv::Mat_<cv::Vec3b>(1, 2) << cv::Vec3b(1, 2, 3), cv::Vec3b(250, 251, 252));
    const cv::Mat original = image.clone();
    std::string path;
    ASSERT_TRUE(FileOperator::saveImage(image, folder / "new/folder", "ok_", "png", &path));
    image.setTo(0);  // the caller's own again
    EXPECT_TRUE(FileOperator::flush());
    EXPECT_EQ(FileOperator::listFiles(folder / "new/folder"), std::vector<std::string>{path});
    EXPECT_TRUE(
        std::regex_match(zul::extractFileName(path), std::regex("ok_\\d{8}_\\d{6}_\\d{3}_\\d{6}\\.png")))
        << path;
    EXPECT_EQ(cv::norm(cv::imread(path), original, cv::NORM_INF), 0);
    EXPECT_TRUE(messages().empty());
}

TEST_F(SaveImage, NamesSortInTheOrderOfTheCalls) {
    std::vector<std::string> paths(150);
    for (int i = 0; i < 150; ++i) {
        if (i % 50 == 49) FileOperator::flush();
        ASSERT_TRUE(FileOperator::saveImage(numbered(i), folder.name(), "", ".bmp",
                                            &paths[static_cast<std::size_t>(i)]));
    }
    EXPECT_TRUE(FileOperator::flush());
    EXPECT_EQ(FileOperator::listFiles(folder.name(), "bmp"), paths);
    for (int i = 0; i < 150; ++i) {
        EXPECT_EQ(cv::imread(paths[static_cast<std::size_t>(i)], cv::IMREAD_GRAYSCALE).at<uchar>(0, 0), i);
    }
}

TEST_F(SaveImage, RefusesWhatCannotBeSaved) {
    EXPECT_FALSE(FileOperator::saveImage(cv::Mat(), folder.name()));
    EXPECT_FALSE(FileOperator::saveImage(numbered(1), ""));
    EXPECT_FALSE(FileOperator::saveImage(numbered(1), folder.name(), "../up"));
    EXPECT_TRUE(messages().empty());
    for (const char* extension : {"", ".", ".exe", "png/x"}) {
        EXPECT_FALSE(FileOperator::saveImage(numbered(1), folder.name(), "", extension)) << extension;
    }
    EXPECT_EQ(messages().size(), 4U);
    FileOperator::flush();
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

// In code page 936 the second byte of a character may be that of '\' or '|'.
TEST_F(SaveImage, PrefixesAreJudgedByTheirCharacters) {
    std::vector<std::string> saved;
    for (const char* prefix : {"\xd5\x5c", "\xd5\x7c_", "a\xd5\x5c\xcd\xbc", "\xe5\x9b\xbe"}) {
        EXPECT_TRUE(
            FileOperator::saveImage(numbered(1), folder.name(), prefix, ".bmp", &saved.emplace_back()));
    }
    for (const char* prefix : {"\xd5\x5c|", "\xe5\x9b\xbe\\", "\xe5\x9b\xbe|", "\xd5/", "\xcd\xbc:"}) {
        EXPECT_FALSE(FileOperator::saveImage(numbered(1), folder.name(), prefix));
    }
    EXPECT_TRUE(FileOperator::flush());
    std::sort(saved.begin(), saved.end());
    EXPECT_EQ(FileOperator::listFiles(folder.name()), saved);
}

TEST_F(SaveImage, FailuresOnTheThreadAreReported) {
    test::writeBytes(folder / "file", "x");
    std::string path;
    ASSERT_TRUE(FileOperator::saveImage(numbered(1), folder / "file", "", ".png", &path));
    ASSERT_TRUE(FileOperator::saveImage(cv::Mat(2, 2, CV_8UC(7)), folder.name()));
    ASSERT_TRUE(FileOperator::saveImage(numbered(2), folder.name()));
    EXPECT_TRUE(FileOperator::flush());
    const std::vector<std::string> texts = messages();
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0], "图像保存失败: " + path);
    EXPECT_EQ(FileOperator::listFiles(folder.name(), ".png").size(), 1U) << "the others are saved";
}

// 64 images may wait behind the one being written: a large picture of noise, which takes a second or more.
TEST_F(SaveImage, AFullQueueRefusesAndSaysSoOnce) {
    cv::Mat noise(5000, 5000, CV_8UC3);
    cv::randu(noise, 0, 256);
    ASSERT_TRUE(FileOperator::saveImage(noise, folder.name()));
    int taken = 0;
    for (int i = 0; i < 100; ++i) taken += FileOperator::saveImage(numbered(i), folder.name()) ? 1 : 0;
    EXPECT_GE(taken, 63);  // the thread may not have begun with the noise yet
    EXPECT_LE(taken, 64);
    EXPECT_FALSE(FileOperator::flush(0));
    EXPECT_TRUE(FileOperator::flush());
    EXPECT_EQ(FileOperator::listFiles(folder.name()).size(), static_cast<std::size_t>(taken + 1));
    const std::vector<std::string> texts = messages();
    EXPECT_LE(texts.size(), 2U);
    ASSERT_GE(texts.size(), 1U);
    EXPECT_EQ(texts[0].rfind("图像保存队列已满, 图像未保存: ", 0), 0U) << texts[0];
    EXPECT_TRUE(FileOperator::saveImage(numbered(1), folder.name()));
    FileOperator::flush();
}

TEST_F(SaveImage, ThreadsSaveAndFlushAtOnce) {
    std::atomic<int> taken{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 50; ++i) {
                if (FileOperator::saveImage(numbered(i), folder.name(), "", "bmp")) ++taken;
                if (i % 10 == 0) FileOperator::flush();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_TRUE(FileOperator::flush(60000));
    EXPECT_EQ(FileOperator::listFiles(folder.name()).size(), static_cast<std::size_t>(taken));
}

}  // namespace
