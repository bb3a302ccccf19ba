// Picture boxes on their own: the process-wide state begins afresh, and no display is found.
#ifndef ORX_TESTS_DISPLAY_PICTURE_BOX_FIXTURE_H
#define ORX_TESTS_DISPLAY_PICTURE_BOX_FIXTURE_H

#include <gtest/gtest.h>

#include <opencv2/highgui.hpp>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/environment.h"
#include "tests/support/trace_log.h"

namespace test {

class HeadlessBox : public ::testing::Test {
  protected:
    void SetUp() override {
        setEnvironment("DISPLAY", "");  // means nothing on Windows, where the windows then stay unseen
        std::string text;
        int color = 0;
        while (orx::APPgetMessage(text, color)) continue;
        TPictureBox::setSelectionRect({});
        TPictureBox::setSelectionCircle({}, 0.0);
    }

    static cv::Mat grey(int cols, int rows, int level) { return {rows, cols, CV_8UC1, cv::Scalar(level)}; }
    static cv::Mat colour(int cols, int rows, const cv::Scalar& bgr) { return {rows, cols, CV_8UC3, bgr}; }
    static cv::Vec3b pixel(const TPictureBox& box, int x, int y) { return box.display.at<cv::Vec3b>(y, x); }

    TraceLog trace;
};

const cv::Vec3b kBackground(128, 128, 128);
const cv::Vec3b kGreen(0, 255, 0);

}  // namespace test

#endif
