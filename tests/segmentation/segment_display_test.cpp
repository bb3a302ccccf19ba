#include <gtest/gtest.h>

#include <cstdlib>

#include "segment_shapes.h"

namespace {

using namespace segment_shapes;
using orx::TSegemetCircle;
using orx::TSegemetLine;
using orx::TSegmentContour;

const cv::Vec3b kBlack(0, 0, 0);

int painted(const cv::Mat& image) { return cv::countNonZero(image.reshape(1)); }

TSegmentContour splitSlot() {
    TSegmentContour splitter;
    splitter.segmentContour(slot({400, 300}, 100, 300), {});
    return splitter;
}

TEST(SegmentDisplay, GreyImagesBecomeColourInPlaceAndEmptyOnesStay) {
    TSegmentContour splitter = splitSlot();
    cv::Mat grey = cv::Mat::zeros(600, 800, CV_8UC1);
    splitter.disPlayCirclesLines(grey, true, true, true, true, false);
    EXPECT_EQ(grey.type(), CV_8UC3);
    EXPECT_GT(painted(grey), 0);
    cv::Mat shown = cv::Mat::zeros(60, 80, CV_8UC1);
    splitter.disPlayResultCirclesLines(shown, false, true, true, true);
    EXPECT_EQ(shown.type(), CV_8UC3);
    EXPECT_EQ(painted(shown), 0);

    cv::Mat empty;
    splitter.disPlayCirclesLines(empty, true, true, true, true, true);
    splitter.disPlayContours(empty, true, true, true, true, true);
    splitter.disPlayKeyPoints(empty, true);
    splitter.disPlayResultCirclesLines(empty, true, true, true, true);
    TSegmentContour::disPlayCircleForTest(empty, {});
    EXPECT_TRUE(empty.empty());

    // Pixels that can't be converted or drawn.
    for (const int type : {CV_64FC1, CV_32SC1, CV_8SC1, CV_MAKETYPE(CV_8U, 5)}) {
        cv::Mat odd(60, 80, type, cv::Scalar::all(0));
        splitter.disPlayCirclesLines(odd, true, true, true, true, true);
        splitter.disPlayResultCirclesLines(odd, true, true, true, true);
        EXPECT_EQ(odd.type(), type);
    }
}

TEST(SegmentDisplay, FlagsChooseWhatIsDrawn) {
    TSegmentContour splitter = splitSlot();
    const auto drawn = [&](bool points, bool lines, bool arcs, bool indices) {
        cv::Mat image = cv::Mat::zeros(600, 800, CV_8UC3);
        splitter.disPlayCirclesLines(image, points, lines, arcs, indices, false);
        return image;
    };
    EXPECT_EQ(painted(drawn(false, false, false, false)), 0);
    const cv::Mat lines = drawn(false, true, false, false);
    EXPECT_NE(lines.at<cv::Vec3b>(200, 400), kBlack) << "on the upper side";
    EXPECT_EQ(lines.at<cv::Vec3b>(300, 650), kBlack) << "on the right arc";
    const cv::Mat arcs = drawn(false, false, true, false);
    EXPECT_EQ(arcs.at<cv::Vec3b>(200, 400), kBlack);
    EXPECT_GT(painted(arcs(cv::Rect(645, 280, 12, 40))), 0);
    EXPECT_GT(painted(drawn(true, false, false, false)), 0);
    EXPECT_GT(painted(drawn(false, false, false, true)), 0);
}

TEST(SegmentDisplay, ColoursRepeatAtEveryCall) {
    // Three draws of the generator seeded with 10086 for the first element: red, green, blue.
    cv::RNG rng(10086);
    const unsigned red = rng.next() & 255U;
    const unsigned green = rng.next() & 255U;
    const unsigned blue = rng.next() & 255U;
    for (int call = 0; call < 2; ++call) {
        cv::Mat image = cv::Mat::zeros(50, 50, CV_8UC3);
        TSegmentContour::disPlayLinesForTest(image, {chordOf(straight({5, 20}, {40, 20}))});
        EXPECT_EQ(image.at<cv::Vec3b>(20, 20),
                  cv::Vec3b(static_cast<uchar>(blue), static_cast<uchar>(green), static_cast<uchar>(red)));
    }
}

TEST(SegmentDisplay, LinesThatAnArcStandsForAreLeftOut) {
    TSegemetLine free = chordOf(straight({5, 20}, {40, 20}));
    TSegemetLine used = chordOf(straight({5, 30}, {40, 30}));
    used.usedByCircle = true;
    cv::Mat chordImage = cv::Mat::zeros(50, 50, CV_8UC1);
    TSegmentContour::disPlayLinesForTest(chordImage, {used, free});
    cv::Mat fitImage = cv::Mat::zeros(50, 50, CV_8UC1);
    TSegmentContour::disPlayFitLinesForTest(fitImage, {used, free});
    for (const cv::Mat& image : {chordImage, fitImage}) {
        EXPECT_NE(image.at<cv::Vec3b>(20, 20), kBlack);
        EXPECT_EQ(image.at<cv::Vec3b>(32, 20), kBlack);
        EXPECT_EQ(image.at<cv::Vec3b>(30, 20), kBlack);
    }
}

TEST(SegmentDisplay, KeyPointsCarryTheirIndices) {
    const cv::Mat keyPoints(std::vector<cv::Point>{{20, 20}, {60, 60}}, true);
    cv::Mat plain = cv::Mat::zeros(100, 100, CV_8UC1);
    cv::Mat indexed = cv::Mat::zeros(100, 100, CV_8UC1);
    TSegmentContour::disPlayKeyPointsForTest(plain, keyPoints, false);
    TSegmentContour::disPlayKeyPointsForTest(indexed, keyPoints, true);
    EXPECT_NE(plain.at<cv::Vec3b>(20, 22), kBlack);
    EXPECT_GT(painted(indexed), painted(plain));
    cv::Mat untouched = cv::Mat::zeros(100, 100, CV_8UC1);
    TSegmentContour::disPlayKeyPointsForTest(untouched, cv::Mat(2, 2, CV_32FC1), true);
    EXPECT_EQ(painted(untouched), 0) << "not key points";
}

TEST(SegmentDisplay, LinesThatGoFarOutsideAreDrawnInside) {
    constexpr int kFar = std::numeric_limits<int>::max();
    TSegemetLine line = chordOf(straight({5, 20}, {40, 20}));
    for (const auto& [from, to] : {std::pair<cv::Point, cv::Point>{{-100, -1}, {4, kFar}},
                                   {{1000000, kFar - 1}, {-16, -kFar - 1}},
                                   {{20, -(1 << 30)}, {20, 10}}}) {
        line.fitStartPoint = from;
        line.fitEndPoint = to;
        cv::Mat image = cv::Mat::zeros(40, 40, CV_8UC1);
        TSegmentContour::disPlayFitLinesForTest(image, {line});
        if (to.x == 20) {
            EXPECT_NE(image.at<cv::Vec3b>(5, 20), kBlack);
        }
    }
}

TEST(SegmentDisplay, DegenerateArcsAreNotDrawn) {
    TSegemetCircle infinite;
    infinite.radius = std::numeric_limits<double>::infinity();
    TSegemetCircle nan;
    nan.radius = std::numeric_limits<double>::quiet_NaN();
    TSegemetCircle negative;
    negative.radius = -1;
    cv::Mat image = cv::Mat::zeros(50, 50, CV_8UC1);
    TSegmentContour::disPlayCircleForTest(image, {infinite, nan, negative});
    EXPECT_EQ(painted(image), 0);
}

TEST(SegmentDisplay, WithoutADisplayItDrawsAndDoesNotFail) {
    if (std::getenv("DISPLAY") != nullptr) GTEST_SKIP() << "there may be a display";
    TSegmentContour splitter = splitSlot();
    cv::Mat image = cv::Mat::zeros(600, 800, CV_8UC1);
    splitter.disPlayCirclesLines(image, true, true, true, true, true);
    splitter.disPlayContours(image, true, true, true, true, true);
    splitter.disPlayResultCirclesLines(image, true, false, false, false);
    TSegmentContour::disPlayContoursForTest(image, {}, {chordOf(straight({5, 20}, {40, 20}))}, true, true);
    EXPECT_NE(image.at<cv::Vec3b>(20, 20), kBlack);
}

}  // namespace
