#include "orxFunctions/matching/part_drawing.h"

#include <gtest/gtest.h>

#include <limits>

#include "orxFunctions/matching/part_outline.h"
#include "taught_scene.h"

namespace {

using namespace taught_scene;
using orx::TFoundPart;
using orx::TPartColours;
using orx::TPartModel;
using orx::TPartPose;

// A circle of 40 pixels about the reference point, walked from the x axis towards the y axis.
TPartModel circleModel() {
    return orx::teachPart(std::vector<orx::TOutline>{{orx::outlineArc({}, 40, 0, 360)}});
}

// Lines are smooth: a pixel beside one has a share of its colour, and of no other.
bool hasColour(const cv::Mat& img, cv::Point2d place, const cv::Scalar& colour) {
    const cv::Vec3b found = img.at<cv::Vec3b>(cvRound(place.y), cvRound(place.x));
    bool has = true;
    for (int c = 0; c < 3; ++c) has = has && (colour[c] > 0 ? found[c] > 60 : found[c] < 30);
    return has;
}

cv::Point2d onCircle(double radius, double degrees, cv::Point2d centre) {
    return centre + radius * cv::Point2d(std::cos(degrees * CV_PI / 180), std::sin(degrees * CV_PI / 180));
}

TEST(PartDrawing, DrawsTheOutlineAndThePose) {
    cv::Mat img = cv::Mat::zeros(200, 220, CV_8UC3);
    TPartColours colours;
    colours.seen = {0, 255, 0};
    colours.pose = {0, 0, 255};
    // One and a half times as large, a quarter turn on.
    orx::drawPartModel(img, circleModel(), {110, 100, 90, 1.5}, colours);
    for (int angle = 0; angle < 360; ++angle) {
        EXPECT_TRUE(hasColour(img, onCircle(60, angle, {110, 100}), colours.seen)) << angle;
        EXPECT_EQ(img.at<cv::Vec3b>(onCircle(56, angle, {110, 100})), cv::Vec3b()) << angle;
    }
    // The direction is down, to half the radius; the cross reaches six pixels to the other sides.
    EXPECT_TRUE(hasColour(img, {110, 128}, colours.pose));
    EXPECT_TRUE(hasColour(img, {115, 100}, colours.pose) && hasColour(img, {105, 100}, colours.pose));
    EXPECT_TRUE(hasColour(img, {110, 95}, colours.pose));
    EXPECT_EQ(img.at<cv::Vec3b>(135, 110), cv::Vec3b());
    EXPECT_EQ(img.at<cv::Vec3b>(90, 110), cv::Vec3b());
}

TEST(PartDrawing, TellsWhatIsSeenAndTheScore) {
    const TPartModel model = circleModel();
    TFoundPart part;
    part.pose = {60, 70, 0, 1};
    part.score = 0.5;
    for (const cv::Point2d& p : model.outline()) part.seen.push_back(p.y > 0 ? 1 : 0);
    TFoundPart other = part;
    other.pose = {160, 70, 0, 1};
    other.seen.clear();
    TPartColours colours;
    colours.seen = {0, 255, 0};
    colours.unseen = {0, 0, 255};
    colours.pose = {};
    colours.score = {255, 255, 255};
    cv::Mat img = cv::Mat::zeros(140, 220, CV_8UC3);
    orx::drawFoundParts(img, model, {part, other}, colours);
    // The text lies over the rest.
    for (int angle = 40; angle < 150; ++angle) {
        EXPECT_TRUE(hasColour(img, onCircle(40, angle, {60, 70}), colours.seen)) << angle;
        EXPECT_TRUE(hasColour(img, onCircle(40, -angle, {60, 70}), colours.unseen)) << angle;
        EXPECT_TRUE(hasColour(img, onCircle(40, -angle, {160, 70}), colours.seen)) << angle;
    }
    // Text beside each place.
    for (const int x : {60, 160}) {
        cv::Mat grey;
        cv::extractChannel(img(cv::Rect(x + 6, 50, 24, 14)), grey, 0);
        EXPECT_GT(cv::countNonZero(grey > 100), 10);
    }
}

TEST(PartDrawing, KeepsToThePictureAtAnyPose) {
    const TPartModel model = circleModel();
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (const int type : {CV_8UC1, CV_8UC2, CV_8UC3, CV_8UC4, CV_16UC1, CV_16UC3, CV_16UC4}) {
        cv::Mat whole = cv::Mat::zeros(60, 60, type);
        cv::Mat img = whole(cv::Rect(20, 20, 17, 11));
        for (const TPartPose& pose :
             {TPartPose{8, 5, 0, 1}, TPartPose{-30, 5, 200, 1}, TPartPose{8, 1e9, 0, 1},
              TPartPose{8, 5, 0, 1e12}, TPartPose{8, 5, 1e300, 1}, TPartPose{kNan, 5, 0, 1},
              TPartPose{8, -kInfinity, 0, 1}, TPartPose{8, 5, kNan, kInfinity},
              TPartPose{-1e300, 1e300, 3, 1}, TPartPose{8, 5, 0, 0}, TPartPose{8, 5, 0, 0.1}}) {
            TFoundPart part;
            part.pose = pose;
            part.score = kNan;
            part.seen = {1, 0, 1};  // of another model
            orx::drawFoundParts(img, model, {part}, {});
            TPartColours thick;
            thick.thickness = 1000000;
            orx::drawPartModel(img, model, pose, thick);
        }
        EXPECT_GT(cv::norm(img), 0) << type;
        img.setTo(0);
        EXPECT_EQ(cv::norm(whole), 0) << type;
    }
}

TEST(PartDrawing, LeavesOtherPicturesAlone) {
    const TPartPose pose{10, 10, 0, 0.2};
    cv::Mat empty;
    orx::drawPartModel(empty, circleModel(), pose);
    EXPECT_TRUE(empty.empty());
    for (const int type : {CV_32FC1, CV_8UC(5), CV_8SC1}) {
        cv::Mat img = cv::Mat::zeros(20, 20, type);
        orx::drawPartModel(img, circleModel(), pose);
        EXPECT_EQ(cv::countNonZero(img.reshape(1)), 0);
    }
    cv::Mat img = cv::Mat::zeros(20, 20, CV_8UC1);
    orx::drawPartModel(img, TPartModel(), pose);
    orx::drawFoundParts(img, TPartModel(), {TFoundPart()});
    EXPECT_EQ(cv::countNonZero(img), 0);
    // In a grey picture all colours can be told from black.
    orx::drawPartModel(img, circleModel(), pose);
    EXPECT_GT(img.at<unsigned char>(10, 18), 50);
}

}  // namespace
