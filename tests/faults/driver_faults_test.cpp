// A camera driver that never returns, answers late, or gives nothing any more.
#include <gtest/gtest.h>

#include "tests/camera/grabbing.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

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

}  // namespace
