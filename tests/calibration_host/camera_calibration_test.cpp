#include "examples/calibration/camera_calibration.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/temporary_folder.h"

namespace {

constexpr int kSquare = 60;
constexpr int kMargin = 60;
const cv::Size kTarget(720, 540);  // 10 x 7 squares, 9 x 6 corners
const cv::Size kView(640, 480);
const cv::Matx33d kCamera(620, 0, 328, 0, 625, 236, 0, 0, 1);
const cv::Vec<double, 5> kDistortion(-0.2, 0.08, 0.0005, -0.0008, 0);

// What a camera with that distortion sees of our own target, whose middle lies `distance` pixels of the
// target in front of it. Each pixel's ray is cut with the target's plane.
cv::Mat view(const cv::Vec3d& turn, const cv::Vec3d& shift, double distance) {
    cv::Mat target = orx::createCalibrateImage(kTarget, kSquare, kMargin);
    cv::GaussianBlur(target, target, cv::Size(), 1.5);  // no steps where the view samples it
    std::vector<cv::Point2d> pixels;
    for (int y = 0; y < kView.height; ++y) {
        for (int x = 0; x < kView.width; ++x) pixels.emplace_back(x, y);
    }
    std::vector<cv::Point2d> rays;
    cv::undistortPoints(pixels, rays, kCamera, kDistortion, cv::noArray(), cv::noArray(),
                        cv::TermCriteria(cv::TermCriteria::COUNT | cv::TermCriteria::EPS, 100, 1e-10));
    cv::Matx33d r;
    cv::Rodrigues(turn, r);
    const cv::Vec3d middle(kTarget.width / 2.0, kTarget.height / 2.0, 0);
    const cv::Vec3d t = shift + cv::Vec3d(0, 0, distance) - r * middle;
    // Of the plane z = 0: columns 0 and 1 of R, and t.
    const cv::Matx33d fromTarget(r(0, 0), r(0, 1), t[0], r(1, 0), r(1, 1), t[1], r(2, 0), r(2, 1), t[2]);
    const cv::Matx33d toTarget = fromTarget.inv();
    cv::Mat map(kView, CV_32FC2);
    for (int i = 0; i < kView.area(); ++i) {
        const cv::Vec3d p =
            toTarget * cv::Vec3d(rays[static_cast<std::size_t>(i)].x, rays[static_cast<std::size_t>(i)].y, 1);
        map.at<cv::Vec2f>(i / kView.width, i % kView.width) =
            cv::Vec2f(static_cast<float>(p[0] / p[2]), static_cast<float>(p[1] / p[2]));
    }
    cv::Mat image;
    cv::remap(target, image, map, cv::noArray(), cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar(255));
    return image;
}

TEST(CameraCalibration, FindsTheCameraOfRenderedViews) {
    const test::TemporaryFolder folder;
    const calibration::Board board{calibration::targetCorners(kTarget, kSquare, kMargin), 1};
    ASSERT_EQ(board.corners, cv::Size(9, 6));
    const cv::Vec3d turns[] = {{0, 0, 0},       {0.4, 0, 0.1},   {-0.4, 0.1, 0},  {0, 0.45, -0.1},
                               {0.1, -0.45, 0}, {0.3, 0.3, 0.2}, {-0.3, -0.3, 0}, {0.35, -0.3, -0.2}};
    std::vector<std::string> files;
    for (const cv::Vec3d& turn : turns) {
        const int number = static_cast<int>(files.size());
        files.push_back(folder / ("view" + std::to_string(number) + ".png"));
        cv::imwrite(files.back(), view(turn, {15.0 * (number % 3 - 1), 10.0 * (number % 2), 0}, 800));
    }
    test::writeBytes(folder / "garbage.png", "no picture");
    files.push_back(folder / "garbage.png");

    cv::Size imageSize;
    std::vector<calibration::Photograph> photographs = calibration::readPhotographs(files, board, imageSize);
    const calibration::Calibration camera = calibration::calibrate(photographs, board, imageSize);
    ASSERT_TRUE(camera.valid);
    EXPECT_EQ(camera.imageSize, kView);
    EXPECT_TRUE(photographs.back().corners.empty());
    EXPECT_LT(camera.error, 0.1);
    EXPECT_NEAR(camera.intrinsic.at<double>(0, 0), 620, 3);
    EXPECT_NEAR(camera.intrinsic.at<double>(1, 1), 625, 3);
    EXPECT_NEAR(camera.intrinsic.at<double>(0, 2), 328, 3);
    EXPECT_NEAR(camera.intrinsic.at<double>(1, 2), 236, 3);
    EXPECT_NEAR(camera.distortion.at<double>(0), -0.2, 0.02);

    // Through the calibration file and back: undistorted, the rows of corners are straight.
    orx::calibrateData2File(camera.intrinsic, camera.distortion, imageSize, "rendered [1]",
                            folder / "camera.json");
    cv::Mat intrinsic, distortion, straight;
    std::string description;
    ASSERT_TRUE(
        orx::calibrateDataFromFile(folder / "camera.json", intrinsic, distortion, imageSize, description));
    EXPECT_EQ(description, "rendered [1]");
    cv::undistort(cv::imread(files[5], cv::IMREAD_GRAYSCALE), straight, intrinsic, distortion);
    const std::vector<cv::Point2f> corners = calibration::findCorners(straight, board);
    ASSERT_EQ(corners.size(), 54U);
    for (std::size_t row = 0; row < 6; ++row) {
        const cv::Point2f a = corners[row * 9];
        const cv::Point2f along = corners[row * 9 + 8] - a;
        for (std::size_t i = 1; i < 8; ++i) {
            EXPECT_LT(std::abs(along.cross(corners[row * 9 + i] - a)) / cv::norm(along), 0.25);
        }
    }
}

TEST(CameraCalibration, TooFewViewsAreRefused) {
    const calibration::Board board{{9, 6}, 1};
    cv::Size imageSize;
    std::vector<calibration::Photograph> none =
        calibration::readPhotographs({"missing.png"}, board, imageSize);
    EXPECT_FALSE(calibration::calibrate(none, board, imageSize).valid);
}

}  // namespace
