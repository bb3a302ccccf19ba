#include "orxFunctions/matching/part_pose.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using orx::applyPose;
using orx::TPartPose;

constexpr double kDegree = CV_PI / 180;

void expectNear(cv::Point2d found, cv::Point2d expected, double tolerance = 1e-12) {
    EXPECT_NEAR(found.x, expected.x, tolerance);
    EXPECT_NEAR(found.y, expected.y, tolerance);
}

// A quarter turn clockwise on the screen takes the x axis to the y axis.
const TPartPose kQuarter{100, 50, 90, 2};

TEST(PartPose, TakesPointsOfTheModelIntoThePicture) {
    expectNear(applyPose(kQuarter, cv::Point2d(0, 0)), {100, 50});
    expectNear(applyPose(kQuarter, cv::Point2d(10, 0)), {100, 70}, 1e-10);
    expectNear(applyPose(kQuarter, cv::Point2d(0, 10)), {80, 50}, 1e-10);
    const std::vector<cv::Point2d> points =
        orx::applyPoseToPoints(kQuarter, std::vector<cv::Point2d>{{3, 4}, {-1, 0}});
    ASSERT_EQ(points.size(), 2U);
    expectNear(points[0], {92, 56}, 1e-10);
    expectNear(points[1], {100, 48}, 1e-10);
    EXPECT_TRUE(orx::applyPoseToPoints(kQuarter, std::vector<cv::Point2d>()).empty());
}

TEST(PartPose, ComposesAndInverts) {
    const TPartPose outer{12.5, -3, 171, 1.3};
    const TPartPose inner{-40, 7, 33, 0.8};
    const TPartPose both = orx::composePoses(outer, inner);
    EXPECT_NEAR(both.angle, 204 - 360, 1e-12);
    EXPECT_NEAR(both.scale, 1.04, 1e-12);
    for (const cv::Point2d p : {cv::Point2d(0, 0), cv::Point2d(25, -60)}) {
        expectNear(applyPose(both, p), applyPose(outer, applyPose(inner, p)), 1e-10);
        expectNear(applyPose(orx::invertPose(outer), applyPose(outer, p)), p, 1e-10);
    }
    EXPECT_EQ(orx::invertPose({0, 0, 180, 1}).angle, -180);
}

TEST(PartPose, TakesShapesAndCalipersAlong) {
    const cv::RotatedRect box = orx::applyPoseToBox(kQuarter, cv::RotatedRect({10, 0}, {30, 8}, 100));
    EXPECT_NEAR(box.center.x, 100, 1e-4);
    EXPECT_NEAR(box.center.y, 70, 1e-4);
    EXPECT_FLOAT_EQ(box.size.width, 60);
    EXPECT_FLOAT_EQ(box.size.height, 16);
    EXPECT_FLOAT_EQ(box.angle, -170);

    orx::TCircle circle;
    circle.y = 5;
    circle.r = 7;
    circle.pointCount = 11;
    circle = orx::applyPoseToCircle(kQuarter, circle);
    expectNear({circle.x, circle.y}, {90, 50}, 1e-10);
    EXPECT_EQ(circle.r, 14);
    EXPECT_EQ(circle.pointCount, 11);

    const orx::TLineSegment segment = orx::applyPoseToSegment(kQuarter, orx::TLineSegment{{1, 0}, {0, 1}});
    expectNear(segment.from, {100, 52}, 1e-10);
    expectNear(segment.to, {98, 50}, 1e-10);

    orx::TCircleCaliperOptions calipers;
    calipers.startAngle = 135;
    calipers.sweep = -200;
    calipers.searchLength = 12;
    calipers.width = 0.2;
    calipers = orx::applyPoseToCalipers(kQuarter, calipers);
    EXPECT_EQ(calipers.startAngle, -135);
    EXPECT_EQ(calipers.sweep, -200);
    EXPECT_EQ(calipers.searchLength, 24);
    EXPECT_EQ(calipers.width, 1);
    EXPECT_EQ(orx::applyPoseToAngle(kQuarter, 95), -175);
}

// Each parameter alone, by hand: an angle moves a point along its circle, a scale away from the origin.
TEST(PartPose, PropagatesTheCovarianceOfThePose) {
    const TPartPose pose{0, 0, 30, 2};
    const cv::Point2d point(10, 0);  // 20 pixels from the place, in the direction of 30 degrees
    cv::Matx44d covariance = cv::Matx44d::zeros();
    covariance(0, 0) = 0.04;
    covariance(1, 1) = 0.09;
    covariance(0, 1) = covariance(1, 0) = 0.01;
    EXPECT_LT(cv::norm(orx::mappedCovariance(pose, covariance, point), cv::Matx22d(0.04, 0.01, 0.01, 0.09)),
              1e-12);

    covariance = cv::Matx44d::zeros();
    covariance(2, 2) = 0.25;  // half a degree: 20 * 0.5 degrees along (-sin 30, cos 30)
    const double along = 20 * 0.5 * kDegree;
    const cv::Vec2d across(-0.5, std::sqrt(0.75));
    EXPECT_LT(cv::norm(orx::mappedCovariance(pose, covariance, point), along * along * across * across.t()),
              1e-12);

    covariance = cv::Matx44d::zeros();
    covariance(3, 3) = 1e-4;  // 0.01 of the scale: 0.1 pixels outwards
    const cv::Vec2d outwards(std::sqrt(0.75), 0.5);
    EXPECT_LT(cv::norm(orx::mappedCovariance(pose, covariance, point), 0.01 * outwards * outwards.t()),
              1e-12);
}

}  // namespace
