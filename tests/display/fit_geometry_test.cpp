#include "orxFunctions/display/fit_geometry_internal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using orx::display::FitGeometry;
using orx::display::fitIntoWindow;
using orx::display::needsFit;
using orx::display::ViewMapping;
using orx::display::Zoom;

::testing::AssertionResult isPlaced(const FitGeometry& fit, double width, double height, double x, double y) {
    if (fit.shownWidth == width && fit.shownHeight == height && fit.offsetX == x && fit.offsetY == y)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << fit.shownWidth << " x " << fit.shownHeight << " at ("
                                         << fit.offsetX << ", " << fit.offsetY << ")";
}

TEST(FitGeometry, ExamplesWorkedOutByHand) {
    // Twice as wide as high: the full width, 400 high, 200 spare.
    EXPECT_TRUE(isPlaced(fitIntoWindow({800, 600}, {1000, 500}, true), 800, 400, 0, 100));
    // The same ratio: the window is filled.
    EXPECT_TRUE(isPlaced(fitIntoWindow({800, 600}, {1280, 960}, true), 800, 600, 0, 0));
    // Square in a wide window: 600 x 600 in the middle; in a high one as wide as that.
    EXPECT_TRUE(isPlaced(fitIntoWindow({800, 600}, {100, 100}, true), 600, 600, 100, 0));
    EXPECT_TRUE(isPlaced(fitIntoWindow({600, 800}, {100, 100}, true), 600, 600, 0, 100));
    // High in a wide window.
    EXPECT_TRUE(isPlaced(fitIntoWindow({800, 600}, {500, 1000}, true), 300, 600, 250, 0));
    // Without the ratio the window is filled.
    EXPECT_TRUE(isPlaced(fitIntoWindow({800, 600}, {1000, 500}, false), 800, 600, 0, 0));
}

TEST(FitGeometry, OnlyALyingImageWithSpareHeightLosesItsHalfPixel) {
    // 401 high of 600: 199 spare.
    EXPECT_TRUE(isPlaced(fitIntoWindow({802, 600}, {1000, 500}, true), 802, 401, 0, 99));
    // A standing image with spare width, and with spare height, keeps it.
    EXPECT_TRUE(isPlaced(fitIntoWindow({801, 600}, {500, 1000}, true), 300, 600, 250.5, 0));
    EXPECT_TRUE(isPlaced(fitIntoWindow({200, 501}, {500, 1000}, true), 200, 400, 0, 50.5));
    // A lying image with spare width keeps it.
    EXPECT_TRUE(isPlaced(fitIntoWindow({901, 300}, {1000, 500}, true), 600, 300, 150.5, 0));
}

TEST(FitGeometry, NothingIsFittedIntoATinyWindowOrIntoItsOwnSize) {
    EXPECT_FALSE(needsFit({5, 100}, {30, 20}));
    EXPECT_FALSE(needsFit({100, 5}, {30, 20}));
    EXPECT_FALSE(needsFit({0, 0}, {30, 20}));
    EXPECT_FALSE(needsFit({30, 20}, {30, 20}));
    EXPECT_TRUE(needsFit({6, 6}, {30, 20}));
    EXPECT_TRUE(isPlaced(fitIntoWindow({5, 100}, {30, 20}, true), 30, 20, 0, 0));
    EXPECT_TRUE(isPlaced(fitIntoWindow({30, 20}, {30, 20}, true), 30, 20, 0, 0));
}

// The rule again, as one reads it.
FitGeometry plainFit(int w, int h, int cols, int rows) {
    double shownWidth = 0, shownHeight = 0, x = 0, y = 0;
    if (cols <= rows) {
        const double r = double(cols) / rows;
        if (w < std::floor(h * r)) {
            shownWidth = w;
            shownHeight = std::floor(w / r);
            y = (h - std::floor(w / r)) * 0.5;
        } else {
            shownWidth = std::floor(h * r);
            shownHeight = h;
            x = (w - std::floor(h * r)) * 0.5;
        }
    } else {
        const double r = double(rows) / cols;
        if (h < std::floor(w * r)) {
            shownWidth = std::floor(h / r);
            shownHeight = h;
            x = (w - std::floor(h / r)) * 0.5;
        } else {
            shownWidth = w;
            shownHeight = std::floor(w * r);
            y = std::floor((h - std::floor(w * r)) * 0.5);
        }
    }
    return {shownWidth, shownHeight, x, y};
}

TEST(FitGeometry, EverySmallSizeFollowsTheRuleAndStaysInTheWindow) {
    for (int w = 6; w <= 33; ++w)
        for (int h = 6; h <= 33; ++h)
            for (int cols = 1; cols <= 40; ++cols)
                for (int rows = 1; rows <= 40; ++rows) {
                    if (w == cols && h == rows) continue;
                    const FitGeometry fit = fitIntoWindow({w, h}, {cols, rows}, true);
                    const FitGeometry plain = plainFit(w, h, cols, rows);
                    ASSERT_TRUE(
                        isPlaced(fit, plain.shownWidth, plain.shownHeight, plain.offsetX, plain.offsetY))
                        << cols << " x " << rows << " in " << w << " x " << h;
                    ASSERT_LE(fit.offsetX + fit.shownWidth, w);
                    ASSERT_LE(fit.offsetY + fit.shownHeight, h);
                    ASSERT_TRUE(fit.shownWidth == w || fit.shownHeight == h);
                }
}

TEST(ViewMapping, ScalesAndShiftsAndBack) {
    const ViewMapping mapping({800, 400, 0, 100}, {1000, 500}, Zoom(), {800, 600});
    EXPECT_EQ(mapping.toWindow({500, 250}), cv::Point2d(400, 300));
    EXPECT_EQ(mapping.toWindow({0, 0}), cv::Point2d(0, 100));
    EXPECT_EQ(mapping.toImage({400, 300}), cv::Point2d(500, 250));
    EXPECT_EQ(mapping.scale(), cv::Point2d(0.8, 0.8));
}

TEST(ViewMapping, AZoomEnlargesTheWindowAndSeesAPartOfIt) {
    Zoom zoom;
    zoom.width = 1600;
    zoom.height = 1800;
    zoom.panX = 30;
    zoom.panY = 50;
    const ViewMapping mapping({800, 400, 0, 100}, {1000, 500}, zoom, {800, 600});
    // (400, 300) unzoomed; twice as wide and three times as high, less the pan.
    EXPECT_EQ(mapping.toWindow({500, 250}), cv::Point2d(770, 850));
    EXPECT_EQ(mapping.toImage({770, 850}), cv::Point2d(500, 250));
    EXPECT_DOUBLE_EQ(mapping.scale().x, 1.6);
    EXPECT_DOUBLE_EQ(mapping.scale().y, 2.4);
}

TEST(ViewMapping, TheWayBackIsExact) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> size(6, 3000);
    std::uniform_real_distribution<double> part(-0.5, 1.5);
    for (int i = 0; i < 5000; ++i) {
        const cv::Size window(static_cast<int>(size(random)), static_cast<int>(size(random)));
        const cv::Size image(static_cast<int>(size(random)), static_cast<int>(size(random)));
        Zoom zoom;
        if (i % 2 == 0) {
            zoom.factor = 1.0 + 63.0 * std::abs(part(random)) / 1.5;
            zoom.width = window.width * zoom.factor;
            zoom.height = window.height * zoom.factor;
            zoom.panX = 0.5 * (zoom.width - window.width);
            zoom.panY = 0.25 * (zoom.height - window.height);
        }
        const FitGeometry fit = fitIntoWindow(window, image, i % 3 != 0);
        if (fit.shownWidth < 1 || fit.shownHeight < 1) continue;
        const ViewMapping mapping(fit, image, zoom, window);
        const cv::Point2d p(image.width * part(random), image.height * part(random));
        const cv::Point2d back = mapping.toImage(mapping.toWindow(p));
        ASSERT_NEAR(back.x, p.x, 1e-9 * image.width);
        ASSERT_NEAR(back.y, p.y, 1e-9 * image.height);
    }
}

}  // namespace
