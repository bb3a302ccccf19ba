#include "drivers/TQVisionDriver/replay_source.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>

#include "tests/support/temporary_folder.h"

namespace {

using vision::Made;
using vision::ReplayMaker;
using vision::ReplaySettings;

ReplaySettings settingsFor(const test::TemporaryFolder& folder, bool loop) {
    ReplaySettings settings;
    settings.folder = folder.path();
    settings.loop = loop;
    return settings;
}

void writeGrey(const test::TemporaryFolder& folder, const std::string& name, int level,
               cv::Size size = {8, 6}) {
    ASSERT_TRUE(cv::imwrite(folder / name, cv::Mat(size, CV_8UC1, cv::Scalar(level))));
}

// The grey level of the picture, or what came instead of it.
std::string madeBy(ReplayMaker& maker, std::int64_t number) {
    cv::Mat picture;
    switch (maker.make(number, picture)) {
        case Made::kPicture:
            return std::to_string(picture.at<unsigned char>(0, 0));
        case Made::kNothing:
            return "nothing";
        default:
            return "end";
    }
}

TEST(ReplaySource, PlaysTheFolderByNameOnceOrInALoop) {
    const test::TemporaryFolder folder;
    writeGrey(folder, "b.png", 20);
    writeGrey(folder, "a.bmp", 10);
    writeGrey(folder, "c.PGM", 30);
    test::writeBytes(folder / "readme.txt", "no picture");
    std::filesystem::create_directory(folder / "d.png");
    for (const bool loop : {false, true}) {
        ReplayMaker maker(settingsFor(folder, loop));
        vision::PictureFormat format;
        ASSERT_TRUE(maker.available());
        ASSERT_TRUE(maker.prepare(format));
        EXPECT_EQ(format.width, 8);
        EXPECT_EQ(format.height, 6);
        EXPECT_EQ(format.channels, 1);
        EXPECT_EQ(madeBy(maker, 1), "10");
        EXPECT_EQ(madeBy(maker, 2), "20");
        EXPECT_EQ(madeBy(maker, 3), "30");
        EXPECT_EQ(madeBy(maker, 4), loop ? "10" : "end");
    }
}

TEST(ReplaySource, EachPictureBecomesEightBitsInItsOwnSize) {
    const test::TemporaryFolder folder;
    ASSERT_TRUE(cv::imwrite(folder / "1.png", cv::Mat(3, 4, CV_16UC1, cv::Scalar(0x8040))));
    ASSERT_TRUE(cv::imwrite(folder / "2.png", cv::Mat(5, 7, CV_8UC3, cv::Scalar(1, 2, 3))));
    ASSERT_TRUE(cv::imwrite(folder / "3.png", cv::Mat(5, 7, CV_8UC4, cv::Scalar(1, 2, 3, 4))));
    ReplayMaker maker(settingsFor(folder, true));
    vision::PictureFormat format;
    ASSERT_TRUE(maker.prepare(format));
    cv::Mat picture;
    ASSERT_EQ(maker.make(1, picture), Made::kPicture);
    EXPECT_EQ(picture.type(), CV_8UC1);
    EXPECT_EQ(picture.size(), cv::Size(4, 3));
    EXPECT_EQ(picture.at<unsigned char>(0, 0), 0x80);
    for (const int number : {2, 3}) {
        ASSERT_EQ(maker.make(number, picture), Made::kPicture);
        EXPECT_EQ(picture.type(), CV_8UC3);
        EXPECT_EQ(picture.size(), cv::Size(7, 5));
        EXPECT_EQ(picture.at<cv::Vec3b>(0, 0), cv::Vec3b(1, 2, 3));
    }
}

TEST(ReplaySource, HostilePicturesArePassedOver) {
    const test::TemporaryFolder folder;
    writeGrey(folder, "whole.png", 99, {64, 64});
    const std::string good = test::bytesOf(folder / "whole.png");
    std::filesystem::rename(folder / "whole.png", folder / "9.png");
    test::writeBytes(folder / "0.png", "");
    test::writeBytes(folder / "1.png", "not a picture at all");
    test::writeBytes(folder / "2.png", good.substr(0, 40));
    std::string enormous = good;  // 2^31 - 1 pixels in each direction
    enormous.replace(16, 8, "\x7F\xFF\xFF\xFF\x7F\xFF\xFF\xFF");
    test::writeBytes(folder / "3.png", enormous);
    test::writeBytes(folder / "4.bmp", "BM" + std::string(60, '\xFF'));
    test::writeBytes(folder / "5.pgm", "P5 99999999 99999999 255\nx");
    test::writeBytes(folder / "6.tif", std::string("II*\0\xFF\xFF\xFF\xFF", 8));
    ReplayMaker maker(settingsFor(folder, false));
    vision::PictureFormat format;
    ASSERT_TRUE(maker.prepare(format));
    EXPECT_EQ(format.width, 64);
    for (int number = 1; number <= 7; ++number) EXPECT_EQ(madeBy(maker, number), "nothing") << number;
    EXPECT_EQ(madeBy(maker, 8), "99");
    EXPECT_EQ(madeBy(maker, 9), "end");
}

TEST(ReplaySource, WithoutAReadablePictureItDoesNotStart) {
    const test::TemporaryFolder folder;
    vision::PictureFormat format;
    ReplayMaker empty(settingsFor(folder, true));
    EXPECT_FALSE(empty.available());
    EXPECT_FALSE(empty.prepare(format));
    test::writeBytes(folder / "1.png", "broken");
    ReplayMaker broken(settingsFor(folder, true));
    EXPECT_TRUE(broken.available());
    EXPECT_FALSE(broken.prepare(format));
    EXPECT_FALSE(broken.setParameter(VD_PARAM_EXPOSURE, 1, false)) << "pictures are as they are";
    EXPECT_TRUE(std::isnan(broken.parameter(VD_PARAM_EXPOSURE)));
    ReplaySettings missing;
    missing.folder = folder / "missing";
    EXPECT_FALSE(ReplayMaker(missing).available());
}

}  // namespace
