// The parts of a run on cameras that need none.
#include <gtest/gtest.h>

#include "inspection/live/live_counts.h"
#include "inspection/live/live_view.h"
#include "inspection/run/camera_feed.h"

namespace {

using inspection::CameraFeed;

TEST(NewestPictures, TheOldestOfTooManyGoes) {
    inspection::NewestPictures pictures(3);
    std::string gone;
    for (const char* name : {"a", "b", "c"}) EXPECT_EQ(pictures.add(name), "");
    for (const char* name : {"d", "e", "f", "g"}) gone += pictures.add(name);
    EXPECT_EQ(gone, "abcd");
}

TEST(LiveCount, TellsWhatWasNotMeasuredBesideWhatFailed) {
    inspection::LiveCount count;
    EXPECT_EQ(count.text(), "0 pass, 0 fail, 0 undecided, 0 not measured");
    for (const orx::TVerdict verdict :
         {orx::vdPass, orx::vdPass, orx::vdFail, orx::vdNotMeasured, orx::vdNoLimits})
        count.add(verdict);
    EXPECT_EQ(count.measured(), 5);
    EXPECT_EQ(count.text(), "2 pass, 1 fail, 0 undecided, 1 not measured, 1 no limits");
}

TEST(LiveView, PicturesOfSeveralCamerasLieSideBySide) {
    const cv::Mat red(40, 60, CV_8UC3, cv::Scalar(0, 0, 200));
    const cv::Mat green(50, 30, CV_8UC3, cv::Scalar(0, 200, 0));
    const cv::Mat all = inspection::sideBySide({red, cv::Mat(), green});
    ASSERT_EQ(all.size(), cv::Size(120, 100));
    EXPECT_EQ(cv::norm(all(cv::Rect(0, 0, 60, 40)), red, cv::NORM_INF), 0);
    EXPECT_EQ(cv::norm(all(cv::Rect(0, 50, 30, 50)), green, cv::NORM_INF), 0);
    EXPECT_TRUE(inspection::sideBySide({cv::Mat(), cv::Mat()}).empty());
}

// What the driver gives again while nothing newer has come must not count twice.
TEST(CameraFeed, GivesEachPictureOnceWhereThatIsAsked) {
    const auto soon = [] { return std::chrono::steady_clock::now() + std::chrono::milliseconds(1); };
    cv::Mat black(20, 30, CV_8UC1, cv::Scalar(0));
    cv::Mat first(20, 30, CV_8UC1, cv::Scalar(90));
    cv::Mat second = first.clone();
    second.at<uchar>(19, 29) = 91;
    cv::Mat taken;
    int camera = -1;
    {
        CameraFeed feed(true);
        for (cv::Mat* picture : {&black, &black, &first, &first}) CameraFeed::receive(*picture, 4);
        ASSERT_TRUE(feed.take(soon(), taken, camera));
        EXPECT_EQ(camera, 4);
        EXPECT_EQ(taken.data, first.data);
        cv::Mat again = first.clone();
        CameraFeed::receive(again, 4);
        EXPECT_FALSE(feed.take(soon(), taken, camera));
        CameraFeed::receive(again, 5);  // another camera's
        EXPECT_TRUE(feed.take(soon(), taken, camera));
        CameraFeed::receive(second, 4);
        CameraFeed::receive(black, 4);  // after the first, dark is a picture
        EXPECT_TRUE(feed.take(soon(), taken, camera));
        EXPECT_EQ(taken.data, black.data);
        EXPECT_EQ(feed.count(4).delivered, 3);
        EXPECT_EQ(feed.count(4).dropped, 1);
        EXPECT_EQ(feed.count(4).repeated, 4);
    }
    CameraFeed all;
    for (cv::Mat* picture : {&black, &first, &first}) CameraFeed::receive(*picture, 0);
    EXPECT_EQ(all.count(0).delivered, 3);
}

TEST(CameraFeed, BelievesTheNumbersOfADriverThatHasThem) {
    cv::Mat black(20, 30, CV_8UC1, cv::Scalar(0));
    CameraFeed feed(true);
    orx::TFrame frame;
    frame.camera = 2;
    frame.isNumbered = true;
    CameraFeed::receive(black, 2);  // before the first frame
    EXPECT_EQ(feed.count(2).delivered, 0);
    for (frame.number = 1; frame.number <= 3; ++frame.number) {
        CameraFeed::announce(frame, &feed);
        CameraFeed::receive(black, 2);  // all alike to the byte: a picture each
        cv::Mat noisy(20, 30, CV_8UC1, cv::Scalar(7 * static_cast<double>(frame.number)));
        CameraFeed::receive(noisy, 2);  // not announced: given again
    }
    EXPECT_EQ(feed.count(2).delivered, 3);
    EXPECT_EQ(feed.count(2).repeated, 4);
    frame.isNumbered = false;  // another driver: each fetch is announced
    for (int i = 0; i < 2; ++i) {
        CameraFeed::announce(frame, &feed);
        cv::Mat grey(20, 30, CV_8UC1, cv::Scalar(90));
        CameraFeed::receive(grey, 2);
    }
    EXPECT_EQ(feed.count(2).delivered, 4);
    EXPECT_EQ(feed.count(2).repeated, 5);
}

}  // namespace
