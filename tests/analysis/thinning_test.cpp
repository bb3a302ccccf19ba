#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/fit_scenes.h"
#include "tests/support/plain_thinning.h"

namespace {

using fit_scenes::Random;
using orx::test::thinnedPlainly;

cv::Mat randomPicture(Random& random, cv::Size size, double density) {
    cv::Mat img(size, CV_8UC1);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            img.at<uchar>(y, x) =
                random.uniform(0, 1) < density ? static_cast<uchar>(random.integer(1, 255)) : 0;
        }
    }
    return img;
}

cv::Mat randomShapes(Random& random, cv::Size size) {
    cv::Mat img = cv::Mat::zeros(size, CV_8UC1);
    for (int i = 0; i < 12; ++i) {
        const cv::Point a(random.integer(-5, size.width), random.integer(-5, size.height));
        const cv::Point b(random.integer(-5, size.width), random.integer(-5, size.height));
        cv::line(img, a, b, 255, random.integer(1, 14));
        cv::circle(img, b, random.integer(0, 12), random.integer(0, 1) * 255, cv::FILLED);
    }
    return img;
}

class Thinning : public testing::TestWithParam<orx::TThinningMethod> {};

TEST_P(Thinning, EqualsThePublishedPassesOverTheWholeImage) {
    Random random(5);
    for (int i = 0; i < 40; ++i) {
        const cv::Size size(random.integer(1, 70), random.integer(1, 50));
        cv::Mat img =
            i % 2 == 0 ? randomPicture(random, size, random.uniform(0.2, 1.01)) : randomShapes(random, size);
        if (i % 5 == 0) img = img.colRange(size.width / 3, size.width);
        cv::Mat lines;
        ASSERT_TRUE(orx::thinning(img, lines, GetParam()));
        SCOPED_TRACE(testing::Message() << "picture " << i);
        EXPECT_EQ(cv::norm(lines, thinnedPlainly(img, GetParam()), cv::NORM_L1), 0);
        if (GetParam() == orx::tnGuoHall) {
            cv::Mat labels;
            EXPECT_EQ(cv::connectedComponents(lines, labels), cv::connectedComponents(img, labels));
        }
    }
}

TEST_P(Thinning, ABarBecomesItsMiddleLine) {
    cv::Mat img = cv::Mat::zeros(21, 60, CV_8UC1);
    img(cv::Rect(5, 8, 50, 5)) = 1;
    ASSERT_TRUE(orx::thinning(img, img, GetParam()));
    EXPECT_EQ(cv::countNonZero(img.row(10).colRange(10, 50)), 40);
    EXPECT_EQ(cv::countNonZero(img.colRange(10, 50)), 40);
    double highest = 0;
    cv::minMaxLoc(img, nullptr, &highest);
    EXPECT_EQ(highest, 255);
}

TEST_P(Thinning, KeepsASinglePixelAndRefusesWhatIsNotBinary) {
    cv::Mat lines;
    ASSERT_TRUE(orx::thinning(cv::Mat(1, 1, CV_8UC1, cv::Scalar(3)), lines, GetParam()));
    EXPECT_EQ(lines.at<uchar>(0), 255);
    const int sizes[] = {3, 3, 3};
    for (const cv::Mat& refused : {cv::Mat(), cv::Mat(4, 4, CV_16UC1, cv::Scalar(1)), cv::Mat(4, 4, CV_8UC3),
                                   cv::Mat(3, sizes, CV_8UC1, cv::Scalar(1))}) {
        EXPECT_FALSE(orx::thinning(refused, lines, GetParam()));
        EXPECT_EQ(lines.size(), cv::Size(1, 1));
    }
}

INSTANTIATE_TEST_SUITE_P(Methods, Thinning, testing::Values(orx::tnZhangSuen, orx::tnGuoHall),
                         [](const auto& method) {
                             return method.param == orx::tnGuoHall ? "GuoHall" : "ZhangSuen";
                         });

TEST(ThinningMethods, DifferInTheFateOfASmallSquare) {
    cv::Mat img = cv::Mat::zeros(6, 6, CV_8UC1);
    img(cv::Rect(2, 2, 2, 2)) = 255;
    cv::Mat lines;
    ASSERT_TRUE(orx::thinning(img, lines, orx::tnZhangSuen));
    EXPECT_EQ(cv::countNonZero(lines), 0);
    ASSERT_TRUE(orx::thinning(img, lines, orx::tnGuoHall));
    EXPECT_GE(cv::countNonZero(lines), 1);
    EXPECT_FALSE(orx::thinning(img, lines, orx::TThinningMethod(2)));
}

}  // namespace
