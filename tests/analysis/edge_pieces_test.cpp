// Which pixels of corners an edge does not need to hang together.
#include "orxFunctions/analysis/edges/pieces.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// What is left of the middle one of these pixels, given around it.
bool isKept(const std::vector<cv::Point>& around) {
    orx::edges::EdgePixels edges;
    edges.map = cv::Mat::zeros(7, 7, CV_8U);
    const cv::Point middle(3, 3);
    edges.map.at<std::uint8_t>(middle) = 255;
    for (const cv::Point& p : around) edges.map.at<std::uint8_t>(middle + p) = 255;
    edges.pixels = {edges.map.ptr<std::uint8_t>(3) + 3};
    orx::edges::removeCornerPixels(edges);
    return edges.map.at<std::uint8_t>(middle) != 0;
}

TEST(EdgePieces, CornersAreCutWhereNothingElseHangsOnThem) {
    for (int turn = 0; turn < 4; ++turn) {
        SCOPED_TRACE(turn);
        const auto turned = [turn](cv::Point p) {
            for (int i = 0; i < turn; ++i) p = {-p.y, p.x};
            return p;
        };
        const cv::Point up = turned({0, -1});
        const cv::Point left = turned({-1, 0});
        const cv::Point down = turned({0, 1});
        const cv::Point outwards = turned({1, 1});
        EXPECT_FALSE(isKept({up, left})) << "a corner";
        EXPECT_TRUE(isKept({up, left, outwards})) << "a branch begins there";
        EXPECT_TRUE(isKept({up, down})) << "a straight line";
        EXPECT_TRUE(isKept({left})) << "an end";
        EXPECT_FALSE(isKept({up, left, down})) << "its neighbours hang together without it";
        EXPECT_FALSE(isKept({up, left, turned({-1, -1})})) << "a filled corner";
    }
}

}  // namespace
