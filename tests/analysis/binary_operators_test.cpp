#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// '.' is 0, every other character is its own value.
cv::Mat drawn(const std::vector<std::string>& rows) {
    cv::Mat img(static_cast<int>(rows.size()), static_cast<int>(rows[0].size()), CV_8UC1);
    for (int y = 0; y < img.rows; ++y) {
        for (int x = 0; x < img.cols; ++x) {
            const char c = rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
            img.at<uchar>(y, x) = c == '.' ? 0 : static_cast<uchar>(c);
        }
    }
    return img;
}

std::vector<cv::Mat> notBinary() {
    const int sizes[] = {3, 3, 3};
    return {cv::Mat(), cv::Mat(4, 4, CV_16UC1, cv::Scalar(1)), cv::Mat(4, 4, CV_8UC3, cv::Scalar(1)),
            cv::Mat(4, 4, CV_32FC1, cv::Scalar(1)), cv::Mat(3, sizes, CV_8UC1, cv::Scalar(1))};
}

// A block of 20 x 20 at (5, 5) with a hole of 8 x 6 at (10, 10) that holds a block of 2 x 2; a block of
// 10 x 4 at (40, 5); a pixel at (60, 30).
cv::Mat objects() {
    cv::Mat img = cv::Mat::zeros(40, 70, CV_8UC1);
    img(cv::Rect(5, 5, 20, 20)) = 1;
    img(cv::Rect(10, 10, 8, 6)) = 0;
    img(cv::Rect(13, 12, 2, 2)) = 7;
    img(cv::Rect(40, 5, 10, 4)) = 255;
    img.at<uchar>(30, 60) = 255;
    return img;
}

std::vector<double> areasOf(orx::TContourType type, const orx::TContourOptions& options = {}) {
    std::vector<double> areas;
    for (const auto& contour : orx::getContours(objects(), type, options)) {
        areas.push_back(cv::contourArea(contour));
    }
    return areas;
}

TEST(GetContours, TypesChooseAmongOutlinesAndHoles) {
    // Outlines run through centres: 19 x 19, 9 x 3, 1 x 1; the hole's runs on the pixels around it, 9 x 7
    // without its four corners of half a pixel each.
    EXPECT_THAT(areasOf(orx::ctExternal), ElementsAre(0, 27, 361));
    EXPECT_THAT(areasOf(orx::ctAll), testing::UnorderedElementsAre(0, 1, 27, 61, 361));
    EXPECT_THAT(areasOf(orx::ctHoles), ElementsAre(61));
    EXPECT_THAT(areasOf(orx::ctLargest), ElementsAre(361));
    EXPECT_THAT(areasOf(orx::TContourType(5)), IsEmpty());
}

TEST(GetContours, OutlinesTurnCounterClockwiseAndHolesClockwise) {
    orx::TContourOptions options;
    options.minArea = 20;
    for (const auto& [type, sign] : std::vector<std::pair<orx::TContourType, double>>{
             {orx::ctExternal, -1}, {orx::ctConvexHull, -1}, {orx::ctHoles, 1}}) {
        for (const auto& contour : orx::getContours(objects(), type, options)) {
            double twiceArea = 0;  // positive clockwise, y running down
            for (std::size_t i = 0; i < contour.size(); ++i) {
                twiceArea += contour[i].cross(contour[(i + 1) % contour.size()]);
            }
            EXPECT_GT(sign * twiceArea, 0) << "type " << type;
        }
    }
}

TEST(GetContours, HullsHaveCornersOnly) {
    cv::Mat img = cv::Mat::zeros(30, 30, CV_8UC1);
    img(cv::Rect(2, 2, 20, 5)) = 255;  // an L
    img(cv::Rect(2, 2, 5, 20)) = 255;
    const auto hulls = orx::getContours(img, orx::ctConvexHull);
    ASSERT_THAT(hulls, SizeIs(1));
    EXPECT_THAT(hulls[0], testing::UnorderedElementsAre(cv::Point(2, 2), cv::Point(21, 2), cv::Point(21, 6),
                                                        cv::Point(6, 21), cv::Point(2, 21)));
}

TEST(GetContours, LimitsAndPointsAreRespected) {
    orx::TContourOptions options;
    options.minArea = 1;
    options.maxArea = 100;
    EXPECT_THAT(areasOf(orx::ctExternal, options), ElementsAre(27));
    EXPECT_THAT(areasOf(orx::ctLargest, options), ElementsAre(27));
    options = {};
    options.minLength = 24;  // 2 x (9 + 3)
    EXPECT_THAT(areasOf(orx::ctExternal, options), ElementsAre(27, 361));
    options.minLength = 24.01;
    EXPECT_THAT(areasOf(orx::ctExternal, options), ElementsAre(361));
    EXPECT_THAT(orx::getContours(objects(), orx::ctLargest)[0], SizeIs(76));
    options.points = orx::cpCorners;
    EXPECT_THAT(orx::getContours(objects(), orx::ctLargest, options)[0], SizeIs(4));
    for (double orx::TContourOptions::*limit :
         {&orx::TContourOptions::minArea, &orx::TContourOptions::maxArea, &orx::TContourOptions::minLength}) {
        options = {};
        options.*limit = kNan;
        EXPECT_THAT(areasOf(orx::ctAll, options), IsEmpty());
    }
}

// Random pixels of the given density, in blocks of a few pixels when asked.
cv::Mat speckles(cv::RNG& random, int block) {
    cv::Mat img(random.uniform(1, 40), random.uniform(1, 40), CV_8UC1);
    random.fill(img, cv::RNG::UNIFORM, 0, 256);
    cv::threshold(img, img, random.uniform(20, 230), 255, cv::THRESH_BINARY);
    cv::resize(img, img, {}, block, block, cv::INTER_NEAREST);
    return img;
}

TEST(GetContours, HolesAreThoseOfTheTwoLevelRetrieval) {
    cv::RNG random(5);
    std::size_t holes = 0;
    for (int round = 0; round < 1000; ++round) {
        const cv::Mat img = speckles(random, 1 + round % 3);
        const auto points = round % 2 == 0 ? orx::cpAll : orx::cpCorners;
        std::vector<std::vector<cv::Point>> all;
        std::vector<std::vector<cv::Point>> expected;
        std::vector<cv::Vec4i> links;
        cv::findContours(img, all, links, cv::RETR_CCOMP,
                         points == orx::cpAll ? cv::CHAIN_APPROX_NONE : cv::CHAIN_APPROX_SIMPLE);
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (links[i][3] >= 0) expected.push_back(all[i]);
        }
        orx::TContourOptions options;
        options.points = points;
        ASSERT_EQ(orx::getContours(img, orx::ctHoles, options), expected) << round;
        holes += expected.size();
    }
    EXPECT_GT(holes, 10000U);
}

TEST(GetContours, BordersSinglePixelsAndRefusals) {
    EXPECT_THAT(orx::getContours(cv::Mat(5, 8, CV_8UC1, cv::Scalar(3)), orx::ctExternal),
                ElementsAre(SizeIs(22)));
    EXPECT_THAT(orx::getContours(cv::Mat(1, 1, CV_8UC1, cv::Scalar(3)), orx::ctConvexHull),
                ElementsAre(ElementsAre(cv::Point(0, 0))));
    EXPECT_THAT(orx::getContours(cv::Mat::zeros(5, 8, CV_8UC1), orx::ctLargest), IsEmpty());
    for (const cv::Mat& refused : notBinary()) EXPECT_THAT(orx::getContours(refused, orx::ctAll), IsEmpty());
}

TEST(ContourCenters, SubPixelAndListsAgreeWithTheRoundedCentre) {
    const std::vector<cv::Point> block = {{0, 0}, {5, 0}, {5, 2}, {0, 2}};
    EXPECT_EQ(orx::getContourCenterSubPix(block, 0), cv::Point2d(2.5, 1));
    EXPECT_EQ(orx::getContourCenterSubPix({}, 0), cv::Point2d(-1, -1));
    EXPECT_THAT(orx::getContourCenterPts({block, {}, {{7, 8}}}, 1),
                ElementsAre(cv::Point(2, 1), cv::Point(-1, -1), cv::Point(7, 8)));
}

TEST(FillHoles, FillsWhatDoesNotReachTheBorder) {
    const cv::Mat img = drawn({"aaaa.....",  //
                               "a..a.bbb.",  //
                               "a.ca.b.b.",  //
                               "aaaa.bbb.",  //
                               "....d...d",  //
                               "....dd.dd",  //
                               "....d...d"});
    cv::Mat filled;
    ASSERT_TRUE(orx::fillHoles(img, filled));
    cv::Mat expected = img.clone();
    for (const cv::Point p : {cv::Point(1, 1), {2, 1}, {1, 2}, {6, 2}}) expected.at<uchar>(p) = 255;
    EXPECT_EQ(cv::norm(filled, expected, cv::NORM_L1), 0);
    orx::TFillHolesOptions options;
    options.maxArea = 2;  // the hole of three pixels stays
    ASSERT_TRUE(orx::fillHoles(img, filled, options));
    EXPECT_EQ(cv::countNonZero(filled != img), 1);
    EXPECT_EQ(filled.at<uchar>(2, 6), 255);
}

TEST(FillHoles, ConnectivityDecidesWhetherADiagonalRingIsClosed) {
    cv::Mat ring = drawn({".....", "..x..", ".x.x.", "..x..", "....."});
    orx::TFillHolesOptions four;
    four.objects = orx::cnFour;
    cv::Mat filled;
    ASSERT_TRUE(orx::fillHoles(ring, filled, four));
    EXPECT_EQ(cv::countNonZero(filled), 4);
    ASSERT_TRUE(orx::fillHoles(ring, ring));
    EXPECT_EQ(cv::countNonZero(ring), 5);
}

TEST(FillHoles, TheLimitCountsEachHoleAsALabelledComponent) {
    cv::RNG random(6);
    std::size_t dropped = 0;
    for (int round = 0; round < 400; ++round) {
        const cv::Mat img = speckles(random, 1 + round % 2);
        orx::TFillHolesOptions options;
        options.objects = round % 3 == 0 ? orx::cnFour : orx::cnEight;
        cv::Mat filled;
        ASSERT_TRUE(orx::fillHoles(img, filled, options));
        cv::Mat labels;
        cv::Mat statistics;
        cv::Mat centres;
        const int count = cv::connectedComponentsWithStats(filled != img, labels, statistics, centres,
                                                           options.objects == orx::cnFour ? 8 : 4);
        options.maxArea = random.uniform(0, 6) + 0.5;
        for (int label = 1; label < count; ++label) {
            if (statistics.at<int>(label, cv::CC_STAT_AREA) < options.maxArea) continue;
            filled.setTo(0, labels == label);
            ++dropped;
        }
        cv::Mat limited;
        ASSERT_TRUE(orx::fillHoles(img, limited, options));
        ASSERT_EQ(cv::norm(limited, filled, cv::NORM_L1), 0) << round;
    }
    EXPECT_GT(dropped, 1000U);
}

TEST(FillHoles, SinglePixelsAndRefusals) {
    cv::Mat filled;
    ASSERT_TRUE(orx::fillHoles(cv::Mat(1, 1, CV_8UC1, cv::Scalar(0)), filled));
    EXPECT_EQ(filled.at<uchar>(0), 0);
    for (const cv::Mat& refused : notBinary()) EXPECT_FALSE(orx::fillHoles(refused, filled));
    EXPECT_FALSE(orx::fillHoles(filled, filled, {kNan}));
    EXPECT_FALSE(orx::fillHoles(filled, filled, {5, orx::TConnectivity(6)}));
    EXPECT_EQ(filled.size(), cv::Size(1, 1));
}

TEST(RemoveSmallObjects, CountsEightConnectedPixels) {
    const cv::Mat img = drawn({"aa...b",  //
                               "..a...",  //
                               "....cc",  //
                               "d...cc"});
    cv::Mat kept;
    ASSERT_TRUE(orx::removeSmallObjects(img, kept, 3));
    cv::Mat expected = img.clone();
    expected.at<uchar>(0, 5) = 0;
    expected.at<uchar>(3, 0) = 0;
    EXPECT_EQ(cv::norm(kept, expected, cv::NORM_L1), 0);
    ASSERT_TRUE(orx::removeSmallObjects(img, kept, 4));
    EXPECT_EQ(cv::countNonZero(kept), 4);
    ASSERT_TRUE(orx::removeSmallObjects(img, kept, -1));
    EXPECT_EQ(cv::norm(kept, img, cv::NORM_L1), 0);
}

TEST(RemoveShortLines, MeasuresThePathThroughThePixels) {
    const cv::Mat img = drawn({"aaaa.....b",  // a: 3 steps; b: 3 diagonal ones, 4.24
                               "........b.",  //
                               "c......b..",  // c: 2 right, 1 down, no diagonal short cut: 3
                               "ccc...b...",  //
                               "..........",  //
                               "e..f....d.",  // e: 0; f: 2 diagonals of an arrow head, 2.83
                               "..f.f...d."});
    const double diagonal = std::sqrt(2.0);
    for (const auto& [limit, pixels] : std::vector<std::pair<double, int>>{{0, 18},
                                                                           {0.5, 17},
                                                                           {1.01, 15},
                                                                           {2 * diagonal - 0.01, 15},
                                                                           {2 * diagonal + 0.01, 12},
                                                                           {3, 12},
                                                                           {3.01, 4},
                                                                           {3 * diagonal - 0.01, 4},
                                                                           {3 * diagonal + 0.01, 0}}) {
        cv::Mat kept;
        ASSERT_TRUE(orx::removeShortLines(img, kept, limit));
        EXPECT_EQ(cv::countNonZero(kept), pixels) << "limit " << limit;
    }
}

TEST(CleanUp, ListsKeepTheirOrder) {
    std::vector<cv::Vec4i> segments = {{0, 0, 3, 4}, {1, 1, 1, 1}, {9, 9, 0, 9}, {INT_MIN, 0, INT_MAX, 0}};
    orx::removeShortLines(segments, 5);
    EXPECT_THAT(segments,
                ElementsAre(cv::Vec4i(0, 0, 3, 4), cv::Vec4i(9, 9, 0, 9), cv::Vec4i(INT_MIN, 0, INT_MAX, 0)));
    std::vector<std::vector<cv::Point>> contours = {
        {{0, 0}, {4, 0}, {4, 4}, {0, 4}}, {}, {{0, 0}, {30, 0}}, {{1, 1}}};
    auto long_ = contours;
    orx::removeSmallContours(contours, 16);
    EXPECT_THAT(contours, ElementsAre(SizeIs(4)));
    orx::removeSmallContours(long_, 0, 17);
    EXPECT_THAT(long_, ElementsAre(SizeIs(2)));
}

TEST(CleanUp, RefusesWhatIsNotBinary) {
    cv::Mat kept(2, 2, CV_8UC1, cv::Scalar(5));
    for (const cv::Mat& refused : notBinary()) {
        EXPECT_FALSE(orx::removeSmallObjects(refused, kept, 3));
        EXPECT_FALSE(orx::removeShortLines(refused, kept, 3));
    }
    EXPECT_FALSE(orx::removeSmallObjects(kept, kept, kNan));
    EXPECT_FALSE(orx::removeShortLines(kept, kept, kNan));
    EXPECT_EQ(cv::countNonZero(kept == 5), 4);
    ASSERT_TRUE(orx::removeShortLines(cv::Mat(1, 1, CV_8UC1, cv::Scalar(5)), kept, 0.1));
    EXPECT_EQ(cv::countNonZero(kept), 0);
}

}  // namespace
