#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

cv::Mat numbered(int number) { return cv::Mat(2, 3, CV_8UC1, cv::Scalar(number)); }

int numberOf(const cv::Mat& image) { return image.empty() ? -1 : image.at<unsigned char>(0, 0); }

class ImageExchange : public testing::Test {
  protected:
    void SetUp() override {
        cv::Mat rest;
        while (orx::APPgetImage(rest)) {
        }
    }
};

TEST_F(ImageExchange, TheSeventhImageDropsTheOldest) {
    for (int i = 1; i <= 7; ++i) orx::APPshowImage(numbered(i));
    cv::Mat out;
    for (int i = 2; i <= 7; ++i) {
        ASSERT_TRUE(orx::APPgetImage(out));
        EXPECT_EQ(numberOf(out), i);
    }
    EXPECT_FALSE(orx::APPgetImage(out));
    EXPECT_EQ(numberOf(out), 7) << "an empty queue must leave the output alone";
    EXPECT_FALSE(orx::APPgetImageRecent(out));
}

TEST_F(ImageExchange, ReadingTheNewestLeavesTheQueueAlone) {
    for (int i = 1; i <= 3; ++i) orx::APPshowImage(numbered(i));
    cv::Mat newest;
    ASSERT_TRUE(orx::APPgetImageRecent(newest));
    EXPECT_EQ(numberOf(newest), 3);
    newest.setTo(99);  // a copy: the queue must not see this
    cv::Mat out;
    for (int i = 1; i <= 3; ++i) {
        ASSERT_TRUE(orx::APPgetImage(out));
        EXPECT_EQ(numberOf(out), i);
    }
}

TEST_F(ImageExchange, PixelsAreNeverShared) {
    cv::Mat source = numbered(5);
    orx::APPshowImage(source);
    orx::APPshowOneImage(source);
    source.setTo(0);

    cv::Mat fromQueue = numbered(1);
    const cv::Mat alias = fromQueue;  // another header over the output's old pixels
    cv::Mat fromSlot;
    ASSERT_TRUE(orx::APPgetImage(fromQueue));
    ASSERT_TRUE(orx::APPgetOneImage(fromSlot));
    EXPECT_EQ(numberOf(fromQueue), 5);
    EXPECT_EQ(numberOf(alias), 1);
    EXPECT_EQ(numberOf(fromSlot), 5);

    fromSlot.setTo(77);
    cv::Mat again;
    ASSERT_TRUE(orx::APPgetOneImage(again));
    EXPECT_EQ(numberOf(again), 5);
}

TEST_F(ImageExchange, TheSlotKeepsItsImageUntilTheNextStore) {
    cv::Mat first = numbered(1);
    cv::Mat second = numbered(2);
    cv::Mat out;
    orx::APPshowOneImage(first);
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(orx::APPgetOneImage(out));
        EXPECT_EQ(numberOf(out), 1);
    }
    orx::APPshowOneImage(second);
    ASSERT_TRUE(orx::APPgetOneImage(out));
    EXPECT_EQ(numberOf(out), 2);

    cv::Mat nothing;
    orx::APPshowOneImage(nothing);
    EXPECT_FALSE(orx::APPgetOneImage(out));
    EXPECT_EQ(numberOf(out), 2);
}

TEST_F(ImageExchange, ProducersAndConsumersMayRunAtOnce) {
    constexpr int kImages = 300;
    std::vector<std::thread> producers;
    for (int p = 0; p < 2; ++p) {
        producers.emplace_back([] {
            for (int i = 0; i < kImages; ++i) {
                cv::Mat image = numbered(i % 200);
                orx::APPshowImage(image);
                orx::APPshowOneImage(image);
            }
        });
    }
    // Once the first image is stored the slot always has one, so that this ends.
    for (int whole = 0; whole < kImages;) {
        cv::Mat out;
        if (!orx::APPgetImage(out) && !orx::APPgetImageRecent(out) && !orx::APPgetOneImage(out)) continue;
        EXPECT_EQ(cv::countNonZero(out != numberOf(out)), 0) << "a torn image";
        ++whole;
    }
    for (std::thread& producer : producers) producer.join();
    cv::Mat last;
    ASSERT_TRUE(orx::APPgetOneImage(last));
    EXPECT_EQ(numberOf(last), (kImages - 1) % 200);
}

}  // namespace
