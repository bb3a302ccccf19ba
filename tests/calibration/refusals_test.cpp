// Why calibration refuses: each code that a header names, provoked.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "plane_views.h"
#include "tests/support/refusal_check.h"
#include "tests/support/temporary_folder.h"

namespace {

using orx::test::notRefused;
using orx::test::refusedWith;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<orx::TTargetView> views() {
    cv::RNG random(3);
    return test::eightViews(test::bentCamera(), 0.02, random);
}

orx::TPlaneCalibration truth() {
    const scenes::PlaneCamera camera = test::eightPoses(test::bentCamera()).front();
    orx::TPlaneCalibration plane = test::truthOf(camera);
    plane.degreesOfFreedom = 100;
    plane.noise = plane.rms = 0.02;
    plane.coverage = 0.5;
    plane.views = 8;
    return plane;
}

TEST(CalibrationRefusals, Files) {
    const test::TemporaryFolder folder;
    const cv::Mat matrix = cv::Mat::eye(3, 3, CV_64F);
    const auto read = [&](const std::string& name) {
        return [&folder, name] {
            cv::Mat intrinsic, distortion;
            cv::Size size;
            std::string text;
            EXPECT_FALSE(orx::calibrateDataFromFile(folder / name, intrinsic, distortion, size, text));
        };
    };
    const auto readPlane = [&](const std::string& name) {
        return [&folder, name] { EXPECT_FALSE(orx::readPlaneCalibration(folder / name).valid()); };
    };
    test::writeBytes(folder / "text.yml", "no calibration");
    test::writeBytes(folder / "deep.yml", "%YAML:1.0\n---\na: " + std::string(2000, '['));
    for (const auto& [code, name] : {std::pair{orx::rcFileMissing, "none.yml"},
                                     {orx::rcFileUnreadable, "."},
                                     {orx::rcFileFormat, "text.yml"},
                                     {orx::rcFileFormat, "deep.yml"}}) {
        EXPECT_TRUE(refusedWith(code, "calibrateDataFromFile", read(name)));
        EXPECT_TRUE(refusedWith(code, "readPlaneCalibration", readPlane(name)));
    }
    EXPECT_TRUE(refusedWith(orx::rcFileUnwritable, "calibrateData2File", [&] {
        EXPECT_THROW(orx::calibrateData2File(matrix, matrix, {1, 1}, "", folder / "none/c.yml"),
                     cv::Exception);
    }));
    orx::TPlaneCalibration plane = truth();
    const auto write = [&](const std::string& name) {
        return [&plane, &folder, name] {
            EXPECT_NE(orx::writePlaneCalibration(folder / name, plane), orx::plOk);
        };
    };
    EXPECT_TRUE(refusedWith(orx::rcFileUnwritable, "writePlaneCalibration", write("none/c.yml")));
    EXPECT_TRUE(notRefused([&] {
        EXPECT_EQ(orx::writePlaneCalibration(folder / "c.yml", plane), orx::plOk);
        EXPECT_TRUE(orx::readPlaneCalibration(folder / "c.yml").valid());
        orx::calibrateData2File(matrix, matrix, {1, 1}, "", folder / "d.yml");
    }));
    plane.rms = kNaN;
    EXPECT_TRUE(refusedWith(orx::rcNotFinite, "writePlaneCalibration", write("c.yml")));
    plane.status = orx::plNoTarget;
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "writePlaneCalibration", write("c.yml")));
}

TEST(CalibrationRefusals, PicturesAndTargets) {
    const auto background = [](int width, int cell) {
        return [=] { EXPECT_TRUE(orx::createBackgroundImg(width, 10, 1, cell, 0, 255).empty()); };
    };
    EXPECT_TRUE(refusedWith(orx::rcImageSize, "createBackgroundImg", background(0, 5)));
    EXPECT_TRUE(refusedWith(orx::rcImageSize, "createBackgroundImg", background(1 << 30, 5)));
    EXPECT_TRUE(refusedWith(orx::rcOption, "createBackgroundImg", background(10, 0)));
    EXPECT_TRUE(refusedWith(orx::rcImageSize, "createCalibrateImage", [] {
        EXPECT_TRUE(orx::createCalibrateImage({5, -1}, 5, 1).empty());
    }));

    const int sizes[] = {30, 30, 30};
    const std::vector<std::pair<orx::TRefusalCode, cv::Mat>> pictures{
        {orx::rcEmptyImage, {}},
        {orx::rcImageType, cv::Mat::zeros(50, 50, CV_32F)},
        {orx::rcImageDimensions, cv::Mat(3, sizes, CV_8U, cv::Scalar(0))},
        {orx::rcImageSize, cv::Mat::zeros(19, 50, CV_8U)},
        {orx::rcNoResult, cv::Mat::zeros(50, 50, CV_8U)}};
    for (const auto& [code, img] : pictures) {
        EXPECT_TRUE(refusedWith(code, "findTarget", [&, &img = img] { orx::findTarget(img, {}); }));
    }
    orx::TTarget target;
    target.rows = 2;
    EXPECT_TRUE(refusedWith(orx::rcOption, "findTarget",
                            [&] { orx::findTarget(cv::Mat::zeros(50, 50, CV_8U), target); }));
    EXPECT_EQ(orx::lastRefusal().text, "findTarget: rows is 2; 3 to 200 is taken");
    EXPECT_TRUE(refusedWith(orx::rcOption, "targetToSvg", [&] { orx::targetToSvg(target); }));
    target.rows = 199;
    EXPECT_TRUE(refusedWith(orx::rcOption, "targetToPdf", [&] { orx::targetToPdf(target); }));
    EXPECT_TRUE(notRefused([] {
        orx::targetToPdf({});
        orx::createCalibrateImage({90, 90}, 20, 5);
    }));
}

TEST(CalibrationRefusals, Planes) {
    const std::vector<orx::TTargetView> seen = views();
    const auto calibrate = [](std::vector<orx::TTargetView> of, const orx::TPlaneOptions& options = {}) {
        return [=] { EXPECT_FALSE(orx::calibratePlane(of, options).valid()); };
    };
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "calibratePlane", calibrate({})));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "calibratePlane", calibrate({seen[0], seen[1]})));
    std::vector<orx::TTargetView> changed = seen;
    changed[3].imageSize.width += 1;
    EXPECT_TRUE(refusedWith(orx::rcSizesDiffer, "calibratePlane", calibrate(changed)));
    changed = seen;
    changed[3].pixels.pop_back();
    EXPECT_TRUE(refusedWith(orx::rcDegenerate, "calibratePlane", calibrate(changed)));
    orx::TPlaneOptions options;
    options.radial = 4;
    EXPECT_TRUE(refusedWith(orx::rcOption, "calibratePlane", calibrate(seen, options)));
    EXPECT_EQ(orx::lastRefusal().text, "calibratePlane: radial is 4; 0 to 3 is taken");
    options = {};
    options.mostRms = kNaN;
    EXPECT_TRUE(refusedWith(orx::rcOption, "calibratePlane", calibrate(seen, options)));

    const orx::TPlaneCalibration good = truth();
    const auto relocate = [](orx::TPlaneCalibration lens, orx::TTargetView view,
                             const orx::TPlaneOptions& with = {}) {
        return [=] { EXPECT_FALSE(orx::relocatePlane(lens, view, with).valid()); };
    };
    options = {};
    options.lens = false;
    EXPECT_TRUE(refusedWith(orx::rcOption, "relocatePlane", relocate(good, seen[1], options)));
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "relocatePlane", relocate({}, seen[1])));
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "relocatePlane", relocate(good, {})));
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "planeResiduals", [&] { orx::planeResiduals({}, seen[1]); }));
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "planeResiduals", [&] { orx::planeResiduals(good, {}); }));
    EXPECT_TRUE(
        refusedWith(orx::rcDegenerate, "planeResiduals", [&] { orx::planeResiduals(good, changed[3]); }));
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "planeWarnings", [&] { orx::planeWarnings({}, seen); }));
    EXPECT_TRUE(notRefused([&] {
        const orx::TPlaneCalibration found = orx::calibratePlane(seen);
        EXPECT_TRUE(found.valid());
        EXPECT_TRUE(orx::relocatePlane(found, seen[1]).valid());
        EXPECT_FALSE(orx::planeResiduals(found, seen[1]).empty());
        orx::planeWarnings(found, seen);
    }));
}

TEST(CalibrationRefusals, Places) {
    const orx::TPlaneCalibration good = truth();
    const std::vector<cv::Point2d> some{{600, 400}, {640, 480}};
    const std::vector<cv::Point2d> far{{600, 400}, {1e8, 1e8}};
    for (const auto& [code, plane, points] :
         {std::tuple{orx::rcNotReady, orx::TPlaneCalibration(), some}, {orx::rcNoResult, good, far}}) {
        const cv::Point2d last = points.back();
        const auto& by = plane;
        const auto& all = points;
        EXPECT_TRUE(refusedWith(code, "imageToPlane", [&] { orx::imageToPlane(by, last); }));
        EXPECT_TRUE(refusedWith(code, "imageToPlane", [&] { orx::imageToPlane(by, all); }));
        EXPECT_TRUE(refusedWith(code, "planeJacobian", [&] { orx::planeJacobian(by, last); }));
        EXPECT_TRUE(refusedWith(code, "pixelSize", [&] { orx::pixelSize(by, last); }));
        EXPECT_TRUE(refusedWith(code, "planeSensitivity", [&] { orx::planeSensitivity(by, all); }));
        EXPECT_TRUE(refusedWith(code, "planeCovariance", [&] { orx::planeCovariance(by, all); }));
    }
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "planeToImage", [&] { orx::planeToImage({}, some); }));
    EXPECT_TRUE(
        refusedWith(orx::rcNoResult, "planeToImage", [&] { orx::planeToImage(good, cv::Point2d(kNaN, 0)); }));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "planeSensitivity", [&] { orx::planeSensitivity(good, {}); }));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "planeCovariance", [&] { orx::planeCovariance(good, {}); }));
    EXPECT_TRUE(refusedWith(orx::rcTooMany, "planeCovariance",
                            [&] { orx::planeCovariance(good, std::vector<cv::Point2d>(2001, some[0])); }));
    EXPECT_TRUE(refusedWith(orx::rcSizesDiffer, "planeCovariance",
                            [&] { orx::planeCovariance(good, some, cv::Mat::eye(3, 3, CV_64F)); }));
    EXPECT_TRUE(notRefused([&] {
        EXPECT_FALSE(orx::planeCovariance(good, some, cv::Mat::eye(4, 4, CV_64F)).empty());
        orx::planeToImage(good, orx::imageToPlane(good, some));
        EXPECT_GT(orx::pixelSize(good, some[0]), 0);
    }));
}

TEST(CalibrationRefusals, PointTransforms) {
    const std::vector<cv::Point3d> four{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    const std::vector<cv::Point3d> three(four.begin(), four.begin() + 3);
    const std::vector<cv::Point3f> two{{0, 0, 0}, {1, 0, 0}};
    cv::Mat result;
    EXPECT_TRUE(
        refusedWith(orx::rcSizesDiffer, "calcAXequalsB", [&] { orx::calcAXequalsB(four, three, result); }));
    EXPECT_TRUE(
        refusedWith(orx::rcTooFew, "calcAXequalsB", [&] { orx::calcAXequalsB(three, three, result); }));
    EXPECT_TRUE(refusedWith(orx::rcSizesDiffer, "cpuTrsfMat", [&] { orx::cpuTrsfMat(two, {}); }));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "cpuTrsfMat", [&] { orx::cpuTrsfMat(two, two); }));
    EXPECT_TRUE(notRefused([&] { EXPECT_TRUE(orx::calcAXequalsB(four, four, result)); }));
    std::string message;
    int colour = 0;
    while (orx::APPgetMessage(message, colour)) EXPECT_EQ(colour, 1);
}

}  // namespace
