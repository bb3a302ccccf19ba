// Why picture boxes refuse, and images that are const.
#include <cmath>
#include <limits>
#include <utility>

#include "tests/display/picture_box_fixture.h"
#include "tests/support/refusal_check.h"

namespace {

using orx::test::notRefused;
using orx::test::refusedWith;

class BoxRefusals : public test::HeadlessBox {
  protected:
    TPictureBox box{TPictureOf::kBox};
};

TEST_F(BoxRefusals, OfImages) {
    const int sizes[] = {2, 2, 2};
    const cv::Mat cube(3, sizes, CV_8UC1, cv::Scalar(0));
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "showImage", [&] { box.showImage(); }));
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "showImageLast", [&] { box.showImageLast(); }));
    EXPECT_TRUE(refusedWith(orx::rcEmptyImage, "setImage", [&] { box.setImage(cv::Mat(), false); }));
    EXPECT_TRUE(refusedWith(orx::rcImageDimensions, "setImage", [&] { box.setImage(cube, false); }));
    EXPECT_TRUE(refusedWith(orx::rcEmptyImage, "setPicture", [&] { box.setPicture({}, {}); }));
    EXPECT_TRUE(refusedWith(orx::rcImageDimensions, "setPicture", [&] { box.setPicture(cube, {}); }));
    box.setImage(cv::Mat::zeros(4, 4, CV_8UC2), true);
    EXPECT_TRUE(refusedWith(orx::rcImageType, "showImage", [&] { box.showImage(); }));
    EXPECT_EQ(orx::lastRefusal().text, "showImage: the image has 2 channels; 1, 3 or 4 are shown");
    EXPECT_TRUE(notRefused([&] {
        box.setImage(grey(4, 4, 9), false);
        EXPECT_TRUE(box.setPicture(colour(4, 4, {1, 2, 3}), {}));
        box.showImage();
        box.showImageLast();
        cv::Rect2d none;
        EXPECT_FALSE(box.getSelectedRect(none)) << "an answer";
    }));
}

TEST_F(BoxRefusals, OfWindowsAndSelections) {
    for (const auto& [w, h] :
         {std::pair{4, 100}, std::pair{100, 4}, std::pair{40000, 100}, std::pair{30000, 30000}}) {
        EXPECT_TRUE(
            refusedWith(orx::rcOption, "setWindowSize", [&, w = w, h = h] { box.setWindowSize(w, h); }));
    }
    EXPECT_EQ(orx::lastRefusal().text,
              "setWindowSize: 30000 x 30000; sides of 5 to 32767 and up to 2^27 pixels are taken");
    const double infinite = std::numeric_limits<double>::infinity();
    const cv::Rect2d rect(0, 0, infinite, 1);
    EXPECT_TRUE(refusedWith(orx::rcNotFinite, "setSelectedRect", [&] { box.setSelectedRect(rect); }));
    EXPECT_TRUE(
        refusedWith(orx::rcNotFinite, "setSelectionRect", [&] { TPictureBox::setSelectionRect(rect); }));
    EXPECT_TRUE(
        refusedWith(orx::rcNotFinite, "setSelectedCircle", [&] { box.setSelectedCircle({}, std::nan("")); }));
    EXPECT_TRUE(refusedWith(orx::rcNotFinite, "setSelectionCircle",
                            [&] { TPictureBox::setSelectionCircle({}, infinite); }));
    if (box.cvWindow == nullptr) {  // there is no display
        EXPECT_TRUE(refusedWith(orx::rcNoDisplay, "setHandle", [&] { box.setHandle(&box); }));
    }
    EXPECT_TRUE(notRefused([&] {
        box.setHandle(nullptr);
        box.setWindowSize(64, 48);
        box.setSelectedRect({1, 1, 2, 2});
        box.setSelectedRect({});  // takes it away
    }));
}

TEST_F(BoxRefusals, ConstImagesAreShownAsOthersAre) {
    cv::Mat image = colour(8, 6, {10, 20, 30});
    const cv::Mat constant = image;
    box.setWindowSize(8, 6);
    cv::Mat shown[3];
    for (int turn = 0; turn < 3; ++turn) {
        if (turn == 0) box.setImage(image, true);
        if (turn == 1) box.setImage(constant, true);
        if (turn == 2) box.setImage(image.clone(), true);
        box.showImageLast();
        ASSERT_TRUE(box.getShownImage(shown[turn]));
        EXPECT_EQ(cv::norm(shown[turn], shown[0], cv::NORM_INF), 0.0);
    }
    EXPECT_EQ(cv::norm(shown[0], image, cv::NORM_INF), 0.0);
}

TEST_F(BoxRefusals, BothWaysToHandInAnImageOrTextsCanBeTakenByTheirTypes) {
    const auto setStated = static_cast<void (TPictureBox::*)(cv::Mat&, bool)>(&TPictureBox::setImage);
    const auto setConst = static_cast<void (TPictureBox::*)(const cv::Mat&, bool)>(&TPictureBox::setImage);
    const auto writeStated = static_cast<void (TPictureBox::*)(TDrawTexts&)>(&TPictureBox::setDrawText);
    const auto writeConst = static_cast<void (TPictureBox::*)(const TDrawTexts&)>(&TPictureBox::setDrawText);
    cv::Mat image = colour(200, 100, {10, 20, 30});
    TDrawTexts texts{{"text"}, 1, 1, cv::FONT_HERSHEY_SIMPLEX, {0, 0, 255}};
    box.setWindowSize(200, 100);
    cv::Mat shown[2];
    for (const bool isStated : {true, false}) {
        box.setImage(grey(200, 100, 9), true);
        box.clearDraw();
        if (isStated) {
            (box.*setStated)(image, true);
            (box.*writeStated)(texts);
        } else {
            (box.*setConst)(image, true);
            (box.*writeConst)(texts);
        }
        box.showImage();
        ASSERT_TRUE(box.getShownImage(shown[isStated ? 0 : 1]));
    }
    EXPECT_EQ(cv::norm(shown[0], shown[1], cv::NORM_INF), 0.0);
    EXPECT_GT(cv::norm(shown[0], image, cv::NORM_INF), 0.0) << "the text is seen";
}

}  // namespace
