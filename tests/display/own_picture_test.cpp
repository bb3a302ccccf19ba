// Boxes with pictures of their own, beside those that share the process's.
#include "tests/display/picture_box_fixture.h"

namespace {

// Two boxes of their own and one that shares, in windows of 400 x 300 each, with images of equal size.
class OwnPictures : public test::HeadlessBox {
  protected:
    void SetUp() override {
        HeadlessBox::SetUp();
        for (TPictureBox* const box : {&first, &second, &shared}) box->setWindowSize(400, 300);
        first.setImage(red, false);
        second.setImage(blue, false);
        shared.setImage(white, false);
        showAll();
        shared.showImageLast();  // and no zoom
    }
    void showAll() {
        for (TPictureBox* const box : {&first, &second, &shared}) box->showImage();
    }
    static void zoomIn(TPictureBox& box) {
        box.mouseEvent(cv::EVENT_MOUSEWHEEL, 100, 100, static_cast<int>(360U << 16U));
    }
    static void dragFrom(TPictureBox& box, cv::Point from, cv::Point to) {
        box.mouseEvent(cv::EVENT_LBUTTONDOWN, from.x, from.y, cv::EVENT_FLAG_LBUTTON);
        box.mouseEvent(cv::EVENT_MOUSEMOVE, to.x, to.y, cv::EVENT_FLAG_LBUTTON);
    }

    cv::Mat red = colour(800, 600, {0, 0, 255});
    cv::Mat blue = colour(800, 600, {255, 0, 0});
    cv::Mat white = colour(800, 600, {255, 255, 255});
    TPictureBox first{TPictureOf::kBox};
    TPictureBox second{TPictureOf::kBox};
    TPictureBox shared;
};

TEST_F(OwnPictures, EachShowsItsOwn) {
    EXPECT_EQ(pixel(first, 200, 150), cv::Vec3b(0, 0, 255));
    EXPECT_EQ(pixel(second, 200, 150), cv::Vec3b(255, 0, 0));
    EXPECT_EQ(pixel(shared, 200, 150), cv::Vec3b(255, 255, 255));
    TPictureBox sharing;
    sharing.showImage();
    EXPECT_EQ(sharing.display.data, white.data);
    cv::Mat seen;
    ASSERT_TRUE(first.getShownImage(seen));
    EXPECT_EQ(seen.at<cv::Vec3b>(150, 200), cv::Vec3b(0, 0, 255));
    ASSERT_TRUE(TPictureBox::getLastShownImage(seen));
    EXPECT_EQ(seen.at<cv::Vec3b>(150, 200), cv::Vec3b(255, 255, 255));
    EXPECT_FALSE(TPictureBox(TPictureOf::kBox).getShownImage(seen));
}

TEST_F(OwnPictures, TheyAreNotCountedAndTheirWindowsHaveNamesOfTheirOwn) {
    EXPECT_EQ(TPictureBox::mCount, 1);
    EXPECT_EQ(shared.getCvWinName(), "pictrueBox11");
    EXPECT_EQ(first.getCvWinName().rfind("pictureBoxOwn", 0), 0U);
    EXPECT_NE(first.getCvWinName(), second.getCvWinName());
}

TEST_F(OwnPictures, ZoomsAreTheirOwn) {
    const cv::Point2d plain = shared.orig2ShowPoint({700, 100});
    zoomIn(first);
    EXPECT_NE(first.orig2ShowPoint({700, 100}), plain);
    EXPECT_EQ(second.orig2ShowPoint({700, 100}), plain);
    EXPECT_EQ(shared.orig2ShowPoint({700, 100}), plain);
    const cv::Point2d zoomed = first.orig2ShowPoint({700, 100});
    shared.showImageLast();
    EXPECT_EQ(first.orig2ShowPoint({700, 100}), zoomed);
}

TEST_F(OwnPictures, SelectionsAreTheirOwn) {
    first.setSelectedRect({10, 20, 30, 40});
    second.setSelectedCircle({100, 110}, 50.0);
    shared.setSelectedRect({1, 2, 3, 4});
    cv::Rect2d rect;
    cv::Point centre;
    double radius = 0.0;
    ASSERT_TRUE(first.getSelectedRect(rect));
    EXPECT_EQ(rect, cv::Rect2d(10, 20, 30, 40));
    EXPECT_FALSE(second.getSelectedRect(rect));
    ASSERT_TRUE(second.getSelectedCircle(centre, radius));
    EXPECT_EQ(centre, cv::Point(100, 110));
    EXPECT_EQ(radius, 50.0);
    EXPECT_FALSE(TPictureBox::getSelectionCircle(centre, radius));
    ASSERT_TRUE(TPictureBox::getSelectionRect(rect));
    EXPECT_EQ(rect, cv::Rect2d(1, 2, 3, 4));
    EXPECT_TRUE(shared.redraw);
}

// Where getSelectionRect has no answer yet: while it is drawn, and where it isn't shown.
TEST_F(OwnPictures, ARectangleIsToldWhileItIsDrawn) {
    for (TPictureBox* const box : {&first, &shared}) {
        box->setFunction(FUNC_EDIT_RECT);
        dragFrom(*box, {50, 60}, {150, 100});
        cv::Rect2d rect;
        EXPECT_FALSE(TPictureBox::getSelectionRect(rect));
        ASSERT_TRUE(box->getSelectedRect(rect));
        EXPECT_EQ(rect, cv::Rect2d(100, 120, 200, 80));
        box->mouseEvent(cv::EVENT_LBUTTONUP, 150, 100, 0);
        ASSERT_TRUE(box->getSelectedRect(rect));
        EXPECT_EQ(rect, cv::Rect2d(100, 120, 200, 80));
        EXPECT_FALSE(second.getSelectedRect(rect));
    }
}

TEST_F(OwnPictures, ADragStopsThePicturesOfItsBoxAlone) {
    zoomIn(first);
    dragFrom(first, {100, 100}, {90, 90});
    first.setImage(blue, false);
    second.setImage(red, false);
    shared.setImage(red, false);
    showAll();
    EXPECT_EQ(pixel(first, 200, 150), cv::Vec3b(0, 0, 255));
    EXPECT_EQ(pixel(second, 200, 150), cv::Vec3b(0, 0, 255));
    EXPECT_EQ(pixel(shared, 200, 150), cv::Vec3b(0, 0, 255));
    first.mouseEvent(cv::EVENT_LBUTTONUP, 90, 90, 0);
    first.showImage();
    EXPECT_EQ(pixel(first, 200, 150), cv::Vec3b(255, 0, 0));
}

}  // namespace
