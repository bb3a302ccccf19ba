// Nine cameras at once, stalls, and cameras that come and go; run under ThreadSanitizer too.
#include <gmock/gmock.h>

#include <atomic>
#include <set>

#include "tests/camera/grabbing.h"
#include "tests/support/loaded_module.h"

namespace {

using test::eventually;

class ManyCameras : public test::Grabbing {
  protected:
    ManyCameras() : Grabbing(9) {
        for (int slot = 0; slot < 9; ++slot) fakeCamera(slot).width = 32 + slot;
    }
    void startAll() {
        for (int slot = 0; slot < 9; ++slot) start(slot);
    }
};

// True for a whole picture of that camera: not torn, not another's.
bool isPictureOf(int slot, const cv::Mat& image) {
    if (image.size() != cv::Size(32 + slot, 6)) return false;
    for (int i = fake::kNumberBytes; i < 6 * image.cols; ++i) {
        const int x = i % image.cols;
        if (image.at<uchar>(i / image.cols, x) != fake::sampleOf(slot, x, i / image.cols, 0)) return false;
    }
    return true;
}

std::array<std::atomic<int>, 9> pictures;
std::atomic<int> wrongPictures{0};
void check(cv::Mat& image, int camera) {
    if (!isPictureOf(camera, image)) ++wrongPictures;
    ++pictures[static_cast<std::size_t>(camera)];
    image.setTo(0);  // a callback may draw
    image.release();
}

TEST_F(ManyCameras, DeliverTheirOwnPicturesWhileTheHostPollsAndChangesEverything) {
    for (auto& count : pictures) count = 0;
    wrongPictures = 0;
    startAll();
    for (int slot = 0; slot < 9; slot += 2) manager_.setDrawImgCallbackFunc(true, check, slot);
    std::atomic<bool> isOver{false};
    std::atomic<int> tornPictures{0};
    std::thread poller([&] {
        while (!isOver) {
            for (int slot = 1; slot < 9; slot += 2) {
                const cv::Mat image = manager_.getThreadImage(slot);
                const bool isStatus = image.size() == cv::Size(200, 200);
                if (!isStatus && !isPictureOf(slot, image)) ++tornPictures;
                manager_.getCurrentFrameRate(slot);
            }
        }
    });
    std::thread changer([&] {
        for (int i = 0; !isOver; ++i) {
            const int slot = i % 9;
            manager_.setThreadWork(slot, i % 2 == 0);
            manager_.setCamUpdateImg(slot, i % 3 == 0);
            configs_[static_cast<std::size_t>(slot)].frameRate = 500 + i % 500;
            cams_.cameras[static_cast<std::size_t>(slot)]->reverseXFlag = false;
            cams_.getImgSize(slot);
            cams_.SetParam(slot, i, 1);
            if (i % 7 == 0) cams_.close(slot);
            cams_.connectCamera(slot, 12);
            manager_.setThreadWork(slot, true);
            manager_.setCamUpdateImg(slot, true);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    const bool allRun = eventually([] {
        return pictures[0] > 40 && pictures[2] > 40 && pictures[4] > 40 && pictures[6] > 40 &&
               pictures[8] > 40;
    });
    isOver = true;
    poller.join();
    changer.join();
    EXPECT_TRUE(allRun);
    manager_.closeAllThread();
    EXPECT_EQ(wrongPictures, 0);
    EXPECT_EQ(tornPictures, 0);
}

TEST_F(ManyCameras, StopWaitsForAStalledFetchAndForNothingElse) {
    startAll();
    ASSERT_TRUE(waitForFrames(4, 3));
    fakeCamera(4).stalls = true;
    ASSERT_TRUE(eventually([&] { return fakeCamera(4).isInFetch.load(); }));
    std::atomic<bool> isClosed{false};
    std::thread closer([&] {
        manager_.closeAllThread();
        isClosed = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(isClosed) << "the driver still has the thread";
    fakeCamera(4).stalls = false;
    closer.join();
    const int fetches = fakeCamera(4).fetches;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(fakeCamera(4).fetches, fetches);
}

TEST_F(ManyCameras, StopWakesThreadsThatSleep) {
    for (orx::TCameraConfig& config : configs_) config.frameRate = 1;
    startAll();
    for (int slot = 0; slot < 9; ++slot) {
        ASSERT_TRUE(eventually([&] { return fakeCamera(slot).frames >= 1; }));
    }
    const auto before = std::chrono::steady_clock::now();
    manager_.closeAllThread();
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(800)) << "pauses are 1 s";
}

TEST_F(ManyCameras, ComeAndGoTenThousandTimesAndLeaveNothingBehind) {
    start(0);
    start(1);
    ASSERT_TRUE(waitForFrames(0, 3));
    ASSERT_TRUE(waitForFrames(1, 3));
    const auto threadsBefore = test::threads();
    const auto handlesBefore = test::handles();
    int reopened = 0;
    for (int i = 0; i < 10000; ++i) {
        fakeCamera(0).isPlugged = false;
        cams_.close(0);
        if (i % 100 == 0) cams_.connectCamera(0, 12);  // in vain, and told
        fakeCamera(0).isPlugged = true;
        if (cams_.connectCamera(0, 12)) ++reopened;
        if (i % 500 == 0) {  // as many reconnect messages, each after six failed fetches
            fakeCamera(1).isPlugged = false;
            ASSERT_TRUE(eventually([] { return !isReady(); }));
            fakeCamera(1).isPlugged = true;
            setReady(true);
            start(1);
        }
    }
    EXPECT_EQ(reopened, 10000);
    // By chance the thread of slot 0, too, may have met the unplugged camera six times in a row.
    const int wanted = fakeCamera(0).frames + 3;
    EXPECT_TRUE(eventually([&] {
        setReady(true);
        return fakeCamera(0).frames >= wanted;
    }));
    EXPECT_TRUE(waitForFrames(1, 3));
    EXPECT_EQ(test::threads(), threadsBefore);
    EXPECT_EQ(test::handles(), handlesBefore);
    manager_.closeAllThread();
    // On Windows a grab thread is done with everything by now, but goes a moment later.
    EXPECT_TRUE(eventually([&] { return test::threads() == threadsBefore - 2; })) << test::threads();
}

TEST_F(ManyCameras, HostsMayLoadAndStartAllOverAgain) {
    for (int i = 0; i < 50; ++i) {
        orx::TMultiCamera cams;
        cams.setCameraNumber(2);
        ASSERT_TRUE(cams.InitCamera(12, nullptr, false, false));
        ASSERT_TRUE(cams.open(0, 12) && cams.open(1, 12));
        manager_.startThread(&cams, configs_.data(), 0);
        manager_.startThread(&cams, &configs_[1], 1);
        ASSERT_TRUE(waitForFrames(i % 2, 1));
        manager_.closeAllThread();
        ASSERT_TRUE(cams.DestoryCamera());
        cams.freeDll();
    }
    EXPECT_TRUE(cams_.stop(0)) << "the first object still has its driver";
}

}  // namespace
