#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "calibration/pictures.h"
#include "calibration/residual_picture.h"
#include "calibration/target_files.h"
#include "support/plane_scene.h"
#include "tests/support/temporary_folder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr double kPitch = 10;

scenes::PlaneCamera camera() {
    scenes::PlaneCamera camera;
    camera.size = {640, 480};
    camera.fx = 620;
    camera.fy = 625;
    camera.cx = 328;
    camera.cy = 236;
    camera.k1 = -0.2;
    camera.k2 = 0.08;
    camera.p1 = 0.0005;
    camera.p2 = -0.0008;
    return camera;
}

orx::TTarget board() {
    orx::TTarget target;
    target.pitch = kPitch;
    return target;
}

// The first lies on the plane; tilts and distances change from one to the next.
std::vector<scenes::PlaneCamera> poses(double away = 1) {
    std::vector<scenes::PlaneCamera> poses{scenes::tilted(camera(), {40, 25}, 110 * away, 8, 10, 3)};
    for (int i = 0; i < 6; ++i)
        poses.push_back(
            scenes::tilted(camera(), {40, 25}, (112 + 2 * i) * away, 22 + 2 * i, 60 * i, 4 * i - 10));
    return poses;
}

cv::Mat view(const scenes::PlaneCamera& pose) {
    return scenes::renderPlane(pose, scenes::chessboardShape(9, 6, kPitch), {});
}

TEST(CalibrationHost, PicturesOfAFolderTellTheCamera) {
    const test::TemporaryFolder folder;
    const std::vector<scenes::PlaneCamera> cameras = poses();
    const char* const tiff = cv::haveImageWriter(".tif") ? ".tif" : ".png";  // some builds of OpenCV lack it
    const char* const extensions[] = {".png", tiff, ".PNG", ".pgm", ".bmp", ".png", ".png"};
    for (std::size_t i = 0; i < cameras.size(); ++i)
        cv::imwrite(folder / ("view" + std::to_string(i) + extensions[i]), view(cameras[i]));
    test::writeBytes(folder / "view7.png", "no picture");
    test::writeBytes(folder / "notes.txt", "no picture either");
    const std::vector<std::string> files = calibration::listPictures(folder / "");
    ASSERT_EQ(files.size(), 8U);
    EXPECT_THAT(calibration::listPictures(files[3]), ElementsAre(files[3]));
    EXPECT_THAT(calibration::listPictures(folder / "missing"), IsEmpty());

    const std::vector<calibration::Photograph> photographs = calibration::readPhotographs(files, board());
    EXPECT_FALSE(photographs.back().view.found);
    EXPECT_EQ(photographs.back().view.problem, "it is no picture");
    const std::vector<orx::TTargetView> views = calibration::viewsOf(photographs);
    const orx::TPlaneCalibration result = orx::calibratePlane(views);
    ASSERT_TRUE(result.valid()) << result.problem;
    EXPECT_EQ(result.views, 7);
    EXPECT_LT(result.rms, 0.02);
    EXPECT_NEAR(result.camera(0, 0), 620, 0.6);
    EXPECT_NEAR(result.camera(1, 1), 625, 0.6);
    EXPECT_NEAR(result.camera(0, 2), 328, 0.6);
    EXPECT_NEAR(result.camera(1, 2), 236, 0.6);
    EXPECT_NEAR(result.distortion[0], -0.2, 0.005);
    // A length over most of the board, in millimetres, by where its ends truly are seen.
    const std::vector<cv::Point2d> places = orx::imageToPlane(
        result, std::vector<cv::Point2d>{cameras[0].project({0, 0}), cameras[0].project({80, 50})});
    EXPECT_NEAR(cv::norm(places[1] - places[0]), std::hypot(80, 50), 0.002);

    // Covered parts are light, those that no target reached grey, and vectors of the plane's view orange.
    const cv::Mat drawing = calibration::drawResiduals(result, views, 0);
    ASSERT_EQ(drawing.cols, 1200);
    const auto level = [&](cv::Point2d p) {
        return cv::mean(drawing(
            cv::Rect(static_cast<int>(p.x * 1200 / 640) - 4, static_cast<int>(p.y * 1200 / 640) - 4, 9, 9)));
    };
    EXPECT_GT(level(cameras[0].project({45, 25}))[0], 225);
    EXPECT_LT(level({6, 6})[0], 205);
    cv::Mat orange;
    cv::inRange(drawing, cv::Scalar(0, 110, 230), cv::Scalar(10, 130, 250), orange);
    EXPECT_GT(cv::countNonZero(orange), 54 * 4);
}

TEST(CalibrationHost, WarningsNameWhatIsWeak) {
    std::vector<orx::TTargetView> views;
    for (const scenes::PlaneCamera& pose : poses(2.5)) views.push_back(orx::findTarget(view(pose), board()));
    const orx::TPlaneCalibration result = orx::calibratePlane(views);
    ASSERT_TRUE(result.valid()) << result.problem;
    const std::vector<std::string> warnings = orx::planeWarnings(result, views);
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_THAT(warnings[0], HasSubstr("upper left"));
    EXPECT_THAT(warnings[0], HasSubstr("lower right"));
    EXPECT_THAT(warnings[0], testing::Not(HasSubstr("middle")));

    // A view that was moved while it was taken.
    for (std::size_t i = 0; i < views[4].pixels.size(); i += 2) views[4].pixels[i].x += 0.2;
    EXPECT_THAT(orx::planeWarnings(orx::calibratePlane(views), views),
                testing::Contains(HasSubstr("view 5 fits by")));
    EXPECT_THAT(orx::planeWarnings(orx::TPlaneCalibration(), views), IsEmpty());

    // Hardly tilted, with a lens that better views told.
    std::vector<orx::TTargetView> flat;
    for (int i = 0; i < 3; ++i)
        flat.push_back(orx::findTarget(view(scenes::tilted(camera(), {40, 25}, 110, 5, 90 * i, 0)), board()));
    EXPECT_THAT(orx::planeWarnings(result, flat), testing::Contains(HasSubstr("15 degrees and more in 0")));
}

TEST(CalibrationHost, TargetsAreWrittenAndFoundAgain) {
    const test::TemporaryFolder folder;
    calibration::TargetFiles files;
    files.png = folder / "board.png";
    files.pngWidth = 720;
    files.pngHeight = 540;
    files.pngSquare = 60;
    files.pngMargin = 60;
    files.pdf = folder / "board.pdf";
    files.svg = folder / "board.svg";
    EXPECT_EQ(calibration::writeTargets(files, board()), "");
    EXPECT_EQ(calibration::targetCorners({720, 540}, 60, 60), cv::Size(9, 6));
    EXPECT_TRUE(orx::findTarget(cv::imread(files.png), board()).found);
    EXPECT_EQ(test::bytesOf(files.pdf), orx::targetToPdf(board()));
    EXPECT_EQ(test::bytesOf(files.svg), orx::targetToSvg(board()));

    orx::TTargetPage page;
    EXPECT_TRUE(calibration::pageOf("A3", page));
    EXPECT_EQ(page.width, 420);
    EXPECT_TRUE(calibration::pageOf("210.5x99", page));
    EXPECT_EQ(page.width, 210.5);
    EXPECT_EQ(page.height, 99);
    for (const char* none : {"", "A5", "x", "210x", "210x99mm", "-1x5"})
        EXPECT_FALSE(calibration::pageOf(none, page)) << none;
    files.page = "60x40";
    EXPECT_THAT(calibration::writeTargets(files, board()), HasSubstr("does not fit"));
    files.page = "A4";
    files.pdf = folder / "none/board.pdf";
    EXPECT_THAT(calibration::writeTargets(files, board()), HasSubstr("can't write"));
}

}  // namespace
