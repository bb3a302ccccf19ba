// A camera driver that never returns, answers late, throws, crashes, or gives nothing any more.
#include <gmock/gmock.h>

#include <cmath>
#include <csignal>

#include "tests/camera/grabbing.h"
#include "tests/support/refusal_check.h"

namespace {

using std::chrono::milliseconds;

class DriverFaults : public test::Grabbing {
  protected:
    DriverFaults() : Grabbing(2) {}
    ~DriverFaults() override {
        for (int slot = 0; slot < 2; ++slot) fakeCamera(slot).stalls = false;
    }
};

TEST_F(DriverFaults, AFetchThatNeverReturnsHoldsUpNoneOfTheHostsQuestions) {
    start(0);
    start(1);
    ASSERT_TRUE(waitForFrames(0, 3));
    fakeCamera(0).stalls = true;
    ASSERT_TRUE(test::eventually([&] { return fakeCamera(0).isInFetch.load(); }));
    std::atomic<bool> isAnswered{false};
    std::thread host([&] {
        EXPECT_FALSE(manager_.getThreadImage(0).empty()) << "the latest picture stays";
        EXPECT_EQ(orx::cameraStatus(0).state, orx::csGrabbing);
        EXPECT_GE(manager_.getCurrentFrameRate(0), 0);
        manager_.setThreadWork(0, false);
        manager_.setThreadWork(0, true);
        isAnswered = true;
    });
    EXPECT_TRUE(test::eventually([&] { return isAnswered.load(); }));
    fakeCamera(0).stalls = false;
    host.join();
    EXPECT_TRUE(waitForFrames(0, 3));  // and all goes on as if nothing had been
    EXPECT_TRUE(waitForFrames(1, 3));
    EXPECT_EQ(manager_.getFailedFetches(0), 0);
    EXPECT_EQ(manager_.getFailedFetches(1), 0);
}

TEST_F(DriverFaults, ClosingWaitsForAFetchThatIsLateAndLosesNothing) {
    start(0);
    ASSERT_TRUE(waitForFrames(0, 1));
    fakeCamera(0).stalls = true;
    ASSERT_TRUE(test::eventually([&] { return fakeCamera(0).isInFetch.load(); }));
    std::atomic<bool> isClosed{false};
    std::thread host([&] {
        manager_.closeAllThread();
        isClosed = true;
    });
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_FALSE(isClosed) << "the driver still writes into the picture";
    fakeCamera(0).stalls = false;
    host.join();
    EXPECT_FALSE(fakeCamera(0).isInFetch);
    EXPECT_EQ(manager_.getFailedFetches(0), 0);
}

TEST_F(DriverFaults, EveryLateAnswerIsAFrame) {
    ASSERT_TRUE(orx::openFrames(0));
    fakeCamera(0).isNumbered = true;
    fakeCamera(0).fetchMs = 120;  // longer than any pause
    start(0);
    ASSERT_TRUE(waitForFrames(0, 4));
    manager_.closeAllThread();
    const orx::TFrameCounts counts = orx::frameCounts(0);
    EXPECT_EQ(counts.waiting + counts.dropped, static_cast<std::uint64_t>(fakeCamera(0).frames));
    EXPECT_EQ(counts.lost, 0U);
    EXPECT_EQ(manager_.getFailedFetches(0), 0);
    orx::closeFrames(0);
}

TEST_F(DriverFaults, ADriverWhoseThreadIsGoneIsACameraLostAndReported) {
    orx::TReconnect alone;
    alone.policy = orx::lpThisOneWaits;
    ASSERT_TRUE(orx::setReconnect(0, alone));
    start(0);
    start(1);
    ASSERT_TRUE(waitForFrames(0, 3));
    host_.takeMessages();
    fakeCamera(0).picture = fake::Picture::kFailure;  // what a module answers that has no pictures any more
    ASSERT_TRUE(test::eventually([] { return orx::cameraStatus(0).state == orx::csLost; }));
    EXPECT_EQ(orx::cameraStatus(0).reason, orx::crNoPicture);
    EXPECT_EQ(host_.takeMessages().size(), 1U);
    EXPECT_TRUE(waitForFrames(1, 3)) << "the other camera goes on";
    orx::setReconnect(0, {});
}

// What every call of a host answers while the driver throws, with the text that is told.
void expectRefusals(orx::TMultiCamera& cams, const std::string& text) {
    const auto refused = [&](const char* function, const auto& call) {
        EXPECT_TRUE(orx::test::refusedWith(orx::rcDriver, function, call));
        EXPECT_NE(orx::lastRefusal().text.find(text), std::string::npos) << orx::lastRefusal().text;
    };
    cv::Mat picture(2, 2, CV_8U, cv::Scalar(9));
    refused("GetImage", [&] { EXPECT_FALSE(cams.GetImage(picture, 0, false, 0)); });
    EXPECT_EQ(cv::countNonZero(picture == 9), 4) << "untouched";
    refused("SetParam", [&] { EXPECT_FALSE(cams.SetParam(0, 500, 1)); });
    refused("GetParam", [&] { EXPECT_TRUE(std::isnan(cams.GetParam(0, 1))); });
    refused("stop", [&] { EXPECT_FALSE(cams.stop(0)); });
    EXPECT_TRUE(cams.close(0)) << "closed, whatever the driver says";
    EXPECT_FALSE(cams.haveOpen(0));
    refused("open", [&] { EXPECT_FALSE(cams.open(0, 12)); });
    refused("InitCamera", [&] { EXPECT_FALSE(cams.InitCamera(12, nullptr, false, false)); });
    refused("DestoryCamera", [&] { EXPECT_FALSE(cams.DestoryCamera()); });
}

TEST_F(DriverFaults, AnExceptionIsAFailedCallWithItsText) {
    const std::pair<fake::Throw, std::string> kinds[] = {{fake::Throw::kException, fake::kThrown},
                                                         {fake::Throw::kNumber, "\"?\""}};
    for (const auto& [kind, text] : kinds) {
        SCOPED_TRACE(text);
        host_.takeTraces();
        driver_->throws = kind;
        expectRefusals(cams_, text);
        EXPECT_THAT(host_.takeTraces(), testing::Contains(testing::StartsWith("相机驱动异常:")));
        driver_->throws = fake::Throw::kNothing;
        ASSERT_TRUE(cams_.InitCamera(12, nullptr, false, false)) << "no lock was left";
        ASSERT_TRUE(cams_.open(0, 12));
        cv::Mat picture;
        EXPECT_TRUE(orx::test::notRefused([&] { EXPECT_TRUE(cams_.GetImage(picture, 0, false, 0)); }));
    }
}

TEST_F(DriverFaults, AFetchThatThrowsIsACameraLostUntilItGivesPicturesAgain) {
    for (const fake::Throw kind : {fake::Throw::kException, fake::Throw::kNumber}) {
        orx::TReconnect alone;
        alone.policy = orx::lpReconnect;
        alone.firstWaitMs = 1;
        ASSERT_TRUE(orx::setReconnect(0, alone));
        start(0);
        ASSERT_TRUE(waitForFrames(0, 3));
        driver_->throws = kind;
        ASSERT_TRUE(test::eventually([] { return orx::cameraStatus(0).state == orx::csReconnecting; }));
        EXPECT_GE(manager_.getFailedFetches(0), 6);
        driver_->throws = fake::Throw::kNothing;
        EXPECT_TRUE(test::eventually([] { return orx::cameraStatus(0).state == orx::csGrabbing; }));
        EXPECT_TRUE(waitForFrames(0, 3));
        manager_.closeAllThread();
        orx::setReconnect(0, {});
    }
}

TEST_F(DriverFaults, AThreadOfTheModulesThatCrashesEndsTheProcess) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    const auto crash = reinterpret_cast<decltype(&crashFakeDriver)>(module_.function("crashFakeDriver"));
    ASSERT_NE(crash, nullptr);
    EXPECT_EXIT(crash(fake::Crash::kException), testing::KilledBySignal(SIGABRT), fake::kThrown);
    EXPECT_EXIT(crash(fake::Crash::kSignal), testing::KilledBySignal(SIGTERM), "");
}

}  // namespace
