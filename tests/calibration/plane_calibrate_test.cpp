#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "tests/calibration/plane_views.h"

namespace {

const std::vector<cv::Point2d> kPlaces{{0, 0}, {50, 35}, {100, 70}, {100, 0}, {20, 60}};

TEST(CalibratePlane, PointsWithoutNoiseTellTheCameraItself) {
    cv::RNG random(1);
    const scenes::PlaneCamera camera = test::bentCamera();
    const std::vector<orx::TTargetView> views = test::eightViews(camera, 0, random);
    const orx::TPlaneCalibration found = orx::calibratePlane(views);
    ASSERT_TRUE(found.valid()) << found.problem;
    EXPECT_LT(found.rms, 1e-7);
    EXPECT_EQ(found.views, 8);
    EXPECT_NEAR(found.camera(0, 0), camera.fx, 1e-5);
    EXPECT_NEAR(found.camera(1, 2), camera.cy, 1e-5);
    EXPECT_NEAR(found.distortion[0], camera.k1, 1e-7);
    EXPECT_NEAR(found.distortion[3], camera.p2, 1e-8);
    EXPECT_EQ(found.distortion[4], 0);
    const scenes::PlaneCamera plane = test::eightPoses(camera).front();
    for (const cv::Point2d& p : kPlaces)
        EXPECT_LT(cv::norm(orx::imageToPlane(found, plane.project(p)) - p), 1e-6);

    // Half of the picture and more is covered; by hand from the hulls' sizes it can't be all of it.
    EXPECT_GT(found.coverage, 0.3);
    EXPECT_LT(found.coverage, 1);

    // The parts' upper side, 8 mm nearer to the camera: a place there is seen where the camera, moved 8 mm
    // towards the plane, would see the one below.
    orx::TPlaneOptions raised;
    raised.height = 8;
    const orx::TPlaneCalibration above = orx::calibratePlane(views, raised);
    scenes::PlaneCamera lifted = plane;
    const cv::Vec3d normal(plane.rotation(0, 2), plane.rotation(1, 2), plane.rotation(2, 2));
    lifted.translation -= 8 * normal;
    ASSERT_LT(cv::norm(lifted.translation), cv::norm(plane.translation));
    for (const cv::Point2d& p : kPlaces)
        EXPECT_LT(cv::norm(orx::imageToPlane(above, lifted.project(p)) - p), 1e-6);
}

// Over many drawn calibrations, mapped points and distances scatter about the truth as each says of itself.
TEST(CalibratePlane, StatedUncertaintyIsThatOfRepetitions) {
    constexpr int kTrials = 80;
    constexpr double kNoise = 0.05;
    cv::RNG random(3);
    const scenes::PlaneCamera plane = test::eightPoses(test::bentCamera()).front();
    std::vector<cv::Point2d> pixels;
    for (const cv::Point2d& p : kPlaces) pixels.push_back(plane.project(p));
    double squares = 0;
    double lengthSquares = 0;
    double noise = 0;
    double places = 0;
    orx::TPlaneOptions options;
    options.height = 8;  // the share of the rotation in a raised plane is part of what is tested
    for (int trial = 0; trial < kTrials; ++trial) {
        orx::TPlaneCalibration found =
            orx::calibratePlane(test::eightViews(test::bentCamera(), kNoise, random), options);
        ASSERT_TRUE(found.valid());
        noise += found.noise / kTrials;
        const cv::Mat covariance = orx::planeCovariance(found, pixels);
        ASSERT_FALSE(covariance.empty());
        scenes::PlaneCamera lifted = plane;
        lifted.translation -= 8 * cv::Vec3d(plane.rotation(0, 2), plane.rotation(1, 2), plane.rotation(2, 2));
        std::vector<cv::Point2d> off;
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            off.push_back(orx::imageToPlane(found, pixels[i]) - lifted.place(pixels[i]));
            const int k = 2 * static_cast<int>(i);
            squares += off[i].x * off[i].x / covariance.at<double>(k, k) +
                       off[i].y * off[i].y / covariance.at<double>(k + 1, k + 1);
            places += 2;
        }
        // Between the first and the third, along the line that joins them.
        const cv::Point2d along = (kPlaces[2] - kPlaces[0]) * (1 / cv::norm(kPlaces[2] - kPlaces[0]));
        const cv::Mat direction =
            (cv::Mat_<double>(1, 10) << -along.x, -along.y, 0, 0, along.x, along.y, 0, 0, 0, 0);
        const double variance = cv::Mat(direction * covariance * direction.t()).at<double>(0);
        const double length = along.dot(off[2] - off[0]);
        lengthSquares += length * length / variance;
    }
    EXPECT_NEAR(noise, kNoise, 0.02 * kNoise);
    EXPECT_NEAR(std::sqrt(squares / places), 1, 0.15);
    EXPECT_NEAR(std::sqrt(lengthSquares / kTrials), 1, 0.2);
}

TEST(CalibratePlane, AHomographyTellsAPlaneWithoutALens) {
    cv::RNG random(4);
    const scenes::PlaneCamera plane = scenes::tilted(scenes::PlaneCamera(), {50, 35}, 300, 20, 70, 10);
    orx::TPlaneOptions options;
    options.lens = false;
    const orx::TPlaneCalibration exact =
        orx::calibratePlane({test::cornersSeen(plane, 11, 8, 10, 0, random)}, options);
    ASSERT_TRUE(exact.valid()) << exact.problem;
    const cv::Point2d outside(-20, 90);
    EXPECT_LT(cv::norm(orx::imageToPlane(exact, plane.project(outside)) - outside), 1e-7);
    EXPECT_LT(cv::norm(orx::planeToImage(exact, outside) - plane.project(outside)), 1e-6);

    constexpr int kTrials = 400;
    double squares = 0;
    for (int trial = 0; trial < kTrials; ++trial) {
        const orx::TPlaneCalibration found =
            orx::calibratePlane({test::cornersSeen(plane, 11, 8, 10, 0.05, random)}, options);
        const cv::Mat covariance = orx::planeCovariance(found, {plane.project(outside)});
        ASSERT_EQ(covariance.size(), cv::Size(2, 2));
        const cv::Point2d off = orx::imageToPlane(found, plane.project(outside)) - outside;
        squares +=
            cv::Mat(cv::Matx12d(off.x, off.y) * covariance.inv() * cv::Matx21d(off.x, off.y)).at<double>(0);
    }
    EXPECT_NEAR(squares / (2 * kTrials), 1, 0.12);
}

TEST(CalibratePlane, AKnownLensTellsAPlaneFromOneView) {
    cv::RNG random(6);
    const scenes::PlaneCamera camera = test::bentCamera();
    const scenes::PlaneCamera elsewhere = scenes::tilted(camera, {50, 35}, 300, 8, 200, -30);
    constexpr int kTrials = 40;
    double squares = 0;
    for (int trial = 0; trial < kTrials; ++trial) {
        const orx::TPlaneCalibration lens = orx::calibratePlane(test::eightViews(camera, 0.05, random));
        const orx::TPlaneCalibration found =
            orx::relocatePlane(lens, test::cornersSeen(elsewhere, 11, 8, 10, 0.05, random));
        ASSERT_TRUE(found.valid()) << found.problem;
        EXPECT_EQ(found.camera, lens.camera);
        const cv::Point2d pixel = elsewhere.project({90, 60});
        const cv::Mat covariance = orx::planeCovariance(found, {pixel});
        const cv::Point2d off = orx::imageToPlane(found, pixel) - cv::Point2d(90, 60);
        squares +=
            cv::Mat(cv::Matx12d(off.x, off.y) * covariance.inv() * cv::Matx21d(off.x, off.y)).at<double>(0);
    }
    EXPECT_NEAR(squares / (2 * kTrials), 1, 0.35);
}

TEST(CalibratePlane, WhatIsNotKnownOfScaleAndHeightIsAdded) {
    cv::RNG random(8);
    const std::vector<orx::TTargetView> views = test::eightViews(test::bentCamera(), 0, random);
    const scenes::PlaneCamera plane = test::eightPoses(test::bentCamera()).front();
    const std::vector<cv::Point2d> ends{plane.project({0, 0}), plane.project({100, 0})};
    const auto lengthDeviation = [&](const orx::TPlaneCalibration& calibration) {
        const cv::Mat c = orx::planeCovariance(calibration, ends);
        return std::sqrt(c.at<double>(0, 0) + c.at<double>(2, 2) - 2 * c.at<double>(0, 2));
    };
    orx::TPlaneOptions options;
    options.scaleDeviation = 1e-3;
    EXPECT_NEAR(lengthDeviation(orx::calibratePlane(views, options)), 0.1, 1e-4);
    options.lens = false;
    options.mostRms = 10;
    EXPECT_NEAR(lengthDeviation(orx::calibratePlane(views, options)), 0.1, 0.01);
    options = {};
    options.heightDeviation = 2;
    // Seen straight down, a height of 2 mm at 260 mm is a share of 2 / 260; the tilt of 12 degrees changes
    // little.
    EXPECT_NEAR(lengthDeviation(orx::calibratePlane(views, options)), 100 * 2.0 / 260, 0.15);
}

// A view is rough beside the typical one, which of two is the better.
TEST(CalibratePlane, RoughViewsAreNamedBesideTheTypicalOne) {
    const scenes::PlaneCamera camera = test::bentCamera();
    const orx::TPlaneCalibration truth = test::truthOf(camera);
    const auto roughOnes = [&](const std::vector<double>& noises) {
        cv::RNG random(5);
        std::vector<orx::TTargetView> views;
        const std::vector<scenes::PlaneCamera> poses = test::eightPoses(camera);
        for (std::size_t i = 0; i < noises.size(); ++i)
            views.push_back(test::cornersSeen(poses[i], 11, 8, 10, noises[i], random));
        std::vector<int> named;
        for (const std::string& warning : orx::planeWarnings(truth, views)) {
            int view = 0;
            if (warning.find("the others by") != std::string::npos &&
                std::sscanf(warning.c_str(), "view %d fits", &view) == 1)
                named.push_back(view);
        }
        return named;
    };
    using Views = std::vector<int>;
    EXPECT_EQ(roughOnes({0.05}), Views());
    EXPECT_EQ(roughOnes({0.05, 0.2}), Views{2});
    EXPECT_EQ(roughOnes({0.18, 0.05, 0.1}), Views()) << "not even twice the typical";
    EXPECT_EQ(roughOnes({0.05, 0.4, 0.1, 0.05}), Views{2});
}

TEST(CalibratePlane, RefusalsSayWhy) {
    cv::RNG random(9);
    const scenes::PlaneCamera camera = test::bentCamera();
    const std::vector<orx::TTargetView> good = test::eightViews(camera, 0.05, random);
    const auto statusOf = [](const std::vector<orx::TTargetView>& views,
                             const orx::TPlaneOptions& options = {}) {
        const orx::TPlaneCalibration found = orx::calibratePlane(views, options);
        EXPECT_FALSE(found.valid());
        EXPECT_TRUE(std::isnan(orx::imageToPlane(found, {640, 480}).x));
        return found.status;
    };
    EXPECT_EQ(statusOf({}), orx::plNoTarget);
    EXPECT_EQ(statusOf({orx::TTargetView(), good[1], good[2], good[3]}), orx::plNoTarget);
    EXPECT_EQ(statusOf({good[0], good[1]}), orx::plTooFewViews);

    // All straight down: nothing tells the focal length from the distance.
    std::vector<orx::TTargetView> alike;
    for (int i = 0; i < 6; ++i) {
        alike.push_back(test::cornersSeen(scenes::tilted(camera, {50, 35}, 280 + i, 0, 0, 10.0 * i), 11, 8,
                                          10, 0.05, random));
    }
    EXPECT_EQ(statusOf(alike), orx::plTooFewViews);

    std::vector<orx::TTargetView> views = good;
    views[3].imageSize = {1280, 1024};
    EXPECT_EQ(statusOf(views), orx::plMixedSizes);
    views = good;
    views[3].pixels[5].x = std::nan("");
    EXPECT_EQ(statusOf(views), orx::plBadViews);
    views = good;
    views[3].deviations.pop_back();
    EXPECT_EQ(statusOf(views), orx::plBadViews);
    views = good;
    views[3].deviations[0] = 0;
    EXPECT_EQ(statusOf(views), orx::plBadViews);
    views = good;
    std::rotate(views[0].pixels.begin(), views[0].pixels.begin() + 30, views[0].pixels.end());
    EXPECT_EQ(statusOf(views), orx::plNotConverged);
    orx::TTargetView onLine = good[0];
    for (cv::Point2d& p : onLine.plane) p.y = 0;
    for (cv::Point2d& p : onLine.pixels) p.y = 100;
    orx::TPlaneOptions options;
    options.lens = false;
    EXPECT_EQ(statusOf({onLine}, options), orx::plNotConverged);
    options.height = 3;
    EXPECT_EQ(statusOf(good, options), orx::plBadOptions);
    options = {};
    options.radial = 4;
    EXPECT_EQ(statusOf(good, options), orx::plBadOptions);
    options = {};
    options.mostRms = std::nan("");
    EXPECT_EQ(statusOf(good, options), orx::plBadOptions);
    for (int status = orx::plOk; status <= orx::plUnwritable; ++status)
        EXPECT_STRNE(orx::planeStatusText(static_cast<orx::TPlaneStatus>(status)), "unknown status");
}

}  // namespace
