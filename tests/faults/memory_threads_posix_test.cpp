// The library's own threads without memory, and what other threads ask of them then.
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>

#include "tests/camera/grabbing.h"
#include "tests/faults/memory_sweep_posix.h"
#include "tests/support/temporary_folder.h"

namespace {

using test::Given;
using test::sweepMemory;
using test::WithoutMemory;
using test::memory::Fault;
using test::memory::FaultElsewhere;
using test::memory::Length;

constexpr int kPatience = 20000;  // milliseconds

class MemoryFaultsOfSaving : public testing::Test {
  protected:
    MemoryFaultsOfSaving() {
        // What is made with the first image, is made.
        EXPECT_TRUE(FileOperator::saveImage(image_, folder_.name()));
        EXPECT_TRUE(FileOperator::flush(kPatience));
        forget();
    }
    ~MemoryFaultsOfSaving() override { EXPECT_TRUE(FileOperator::flush(kPatience)); }

    // How many whole images there were; none is half.
    int forget() {
        int images = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
            const cv::Mat read = cv::imread(entry.path().string(), cv::IMREAD_GRAYSCALE);
            EXPECT_TRUE(read.size() == image_.size() && cv::norm(read, image_, cv::NORM_INF) == 0)
                << entry.path();
            std::filesystem::remove(entry.path());
            ++images;
        }
        std::string text;
        int color = 0;
        messages_ = 0;
        while (orx::APPgetMessage(text, color)) ++messages_;
        return images;
    }

    const cv::Mat image_{20, 30, CV_8U, cv::Scalar(77)};
    test::TemporaryFolder folder_;
    int messages_ = 0;
};

TEST_F(MemoryFaultsOfSaving, AnImageIsTakenOrRefusedAndNobodyWaitsForOneThatIsNeither) {
    int refused = 0;
    long count = 1;
    // Several times each: the queue takes memory for a few images at once.
    for (long i = 1; i / 6 <= count; ++i) {
        const long n = 1 + i / 6;
        SCOPED_TRACE(n);
        bool isTaken = false;
        std::string folder = folder_.name();
        {
            const Fault armed(n, i % 2 == 0 ? Length::kOnce : Length::kLasting);
            isTaken = FileOperator::saveImage(image_, std::move(folder));
        }
        if (test::memory::allocationsFailed() > 0) count = n + 1;
        ASSERT_TRUE(FileOperator::flush(kPatience)) << "the queue counts an image that it does not have";
        ASSERT_EQ(forget(), isTaken ? 1 : 0);
        refused += isTaken ? 0 : 1;
    }
    EXPECT_GT(refused, 10);
}

TEST_F(MemoryFaultsOfSaving, WaitingNeedsNoMemory) {
    for (long n = 1; n <= 3; ++n) {
        ASSERT_TRUE(FileOperator::saveImage(image_, folder_.name()));
        bool isDone = false;
        {
            const Fault armed(n, Length::kLasting);
            isDone = FileOperator::flush(kPatience);
        }
        EXPECT_TRUE(isDone);
        EXPECT_EQ(forget(), 1);
    }
}

TEST_F(MemoryFaultsOfSaving, TheThreadWritesTheWholeImageOrTellsTheUser) {
    int lost = 0;
    for (const Length length : {Length::kOnce, Length::kLasting}) {
        for (long n = 1; n <= 40; ++n) {
            SCOPED_TRACE(n);
            bool isDone = false;
            {
                const FaultElsewhere armed(n, length);
                ASSERT_TRUE(FileOperator::saveImage(image_, folder_.name()));
                isDone = FileOperator::flush(kPatience);
            }
            ASSERT_TRUE(isDone);
            const bool isWritten = forget() == 1;
            lost += isWritten ? 0 : 1;
            // Without any memory there is none for the message.
            if (length == Length::kOnce) {
                EXPECT_EQ(messages_, isWritten ? 0 : 1);
            }
        }
    }
    EXPECT_GT(lost, 0) << "nothing was ever refused to the thread";
}

class MemoryFaultsOfGrabbing : public test::Grabbing {
  protected:
    MemoryFaultsOfGrabbing() : Grabbing(1) {}
};

TEST_F(MemoryFaultsOfGrabbing, AThreadThatLacksMemoryForAMomentGrabsOn) {
    if (test::memory::kNewAlone)
        GTEST_SKIP() << "a sanitizer: what a grab thread takes are pixels, which never fail";
    manager_.setDrawImgCallbackFunc(false, nullptr, 0);
    start(0);
    ASSERT_TRUE(waitForFrames(0, 5));
    fakeCamera(0).width = 5;
    for (const Length length : {Length::kOnce, Length::kLasting}) {
        for (long n = 1; n <= 30; ++n) {
            SCOPED_TRACE(n);
            {
                const FaultElsewhere armed(n, length);
                ASSERT_TRUE(test::eventually([&] {
                    fakeCamera(0).width = 11 - fakeCamera(0).width;  // each picture needs new buffers
                    setReady(true);                                  // as the host does when it was asked to
                    return test::memory::allocationsFailed() > (length == Length::kOnce ? 0 : 20);
                }));
            }
            const int wanted = fakeCamera(0).frames + 3;
            ASSERT_TRUE(test::eventually([&] {
                setReady(true);
                return fakeCamera(0).frames >= wanted;
            }));
        }
    }
    manager_.closeAllThread();
}

TEST_F(MemoryFaultsOfGrabbing, AThreadStartsOrDoesNotAndCanBeStartedAgain) {
    start(0);
    ASSERT_TRUE(waitForFrames(0, 1));
    long count = 1;
    for (long n = 1; n <= count; ++n) {
        SCOPED_TRACE(n);
        manager_.closeAllThread();
        try {
            const Fault armed(n, Length::kLasting);
            manager_.startThread(&cams_, &configs_[0], 0);
        } catch (const std::bad_alloc&) {
        } catch (const cv::Exception& error) {
            EXPECT_EQ(error.code, cv::Error::StsNoMem);
        }
        if (test::memory::allocationsFailed() > 0) count = n + 1;
        manager_.closeAllThread();  // would wait for a thread that never began
        start(0);
        ASSERT_TRUE(waitForFrames(0, 1));
    }
    EXPECT_GT(count, 3);
}

int toldStates = 0;

TEST_F(MemoryFaultsOfGrabbing, AStateCallbackThatFailsWithoutMemoryLeavesTheNextOnesToBeTold) {
    orx::setCameraStateCallback(
        [](const orx::TCameraStatus&, void*) { throw std::runtime_error("a reason that is long"); }, nullptr);
    for (long n = 1; n <= 12; ++n) {
        try {
            const Fault armed(n, Length::kLasting);
            n % 2 == 0 ? cams_.start(0) : cams_.stop(0);
        } catch (const std::bad_alloc&) {
        }
    }
    toldStates = 0;
    orx::setCameraStateCallback([](const orx::TCameraStatus&, void*) { ++toldStates; }, nullptr);
    cams_.close(0);
    EXPECT_TRUE(cams_.open(0, 12));
    EXPECT_EQ(toldStates, 2);
    orx::setCameraStateCallback(nullptr, nullptr);
}

TEST(MemoryFaultsOfFiles, FileOperationsAnswer) {
    const test::TemporaryFolder folder;
    struct Names {
        std::string folder;
        std::string source;
        std::string target;
    };
    const Names names{folder.name(), folder / "a file with a name that is long enough for memory",
                      folder / "another file with a name that is long enough for it"};
    test::writeBytes(names.source, "abc");
    const auto answers = [&](const auto& run) {
        sweepMemory(
            [&](const auto& arm) -> Given {
                Names given = names;
                bool isDone = false;
                {
                    const auto armed = arm();
                    isDone = run(given);
                }
                EXPECT_EQ(test::bytesOf(names.source), "abc");
                if (!isDone) return std::nullopt;
                return "done";
            },
            WithoutMemory::kAnswers);
    };
    answers([](Names& given) { return FileOperator::fileExists(std::move(given.source)); });
    answers([](Names& given) { return FileOperator::folderSize(std::move(given.folder)) >= 3; });
    answers([](Names& given) { return !FileOperator::listFiles(std::move(given.folder)).empty(); });
    answers([](Names& given) {
        return FileOperator::copyFile(std::move(given.source), std::move(given.target), true);
    });
    answers([](Names& given) { return FileOperator::createFolder(std::move(given.folder)); });
}

TEST(MemoryFaultsOfDisplays, ABoxWithoutMemoryEndsWhenItIsToldTo) {
    cv::Mat image(20, 30, CV_8U, cv::Scalar(9));
    for (long n = 1; n <= 3; ++n) {
        TPictureBox box;
        box.start();
        const FaultElsewhere armed(n, Length::kLasting);
        box.setImage(image, false);
        box.killThread();
    }
}

}  // namespace
