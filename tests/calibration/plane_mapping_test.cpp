#include <gtest/gtest.h>

#include <cmath>

#include "tests/calibration/plane_views.h"

namespace {

scenes::PlaneCamera tiltedCamera() { return scenes::tilted(test::bentCamera(), {50, 35}, 260, 30, 20, 15); }

std::vector<cv::Point2d> field() {
    std::vector<cv::Point2d> pixels;
    for (int y = 0; y < 960; y += 137) {
        for (int x = 0; x < 1280; x += 151) pixels.emplace_back(x + 0.3, y - 0.2);
    }
    return pixels;
}

TEST(PlaneMapping, PixelsShowThePlacesThatTheCameraSees) {
    const scenes::PlaneCamera camera = tiltedCamera();
    const orx::TPlaneCalibration calibration = test::truthOf(camera);
    const std::vector<cv::Point2d> pixels = field();
    const std::vector<cv::Point2d> places = orx::imageToPlane(calibration, pixels);
    const std::vector<cv::Point2d> back = orx::planeToImage(calibration, places);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        EXPECT_LT(cv::norm(places[i] - camera.place(pixels[i])), 1e-9);
        EXPECT_LT(cv::norm(camera.project(places[i]) - pixels[i]), 1e-9);
        EXPECT_LT(cv::norm(back[i] - pixels[i]), 1e-9);
        EXPECT_EQ(places[i], orx::imageToPlane(calibration, pixels[i]));
    }
}

TEST(PlaneMapping, StrongLensesAreUndoneUpToTheirFold) {
    // r (1 + k1 r^2) grows up to r = 1 / sqrt(-3 k1), where it is 2/3 of that.
    scenes::PlaneCamera camera;
    camera.k1 = -0.5;
    camera.fx = camera.fy = 700;
    const double fold = 1 / std::sqrt(1.5);
    const double seenFold = fold * 2 / 3 * 700;
    const orx::TPlaneCalibration calibration = test::truthOf(camera);
    for (const double share : {0.5, 0.9, 0.99, 0.9999}) {
        const cv::Point2d pixel(640 + share * seenFold, 480);
        const cv::Point2d place = orx::imageToPlane(calibration, pixel);
        EXPECT_LT(place.x, fold * 400);
        EXPECT_LT(cv::norm(camera.project(place) - pixel), 1e-9);
        EXPECT_LT(cv::norm(orx::planeToImage(calibration, place) - pixel), 1e-9);
    }
    EXPECT_TRUE(std::isnan(orx::imageToPlane(calibration, {640 + 1.01 * seenFold, 480}).x));
    EXPECT_TRUE(std::isnan(orx::imageToPlane(calibration, {640, 480 - 5 * seenFold}).y));
    EXPECT_TRUE(std::isnan(orx::planeToImage(calibration, {1.01 * fold * 400, 0}).x));
    EXPECT_FALSE(std::isnan(orx::planeToImage(calibration, {0.99 * fold * 400, 0}).x));
    // Cushions and barrels of every strength and both signs of k2 come back to where they were, or are
    // refused: none comes back to another place.
    cv::RNG random(5);
    int refused = 0;
    for (int i = 0; i < 3000; ++i) {
        camera.k1 = random.uniform(-0.6, 0.6);
        camera.k2 = random.uniform(-0.5, 0.5);
        camera.k3 = random.uniform(-0.3, 0.3);
        camera.p1 = random.uniform(-0.01, 0.01);
        camera.p2 = random.uniform(-0.01, 0.01);
        const orx::TPlaneCalibration lens = test::truthOf(camera);
        const cv::Point2d place(random.uniform(-400.0, 400.0), random.uniform(-300.0, 300.0));
        const cv::Point2d pixel = orx::planeToImage(lens, place);
        if (std::isnan(pixel.x)) {
            ++refused;
            continue;
        }
        EXPECT_LT(cv::norm(pixel - camera.project(place)), 1e-9);
        EXPECT_LT(cv::norm(orx::imageToPlane(lens, pixel) - place), 1e-6) << i;
    }
    EXPECT_GT(refused, 100);
    EXPECT_LT(refused, 1500);
}

TEST(PlaneMapping, WhatDoesNotMeetThePlaneHasNoPlace) {
    // 80 degrees: the horizon lies in the picture.
    const scenes::PlaneCamera camera = scenes::tilted(test::bentCamera(), {0, 0}, 300, 80, 0, 0);
    const orx::TPlaneCalibration calibration = test::truthOf(camera);
    const cv::Point2d low = orx::imageToPlane(calibration, {640, 0});
    const cv::Point2d high = orx::imageToPlane(calibration, {640, 959});
    EXPECT_NE(std::isnan(low.x), std::isnan(high.x));
    // A place behind the camera.
    const cv::Point2d near = std::isnan(low.x) ? high : low;
    EXPECT_FALSE(std::isnan(orx::planeToImage(calibration, near).x));
    EXPECT_TRUE(std::isnan(orx::planeToImage(calibration, near * 1e4).x) ||
                std::isnan(orx::planeToImage(calibration, near * -1e4).x));
    EXPECT_TRUE(std::isnan(orx::imageToPlane(orx::TPlaneCalibration(), {1, 1}).x));
    const double nan = std::nan("");
    EXPECT_TRUE(std::isnan(orx::imageToPlane(calibration, {nan, 1}).x));
    EXPECT_TRUE(std::isnan(orx::pixelSize(orx::TPlaneCalibration(), {1, 1})));
    EXPECT_TRUE(orx::planeCovariance(calibration, {{nan, 1}}).empty());
    EXPECT_TRUE(orx::planeCovariance(calibration, {}).empty());
    EXPECT_TRUE(orx::planeCovariance(calibration, {{640, 480}}, cv::Mat::eye(3, 3, CV_64F)).empty());
}

TEST(PlaneMapping, TheDerivativeIsThatOfTheMap) {
    const orx::TPlaneCalibration calibration = test::truthOf(tiltedCamera());
    const double h = 1e-4;
    for (const cv::Point2d& p : field()) {
        const cv::Matx22d derivative = orx::planeJacobian(calibration, p);
        const cv::Point2d dx = (orx::imageToPlane(calibration, p + cv::Point2d(h, 0)) -
                                orx::imageToPlane(calibration, p - cv::Point2d(h, 0))) *
                               (0.5 / h);
        const cv::Point2d dy = (orx::imageToPlane(calibration, p + cv::Point2d(0, h)) -
                                orx::imageToPlane(calibration, p - cv::Point2d(0, h))) *
                               (0.5 / h);
        EXPECT_LT(cv::norm(derivative - cv::Matx22d(dx.x, dy.x, dx.y, dy.y)), 1e-8);
        EXPECT_NEAR(orx::pixelSize(calibration, p), std::sqrt(std::abs(dx.cross(dy))), 1e-8);
    }
    // Straight down, a pixel is the distance over the focal length.
    EXPECT_NEAR(orx::pixelSize(test::truthOf(scenes::PlaneCamera()), {100, 700}), 400.0 / 2000, 1e-12);
}

// Calibrations drawn from the covariance scatter mapped points as planeCovariance says.
TEST(PlaneMapping, ParametersScatterPointsAsStated) {
    const orx::TPlaneCalibration truth = test::truthOf(tiltedCamera());
    orx::TPlaneCalibration stated = truth;
    const double deviations[] = {2, 2, 1, 1, 1e-3, 1e-2, 1e-4, 1e-4, 0, 1e-4, 1e-4, 1e-4, 0.02, 0.02, 0.3};
    for (int k = 0; k < orx::kPlaneParameters; ++k) stated.covariance(k, k) = deviations[k] * deviations[k];
    stated.covariance(0, 14) = stated.covariance(14, 0) = 0.95 * deviations[0] * deviations[14];
    const std::vector<cv::Point2d> pixels{{100, 90}, {130, 90}, {1200, 900}};
    const cv::Mat pixelCovariance = 4e-4 * cv::Mat::eye(6, 6, CV_64F);
    const cv::Mat covariance = orx::planeCovariance(stated, pixels, pixelCovariance);
    ASSERT_EQ(covariance.size(), cv::Size(6, 6));

    cv::RNG random(7);
    const std::vector<cv::Point2d> places = orx::imageToPlane(truth, pixels);
    cv::Mat scatter = cv::Mat::zeros(6, 6, CV_64F);
    constexpr int kDraws = 20000;
    for (int i = 0; i < kDraws; ++i) {
        double drawn[orx::kPlaneParameters];
        for (int k = 0; k < orx::kPlaneParameters; ++k) drawn[k] = random.gaussian(1);
        drawn[14] = 0.95 * drawn[0] + std::sqrt(1 - 0.95 * 0.95) * drawn[14];
        for (int k = 0; k < orx::kPlaneParameters; ++k) drawn[k] *= deviations[k];
        orx::TPlaneCalibration other = truth;
        other.camera(0, 0) += drawn[0];
        other.camera(1, 1) += drawn[1];
        other.camera(0, 2) += drawn[2];
        other.camera(1, 2) += drawn[3];
        for (int k = 0; k < 5; ++k) other.distortion[k] += drawn[4 + k];
        for (int k = 0; k < 3; ++k) {
            other.rotation[k] += drawn[9 + k];
            other.translation[k] += drawn[12 + k];
        }
        cv::Mat off(6, 1, CV_64F);
        for (int p = 0; p < 3; ++p) {
            const auto at = static_cast<std::size_t>(p);
            const cv::Point2d seen = pixels[at] + cv::Point2d(random.gaussian(0.02), random.gaussian(0.02));
            const cv::Point2d moved = orx::imageToPlane(other, seen) - places[at];
            off.at<double>(2 * p) = moved.x;
            off.at<double>(2 * p + 1) = moved.y;
        }
        scatter += off * off.t() / kDraws;
    }
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < 6; ++j) {
            const double scale = std::sqrt(scatter.at<double>(i, i) * scatter.at<double>(j, j));
            EXPECT_NEAR(covariance.at<double>(i, j) / scale, scatter.at<double>(i, j) / scale, 0.03);
        }
    }
    // The distance of the two near points is known much better than their places.
    const double place = covariance.at<double>(0, 0);
    const double apart = place + covariance.at<double>(2, 2) - 2 * covariance.at<double>(0, 2);
    EXPECT_LT(apart, 0.2 * place);
    EXPECT_EQ(orx::planeSensitivity(stated, pixels).size(), cv::Size(15, 6));
}

}  // namespace
