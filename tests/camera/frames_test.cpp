// Frames out of the queue and into the callback: which they are, and what became of the others.
#include "orxFunctions/camera/frames.h"

#include <gmock/gmock.h>

#include <atomic>
#include <stdexcept>

#include "tests/camera/grabbing.h"

namespace {

using orx::fpEveryOne;
using orx::TFrame;
using orx::TFrameCounts;
using test::eventually;
using testing::HasSubstr;

constexpr int kSoon = 5000;  // milliseconds

class Frames : public test::Grabbing {
  protected:
    Frames() {
        for (int slot = 0; slot < 3; ++slot) {
            fakeCamera(slot).isNumbered = true;
            orx::closeFrames(slot);
        }
    }
    ~Frames() override {
        manager_.closeAllThread();
        for (int slot = 0; slot < 3; ++slot) {
            orx::setFrameCallback(slot, nullptr, nullptr);
            orx::closeFrames(slot);
        }
    }
    // Counting begins with frame 1 of a camera that starts after this.
    void openAndStart(int slot, const orx::TFrameOptions& options) {
        ASSERT_TRUE(orx::openFrames(slot, options));
        ASSERT_TRUE(cams_.stop(slot) && cams_.start(slot));
        start(slot);
    }
};

void expectSum(const TFrameCounts& counts) {
    EXPECT_EQ(counts.delivered, counts.taken + counts.waiting + counts.dropped + counts.lost);
}

TEST_F(Frames, ComeInOrderEachWithItsNumberAndTimes) {
    const auto before = std::chrono::system_clock::now();
    openAndStart(1, {fpEveryOne, 64});
    TFrame last;
    for (std::uint64_t number = 1; number <= 20; ++number) {
        TFrame frame;
        ASSERT_TRUE(orx::takeFrame(1, frame, kSoon));
        EXPECT_EQ(frame.number, number);
        EXPECT_EQ(test::numberOf(frame.image), static_cast<int>(number)) << "its own picture";
        EXPECT_EQ(frame.image.at<uchar>(5, 7), fake::sampleOf(1, 7, 5, 0));
        EXPECT_EQ(frame.camera, 1);
        EXPECT_TRUE(frame.isNumbered);
        EXPECT_EQ(frame.deviceTime, static_cast<std::int64_t>(1000 * number));
        EXPECT_EQ(frame.lostBefore + frame.droppedBefore, 0U);
        EXPECT_GE(frame.hostTime, before);
        EXPECT_LE(frame.hostTime, std::chrono::system_clock::now());
        EXPECT_TRUE(number == 1 || frame.start == last.start);
        last = frame;
    }
    ASSERT_TRUE(cams_.stop(1) && cams_.start(1));
    fakeCamera(1).frames = 0;
    TFrame frame = last;
    while (frame.start == last.start) ASSERT_TRUE(orx::takeFrame(1, frame, kSoon));
    EXPECT_GT(frame.start, last.start);
}

// A pause does not wait for the fetch that is under way, whose picture goes nowhere.
TEST_F(Frames, WhatAPauseThrowsAwayIsCountedAsLost) {
    openAndStart(1, {fpEveryOne, 64});
    TFrame before;
    ASSERT_TRUE(orx::takeFrame(1, before, kSoon));
    fakeCamera(1).stalls = true;
    ASSERT_TRUE(eventually([this] { return fakeCamera(1).isInFetch.load(); }));
    manager_.setThreadWork(1, false);
    fakeCamera(1).stalls = false;
    const auto handed = [this] { return static_cast<std::uint64_t>(fakeCamera(1).frames); };
    ASSERT_TRUE(eventually([&] { return orx::frameCounts(1).lost == 1; }));
    EXPECT_EQ(orx::frameCounts(1).delivered, handed());
    expectSum(orx::frameCounts(1));
    manager_.setThreadWork(1, true);
    TFrame frame;
    ASSERT_TRUE(orx::takeFrame(1, frame, kSoon));
    while (frame.lostBefore == 0) {
        EXPECT_EQ(frame.number, before.number + 1);
        before = frame;
        ASSERT_TRUE(orx::takeFrame(1, frame, kSoon));
    }
    EXPECT_EQ(frame.lostBefore, 1U);
    EXPECT_EQ(frame.number, before.number + 2);
    manager_.closeAllThread();
    EXPECT_EQ(orx::frameCounts(1).delivered, handed());
    EXPECT_EQ(orx::frameCounts(1).lost, 1U);
}

TEST_F(Frames, WhatIsMissingIsCountedWhereItIsMissing) {
    orx::TFrameOptions options{fpEveryOne, 4};
    fakeCamera(0).numberOffset = 2;  // the first frame is number 3
    openAndStart(0, options);
    ASSERT_TRUE(eventually([] { return orx::frameCounts(0).dropped >= 10; }));
    fakeCamera(0).numberOffset = 9;  // seven are lost
    const std::uint64_t upTo = orx::frameCounts(0).delivered;
    ASSERT_TRUE(eventually([&] { return orx::frameCounts(0).delivered >= upTo + 10; }));
    manager_.closeAllThread();
    const TFrameCounts counts = orx::frameCounts(0);
    EXPECT_EQ(counts.lost, 9U);
    EXPECT_EQ(counts.waiting, 4U);
    EXPECT_EQ(counts.delivered, static_cast<std::uint64_t>(fakeCamera(0).frames + 9));
    expectSum(counts);
    std::uint64_t before = 0;
    TFrame frame;
    while (orx::takeFrame(0, frame, 0)) {
        EXPECT_EQ(frame.number, before + 1 + frame.lostBefore + frame.droppedBefore);
        before = frame.number;
    }
    EXPECT_EQ(before, counts.delivered);
    EXPECT_EQ(orx::frameCounts(0).taken, 4U);
    expectSum(orx::frameCounts(0));

    // Opened while the camera runs: what came before does not count.
    ASSERT_TRUE(orx::openFrames(0));
    start(0);
    ASSERT_TRUE(orx::takeFrame(0, frame, kSoon));
    EXPECT_GT(frame.number, counts.delivered);
    EXPECT_EQ(orx::frameCounts(0).delivered - orx::frameCounts(0).lost - orx::frameCounts(0).dropped,
              1 + orx::frameCounts(0).waiting);
}

TEST_F(Frames, TheNewestIsOneThatTakesTheOthersPlace) {
    openAndStart(0, {});
    ASSERT_TRUE(waitForFrames(0, 10));
    manager_.closeAllThread();
    const auto fetched = static_cast<std::uint64_t>(fakeCamera(0).frames);
    EXPECT_EQ(orx::frameCounts(0).waiting, 1U);
    EXPECT_EQ(orx::frameCounts(0).dropped, fetched - 1);
    TFrame frame;
    ASSERT_TRUE(orx::takeFrame(0, frame, 0));
    EXPECT_EQ(frame.number, fetched);
    EXPECT_EQ(frame.droppedBefore, fetched - 1);
    EXPECT_FALSE(orx::takeFrame(0, frame, 0));
}

TEST_F(Frames, APictureThatIsGivenAgainIsNoFrame) {
    openAndStart(0, {fpEveryOne, 64});
    TFrame frame;
    ASSERT_TRUE(orx::takeFrame(0, frame, kSoon));
    fakeCamera(0).repeats = 1'000'000;
    ASSERT_TRUE(eventually([] { return orx::frameCounts(0).repeated >= 3; }));
    const int calm = fakeCamera(0).frames;
    while (orx::takeFrame(0, frame, 0)) {
    }
    EXPECT_EQ(frame.number, static_cast<std::uint64_t>(calm));
    const auto fetchesBefore = fakeCamera(0).fetches.load();
    std::this_thread::sleep_for(std::chrono::milliseconds(120));
    EXPECT_LE(fakeCamera(0).fetches - fetchesBefore, 4)
        << "where nothing is new the driver is asked, not fetched from";
    fakeCamera(0).repeats = 0;
    ASSERT_TRUE(orx::takeFrame(0, frame, kSoon));
    EXPECT_EQ(frame.number, static_cast<std::uint64_t>(calm) + 1);
    EXPECT_EQ(frame.lostBefore, 0U);
}

TEST_F(Frames, NumbersThatMakeNoSenseAreNoLongerBelieved) {
    openAndStart(2, {fpEveryOne, 64});
    TFrame frame;
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(orx::takeFrame(2, frame, kSoon));
    EXPECT_TRUE(frame.isNumbered);
    manager_.closeAllThread();
    host_.takeTraces();
    fakeCamera(2).numberOffset = -1'000;
    start(2);
    while (frame.isNumbered) ASSERT_TRUE(orx::takeFrame(2, frame, kSoon));
    const std::uint64_t first = frame.number;
    ASSERT_TRUE(orx::takeFrame(2, frame, kSoon));
    EXPECT_EQ(frame.number, first + 1) << "counted here";
    expectSum(orx::frameCounts(2));
    const std::vector<std::string> traces = host_.takeTraces();
    EXPECT_EQ(std::count_if(traces.begin(), traces.end(),
                            [](const std::string& line) {
                                return line.find("no longer believed") != std::string::npos;
                            }),
              1);
}

TEST_F(Frames, ADriverWithoutNumbersWorksToo) {
    fakeCamera(0).isNumbered = false;
    openAndStart(0, {fpEveryOne, 64});
    TFrame frame;
    for (std::uint64_t number = 1; number <= 5; ++number) {
        ASSERT_TRUE(orx::takeFrame(0, frame, kSoon));
        EXPECT_EQ(frame.number, number);
        EXPECT_FALSE(frame.isNumbered);
        EXPECT_EQ(frame.deviceTime, 0);
    }
}

struct Seen {
    std::atomic<int> calls{0};
    std::atomic<std::uint64_t> lost{0};
    TFrame last;  // guarded by the slot, as callbacks are
};

void see(const TFrame& frame, void* user) {
    auto& seen = *static_cast<Seen*>(user);
    seen.last = frame;
    seen.lost += frame.lostBefore;
    ++seen.calls;
}

TEST_F(Frames, GoToTheCallbackWithItsPointerBeforeAnythingPaints) {
    static Seen seen;
    ASSERT_TRUE(orx::setFrameCallback(1, see, &seen));
    manager_.closeAllThread();
    start(1);
    manager_.setDrawImgCallbackFunc(
        true, [](cv::Mat& image, int) { image.setTo(255); }, 1);
    ASSERT_TRUE(cams_.stop(1) && cams_.start(1));
    ASSERT_TRUE(eventually([] { return seen.calls >= 10; }));
    ASSERT_TRUE(orx::setFrameCallback(1, nullptr, nullptr));
    const int calls = seen.calls;
    EXPECT_EQ(seen.last.image.at<uchar>(5, 7), fake::sampleOf(1, 7, 5, 0)) << "not painted";
    EXPECT_EQ(seen.last.camera, 1);
    EXPECT_TRUE(waitForFrames(1, 5));
    EXPECT_EQ(seen.calls, calls) << "ended when the call returned";
    seen.last = TFrame();

    host_.takeMessages();
    orx::setFrameCallback(
        1, [](const TFrame&, void*) { throw std::runtime_error("no disk"); }, nullptr);
    EXPECT_TRUE(eventually([] { return !isReady(); })) << "six failures in a row";
    EXPECT_THAT(host_.takeMessages().at(0).text, HasSubstr("no disk"));
}

TEST_F(Frames, WaitingEndsInTimeAndWithTheQueue) {
    TFrame frame;
    frame.number = 77;
    for (const int camera : {-1, 9, 2'000'000'000}) {
        EXPECT_FALSE(orx::openFrames(camera));
        EXPECT_FALSE(orx::takeFrame(camera, frame, kSoon));
        EXPECT_FALSE(orx::setFrameCallback(camera, see, nullptr));
        EXPECT_EQ(orx::frameCounts(camera).delivered, 0U);
    }
    EXPECT_FALSE(orx::takeFrame(0, frame, kSoon)) << "no queue";
    ASSERT_TRUE(orx::openFrames(0));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(orx::takeFrame(0, frame, 30));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(30));
    EXPECT_FALSE(orx::takeFrame(0, frame, -5));
    std::thread closer([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        orx::closeFrames(0);
    });
    EXPECT_FALSE(orx::takeFrame(0, frame, 60'000));
    closer.join();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
    EXPECT_EQ(frame.number, 77U) << "untouched";
}

}  // namespace
