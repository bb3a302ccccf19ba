#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <thread>

#include "tests/display/picture_box_fixture.h"

namespace {

using test::kBackground;

class PictureBox : public test::HeadlessBox {};

bool becomesTrue(const std::function<bool()>& condition) {
    for (int i = 0; i < 500; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

TEST_F(PictureBox, WindowsAreNumberedByTheBoxesAlive) {
    {
        TPictureBox first;
        EXPECT_EQ(first.getCvWinName(), "pictrueBox11");
        TPictureBox second;
        EXPECT_EQ(second.getCvWinName(), "pictrueBox12");
        EXPECT_EQ(TPictureBox::mCount, 2);
    }
    EXPECT_EQ(TPictureBox::mCount, 0);
    TPictureBox again;
    EXPECT_EQ(again.winName, "pictrueBox11");
}

TEST_F(PictureBox, StartsWithItsDefaults) {
    TPictureBox box;
    EXPECT_EQ(box.windowWidth, 0);
    EXPECT_EQ(box.windowHeight, 0);
    EXPECT_TRUE(box.keepAspect);
    EXPECT_EQ(box.function, 14);
    EXPECT_EQ(box.sleepMs, 50);
    EXPECT_EQ(box.measureFrames, 8);
    EXPECT_EQ(box.getShowFrame(), 20);
    EXPECT_EQ(box.targetFps, 20);
    EXPECT_EQ(box.appliedFps, 0);
    EXPECT_EQ(box.getParentHand(), nullptr);
    double sx = 0, sy = 0;
    box.getOrig2ShowImgScaleXY(sx, sy);
    EXPECT_EQ(sx, 1.0);
    EXPECT_EQ(sy, 1.0);
}

TEST_F(PictureBox, TracesItsEndInOrder) {
    {
        TPictureBox box;
        box.start();
        trace.clear();
    }
    EXPECT_EQ(trace.lines(),
              (test::TraceLog::Lines{"图片显示线程已经关闭", "更改父窗体", "删除指定opencv 窗体",
                                     "删除所有opencv 窗体后", "删除所有opencv 窗体后2"}));
}

TEST_F(PictureBox, OneThatWasNeverStartedIsDestroyedQuietly) {
    { TPictureBox box; }
    EXPECT_EQ(trace.count("删除所有opencv 窗体后2"), 1);
    EXPECT_EQ(trace.count("图片显示线程已经关闭"), 0);
}

TEST_F(PictureBox, StartingTwiceEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            TPictureBox box;
            box.start();
            box.start();
        },
        "");
}

TEST_F(PictureBox, IgnoresSizesThatNoWindowHas) {
    TPictureBox box;
    for (const cv::Size size : {cv::Size(4, 100), cv::Size(100, 4), cv::Size(-1, -1), cv::Size(40000, 100),
                                cv::Size(32767, 32767)}) {
        box.setWindowSize(size.width, size.height);
        EXPECT_EQ(box.windowWidth, 0);
        EXPECT_FALSE(box.sizeChanged);
        EXPECT_TRUE(box.canvas.empty());
    }
}

TEST_F(PictureBox, ItsCanvasFollowsTheWindow) {
    TPictureBox box;
    for (const cv::Size size : {cv::Size(640, 480), cv::Size(5, 5), cv::Size(700, 30)}) {
        box.sizeChanged = false;
        box.setWindowSize(size.width, size.height);
        EXPECT_TRUE(box.sizeChanged);
        ASSERT_EQ(box.canvas.size(), size);
        ASSERT_EQ(box.canvas.type(), CV_8UC3);
        EXPECT_EQ(cv::norm(box.canvas, cv::Mat(size, CV_8UC3, cv::Scalar(128, 128, 128)), cv::NORM_INF), 0.0);
        box.sizeChanged = false;
        box.setWindowSize(size.width, size.height);
        EXPECT_FALSE(box.sizeChanged);
    }
}

TEST_F(PictureBox, FitsTheImageOnGrey) {
    TPictureBox box;
    box.setWindowSize(800, 600);
    cv::Mat image = grey(1000, 500, 77);
    box.setImage(image, false);
    box.showImage();
    EXPECT_EQ(box.orig2ShowPoint({500, 250}), cv::Point2d(400, 300));
    EXPECT_EQ(box.show2OrigPoint({400, 300}), cv::Point2d(500, 250));
    double sx = 0, sy = 0;
    box.getOrig2ShowImgScaleXY(sx, sy);
    EXPECT_EQ(cv::Point2d(sx, sy), cv::Point2d(0.8, 0.8));
    ASSERT_EQ(box.display.size(), cv::Size(800, 600));
    ASSERT_EQ(box.display.type(), CV_8UC3);
    const cv::Vec3b level(77, 77, 77);
    EXPECT_EQ(pixel(box, 0, 99), kBackground);
    EXPECT_EQ(pixel(box, 0, 100), level);
    EXPECT_EQ(pixel(box, 799, 499), level);
    EXPECT_EQ(pixel(box, 799, 500), kBackground);
}

TEST_F(PictureBox, FillsTheWindowWhenTheRatioIsNotKept) {
    TPictureBox box;
    box.setWindowSize(80, 60);
    box.keepAspect = false;
    cv::Mat image = grey(100, 500, 9);
    box.setImage(image, false);
    box.showImage();
    EXPECT_EQ(cv::norm(box.display, grey(80, 60, 9), cv::NORM_INF), 0.0);
    EXPECT_EQ(box.orig2ShowPoint({50, 250}), cv::Point2d(40, 30));
    // A drawing makes it a colour picture.
    box.setDrawRect({50, 250, 10, 10, -1, {0, 0, 255}});
    box.showImage();
    EXPECT_EQ(pixel(box, 42, 30), cv::Vec3b(0, 0, 255));
    EXPECT_EQ(pixel(box, 10, 10), cv::Vec3b(9, 9, 9));
}

TEST_F(PictureBox, ShrinksWithoutLosingThinLines) {
    // A tenth of the rows are white: a tenth of the light in each place.
    cv::Mat image(2000, 3000, CV_8UC3, cv::Scalar::all(0));
    for (int y = 0; y < image.rows; y += 10) image.row(y).setTo(cv::Scalar::all(250));
    TPictureBox box;
    box.setWindowSize(300, 200);
    box.setImage(image, false);
    box.showImage();
    double least = 0, most = 0;
    cv::minMaxLoc(box.display.reshape(1), &least, &most);
    EXPECT_NEAR(cv::mean(box.display)[0], 25.0, 3.0);
    EXPECT_GT(least, 0.0);
    EXPECT_LT(most, 63.0);  // at most two lines in eight rows
}

TEST_F(PictureBox, SharesPixelsButNeverDrawsOnThem) {
    TPictureBox box;
    box.setWindowSize(60, 40);
    cv::Mat image = colour(60, 40, {5, 6, 7});
    box.setImage(image, false);
    box.showImage();
    EXPECT_EQ(box.display.data, image.data);
    box.setDrawRect({0, 0, 60, 40, -1, {255, 255, 255}});
    box.showImage();
    EXPECT_EQ(pixel(box, 30, 20), cv::Vec3b(255, 255, 255));
    EXPECT_EQ(cv::norm(image, colour(60, 40, {5, 6, 7}), cv::NORM_INF), 0.0);
    box.clearDraw();
    box.showImage();
    EXPECT_EQ(pixel(box, 30, 20), cv::Vec3b(5, 6, 7));
}

TEST_F(PictureBox, ShowsFourChannelsAsThree) {
    TPictureBox box;
    cv::Mat image(20, 30, CV_8UC4, cv::Scalar(1, 2, 3, 200));
    box.setImage(image, false);
    EXPECT_EQ(image.channels(), 4);
    box.showImage();
    ASSERT_EQ(box.display.type(), CV_8UC3);
    EXPECT_EQ(pixel(box, 10, 10), cv::Vec3b(1, 2, 3));
}

TEST_F(PictureBox, KeepsTheImageWhenItCanNotTakeAnother) {
    TPictureBox box;
    cv::Mat image = grey(30, 20, 50);
    box.setImage(image, false);
    const int sizes[] = {3, 3, 3};
    cv::Mat cube(3, sizes, CV_8UC1, cv::Scalar(0));
    box.redraw = false;
    box.setImage(cube, false);
    EXPECT_FALSE(box.redraw);
    std::string text;
    int color = 0;
    ASSERT_TRUE(orx::APPgetMessage(text, color));
    EXPECT_EQ(zul::toUtf8(text), "设置图片失败!");
    EXPECT_EQ(color, 1);
    EXPECT_EQ(trace.count("设置图片失败!"), 1);
    cv::Mat nothing;
    box.setImage(nothing, false);
    EXPECT_FALSE(box.redraw);
    EXPECT_EQ(box.origWidth, 30.0);
    box.showImage();
    EXPECT_EQ(box.display.data, image.data);
}

TEST_F(PictureBox, AnyKindOfImageIsShownOrRefused) {
    TPictureBox box;
    box.setWindowSize(40, 30);
    box.setDrawRect({1, 1, 5, 5, 1, {255, 0, 0}});
    for (const int depth : {CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_16F})
        for (const int channels : {1, 2, 3, 4, 5})
            for (const cv::Size size :
                 {cv::Size(1, 1), cv::Size(1, 900), cv::Size(900, 1), cv::Size(40, 30), cv::Size(81, 77)})
                for (const bool keepAspect : {true, false}) {
                    box.keepAspect = keepAspect;
                    cv::Mat image = cv::Mat::zeros(size, CV_MAKETYPE(depth, channels));
                    box.setImage(image, false);
                    box.showImage();
                    box.showImageLast();
                    EXPECT_FALSE(box.display.empty());
                }
    // 16 bits by 1/256, floating point by 255, as OpenCV's windows show them.
    cv::Mat deep(60, 80, CV_16UC1, cv::Scalar(100 * 256));
    box.keepAspect = true;
    box.clearDraw();
    box.setImage(deep, false);
    box.showImage();
    EXPECT_EQ(pixel(box, 20, 15), cv::Vec3b(100, 100, 100));
    cv::Mat real(60, 80, CV_32FC3, cv::Scalar(0.2, 0.4, 1.0));
    box.setImage(real, false);
    box.showImage();
    EXPECT_EQ(pixel(box, 20, 15), cv::Vec3b(51, 102, 255));
}

TEST_F(PictureBox, AllBoxesShowTheSameImage) {
    TPictureBox first;
    TPictureBox second;
    cv::Mat image = colour(30, 20, {9, 8, 7});
    first.setImage(image, false);
    second.showImage();
    EXPECT_EQ(second.display.data, image.data);
    EXPECT_FALSE(second.redraw);
    EXPECT_TRUE(first.redraw);
    cv::Mat last;
    ASSERT_TRUE(TPictureBox::getLastShownImage(last));
    EXPECT_EQ(cv::norm(last, image, cv::NORM_INF), 0.0);
    EXPECT_NE(last.data, image.data);
}

TEST_F(PictureBox, AFrozenBoxShowsNothing) {
    TPictureBox box;
    cv::Mat first = grey(30, 20, 1);
    cv::Mat second = grey(30, 20, 2);
    box.setImage(first, false);
    box.showImage();
    box.setImage(second, false);
    box.frozen = true;
    box.showImage();
    box.showImageLast();
    EXPECT_EQ(box.display.data, first.data);
    EXPECT_TRUE(box.redraw);
    box.frozen = false;
    box.showImageLast();
    EXPECT_EQ(box.display.data, second.data);
}

// Two boxes at work that the program never destroys. `boxes` keeps them reachable.
TPictureBox* boxes[2] = {};
void leaveWithBoxesAtWork() {
    static cv::Mat image(600, 800, CV_8UC3, cv::Scalar());
    for (TPictureBox*& box : boxes) {
        box = new TPictureBox(&box == boxes ? TPictureOf::kProcess : TPictureOf::kBox);
        box->sleepMs = 0;
        box->targetFps = box->appliedFps = 1000;
        box->setWindowSize(300, 200);
        box->setImage(image, false);
        box->start();
    }
    std::thread([] {
        for (int i = 0;; ++i) boxes[i % 2]->setImage(image, false);
    }).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    std::exit(0);
}

TEST_F(PictureBox, AProgramMayEndWithBoxesAtWork) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(leaveWithBoxesAtWork(), ::testing::ExitedWithCode(0), "");
}

// Pacing.

TEST_F(PictureBox, TheRateIsTakenWithTheNextFrame) {
    TPictureBox box;
    box.setShowFrame(30);
    EXPECT_EQ(box.sleepMs, 50);
    box.calShowFrame();
    EXPECT_EQ(box.sleepMs, 33);
    EXPECT_EQ(box.getShowFrame(), 30);
    box.setShowFrame(0);
    EXPECT_EQ(box.targetFps, 1);
    box.calShowFrame();
    EXPECT_EQ(box.sleepMs, 1000);
    EXPECT_EQ(box.getShowFrame(), 1);
}

TEST_F(PictureBox, ThePauseStaysAsNothingAdvancesTheCounter) {
    TPictureBox box;
    cv::Mat image = grey(30, 20, 1);
    box.setImage(image, false);
    for (int i = 0; i < 30; ++i) {
        box.showImage();
        box.calShowFrame();
    }
    EXPECT_EQ(box.frameCounter, 0);
    EXPECT_EQ(box.sleepMs, 50);
    EXPECT_EQ(box.getShowFrame(), 20);
}

TEST_F(PictureBox, AFedCounterMeasuresTheRateAndMovesThePause) {
    TPictureBox box;
    box.calShowFrame();  // takes 20 a second
    const double second = cv::getTickFrequency();
    // Seven gaps in 7/4 of a second: four a second, too slow.
    box.startTick = static_cast<double>(cv::getTickCount()) - 1.75 * second;
    box.frameCounter = 8;
    box.calShowFrame();
    EXPECT_EQ(box.getShowFrame(), 4);
    EXPECT_EQ(box.sleepMs, 45);
    EXPECT_EQ(box.frameCounter, 0);
    // Half a millisecond a frame: fast enough.
    box.frameCounter = 1;
    box.calShowFrame();
    box.frameCounter = 8;
    box.calShowFrame();
    EXPECT_GE(box.getShowFrame(), 20);
    EXPECT_EQ(box.sleepMs, 50);  // 49.5, to the even neighbour
}

// The display thread.

TEST_F(PictureBox, ItsThreadShowsWhatIsHandedIn) {
    TPictureBox box;
    box.setShowFrame(100);
    box.start();
    cv::Mat image = grey(30, 20, 1);
    for (int i = 0; i < 3; ++i) {
        box.setImage(image, false);
        EXPECT_TRUE(becomesTrue([&] { return !box.redraw; }));
    }
    EXPECT_TRUE(becomesTrue([&] { return box.sleepMs == 10; }));
    box.killThread();
    EXPECT_TRUE(becomesTrue([&] { return trace.count("图片显示线程已经关闭") == 1; }));
    box.setImage(image, false);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_TRUE(box.redraw);
}

TEST_F(PictureBox, ANewSizeFitsAStillPictureAnew) {
    TPictureBox box;
    box.setShowFrame(100);
    box.start();
    box.setWindowSize(80, 60);
    EXPECT_FALSE(box.redraw);  // nothing to show
    cv::Mat image = grey(40, 40, 1);
    box.setImage(image, false);
    EXPECT_TRUE(becomesTrue([&] { return box.shownWidth == 60.0; }));
    box.setWindowSize(30, 20);
    EXPECT_TRUE(becomesTrue([&] { return box.shownWidth == 20.0; }));
    EXPECT_TRUE(becomesTrue([&] { return !box.redraw; }));
    box.killThread();
    box.setWindowSize(30, 20);
    EXPECT_FALSE(box.redraw);
}

// A change that comes while a picture is on its way, which takes long for so large and deep a one.
TEST_F(PictureBox, ANewSizeIsNotLostWhileAPictureIsShown) {
    cv::Mat large(3000, 4000, CV_16UC1, cv::Scalar(0));
    for (int i = 0; i < 4; ++i) {
        TPictureBox box(TPictureOf::kBox);
        box.sleepMs = 1;
        box.start();
        box.setImage(large, false);
        while (box.shownWidth == 0.0) std::this_thread::yield();
        box.setWindowSize(40, 30);
        EXPECT_TRUE(becomesTrue([&] { return box.shownWidth == 40.0; }));
    }
}

TEST_F(PictureBox, ASlowBoxIsDestroyedWithoutWaitingForItsPause) {
    const auto start = std::chrono::steady_clock::now();
    {
        TPictureBox box;
        box.sleepMs = 60000;
        box.start();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST_F(PictureBox, EveryOperationFromManyThreads) {
    TPictureBox box;
    TPictureBox other;
    box.setShowFrame(500);
    box.calShowFrame();
    box.selectRect = true;
    box.selectCircle = true;
    std::atomic<int> told{0};
    box.onSelectionChanged([&](const TSelectionChange&) { ++told; });
    const auto tell = [&](const TPicturePlace& place) { told += place.isInside ? 1 : 0; };
    box.onCursor(tell);
    cv::Mat first = grey(60, 40, 1);
    box.setImage(first, false);
    box.showImage();  // there is something to point at, whichever thread comes first
    box.start();
    other.start();
    std::vector<std::thread> threads;
    threads.emplace_back([&] {
        for (int i = 0; i < 200; ++i) {
            cv::Mat image = grey(60 + i % 7, 40, i);
            box.setImage(image, false);
        }
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 200; ++i) {
            box.setWindowSize(50 + i % 11, 60);
            box.setHandle(reinterpret_cast<void*>(std::uintptr_t(i % 3)));
            box.orig2ShowPoint({1, 1});
            TPictureBox::setSelectionRect({1, 1, 10, 10});
        }
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 200; ++i) {
            box.setDrawRect({1, 2, 3, 4, 1, {}});
            box.setDrawCircle({1, 2, 3, 1, {}});
            if (i % 5 == 0) box.clearDraw();
            if (i % 3 == 0) box.setOverlay(TOverlay().disc({20, 20}, i % 9));
            box.showGroup("", i % 2 == 0);
            box.onCursor(tell);
            box.showImage();
            other.showImageLast();
        }
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 200; ++i) {
            box.setFunction(i % 3 == 0 ? FUNC_EDIT_RECT : FUNC_ZOOM_PAN);
            box.mouseEvent(cv::EVENT_MOUSEWHEEL, 10, 10, 120 << 16);
            box.mouseEvent(cv::EVENT_LBUTTONDOWN, 10, 10, cv::EVENT_FLAG_LBUTTON);
            box.mouseEvent(cv::EVENT_MOUSEMOVE, 20 + i % 9, 30, cv::EVENT_FLAG_LBUTTON);
            box.mouseEvent(cv::EVENT_LBUTTONUP, 20, 30, 0);
        }
    });
    for (std::thread& thread : threads) thread.join();
    box.showImage();
    EXPECT_FALSE(box.display.empty());
    EXPECT_GT(told, 0);
}

}  // namespace
