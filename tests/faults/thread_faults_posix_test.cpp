// Threads that can't be made, and a time of day that jumps by hours.
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgproc.hpp>
#include <system_error>

#include "tests/camera/grabbing.h"
#include "tests/faults/thread_faults_posix.h"
#include "tests/support/temporary_folder.h"

namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using test::JumpingClock;
using test::NoThreads;

class ThreadFaults : public test::Grabbing {
  protected:
    ThreadFaults() : Grabbing(1) {}
    test::TemporaryFolder folder_;
    cv::Mat image_{20, 30, CV_8U, cv::Scalar(77)};
};

TEST_F(ThreadFaults, AnImageWithoutAThreadToSaveItIsRefused) {
    {
        const NoThreads none;
        EXPECT_FALSE(FileOperator::saveImage(image_, folder_.name()));
        EXPECT_TRUE(FileOperator::flush(20000)) << "there is nothing to wait for";
    }
    EXPECT_EQ(NoThreads::refused(), 1);
    const std::vector<test::Message> messages = host_.takeMessages();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].color, test::kErrorColor);
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
    EXPECT_TRUE(FileOperator::saveImage(image_, folder_.name()));
    EXPECT_TRUE(FileOperator::flush(20000));
    EXPECT_EQ(FileOperator::listFiles(folder_.name()).size(), 1U);
}

TEST_F(ThreadFaults, ACameraWithoutAGrabThreadSaysSoAndCanBeStartedAgain) {
    {
        const NoThreads none;
        start(0);
    }
    EXPECT_EQ(NoThreads::refused(), 1);
    EXPECT_EQ(orx::cameraStatus(0).reason, orx::crNoThread);
    const std::vector<test::Message> messages = host_.takeMessages();
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.back(),
              (test::Message{" TImageThreadManager::startThread no thread", test::kErrorColor}));
    manager_.closeAllThread();
    start(0);
    EXPECT_TRUE(waitForFrames(0, 3));
    EXPECT_EQ(orx::cameraStatus(0).state, orx::csGrabbing);
}

TEST_F(ThreadFaults, ABoxWithoutAThreadThrowsAndIsDestroyedLikeAnyOther) {
    TPictureBox box;
    {
        const NoThreads none;
        EXPECT_THROW(box.start(), std::system_error);
    }
    box.setImage(image_, false);
    box.start();  // not a second time
    box.killThread();
}

TEST_F(ThreadFaults, LoopsOnOneThreadNeedNoOther) {
    cv::Mat picture(400, 500, CV_8U, cv::Scalar(40));
    cv::circle(picture, {250, 200}, 150, cv::Scalar(200), cv::FILLED);
    std::vector<ORXEdge::TMetricContour> without;
    {
        cv::setNumThreads(1);
        const NoThreads none;
        ASSERT_TRUE(ORXEdge::edgesSubPixMetric(picture, without));
    }
    EXPECT_EQ(NoThreads::refused(), 0);
    std::vector<ORXEdge::TMetricContour> with;
    cv::setNumThreads(4);
    ASSERT_TRUE(ORXEdge::edgesSubPixMetric(picture, with));
    cv::setNumThreads(-1);
    ASSERT_EQ(without.size(), with.size());
    ASSERT_FALSE(with.empty());
    EXPECT_EQ(without[0].points, with[0].points);
}

class ClockFaults : public ThreadFaults {};

TEST_F(ClockFaults, WaitsEndInTheirTime) {
    ASSERT_TRUE(orx::openFrames(0));
    const auto begin = steady_clock::now();
    {
        const JumpingClock jumps{hours(5)};
        orx::TFrame frame;
        EXPECT_FALSE(orx::takeFrame(0, frame, 200));
    }
    const auto lasted = steady_clock::now() - begin;
    EXPECT_GE(lasted, milliseconds(200));
    EXPECT_LT(lasted, std::chrono::seconds(20));
    orx::closeFrames(0);
}

TEST_F(ClockFaults, GrabbingKeepsItsPaceAndItsFrames) {
    configs_[0].frameRate = 50;
    start(0);
    ASSERT_TRUE(waitForFrames(0, 3));
    const JumpingClock jumps{hours(5)};
    const int before = fakeCamera(0).frames;
    const auto begin = steady_clock::now();
    ASSERT_TRUE(waitForFrames(0, 20));
    const auto lasted = steady_clock::now() - begin;
    EXPECT_GE(lasted, milliseconds(300)) << "20 ms each";
    EXPECT_LT(lasted, std::chrono::seconds(15));
    EXPECT_GE(fakeCamera(0).frames, before + 20);
    EXPECT_EQ(manager_.getFailedFetches(0), 0);
    manager_.closeAllThread();
}

TEST_F(ClockFaults, ACameraComesBackAfterItsWait) {
    orx::TReconnect reconnect;
    reconnect.policy = orx::lpReconnect;
    reconnect.firstWaitMs = 50;
    ASSERT_TRUE(orx::setReconnect(0, reconnect));
    start(0);
    ASSERT_TRUE(waitForFrames(0, 3));
    {
        const JumpingClock jumps{hours(5)};
        fakeCamera(0).isPlugged = false;
        ASSERT_TRUE(test::eventually([] { return orx::cameraStatus(0).state == orx::csReconnecting; }));
        fakeCamera(0).isPlugged = true;
        ASSERT_TRUE(test::eventually([] { return orx::cameraStatus(0).state == orx::csGrabbing; }));
        EXPECT_GT(JumpingClock::looks(), 0) << "nobody looked at the clock";
    }
    manager_.closeAllThread();
    orx::setReconnect(0, {});
}

TEST_F(ClockFaults, ImagesSavedInOneJumpHaveNamesOfTheirOwn) {
    {
        const JumpingClock jumps{hours(5)};
        for (int i = 0; i < 10; ++i) EXPECT_TRUE(FileOperator::saveImage(image_, folder_.name()));
        EXPECT_TRUE(FileOperator::flush(20000));
    }
    EXPECT_EQ(FileOperator::listFiles(folder_.name()).size(), 10U);
}

}  // namespace
