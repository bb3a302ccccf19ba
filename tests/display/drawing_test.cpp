// What is drawn over the image.
#include <limits>

#include "tests/display/picture_box_fixture.h"

namespace {

using test::kBackground;
using test::kGreen;

// A black image of 1000 x 500 in a window of 800 x 600: the scale is 0.8, and 100 rows are above it.
class PictureBoxDrawing : public test::HeadlessBox {
  protected:
    void SetUp() override {
        HeadlessBox::SetUp();
        box.setWindowSize(800, 600);
        image = colour(1000, 500, {});
        box.setImage(image, false);
    }

    TPictureBox box;
    cv::Mat image;
};

const cv::Scalar kRed(0, 0, 255);
const cv::Vec3b kRedPixel(0, 0, 255);
const cv::Vec3b kBlack(0, 0, 0);

cv::Rect boundsOf(const cv::Mat& picture, const cv::Vec3b& colour) {
    cv::Mat mask;
    cv::inRange(picture, colour, colour, mask);
    return cv::boundingRect(mask);
}

TEST_F(PictureBoxDrawing, RectanglesStandAtTheirPlaceInTheImage) {
    box.setDrawRect({100, 50, 200, 100, 1, kRed});
    box.showImage();
    // (80, 140), 160 x 80.
    EXPECT_EQ(boundsOf(box.display, kRedPixel), cv::Rect(80, 140, 160, 80));
    EXPECT_EQ(pixel(box, 160, 180), kBlack);
    box.setDrawRect({100, 50, 200, 100, -1, kRed});
    box.showImage();
    EXPECT_EQ(pixel(box, 160, 180), kRedPixel);
}

TEST_F(PictureBoxDrawing, CirclesAreScaledWithTheImage) {
    box.setDrawCircle({500, 250, 100.0, 1, kRed});
    box.showImage();
    EXPECT_EQ(boundsOf(box.display, kRedPixel), cv::Rect(320, 220, 161, 161));
    box.clearDraw();
    box.keepAspect = false;  // 0.8 across and 1.2 down
    box.setDrawCircle({500, 250, 100.0, 1, kRed});
    box.showImage();
    const cv::Rect bounds = boundsOf(box.display, kRedPixel);
    EXPECT_NEAR(bounds.width, 161, 1);
    EXPECT_NEAR(bounds.height, 241, 1);
}

TEST_F(PictureBoxDrawing, RectanglesLieOverCircles) {
    box.setDrawRect({0, 0, 1000, 500, -1, kRed});
    box.setDrawCircle({500, 250, 100.0, -1, cv::Scalar(255, 0, 0)});
    box.showImage();
    EXPECT_EQ(pixel(box, 400, 300), kRedPixel);
}

TEST_F(PictureBoxDrawing, TextsBeginAtFiftyFiftyAndFollowEachOther) {
    TDrawTexts texts{{"First", "Second"}, 1, 1, cv::FONT_HERSHEY_SIMPLEX, kRed};
    box.setDrawText(texts);
    box.showImage();
    cv::Mat expected(600, 800, CV_8UC3, cv::Scalar());
    cv::putText(expected, "First", {50, 50}, cv::FONT_HERSHEY_SIMPLEX, 1.0, kRed, 1);
    const cv::Rect first = boundsOf(expected, kRedPixel);
    cv::Mat mask;
    cv::inRange(box.display, kRed, kRed, mask);
    const cv::Rect all = cv::boundingRect(mask);
    EXPECT_EQ(all.y, first.y);
    EXPECT_EQ(cv::boundingRect(mask.rowRange(0, 58)), first);
    // The second line lies below, and does not touch the first.
    EXPECT_EQ(cv::countNonZero(mask.row(first.br().y)), 0);
    EXPECT_GT(all.height, 2 * first.height);
    box.clearDraw();
    box.showImage();
    EXPECT_EQ(boundsOf(box.display, kRedPixel), cv::Rect());
}

// In a window with room enough the lines are as asked for; in smaller ones all of them are smaller, and
// whole.
TEST_F(PictureBoxDrawing, TextsAreSeenWholeInSmallWindows) {
    TDrawTexts texts{{"diameter 12.345 mm", "in tolerance"}, 2, 1, cv::FONT_HERSHEY_SIMPLEX, kRed};
    box.setDrawText(texts);
    int below = 0;
    const cv::Size first = cv::getTextSize(texts.texts[0], cv::FONT_HERSHEY_SIMPLEX, 1.0, 2, &below);
    for (const cv::Size window : {cv::Size(50 + first.width, 400), cv::Size(200, 150), cv::Size(400, 75)}) {
        SCOPED_TRACE(window);
        box.setWindowSize(window.width, window.height);
        box.showImage();
        const cv::Rect seen = boundsOf(box.display, kRedPixel);
        const double ratio = std::min(1.0, window.width / (50.0 + first.width));
        if (window.height == 400) {
            EXPECT_NEAR(seen.width, first.width, 6);
        }
        EXPECT_LE(seen.width, ratio * first.width + 4);
        // Nothing touches an edge, where it would be cut.
        EXPECT_GT(seen.x, 0);
        EXPECT_GT(seen.y, 0);
        EXPECT_LT(seen.br().x, window.width);
        EXPECT_LT(seen.br().y, window.height);
        // And both lines are there: rows without a pixel of theirs lie between.
        cv::Mat mask, rows;
        cv::inRange(box.display, kRed, kRed, mask);
        cv::reduce(mask, rows, 1, cv::REDUCE_MAX);
        int starts = 0;
        for (int y = 1; y < rows.rows; ++y) starts += rows.at<uchar>(y) != 0 && rows.at<uchar>(y - 1) == 0;
        EXPECT_EQ(starts, 2);
    }
}

TEST_F(PictureBoxDrawing, NothingIsLeftInTheMarginsFromTheLastPicture) {
    TDrawTexts texts{{"Text above the image"}, 2, 1, cv::FONT_HERSHEY_SIMPLEX, kRed};
    box.setDrawText(texts);
    box.showImage();
    EXPECT_FALSE(boundsOf(box.display, kRedPixel).empty());
    box.clearDraw();
    box.showImage();
    EXPECT_EQ(pixel(box, 60, 45), kBackground);
    EXPECT_TRUE(boundsOf(box.display, kRedPixel).empty());
}

TEST_F(PictureBoxDrawing, TheLastPictureIsPlain) {
    box.setDrawRect({0, 0, 1000, 500, -1, kRed});
    box.selectRect = true;
    TPictureBox::setSelectionRect({100, 100, 200, 200});
    box.showImageLast();
    EXPECT_TRUE(boundsOf(box.display, kRedPixel).empty());
    EXPECT_TRUE(boundsOf(box.display, kGreen).empty());
}

TEST_F(PictureBoxDrawing, SelectionsAreGreen) {
    TPictureBox::setSelectionRect({100, 50, 200, 100});
    TPictureBox::setSelectionCircle({500, 250}, 50.0);
    box.showImage();
    EXPECT_TRUE(boundsOf(box.display, kGreen).empty());
    box.selectRect = true;
    box.showImage();
    EXPECT_EQ(boundsOf(box.display, kGreen), cv::Rect(80, 140, 160, 80));
    EXPECT_TRUE(box.drawnOnce);
    box.selectRect = false;
    box.selectCircle = true;
    box.showImage();
    // Radius 40 around (400, 300), 2 thick; a dot of radius 2.
    const cv::Rect bounds = boundsOf(box.display, kGreen);
    EXPECT_NEAR(bounds.x, 359.5, 0.6);
    EXPECT_NEAR(bounds.width, 82, 1);
    EXPECT_EQ(pixel(box, 402, 300), kGreen);
    EXPECT_EQ(pixel(box, 410, 300), kBlack);
}

TEST_F(PictureBoxDrawing, AbsurdDrawingsAreHarmless) {
    const int most = std::numeric_limits<int>::max();
    const int least = std::numeric_limits<int>::min();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const int value : {most, least, 0, -1, 1 << 20})
        for (const int thickness : {most, least, 0, 1, -1}) {
            box.setDrawRect({value, value, most, most, thickness, {}});
            box.setDrawRect({0, 0, value, value, thickness, {}});
            box.setDrawCircle({value, 3, 1e300, thickness, {}});
            box.setDrawCircle({3, value, double(value), thickness, {nan, nan, nan}});
            box.setDrawCircle({3, 3, nan, thickness, {}});
            TDrawTexts texts{{"a", "", "\xB2\xE2", std::string(5000, 'x')}, thickness, value, value, {}};
            box.setDrawText(texts);
            box.showImage();
            box.clearDraw();
        }
    box.selectRect = true;
    box.selectCircle = true;
    TPictureBox::setSelectionRect({-1e300, -1e300, 1e305, 1e305});
    TPictureBox::setSelectionCircle({most, least}, 1e300);
    box.showImage();
    TPictureBox::setSelectionRect({nan, 0, 1, 1});
    TPictureBox::setSelectionCircle({0, 0}, nan);
    cv::Rect2d rect;
    cv::Point centre;
    double radius = 0;
    EXPECT_FALSE(TPictureBox::getSelectionRect(rect));
    EXPECT_FALSE(TPictureBox::getSelectionCircle(centre, radius));
    // A rectangle around everything, seen from inside.
    box.setDrawRect({-1000000000, -1000000000, 2000000000, 2000000000, -1, kRed});
    box.showImage();
    EXPECT_EQ(pixel(box, 400, 300), kRedPixel);
}

// Counts the pixel buffers that OpenCV allocates.
class CountingAllocator : public cv::MatAllocator {
  public:
    CountingAllocator() { cv::Mat::setDefaultAllocator(this); }
    ~CountingAllocator() override { cv::Mat::setDefaultAllocator(before_); }

    cv::UMatData* allocate(int dims, const int* sizes, int type, void* data, size_t* step,
                           cv::AccessFlag flags, cv::UMatUsageFlags usage) const override {
        ++count;
        return cv::Mat::getStdAllocator()->allocate(dims, sizes, type, data, step, flags, usage);
    }
    bool allocate(cv::UMatData* data, cv::AccessFlag flags, cv::UMatUsageFlags usage) const override {
        return cv::Mat::getStdAllocator()->allocate(data, flags, usage);
    }
    void deallocate(cv::UMatData* data) const override { cv::Mat::getStdAllocator()->deallocate(data); }

    mutable int count = 0;

  private:
    cv::MatAllocator* before_ = cv::Mat::getDefaultAllocator();
};

TEST_F(PictureBoxDrawing, APictureAfterAnotherTakesNoMemory) {
    cv::Mat greyImage = grey(3000, 2000, 3);
    cv::Mat large = colour(3000, 2000, {});
    TOverlay overlay;
    overlay.disc({500, 250}, 100).setStyle({{}, 3, 0.5}).area({{9, 9}, {900, 9}, {9, 400}}).text({9, 9}, "a");
    box.setOverlay(overlay);
    for (cv::Mat* const handedIn : {&image, &large, &greyImage}) {
        box.setImage(*handedIn, false);
        box.showImage();
        const CountingAllocator allocations;
        for (int i = 0; i < 5; ++i) {
            box.setImage(*handedIn, false);
            box.showImage();
        }
        EXPECT_EQ(allocations.count, 0);
    }
}

}  // namespace
