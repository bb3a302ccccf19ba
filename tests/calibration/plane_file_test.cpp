#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "tests/calibration/plane_views.h"
#include "tests/support/temporary_folder.h"

namespace {

orx::TPlaneCalibration someCalibration(bool lens) {
    cv::RNG random(2);
    orx::TPlaneOptions options;
    options.lens = lens;
    options.mostRms = 10;
    orx::TPlaneCalibration calibration =
        orx::calibratePlane(test::eightViews(test::bentCamera(), 0.05, random), options);
    calibration.description = "line 3 \"upper\" camera ";
    return calibration;
}

TEST(PlaneFile, EveryFormatBringsBackEveryDigit) {
    const test::TemporaryFolder folder;
    for (const bool lens : {true, false}) {
        const orx::TPlaneCalibration written = someCalibration(lens);
        ASSERT_TRUE(written.valid());
        for (const char* name : {"plane.json", "plane.yml", "plane.xml", "plane.json.gz"}) {
            ASSERT_EQ(orx::writePlaneCalibration(folder / name, written), orx::plOk) << name;
            const orx::TPlaneCalibration read = orx::readPlaneCalibration(folder / name);
            ASSERT_TRUE(read.valid()) << name << ": " << read.problem;
            EXPECT_EQ(read.imageSize, written.imageSize);
            EXPECT_EQ(read.lens, written.lens);
            EXPECT_EQ(read.camera, written.camera);
            EXPECT_EQ(read.distortion, written.distortion);
            EXPECT_EQ(read.rotation, written.rotation);
            EXPECT_EQ(read.translation, written.translation);
            EXPECT_EQ(read.homography, written.homography);
            EXPECT_EQ(read.covariance, written.covariance);
            EXPECT_EQ(read.degreesOfFreedom, written.degreesOfFreedom);
            EXPECT_EQ(read.rms, written.rms);
            EXPECT_EQ(read.noise, written.noise);
            EXPECT_EQ(read.coverage, written.coverage);
            EXPECT_EQ(read.views, written.views);
            EXPECT_EQ(read.description, written.description);
            EXPECT_EQ(orx::imageToPlane(read, {77, 88}), orx::imageToPlane(written, {77, 88}));
        }
    }
}

TEST(PlaneFile, ReadersOfCamerasFindTheCamera) {
    const test::TemporaryFolder folder;
    const orx::TPlaneCalibration written = someCalibration(true);
    ASSERT_EQ(orx::writePlaneCalibration(folder / "plane.json", written), orx::plOk);
    cv::Mat intrinsic, distortion;
    cv::Size size;
    std::string description;
    ASSERT_TRUE(orx::calibrateDataFromFile(folder / "plane.json", intrinsic, distortion, size, description));
    EXPECT_EQ(cv::Matx33d(intrinsic), written.camera);
    EXPECT_EQ(distortion.size(), cv::Size(5, 1));
    EXPECT_EQ(size, written.imageSize);
    EXPECT_EQ(description, written.description);

    // A camera alone is no plane.
    orx::calibrateData2File(intrinsic, distortion, size, "", folder / "camera.json");
    const orx::TPlaneCalibration read = orx::readPlaneCalibration(folder / "camera.json");
    EXPECT_EQ(read.status, orx::plUnreadable);
    EXPECT_EQ(read.problem, "it tells no plane");
}

TEST(PlaneFile, WhatCantBeWrittenIsRefused) {
    const test::TemporaryFolder folder;
    orx::TPlaneCalibration calibration = someCalibration(true);
    EXPECT_EQ(orx::writePlaneCalibration(folder / "none/plane.json", calibration), orx::plUnwritable);
    calibration.covariance(3, 3) = std::nan("");
    EXPECT_EQ(orx::writePlaneCalibration(folder / "plane.json", calibration), orx::plUnwritable);
    EXPECT_EQ(orx::writePlaneCalibration(folder / "plane.json", orx::TPlaneCalibration()), orx::plNoTarget);
    EXPECT_EQ(orx::readPlaneCalibration(folder / "plane.json").status, orx::plUnreadable);
}

// Each of these stands in the place of a good number or list.
TEST(PlaneFile, WhatNoCameraCanBeIsRefused) {
    const test::TemporaryFolder folder;
    ASSERT_EQ(orx::writePlaneCalibration(folder / "good.json", someCalibration(true)), orx::plOk);
    const std::string good = test::bytesOf(folder / "good.json");
    const auto refuses = [&](const std::string& text) {
        std::ofstream(folder / "bad.json", std::ios::binary) << text;
        const orx::TPlaneCalibration read = orx::readPlaneCalibration(folder / "bad.json");
        return read.status == orx::plUnreadable && !read.problem.empty() && read.views == 0;
    };
    ASSERT_FALSE(refuses(good));
    const auto replaced = [&](const std::string& key, const std::string& from, const std::string& to) {
        std::string text = good;
        const std::size_t at = text.find(from, text.find('"' + key + '"'));
        EXPECT_NE(at, std::string::npos) << key;
        return text.replace(at, from.size(), to);
    };
    EXPECT_TRUE(refuses(replaced("imageSize", "1280", "0")));
    EXPECT_TRUE(refuses(replaced("imageSize", "1280", "-5")));
    EXPECT_TRUE(refuses(replaced("imageSize", "1280", "2000000000")));
    EXPECT_TRUE(refuses(replaced("imageSize", "1280", "\"1280\"")));
    EXPECT_TRUE(refuses(replaced("imageIntrinsic", "2", ".Nan, 2")));
    EXPECT_TRUE(refuses(replaced("imageIntrinsic", "\"rows\": 3", "\"rows\": 300000")));
    EXPECT_TRUE(refuses(replaced("imageIntrinsic", "\"data\": [ ", "\"data\": [ 0.0, ")));
    EXPECT_TRUE(refuses(replaced("imageDistortion", "\"dt\": \"d\"", "\"dt\": \"f\"")));
    EXPECT_TRUE(refuses(replaced("rotation", "\"data\": [ ", "\"data\": [ 1e30")));
    EXPECT_TRUE(refuses(replaced("plane", "\"version\": 1", "\"version\": 2")));
    EXPECT_TRUE(refuses(replaced("plane", "\"mm\"", "\"inch\"")));
    EXPECT_TRUE(refuses(replaced("covariance", "\"data\": [ ", "\"data\": [ -")));
    EXPECT_TRUE(refuses(replaced("rms", "\"rms\": ", "\"rms\": -")));
    EXPECT_TRUE(refuses(replaced("coverage", "\"coverage\": ", "\"coverage\": 7")));
    EXPECT_TRUE(refuses(replaced("views", "8", "-8")));
    EXPECT_TRUE(refuses(replaced("views", "8", "8.5")));
    EXPECT_TRUE(refuses(""));
    EXPECT_TRUE(refuses("{"));
    EXPECT_TRUE(refuses(std::string(100000, '[')));
    // Cut off anywhere, it is refused or, where nothing but an end is missing, the same.
    for (std::size_t length = 0; length + 8 < good.size(); length += 37)
        EXPECT_TRUE(refuses(good.substr(0, length))) << length;
}

}  // namespace
