// Shapes over the picture: their places, what they let through, and that they belong to their picture.
#include <atomic>
#include <cmath>
#include <limits>
#include <thread>

#include "tests/display/picture_box_fixture.h"

namespace {

const cv::Vec3b kBlack(0, 0, 0);
const cv::Vec3b kWhitePixel(255, 255, 255);

// A black image of 400 x 300 that is seen as it is, in a box of its own.
class PictureOverlay : public test::HeadlessBox {
  protected:
    void SetUp() override {
        HeadlessBox::SetUp();
        box.setWindowSize(400, 300);
    }
    void show(const TOverlay& overlay) {
        ASSERT_TRUE(box.setPicture(image, overlay));
        box.showImage();
    }
    static TOverlay white(int thickness = 1, double opacity = 1.0) {
        TOverlay overlay;
        overlay.setStyle({cv::Scalar::all(255), thickness, opacity});
        return overlay;
    }
    // The middle of the light in a part of what is shown, in window pixels.
    cv::Point2d middleOfLight(const cv::Rect& part) const {
        cv::Mat light;
        cv::extractChannel(box.display(part), light, 1);
        const cv::Moments m = cv::moments(light);
        return {part.x + m.m10 / m.m00, part.y + m.m01 / m.m00};
    }

    TPictureBox box{TPictureOf::kBox};
    cv::Mat image = colour(400, 300, {});
};

TEST_F(PictureOverlay, StrokesStandBetweenThePixels) {
    for (const int thickness : {1, 3})
        for (const double fraction : {0.0, 0.25, 0.5, 0.75}) {
            SCOPED_TRACE(testing::Message() << thickness << " thick at " << fraction);
            show(white(thickness).line({100 + fraction, -50}, {100 + fraction, 400}));
            EXPECT_NEAR(middleOfLight({80, 100, 40, 1}).x, 100 + fraction, 0.17);
            show(white(thickness).cross({200, 150 + fraction}, 20));
            EXPECT_NEAR(middleOfLight({205, 130, 1, 40}).y, 150 + fraction, 0.17);
            show(white(thickness).circle({200 + fraction, 150}, 50));
            EXPECT_NEAR(middleOfLight({0, 0, 400, 300}).x, 200 + fraction, 0.17);
        }
}

TEST_F(PictureOverlay, AShapeCoversTheSquaresOfThePixelsItNamesAtAnyZoom) {
    // One white pixel, and a disc about its middle: both have one middle in the window.
    image.at<cv::Vec3b>(120, 213) = kWhitePixel;
    for (const int notches : {0, 3, 9, 13}) {
        SCOPED_TRACE(notches);
        box.setPicture(image, {});
        box.showImageLast();
        box.mouseEvent(cv::EVENT_MOUSEWHEEL, 213, 120, static_cast<int>(unsigned(notches * 120) << 16U));
        box.showImage();
        const cv::Point2d pixelMiddle = middleOfLight({0, 0, 400, 300});
        cv::Mat black = colour(400, 300, {});
        box.setPicture(black, white().disc({213, 120}, 3.0));
        box.showImage();
        const cv::Point2d discMiddle = middleOfLight({0, 0, 400, 300});
        EXPECT_NEAR(discMiddle.x, pixelMiddle.x, 0.3);
        EXPECT_NEAR(discMiddle.y, pixelMiddle.y, 0.3);
    }
}

TEST_F(PictureOverlay, ShapesFollowTheFit) {
    image = colour(1000, 500, {});
    box.setWindowSize(800, 601);
    // 800 x 400 from row 100 on; the scale is 0.8.
    show(white().line({500.3, 100}, {500.3, 400}).disc({200, 250}, 50.0));
    EXPECT_NEAR(middleOfLight({390, 300, 20, 1}).x, (500.3 + 0.5) * 0.8 - 0.5, 0.13);
    const cv::Point2d disc = middleOfLight({0, 100, 380, 400});
    EXPECT_NEAR(disc.x, 200.5 * 0.8 - 0.5, 0.05);
    EXPECT_NEAR(disc.y, 250.5 * 0.8 - 0.5 + 100, 0.05);
    const double area = cv::sum(box.display(cv::Rect(0, 100, 380, 400)))[1] / 255.0;
    EXPECT_NEAR(area, CV_PI * 40 * 40, 0.02 * CV_PI * 40 * 40 + 130);  // smoothed over the edge
}

TEST_F(PictureOverlay, OpacityMixesAndMeetingStrokesDoNotMixTwice) {
    image = colour(400, 300, {40, 80, 0});
    TOverlay overlay;
    overlay.setStyle({{240, 80, 200}, 1, 0.25}).area({{50, 50}, {150, 50}, {150, 150}, {50, 150}});
    overlay.setStyle({{240, 80, 200}, 9, 0.25}).polyline({{200, 50}, {300, 50}, {300, 150}});
    show(overlay);
    const cv::Vec3b mixed(40 + 200 / 4, 80, 200 / 4);
    for (const cv::Point at : {cv::Point(100, 100), cv::Point(52, 148), cv::Point(250, 50),
                               cv::Point(300, 50), cv::Point(300, 100)})
        EXPECT_LE(cv::norm(pixel(box, at.x, at.y), mixed, cv::NORM_INF), 1.0) << at;
    EXPECT_EQ(pixel(box, 250, 100), cv::Vec3b(40, 80, 0));
    // Where two shapes lie over each other they do: a quarter of what is left.
    show(overlay.area({{50, 50}, {150, 50}, {150, 150}, {50, 150}}));
    EXPECT_NEAR(pixel(box, 100, 100)[2], 200 * (1 - 0.75 * 0.75), 1.0);
    EXPECT_EQ(cv::norm(image, colour(400, 300, {40, 80, 0}), cv::NORM_INF), 0.0);  // the host's pixels
    show(white(1, 0.0).area({{0, 0}, {400, 0}, {400, 300}, {0, 300}}));
    EXPECT_EQ(pixel(box, 100, 100), cv::Vec3b(40, 80, 0));
}

TEST_F(PictureOverlay, WhatReachesFarOutsideIsSeenInside) {
    const double away = 1e9;
    show(white().line({-away, 100}, {away, 100}).line({-away, -away + 150}, {away, away + 150}));
    EXPECT_GT(pixel(box, 5, 100)[0], 200);
    EXPECT_GT(pixel(box, 395, 100)[0], 200);
    EXPECT_GT(pixel(box, 40, 190)[0], 200);
    show(white().area({{-away, -away}, {200, -away}, {200, away}, {-away, away}}));
    EXPECT_EQ(pixel(box, 0, 0), kWhitePixel);
    EXPECT_EQ(pixel(box, 198, 299), kWhitePixel);
    EXPECT_EQ(pixel(box, 203, 150), kBlack);
    show(white(1, 0.5).circle({200, 150 + 90000.0}, 90000.0));
    EXPECT_NEAR(pixel(box, 200, 150)[0], 128, 40);
    EXPECT_EQ(pixel(box, 200, 160), kBlack);
}

TEST_F(PictureOverlay, AnAreaThatCrossesItselfIsEvenOdd) {
    // A star of five: its middle is outside by the even-odd rule.
    std::vector<cv::Point2d> star;
    for (int i = 0; i < 5; ++i) {
        const double angle = i * 4.0 * CV_PI / 5.0 - CV_PI / 2.0;
        star.emplace_back(200 + 100 * std::cos(angle), 150 + 100 * std::sin(angle));
    }
    show(white().area(star));
    EXPECT_EQ(pixel(box, 200, 150), kBlack);
    EXPECT_EQ(pixel(box, 200, 80), kWhitePixel);
}

TEST_F(PictureOverlay, ArrowsPointAndTextsStandOnTheirPlace) {
    show(white().arrow({50, 100}, {150, 100}));
    cv::Mat mask;
    cv::inRange(box.display, cv::Scalar::all(100), cv::Scalar::all(255), mask);
    cv::Rect seen = cv::boundingRect(mask);
    EXPECT_NEAR(seen.br().x - 1, 150, 1);
    EXPECT_NEAR(seen.x, 50, 1);
    EXPECT_GT(cv::countNonZero(mask.col(143)), 2);  // the head
    EXPECT_LE(cv::countNonZero(mask.col(80)), 1);   // the shaft
    for (const double opacity : {1.0, 0.999}) {
        show(white(1, opacity).text({60, 200}, "HE", 20));
        cv::inRange(box.display, cv::Scalar::all(100), cv::Scalar::all(255), mask);
        seen = cv::boundingRect(mask);
        EXPECT_NEAR(seen.x, 60, 4);
        EXPECT_NEAR(seen.br().y, 200, 2);
        EXPECT_NEAR(seen.height, 20, 3);
    }
}

TEST_F(PictureOverlay, GroupsAreSwitched) {
    TOverlay overlay = white();
    overlay.setGroup("left").disc({100, 150}, 20).setGroup("right").disc({300, 150}, 20);
    show(overlay);
    box.showGroup("left", false);
    EXPECT_TRUE(box.redraw);
    box.showImage();
    EXPECT_EQ(pixel(box, 100, 150), kBlack);
    EXPECT_EQ(pixel(box, 300, 150), kWhitePixel);
    show(overlay);  // in the next overlay, too
    EXPECT_EQ(pixel(box, 100, 150), kBlack);
    EXPECT_FALSE(box.isGroupShown("left"));
    EXPECT_TRUE(box.isGroupShown("right"));
    box.showGroup("left", true);
    box.showImage();
    EXPECT_EQ(pixel(box, 100, 150), kWhitePixel);
}

TEST_F(PictureOverlay, ItLiesBetweenTheDrawingsAndTheSelection) {
    show(white().area({{50, 50}, {150, 50}, {150, 150}, {50, 150}}));
    box.setDrawRect({0, 0, 200, 200, -1, {0, 0, 255}});
    box.selectRect = true;
    box.setSelectedRect({100, 20, 50, 80});
    box.showImage();
    EXPECT_EQ(pixel(box, 20, 20), cv::Vec3b(0, 0, 255));
    EXPECT_EQ(pixel(box, 60, 60), kWhitePixel);
    EXPECT_EQ(pixel(box, 100, 60), test::kGreen);
    box.selectRect = false;
    box.clearDraw();
    box.showImage();
    EXPECT_EQ(pixel(box, 20, 20), kBlack);
    EXPECT_EQ(pixel(box, 60, 60), kWhitePixel);
    EXPECT_EQ(box.getOverlay().shapes().size(), 1U);
    box.showImageLast();
    EXPECT_EQ(pixel(box, 60, 60), kBlack);
    box.setOverlay({});
    EXPECT_TRUE(box.redraw);
    box.showImage();
    EXPECT_EQ(pixel(box, 60, 60), kBlack);
}

TEST_F(PictureOverlay, ARefusedPictureKeepsBoth) {
    show(white().disc({100, 100}, 20));
    const int sizes[] = {3, 3, 3};
    EXPECT_FALSE(box.setPicture(cv::Mat(3, sizes, CV_8UC1, cv::Scalar(0)), {}));
    EXPECT_FALSE(box.setPicture({}, {}));
    box.showImage();
    EXPECT_EQ(pixel(box, 100, 100), kWhitePixel);
    EXPECT_EQ(trace.count("设置图片失败!"), 1);
}

TEST_F(PictureOverlay, AbsurdShapesAreHarmless) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double v : {nan, inf, -inf, 1e300, -1e300, 1e12, 0.0, -1.0})
        for (const double opacity : {1.0, 0.5, nan, inf})
            for (const int thickness : {-5, 0, 1, 255, std::numeric_limits<int>::max()}) {
                TOverlay overlay;
                overlay.setStyle({{nan, v, -v}, thickness, opacity});
                overlay.line({v, 1}, {1, v}).polyline({}).polyline({{v, v}}).area({}).area({{1, 1}, {v, v}});
                overlay.area({{1, 1}, {v, v}, {3, v}, {v, 9}}).circle({v, 3}, 5).circle({3, 3}, v);
                overlay.disc({3, 3}, v).disc({v, v}, 3).arrow({v, v}, {3, 3}).arrow({3, 3}, {3, 3});
                overlay.cross({v, 3}, 5).cross({3, 3}, v).text({v, 3}, "a", 9).text({3, 3}, "a", v);
                overlay.text({3, 3}, "\xB2\xE2", 5).text({3, 3}, "", 5).rectangle({v, v, v, v});
                show(overlay);
            }
    EXPECT_EQ(cv::norm(image, cv::NORM_INF), 0.0);
}

// The grey level of the picture is said again by the colour of its disc.
TEST_F(PictureOverlay, NoPictureIsShownWithTheShapesOfAnother) {
    TPictureBox shared;
    for (TPictureBox* const each : {&box, &shared}) {
        each->setWindowSize(100, 75);
        std::atomic<bool> isOver{false};
        const auto hand = [&](int level) {
            TOverlay overlay;
            overlay.setStyle({cv::Scalar::all(255 - level), 1, 1.0}).disc({200, 150}, 100);
            each->setPicture(colour(400, 300, cv::Scalar::all(level)), overlay);
        };
        hand(0);
        std::thread feeder([&] {
            for (int i = 0; !isOver; ++i) hand(i % 100);
        });
        // Drawings that come and go meanwhile are never drawn on the pixels handed in.
        std::thread drawer([&] {
            while (!isOver) {
                each->setDrawRect({0, 0, 20, 20, 1, {}});
                each->clearDraw();
            }
        });
        for (int i = 0; i < 300; ++i) {
            cv::Mat seen;
            each->showImage();
            ASSERT_TRUE(each->getShownImage(seen));
            ASSERT_EQ(seen.at<cv::Vec3b>(70, 90)[0] + seen.at<cv::Vec3b>(37, 50)[0], 255);
        }
        isOver = true;
        feeder.join();
        drawer.join();
    }
}

}  // namespace
