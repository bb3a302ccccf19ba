// What becomes of a picture on its way: scale, mirroring, turns, and pictures that are none.
#include <opencv2/imgproc.hpp>

#include "tests/camera/host.h"

namespace {

class Treatment : public test::CameraTest {
  protected:
    Treatment() {
        EXPECT_TRUE(cams_.open(0, 12));
        fakeCamera(0).width = 5;
        fakeCamera(0).height = 3;
        fakeCamera(0).channels = 3;
    }
    orx::TCamera& camera() { return *cams_.cameras[0]; }
    cv::Mat fetch(int scale = 0) {
        cv::Mat image;
        EXPECT_TRUE(camera().GetImage(image, scale));
        return image;
    }
};

// The fake camera's picture, built here; the frame's number lies in the first four bytes.
cv::Mat expected(int width, int height, int channels, int number) {
    cv::Mat image(height, width, CV_8UC(channels));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < channels; ++c) image.ptr(y)[x * channels + c] = fake::sampleOf(0, x, y, c);
        }
    }
    for (int i = 0; i < fake::kNumberBytes; ++i) image.ptr()[i] = static_cast<uchar>(i == 0 ? number : 0);
    return image;
}

bool equal(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0.0;
}

// Where a pixel of the turned image comes from, by geometry: `from(x, y)` in an image of w x h.
cv::Mat moved(const cv::Mat& image, cv::Size size, cv::Point (*from)(int x, int y, int w, int h)) {
    cv::Mat result(size, image.type());
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            result.at<cv::Vec3b>(y, x) = image.at<cv::Vec3b>(from(x, y, image.cols, image.rows));
        }
    }
    return result;
}

TEST_F(Treatment, TurnsByQuarters) {
    const cv::Size upright(5, 3);
    const cv::Size lying(3, 5);
    struct Case {
        int angle;
        bool reverse;
        cv::Size size;
        cv::Point (*from)(int x, int y, int w, int h);
    };
    const auto same = [](int x, int y, int, int) { return cv::Point(x, y); };
    const auto upsideDown = [](int x, int y, int, int h) { return cv::Point(x, h - 1 - y); };
    const auto halfTurn = [](int x, int y, int w, int h) { return cv::Point(w - 1 - x, h - 1 - y); };
    // Counter-clockwise the right column becomes the top row.
    const auto counterClockwise = [](int x, int y, int w, int) { return cv::Point(w - 1 - y, x); };
    const auto clockwise = [](int x, int y, int, int h) { return cv::Point(y, h - 1 - x); };
    const Case cases[] = {
        {0, false, upright, same},
        {0, true, upright, upsideDown},
        {90, false, lying, counterClockwise},
        {450, false, lying, counterClockwise},
        {180, false, upright, halfTurn},
        {270, false, lying, clockwise},
        // Upside down first, then turned.
        {90, true, lying, [](int x, int y, int w, int h) { return cv::Point(w - 1 - y, h - 1 - x); }},
        {180, true, upright, [](int x, int y, int w, int) { return cv::Point(w - 1 - x, y); }},
        {270, true, lying, [](int x, int y, int, int) { return cv::Point(y, x); }},
        // Not turned at all.
        {-90, false, upright, same},
        {-180, false, upright, same},
        {45, false, upright, same},
        {-720, true, upright, upsideDown},
    };
    int number = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "angle " << c.angle << ", reversed " << c.reverse);
        camera().rotationAngle = c.angle;
        camera().reverseXFlag = c.reverse;
        const cv::Mat picture = expected(5, 3, 3, ++number);
        const cv::Mat wanted = moved(picture, c.size, c.from);
        EXPECT_TRUE(equal(fetch(), wanted));
        EXPECT_EQ(camera().ownBuffer, c.size == lying);

        cv::Mat bySteps = picture.clone();
        camera().reverseX(bySteps);
        camera().rotation(bySteps);
        EXPECT_TRUE(equal(bySteps, wanted));
    }
}

// Sizes around those of the blocks and vectors that are turned at once, of each instruction set.
TEST_F(Treatment, TurnsEveryPixelOfEverySizeAndDepth) {
    const cv::Size sizes[] = {{16, 16}, {17, 33}, {50, 31}, {8, 70}, {64, 3}, {95, 2}};
    for (const int channels : {1, 3, 4}) {
        for (const cv::Size& size : sizes) {
            for (const int turn : {90, 180, 270, 180 + 360}) {
                SCOPED_TRACE(testing::Message() << size << " of " << channels << ", angle " << turn);
                fakeCamera(0).width = size.width;
                fakeCamera(0).height = size.height;
                fakeCamera(0).channels = channels;
                camera().rotationAngle = turn;
                camera().reverseXFlag = size.width == 50;
                cv::Mat wanted = expected(size.width, size.height, channels, fakeCamera(0).frames + 1);
                camera().reverseX(wanted);
                camera().rotation(wanted);
                cv::setUseOptimized(turn < 360);
                EXPECT_TRUE(equal(fetch(), wanted));
                cv::setUseOptimized(true);
            }
        }
    }
}

TEST_F(Treatment, SupportedAngles) {
    for (const int angle : {0, 90, 180, 270, 360, 450, -360})
        EXPECT_TRUE(cams_.checkRotation(angle)) << angle;
    for (const int angle : {1, 45, -90, -180, -270, 271}) EXPECT_FALSE(cams_.checkRotation(angle)) << angle;
}

TEST_F(Treatment, ScalesToAHalfAndAQuarter) {
    fakeCamera(0).width = 1022;
    fakeCamera(0).height = 767;
    fakeCamera(0).channels = 1;
    EXPECT_EQ(fetch(4).size(), cv::Size(255, 191));
    EXPECT_TRUE(camera().ownBuffer);
    EXPECT_EQ(fetch(2).size(), cv::Size(511, 383));
    for (const int scale : {0, 1, 3, -2, 8}) {
        EXPECT_EQ(fetch(scale).size(), cv::Size(1022, 767)) << scale;
        EXPECT_FALSE(camera().ownBuffer);
    }
    cv::Mat image;
    ASSERT_TRUE(cams_.GetImage(image, 0, false, 2));
    EXPECT_EQ(image.size(), cv::Size(1022, 767)) << "not scaled unless asked";

    camera().rotationAngle = 270;
    camera().reverseXFlag = true;
    cv::Mat wanted;
    cv::resize(expected(1022, 767, 1, fakeCamera(0).frames + 1), wanted, cv::Size(511, 383), 0, 0,
               cv::INTER_LINEAR);
    cv::flip(wanted, wanted, 0);
    cv::transpose(wanted, wanted);
    cv::flip(wanted, wanted, 1);
    EXPECT_TRUE(equal(fetch(2), wanted));
}

TEST_F(Treatment, DriversPixelsAreNeitherSharedNorChanged) {
    camera().reverseXFlag = true;
    const cv::Mat first = fetch();
    const cv::Mat copy = first.clone();
    const cv::Mat second = fetch();
    EXPECT_TRUE(equal(first, copy)) << "an image that is kept stays as it was";
    EXPECT_EQ(second.at<cv::Vec3b>(0, 2), copy.at<cv::Vec3b>(0, 2)) << "not turned over again";
}

TEST_F(Treatment, BufferIsUsedAgainUnlessItIsSeenElsewhere) {
    cv::Mat image = fetch();
    const uchar* const data = image.data;
    ASSERT_TRUE(camera().GetImage(image, 0));
    EXPECT_EQ(image.data, data);
    const cv::Mat kept = image;
    ASSERT_TRUE(camera().GetImage(image, 0));
    EXPECT_NE(image.data, kept.data);

    uchar hosts[5 * 3 * 3] = {};
    cv::Mat overHosts(3, 5, CV_8UC3, hosts);
    ASSERT_TRUE(camera().GetImage(overHosts, 0));
    EXPECT_NE(overHosts.data, hosts);
    EXPECT_EQ(hosts[20], 0);
}

TEST_F(Treatment, PicturesThatAreNoneAreEmpty) {
    using fake::Picture;
    for (const int scale : {0, 2, 4}) {
        for (const Picture picture :
             {Picture::kEmpty, Picture::kNoData, Picture::kNegative, Picture::kHuge, Picture::kHugeColour}) {
            SCOPED_TRACE(testing::Message() << "scale " << scale << ", kind " << static_cast<int>(picture));
            fakeCamera(0).picture = picture;
            cv::Mat image(4, 4, CV_8U);
            EXPECT_TRUE(camera().GetImage(image, scale));
            EXPECT_TRUE(image.empty());
        }
    }
    fakeCamera(0).picture = Picture::kGood;
    EXPECT_TRUE(fetch(4).empty()) << "3 rows leave none";
    for (const Picture picture : {Picture::kNoChannels, Picture::kSevenChannels}) {
        fakeCamera(0).picture = picture;
        EXPECT_EQ(fetch().type(), CV_8UC1) << "any other number of channels reads as one";
    }

    fakeCamera(0).picture = Picture::kFailure;
    cv::Mat image(4, 4, CV_8U);
    EXPECT_FALSE(camera().GetImage(image, 0));
    EXPECT_EQ(image.size(), cv::Size(4, 4)) << "untouched";
    cams_.close(0);
    EXPECT_FALSE(camera().GetImage(image, 0));
}

}  // namespace
