// Where no window can be shown.
#include <gtest/gtest.h>

#include <cstdlib>

#include "segment_shapes.h"
#include "tests/support/refusal_check.h"

namespace {

using orx::TSegmentContour;
using orx::test::refusedWith;

TEST(SegmentWindow, IsRefusedWhereThereIsNoDisplayAndTheDrawingStands) {
    ASSERT_EQ(setenv("QT_QPA_PLATFORM", "wayland", 1), 0);  // of which nobody knows whether it is there
    TSegmentContour splitter;
    splitter.segmentContour(segment_shapes::slot({400, 300}, 100, 300), {});
    const auto drawn = [](const cv::Mat& image) { return cv::countNonZero(image.reshape(1)) > 0; };
    cv::Mat image = cv::Mat::zeros(600, 800, CV_8UC3);
    EXPECT_TRUE(refusedWith(orx::rcNoDisplay, "disPlayCirclesLines",
                            [&] { splitter.disPlayCirclesLines(image, true, true, true, true, true); }));
    EXPECT_TRUE(drawn(image));
    image = cv::Mat::zeros(600, 800, CV_8UC3);
    EXPECT_TRUE(refusedWith(orx::rcNoDisplay, "disPlayContours",
                            [&] { splitter.disPlayContours(image, true, true, true, true, true); }));
    EXPECT_TRUE(drawn(image));
    EXPECT_TRUE(refusedWith(orx::rcNoDisplay, "disPlayContoursForTest",
                            [&] { TSegmentContour::disPlayContoursForTest(image, {}, {}, true, true); }));
    EXPECT_TRUE(refusedWith(orx::rcNoDisplay, "disPlayResultCirclesLines",
                            [&] { splitter.disPlayResultCirclesLines(image, true, true, true, true); }));
}

}  // namespace
