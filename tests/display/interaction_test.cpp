// What the mouse does.
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "tests/display/picture_box_fixture.h"

namespace {

using test::kGreen;

constexpr int kLeft = cv::EVENT_FLAG_LBUTTON;

// An image of 1000 x 500 in a window of 800 x 600: the scale is 0.8, and 100 rows are above it. Left of
// x = 500 it is black, right of it white.
class PictureBoxMouse : public test::HeadlessBox {
  protected:
    void SetUp() override {
        HeadlessBox::SetUp();
        image = colour(1000, 500, {});
        image.colRange(500, 1000).setTo(cv::Scalar::all(255));
        box.setWindowSize(800, 600);
        box.setImage(image, false);
        box.showImageLast();  // and no zoom
    }
    void TearDown() override { box.showImageLast(); }

    void wheel(int x, int y, int notches) {
        box.mouseEvent(cv::EVENT_MOUSEWHEEL, x, y,
                       static_cast<int>(static_cast<unsigned>(notches * 120) << 16U));
    }
    void press(int x, int y) { box.mouseEvent(cv::EVENT_LBUTTONDOWN, x, y, kLeft); }
    void move(int x, int y) { box.mouseEvent(cv::EVENT_MOUSEMOVE, x, y, kLeft); }
    void release(int x, int y) { box.mouseEvent(cv::EVENT_LBUTTONUP, x, y, 0); }
    void drag(cv::Point from, cv::Point to) {
        press(from.x, from.y);
        move((from.x + to.x) / 2, (from.y + to.y) / 2);
        move(to.x, to.y);
        release(to.x, to.y);
    }
    void doubleClick(int x, int y) {
        press(x, y);
        release(x, y);
        box.mouseEvent(cv::EVENT_LBUTTONDBLCLK, x, y, kLeft);
        release(x, y);
    }
    bool isWhite(int x, int y) const { return pixel(box, x, y) == cv::Vec3b(255, 255, 255); }
    bool isBlack(int x, int y) const { return pixel(box, x, y) == cv::Vec3b(0, 0, 0); }

    static cv::Rect2d selectedRect() {
        cv::Rect2d rect;
        return TPictureBox::getSelectionRect(rect) ? rect : cv::Rect2d();
    }

    TPictureBox box;
    cv::Mat image;
};

void expectNear(cv::Point2d a, cv::Point2d b) {
    EXPECT_NEAR(a.x, b.x, 1e-9);
    EXPECT_NEAR(a.y, b.y, 1e-9);
}

void expectNear(const cv::Rect2d& a, const cv::Rect2d& b) {
    expectNear(a.tl(), b.tl());
    expectNear(a.br(), b.br());
}

// Zoom and pan.

TEST_F(PictureBoxMouse, TheWheelZoomsAboutTheCursor) {
    const cv::Point2d under = box.show2OrigPoint({300, 250});
    wheel(300, 250, 1);
    double sx = 0, sy = 0;
    expectNear(box.show2OrigPoint({300, 250}), under);
    box.getOrig2ShowImgScaleXY(sx, sy);
    EXPECT_DOUBLE_EQ(sx, 0.8 * 1.25);
    EXPECT_DOUBLE_EQ(sy, 0.8 * 1.25);
    wheel(500, 300, 4);
    wheel(500, 300, -2);
    box.orig2ShowPoint({});
    box.getOrig2ShowImgScaleXY(sx, sy);
    EXPECT_NEAR(sx, 0.8 * std::pow(1.25, 3), 1e-12);
}

TEST_F(PictureBoxMouse, TheZoomEndsAtOneAndAtSixtyFour) {
    wheel(400, 300, 100);
    double sx = 0, sy = 0;
    box.orig2ShowPoint({});
    box.getOrig2ShowImgScaleXY(sx, sy);
    EXPECT_DOUBLE_EQ(sx, 0.8 * 64.0);
    wheel(100, 200, -100);
    EXPECT_EQ(box.orig2ShowPoint({500, 250}), cv::Point2d(400, 300));
    wheel(100, 200, -1);
    EXPECT_EQ(box.orig2ShowPoint({500, 250}), cv::Point2d(400, 300));
}

TEST_F(PictureBoxMouse, ThePictureIsWhereTheMappingSays) {
    for (const int notches : {1, 3, 8, 12, 18}) {  // shrunk, magnified smoothly, as squares
        SCOPED_TRACE(notches);
        wheel(401, 300, notches);
        // The border between black and white, at x = 500 of the image.
        const auto border = static_cast<int>(std::lround(box.orig2ShowPoint({500, 250}).x));
        const int blur = notches < 10 ? 8 : 1;
        EXPECT_TRUE(isBlack(border - blur, 300));
        EXPECT_TRUE(isWhite(border + blur, 300));
        wheel(401, 300, -100);
    }
}

TEST_F(PictureBoxMouse, SinglePixelsAreSharpBeyondEightTimes) {
    cv::Mat dot = colour(1000, 500, {});
    dot.at<cv::Vec3b>(250, 500) = {255, 255, 255};
    box.setImage(dot, false);
    wheel(400, 300, 20);  // 64 times: a pixel is 51.2 wide
    const cv::Point2d from = box.orig2ShowPoint({500, 250});
    const cv::Point2d to = box.orig2ShowPoint({501, 251});
    cv::Mat mask;
    cv::inRange(box.display, cv::Scalar::all(255), cv::Scalar::all(255), mask);
    const cv::Rect bounds = cv::boundingRect(mask);
    EXPECT_NEAR(bounds.x, from.x, 1.0);
    EXPECT_NEAR(bounds.y, from.y, 1.0);
    EXPECT_NEAR(bounds.br().x, to.x, 1.0);
    EXPECT_NEAR(bounds.br().y, to.y, 1.0);
    EXPECT_EQ(cv::countNonZero(mask), bounds.area());
    // Nothing between black and white.
    cv::Mat blackMask;
    cv::inRange(box.display, cv::Scalar(), cv::Scalar(), blackMask);
    EXPECT_EQ(cv::countNonZero(mask) + cv::countNonZero(blackMask), 800 * 600);
    wheel(400, 300, -11);  // 5.5 times: smooth
    cv::inRange(box.display, cv::Scalar::all(1), cv::Scalar::all(254), mask);
    EXPECT_GT(cv::countNonZero(mask), 0);
}

TEST_F(PictureBoxMouse, DraggingPansInsideThePicture) {
    wheel(400, 300, 4);
    const cv::Point2d under = box.show2OrigPoint({400, 300});
    drag({400, 300}, {350, 340});
    expectNear(box.show2OrigPoint({350, 340}), under);
    // No further than the window's edge: its corner is then in the corner.
    drag({0, 0}, {10000, 10000});
    EXPECT_EQ(box.show2OrigPoint({0, 0}), cv::Point2d(0, -125));
    drag({800, 600}, {-10000, -10000});
    expectNear(box.show2OrigPoint({800, 600}), {1000, 625});
}

TEST_F(PictureBoxMouse, ADoubleClickShowsTheWholeImage) {
    wheel(400, 300, 7);
    doubleClick(200, 200);
    EXPECT_EQ(box.orig2ShowPoint({500, 250}), cv::Point2d(400, 300));
}

TEST_F(PictureBoxMouse, PlainShowingEndsTheZoomAndSoDoesANewSize) {
    wheel(400, 300, 3);
    box.showImageLast();
    EXPECT_EQ(box.orig2ShowPoint({500, 250}), cv::Point2d(400, 300));
    wheel(300, 300, 3);
    box.showImage();
    EXPECT_NE(box.orig2ShowPoint({500, 250}), cv::Point2d(400, 300));
    box.setWindowSize(400, 300);
    box.showImage();
    EXPECT_EQ(box.orig2ShowPoint({500, 250}), cv::Point2d(200, 150));
    EXPECT_FALSE(box.sizeChanged);
}

TEST_F(PictureBoxMouse, TheFirstZoomOutlivesTheNextPictureOfAnotherBox) {
    TPictureBox other;
    other.setWindowSize(800, 600);
    other.showImage();
    EXPECT_FALSE(other.sizeChanged);
    wheel(300, 250, 5);
    const cv::Point2d zoomed = box.orig2ShowPoint({100, 100});
    other.showImage();
    EXPECT_EQ(box.orig2ShowPoint({100, 100}), zoomed);
    // A size that changes while it is zoomed ends it, as ever.
    other.setWindowSize(640, 480);
    other.showImage();
    EXPECT_NE(box.orig2ShowPoint({100, 100}), zoomed);
}

TEST_F(PictureBoxMouse, AllBoxesZoomTogether) {
    TPictureBox other;
    other.setWindowSize(800, 600);
    other.showImage();
    wheel(300, 250, 5);
    EXPECT_EQ(other.orig2ShowPoint({100, 100}), box.orig2ShowPoint({100, 100}));
}

TEST_F(PictureBoxMouse, NewImagesWaitWhileTheButtonIsDown) {
    cv::Mat next = colour(1000, 500, {0, 0, 255});
    press(400, 300);
    box.setImage(next, false);
    box.redraw = false;
    box.showImage();
    EXPECT_TRUE(isWhite(700, 300));
    release(400, 300);
    EXPECT_TRUE(box.redraw);
    box.showImage();
    EXPECT_EQ(pixel(box, 700, 300), cv::Vec3b(0, 0, 255));
}

TEST_F(PictureBoxMouse, ADragThatLosesItsReleaseEnds) {
    cv::Mat next = colour(1000, 500, {0, 0, 255});
    for (const auto& loseIt : std::vector<std::function<void()>>{
             [&] { box.mouseEvent(cv::EVENT_MOUSEMOVE, 1, 1, 0); }, [&] { box.setFunction(FUNC_NONE); }}) {
        box.setFunction(FUNC_ZOOM_PAN);
        box.setImage(image, false);
        box.showImage();
        press(400, 300);
        box.setImage(next, false);
        loseIt();
        box.showImage();
        EXPECT_EQ(pixel(box, 700, 300), cv::Vec3b(0, 0, 255));
    }
    // And with the box that it began in.
    {
        TPictureBox other;
        other.setWindowSize(800, 600);
        other.showImage();
        other.mouseEvent(cv::EVENT_LBUTTONDOWN, 10, 10, kLeft);
    }
    box.setImage(image, false);
    box.showImage();
    EXPECT_TRUE(isWhite(700, 300));
}

// There a picture is shown as it is, and the button goes up all the same.
TEST_F(PictureBoxMouse, ADragEndsInAWindowTooSmallToZoomIn) {
    cv::Mat next = colour(1000, 500, {0, 0, 255});
    press(400, 300);
    box.setWindowSize(5, 5);
    release(2, 2);
    box.setWindowSize(800, 600);
    box.setImage(next, false);
    box.showImage();
    EXPECT_EQ(pixel(box, 700, 300), cv::Vec3b(0, 0, 255));
}

TEST_F(PictureBoxMouse, WithoutAHandlerNothingHappens) {
    box.setFunction(FUNC_NONE);
    wheel(400, 300, 3);
    EXPECT_EQ(box.orig2ShowPoint({500, 250}), cv::Point2d(400, 300));
    // Unknown modes are stored and leave the handler.
    box.setFunction(FUNC_ZOOM_PAN);
    box.setFunction(static_cast<TFunction>(3));
    EXPECT_EQ(box.function, 3);
    wheel(300, 300, 3);
    EXPECT_NE(box.orig2ShowPoint({500, 250}), cv::Point2d(400, 300));
}

TEST_F(PictureBoxMouse, BeforeAnImageNothingHappens) {
    TPictureBox fresh;
    fresh.setFunction(FUNC_EDIT_RECT);
    for (const int event : std::vector<int>{cv::EVENT_LBUTTONDOWN, cv::EVENT_MOUSEMOVE, cv::EVENT_LBUTTONUP,
                                            cv::EVENT_MOUSEWHEEL, cv::EVENT_LBUTTONDBLCLK, 77, -5})
        fresh.mouseEvent(event, 10, 10, kLeft);
    EXPECT_EQ(selectedRect(), cv::Rect2d());
}

// The rectangle.

class PictureBoxRect : public PictureBoxMouse {
  protected:
    void SetUp() override {
        PictureBoxMouse::SetUp();
        box.setFunction(FUNC_EDIT_RECT);
        box.selectRect = true;
    }
};

TEST_F(PictureBoxRect, DraggingDrawsItInImageCoordinates) {
    press(80, 180);
    move(400, 420);
    // It is seen while it is drawn, and not yet in image coordinates.
    EXPECT_EQ(pixel(box, 80, 300), kGreen);
    EXPECT_EQ(selectedRect(), cv::Rect2d());
    EXPECT_FALSE(box.drawnOnce);
    trace.clear();
    release(400, 420);
    expectNear(selectedRect(), {100, 100, 400, 300});
    EXPECT_TRUE(box.drawnOnce);
    EXPECT_EQ(trace.lines(), (test::TraceLog::Lines{"x: 80.000", "y: 180.000", "w: 320.000", "h: 240.000",
                                                    "imgx: 100.000", "imgy: 100.000", "imgw: 400.000",
                                                    "imgh: 300.000", "mScaleX: 0.800", "mScaleY: 0.800"}));
    trace.clear();
    box.showImage();
    EXPECT_TRUE(trace.lines().empty());
    EXPECT_EQ(pixel(box, 80, 300), kGreen);
}

TEST_F(PictureBoxRect, ItIsDrawnInAnyDirectionAndStaysInsideTheImage) {
    drag({400, 420}, {80, 180});
    expectNear(selectedRect(), {100, 100, 400, 300});
    drag({700, 480}, {5000, 5000});
    expectNear(selectedRect(), {875, 475, 125, 25});
    drag({3, 50}, {600, -70});  // both ends above the image
    EXPECT_EQ(selectedRect(), cv::Rect2d());
}

TEST_F(PictureBoxRect, ItsHandlesMoveItsSides) {
    struct Case {
        cv::Point from, to;
        cv::Rect2d expected;
    };
    // (100, 100, 400, 300) of the image is (80, 180) to (400, 420) of the window.
    for (const Case& c : {Case{{80, 180}, {40, 140}, {50, 50, 450, 350}},      // corners
                          Case{{400, 180}, {440, 140}, {100, 50, 450, 350}},   //
                          Case{{80, 420}, {40, 460}, {50, 100, 450, 350}},     //
                          Case{{400, 420}, {440, 460}, {100, 100, 450, 350}},  //
                          Case{{240, 180}, {300, 140}, {100, 50, 400, 350}},   // sides
                          Case{{240, 420}, {300, 460}, {100, 100, 400, 350}},  //
                          Case{{80, 300}, {40, 333}, {50, 100, 450, 300}},     //
                          Case{{400, 300}, {440, 333}, {100, 100, 450, 300}},  //
                          Case{{240, 300}, {280, 260}, {150, 50, 400, 300}},   // the middle
                          Case{{247, 303}, {287, 263}, {150, 50, 400, 300}},   // caught from 7.6 pixels away
                          Case{{240, 300}, {9000, 9000}, {600, 200, 400, 300}},  // no further than the image
                          Case{{80, 300}, {440, 300}, {500, 100, 50, 300}},      // past the other side
                          Case{{400, 420}, {-500, -500}, {0, 0, 100, 100}}}) {
        SCOPED_TRACE(testing::Message() << c.from << " to " << c.to);
        TPictureBox::setSelectionRect({100, 100, 400, 300});
        drag(c.from, c.to);
        expectNear(selectedRect(), c.expected);
    }
}

TEST_F(PictureBoxRect, AReachBeyondAllWindowsCatchesTheNearestHandle) {
    TPictureBox::setSelectionRect({100, 100, 400, 300});
    box.handleRadius = std::numeric_limits<int>::max();
    drag({720, 420}, {480, 460});  // the corner below right
    expectNear(selectedRect(), {100, 100, 500, 350});
}

TEST_F(PictureBoxRect, AClickLeavesItAndADragElsewhereReplacesIt) {
    TPictureBox::setSelectionRect({100, 100, 400, 300});
    press(600, 300);
    release(600, 300);
    expectNear(selectedRect(), {100, 100, 400, 300});
    drag({600, 300}, {680, 340});
    expectNear(selectedRect(), {750, 250, 100, 50});
    // Nine pixels from a handle is elsewhere.
    TPictureBox::setSelectionRect({100, 100, 400, 300});
    drag({391, 420}, {311, 340});
    expectNear(selectedRect(), {388.75, 300, 100, 100});
}

TEST_F(PictureBoxRect, ItKeepsItsPlaceInTheImageWhenItIsZoomed) {
    TPictureBox::setSelectionRect({450, 200, 100, 100});
    box.setFunction(FUNC_ZOOM_PAN);
    wheel(400, 300, 3);
    const cv::Point2d corner = box.orig2ShowPoint({450, 200});
    EXPECT_EQ(pixel(box, cvRound(corner.x), cvRound(corner.y) + 5), kGreen);
    box.setFunction(FUNC_EDIT_RECT);
    const cv::Point from(cvRound(corner.x), cvRound(corner.y));
    const cv::Point2d to = box.show2OrigPoint({10, 20});
    drag(from, {10, 20});
    expectNear(selectedRect().tl(), to);
    expectNear(selectedRect().br(), {550, 300});
}

TEST_F(PictureBoxRect, OnlyTheBoxItIsDrawnInTurnsItIntoImageCoordinates) {
    TPictureBox small;
    small.setWindowSize(100, 100);
    small.selectRect = true;
    box.frozen = true;  // so that the other one shows it first
    drag({80, 180}, {400, 420});
    small.showImage();
    EXPECT_EQ(selectedRect(), cv::Rect2d());
    box.frozen = false;
    box.showImage();
    expectNear(selectedRect(), {100, 100, 400, 300});
    small.showImage();
    EXPECT_TRUE(small.drawnOnce);
    expectNear(selectedRect(), {100, 100, 400, 300});
}

// The circle.

class PictureBoxCircle : public PictureBoxMouse {
  protected:
    void SetUp() override {
        PictureBoxMouse::SetUp();
        box.setFunction(FUNC_EDIT_CIRCLE);
        box.selectCircle = true;
    }
    void expectCircle(cv::Point centre, double radius) {
        cv::Point foundCentre;
        double foundRadius = 0.0;
        ASSERT_TRUE(TPictureBox::getSelectionCircle(foundCentre, foundRadius));
        EXPECT_EQ(foundCentre, centre);
        EXPECT_NEAR(foundRadius, radius, 1e-9);
    }
};

TEST_F(PictureBoxCircle, DraggingFromTheCentreDrawsIt) {
    press(400, 300);
    move(480, 300);
    EXPECT_EQ(pixel(box, 480, 300), kGreen);
    release(480, 300);
    expectCircle({500, 250}, 100);
    drag({200, 300}, {200, 292});
    expectCircle({250, 250}, 10);
}

TEST_F(PictureBoxCircle, ItsEdgeResizesItAndItsCentreMovesIt) {
    TPictureBox::setSelectionCircle({500, 250}, 100);
    drag({400, 220}, {400, 180});  // the edge above
    expectCircle({500, 250}, 150);
    drag({403, 297}, {443, 317});
    expectCircle({550, 275}, 150);
}

TEST_F(PictureBoxCircle, ItStaysInsideTheImage) {
    drag({400, 300}, {4000, 300});
    expectCircle({500, 250}, 250);
    TPictureBox::setSelectionCircle({500, 250}, 100);
    drag({400, 300}, {-9000, 9000});
    expectCircle({100, 400}, 100);
    drag({0, 100}, {300, 300});  // from the corner: no room
    cv::Point centre;
    double radius = 0.0;
    EXPECT_FALSE(TPictureBox::getSelectionCircle(centre, radius));
}

TEST_F(PictureBoxCircle, AnyThicknessIsDrawnUpToTheLargest) {
    TPictureBox::setSelectionCircle({500, 250}, 200);
    const auto isGreenWith = [&](int thickness) {
        box.selectionThickness = thickness;
        box.showImage();
        return pixel(box, 380, 300) == kGreen;  // 20 pixels from the centre, 140 from the edge
    };
    EXPECT_FALSE(isGreenWith(std::numeric_limits<int>::max()));
    EXPECT_TRUE(isGreenWith(std::numeric_limits<int>::min()));
    EXPECT_TRUE(isGreenWith(-1));
    EXPECT_FALSE(isGreenWith(1));
}

}  // namespace
