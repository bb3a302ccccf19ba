// What the host is told of the mouse.
#include <limits>
#include <stdexcept>
#include <vector>

#include "tests/display/picture_box_fixture.h"

namespace {

constexpr int kLeft = cv::EVENT_FLAG_LBUTTON;

// An image of 1000 x 500 in a window of 800 x 600: the scale is 0.8, and 100 rows are above it.
class PictureEvents : public test::HeadlessBox {
  protected:
    void SetUp() override {
        HeadlessBox::SetUp();
        image = colour(1000, 500, {10, 20, 30});
        image.at<cv::Vec3b>(250, 500) = {100, 50, 200};
        box.setWindowSize(800, 600);
        box.setImage(image, false);
        box.onSelectionChanged([this](const TSelectionChange& change) { changes.push_back(change); });
        box.onCursor([this](const TPicturePlace& place) { places.push_back(place); });
        box.onClick([this](const TPictureClick& click) { clicks.push_back(click); });
    }
    void press(int x, int y) { box.mouseEvent(cv::EVENT_LBUTTONDOWN, x, y, kLeft); }
    void move(int x, int y, int flags = kLeft) { box.mouseEvent(cv::EVENT_MOUSEMOVE, x, y, flags); }
    void release(int x, int y) { box.mouseEvent(cv::EVENT_LBUTTONUP, x, y, 0); }

    cv::Mat image;
    TPictureBox box{TPictureOf::kBox};
    std::vector<TSelectionChange> changes;
    std::vector<TPicturePlace> places;
    std::vector<TPictureClick> clicks;
};

TEST_F(PictureEvents, BeforeAPictureIsShownNothingIsTold) {
    press(400, 300);
    move(500, 400);
    release(500, 400);
    EXPECT_TRUE(changes.empty() && places.empty() && clicks.empty());
}

TEST_F(PictureEvents, TheCursorHasAPlaceAndAValue) {
    box.showImage();
    move(400, 300, 0);
    ASSERT_EQ(places.size(), 1U);
    EXPECT_TRUE(places[0].isInside);
    // The middle of window pixel 400 is 400.5 / 0.8 from the left edge, of which half a pixel is before (0,
    // 0).
    EXPECT_NEAR(places[0].point.x, 400.5 / 0.8 - 0.5, 1e-9);
    EXPECT_NEAR(places[0].point.y, 200.5 / 0.8 - 0.5, 1e-9);
    EXPECT_EQ(places[0].pixel, cv::Point(500, 250));
    EXPECT_EQ(places[0].value, cv::Scalar(100, 50, 200));
    EXPECT_NEAR(places[0].grey, 0.114 * 100 + 0.587 * 50 + 0.299 * 200, 1e-9);
    for (const cv::Point outside : {cv::Point(400, 99), cv::Point(400, 500), cv::Point(-1, 300)}) {
        move(outside.x, outside.y, 0);
        EXPECT_FALSE(places.back().isInside) << outside;
        EXPECT_EQ(places.back().value, cv::Scalar());
    }
    for (const cv::Point inside : {cv::Point(0, 100), cv::Point(799, 499)}) {
        move(inside.x, inside.y, 0);
        EXPECT_TRUE(places.back().isInside) << inside;
    }
}

TEST_F(PictureEvents, ValuesAreTheImagesOwn) {
    box.showImage();
    for (const int depth : {CV_16U, CV_32F, CV_64F, CV_16F}) {
        cv::Mat deep(500, 1000, CV_32FC1, cv::Scalar(0.0));
        deep.at<float>(250, 500) = 250.0F;
        deep.convertTo(deep, depth);
        box.setImage(deep, false);
        move(400, 300, 0);
        EXPECT_EQ(places.back().grey, 250.0) << depth;
        EXPECT_EQ(places.back().value, cv::Scalar(250.0));
    }
}

TEST_F(PictureEvents, ARectangleIsToldWhileItIsDrawnAndAtItsEnd) {
    box.showImage();
    box.setFunction(FUNC_EDIT_RECT);
    for (const bool isSeen : {false, true}) {
        box.setSelectedRect({});
        box.selectRect = isSeen;
        changes.clear();
        press(80, 180);
        EXPECT_TRUE(changes.empty());
        move(240, 260);
        move(400, 420);
        release(400, 420);
        ASSERT_EQ(changes.size(), 3U);
        EXPECT_TRUE(changes[0].hasRect && changes[0].isDragging && changes[1].isDragging);
        EXPECT_LT(cv::norm(changes[0].rect.br() - cv::Point2d(300, 200)), 1e-9);
        EXPECT_FALSE(changes[2].isDragging);
        EXPECT_FALSE(changes[2].hasCircle);
        EXPECT_LT(cv::norm(changes[2].rect.tl() - cv::Point2d(100, 100)), 1e-9);
        EXPECT_LT(cv::norm(changes[2].rect.br() - cv::Point2d(500, 400)), 1e-9);
    }
    // A click leaves it, and a drag that is too small takes nothing away either.
    changes.clear();
    press(700, 450);
    release(700, 450);
    move(300, 300, 0);
    EXPECT_TRUE(changes.empty());
}

TEST_F(PictureEvents, ACircleIsToldAndPanningIsNot) {
    box.showImage();
    box.setFunction(FUNC_EDIT_CIRCLE);
    press(400, 300);
    move(480, 300);
    release(480, 300);
    ASSERT_EQ(changes.size(), 2U);
    EXPECT_TRUE(changes[1].hasCircle);
    EXPECT_EQ(changes[1].center, cv::Point(500, 250));
    EXPECT_NEAR(changes[1].radius, 100.0, 1e-9);
    box.setFunction(FUNC_ZOOM_PAN);
    box.mouseEvent(cv::EVENT_MOUSEWHEEL, 400, 300, static_cast<int>(360U << 16U));
    press(400, 300);
    move(410, 300);
    release(410, 300);
    box.setSelectedCircle({100, 100}, 10);
    EXPECT_EQ(changes.size(), 2U);
}

TEST_F(PictureEvents, ClicksAreButtonsThatStay) {
    box.showImage();
    press(400, 300);
    move(404, 296);
    release(404, 296);
    ASSERT_EQ(clicks.size(), 1U);
    EXPECT_EQ(clicks[0].button, kLeft);
    EXPECT_FALSE(clicks[0].isDouble);
    EXPECT_EQ(clicks[0].place.pixel, cv::Point(500, 250));
    press(400, 300);
    move(405, 300);
    release(400, 300);  // was away
    press(400, 300);
    release(410, 300);
    release(400, 300);
    press(std::numeric_limits<int>::min(), 300);
    release(std::numeric_limits<int>::max(), 300);  // as far away as it gets
    EXPECT_EQ(clicks.size(), 1U);
    box.mouseEvent(cv::EVENT_LBUTTONDBLCLK, 400, 300, kLeft);
    release(400, 300);
    box.mouseEvent(cv::EVENT_RBUTTONDOWN, 8, 9, cv::EVENT_FLAG_RBUTTON | cv::EVENT_FLAG_CTRLKEY);
    box.mouseEvent(cv::EVENT_RBUTTONUP, 8, 9, cv::EVENT_FLAG_CTRLKEY);
    ASSERT_EQ(clicks.size(), 3U);
    EXPECT_TRUE(clicks[1].isDouble);
    EXPECT_EQ(clicks[2].button, cv::EVENT_FLAG_RBUTTON);
    EXPECT_EQ(clicks[2].flags, cv::EVENT_FLAG_CTRLKEY);
    EXPECT_FALSE(clicks[2].place.isInside);
}

TEST_F(PictureEvents, CallbacksMayCallTheBoxThrowAndBeTakenAway) {
    box.showImage();
    box.setFunction(FUNC_EDIT_RECT);
    box.onSelectionChanged([&](const TSelectionChange& change) {
        changes.push_back(change);
        box.setOverlay(TOverlay().rectangle(change.rect));
        box.showImage();
        box.setFunction(FUNC_ZOOM_PAN);
        box.onSelectionChanged({});
        throw std::runtime_error("the host's");
    });
    press(80, 180);
    move(240, 260);
    release(240, 260);
    EXPECT_EQ(changes.size(), 1U);
    EXPECT_EQ(trace.countStartingWith("图片框回调异常:"), 1);
    EXPECT_EQ(box.getOverlay().shapes().size(), 1U);
    // The mode ended the drag: pictures are shown again.
    cv::Mat next = colour(1000, 500, {0, 0, 255});
    box.setOverlay({});
    box.setImage(next, false);
    box.showImage();
    EXPECT_EQ(pixel(box, 400, 300), cv::Vec3b(0, 0, 255));
}

}  // namespace
