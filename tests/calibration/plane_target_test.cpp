#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "tests/calibration/plane_views.h"

namespace {

constexpr int kColumns = 9;
constexpr int kRows = 6;
constexpr double kPitch = 10;
constexpr double kDiameter = 5;

orx::TTarget targetOf(orx::TTargetKind kind, int columns = kColumns, int rows = kRows) {
    orx::TTarget target;
    target.kind = kind;
    target.columns = columns;
    target.rows = rows;
    target.pitch = kPitch;
    target.diameter = kDiameter;
    return target;
}

scenes::PlaneShape shapeOf(const orx::TTarget& target) {
    return target.kind == orx::tkChessboard
               ? scenes::chessboardShape(target.columns, target.rows, target.pitch)
               : scenes::dotGridShape(target.columns, target.rows, target.pitch, target.diameter);
}

scenes::PlaneCamera smallCamera() {
    scenes::PlaneCamera camera = test::bentCamera();
    camera.size = {640, 480};
    camera.fx = 1005;
    camera.fy = 1001;
    camera.cx = 326;
    camera.cy = 235;
    return camera;
}

// The centre of the area of a dot's picture, from many points of its outline.
cv::Point2d outlineCentre(const scenes::PlaneCamera& camera, cv::Point2d place) {
    const cv::Point2d origin = camera.project(place);
    std::vector<cv::Point2d> outline;
    for (int k = 0; k < 360; ++k) {
        const double t = k * CV_PI / 180;
        outline.push_back(camera.project(place + kDiameter / 2 * cv::Point2d(std::cos(t), std::sin(t))) -
                          origin);
    }
    double area = 0;
    cv::Point2d moment;
    for (std::size_t k = 0; k < outline.size(); ++k) {
        const cv::Point2d next = outline[(k + 1) % outline.size()];
        area += outline[k].cross(next);
        moment += outline[k].cross(next) * (outline[k] + next);
    }
    return origin + moment * (1 / (3 * area));
}

struct Errors {
    double rms = 0;     // of a point's x or y, pixels
    double stated = 0;  // what the view says of them
};

Errors errorsOf(const orx::TTargetView& view, const scenes::PlaneCamera& camera) {
    Errors errors;
    for (std::size_t i = 0; i < view.pixels.size(); ++i) {
        const cv::Point2d truth =
            view.dotDiameter > 0 ? outlineCentre(camera, view.plane[i]) : camera.project(view.plane[i]);
        const cv::Point2d off = view.pixels[i] - truth;
        errors.rms += off.dot(off) / 2;
        errors.stated += view.deviations[i] * view.deviations[i];
    }
    const auto count = static_cast<double>(view.pixels.size());
    return {std::sqrt(errors.rms / count), std::sqrt(errors.stated / count)};
}

class PlaneTarget : public testing::TestWithParam<orx::TTargetKind> {};

// Tilted, turned, bent by the lens, blurred, noisy and unevenly lit.
TEST_P(PlaneTarget, IsFoundBetweenThePixels) {
    const orx::TTarget target = targetOf(GetParam());
    const scenes::PlaneCamera camera = scenes::tilted(smallCamera(), {40, 25}, 190, 28, 40, 12);
    scenes::PlaneExposure exposure;
    const cv::Mat levels = scenes::renderPlaneLevels(camera, shapeOf(target), exposure);
    double ratios = 0;
    for (const std::uint64_t seed : {1, 2, 3}) {
        const orx::TTargetView view = orx::findTarget(scenes::withNoise(levels, 2, seed), target);
        ASSERT_TRUE(view.found) << view.problem;
        ASSERT_EQ(view.pixels.size(), 54U);
        EXPECT_EQ(view.imageSize, camera.size);
        EXPECT_EQ(view.plane[kColumns + 2], cv::Point2d(2 * kPitch, kPitch));
        const Errors errors = errorsOf(view, camera);
        // The usual methods err by 0.02 and more here.
        EXPECT_LT(errors.rms, 0.009);
        ratios += errors.rms / errors.stated / 3;
    }
    EXPECT_NEAR(ratios, 1, 0.15);

    cv::Mat uneven = levels.clone();
    for (int x = 0; x < uneven.cols; ++x) uneven.col(x) *= 1 - 0.6 * x / uneven.cols;
    const orx::TTargetView dim = orx::findTarget(scenes::withNoise(uneven, 2, 4), target);
    ASSERT_TRUE(dim.found) << dim.problem;
    EXPECT_LT(errorsOf(dim, camera).rms, 0.02);

    // Colour and 16 bits tell the same as grey.
    const cv::Mat picture = scenes::withNoise(levels, 2, 1);
    cv::Mat colour, deep;
    cv::cvtColor(picture, colour, cv::COLOR_GRAY2BGR);
    picture.convertTo(deep, CV_16U, 257);
    for (const cv::Mat& other : {colour, deep}) {
        const orx::TTargetView view = orx::findTarget(other, target);
        ASSERT_TRUE(view.found) << view.problem;
        EXPECT_LT(errorsOf(view, camera).rms, 0.009);
    }
}

// However the camera is turned, rows lead to the right and columns down as far as the target allows.
TEST_P(PlaneTarget, IsNumberedAsTheScreenGoes) {
    for (const bool square : {false, true}) {
        const orx::TTarget target = targetOf(GetParam(), square ? 6 : kColumns, 6);
        const cv::Point2d middle((target.columns - 1) * kPitch / 2, 25);
        for (const double turn : {100.0, 170.0, -80.0}) {
            const scenes::PlaneCamera camera = scenes::tilted(smallCamera(), middle, 230, 10, 0, turn);
            const cv::Mat picture = scenes::renderPlane(camera, shapeOf(target), {});
            const orx::TTargetView view = orx::findTarget(picture, target);
            ASSERT_TRUE(view.found) << view.problem;
            const auto columns = static_cast<std::size_t>(target.columns);
            const cv::Point2d along = view.pixels[columns - 1] - view.pixels[0];
            const cv::Point2d down = view.pixels[view.pixels.size() - columns] - view.pixels[0];
            EXPECT_GT(along.cross(down), 0);
            EXPECT_GT(along.x, square ? std::abs(along.y) : -1e9);
            if (!square && GetParam() == orx::tkDotGrid) {
                EXPECT_GT(along.x, 0);
            } else if (!square) {
                // A board of 9 x 6 tells its own upper side: the points are those of the truth.
                EXPECT_LT(errorsOf(view, camera).rms, 0.02);
            }
        }
    }
}

TEST_P(PlaneTarget, WhatIsNotThereIsNotFound) {
    const orx::TTarget target = targetOf(GetParam());
    const scenes::PlaneCamera camera = scenes::tilted(smallCamera(), {40, 25}, 210, 5, 40, 12);
    cv::Mat picture = scenes::renderPlane(camera, shapeOf(target), {});
    ASSERT_TRUE(orx::findTarget(picture, target).found);
    const auto refuses = [&](const cv::Mat& image, const orx::TTarget& wanted) {
        const orx::TTargetView view = orx::findTarget(image, wanted);
        return !view.found && !view.problem.empty() && view.pixels.empty();
    };
    orx::TTarget other = target;
    other.columns = kColumns + 1;
    EXPECT_TRUE(refuses(picture, other));
    if (GetParam() == orx::tkDotGrid) {
        other.columns = kColumns - 1;  // a grid of another size must not be taken for a part of it
        EXPECT_TRUE(refuses(picture, other));
    }
    EXPECT_TRUE(refuses(picture(cv::Rect(0, 0, 330, 480)), target));
    cv::circle(picture, camera.project({40, 20}), 14, cv::Scalar(200), cv::FILLED);
    EXPECT_TRUE(refuses(picture, target));
    cv::Mat noise(240, 320, CV_8U);
    cv::randu(noise, 0, 255);
    EXPECT_TRUE(refuses(noise, target));
    EXPECT_TRUE(refuses(cv::Mat(480, 640, CV_8U, cv::Scalar(200)), target));
    EXPECT_TRUE(refuses(cv::Mat(), target));
    EXPECT_TRUE(refuses(cv::Mat(480, 640, CV_32F, cv::Scalar(0)), target));
    other = target;
    other.rows = 2;
    EXPECT_TRUE(refuses(picture, other));
    other = target;
    other.pitch = std::nan("");
    EXPECT_TRUE(refuses(picture, other));
}

INSTANTIATE_TEST_SUITE_P(Kinds, PlaneTarget, testing::Values(orx::tkChessboard, orx::tkDotGrid));

// The whole way for dots, tilted so much that their outlines' centres lie a tenth of a pixel off.
TEST(PlaneTargetViews, TellAPlaneInMillimetres) {
    const orx::TTarget target = targetOf(orx::tkDotGrid);
    scenes::PlaneCamera straight = smallCamera();
    straight.k1 = straight.k2 = straight.p1 = straight.p2 = 0;
    const scenes::PlaneCamera camera = scenes::tilted(straight, {40, 25}, 170, 40, 30, 0);
    double largest = 0;
    for (const cv::Point2d& p : {cv::Point2d(0, 0), cv::Point2d(80, 50), cv::Point2d(0, 50)})
        largest = std::max(largest, cv::norm(outlineCentre(camera, p) - camera.project(p)));
    ASSERT_GT(largest, 0.08);
    const orx::TTargetView view = orx::findTarget(scenes::renderPlane(camera, shapeOf(target), {}), target);
    ASSERT_TRUE(view.found) << view.problem;
    orx::TPlaneOptions options;
    options.lens = false;
    const orx::TPlaneCalibration calibration = orx::calibratePlane({view}, options);
    ASSERT_TRUE(calibration.valid()) << calibration.problem;
    EXPECT_LT(calibration.rms, 0.02);
    for (const cv::Point2d& p : {cv::Point2d(0, 0), cv::Point2d(80, 50), cv::Point2d(40, 25)}) {
        const cv::Mat covariance = orx::planeCovariance(calibration, {camera.project(p)});
        const cv::Point2d off = orx::imageToPlane(calibration, camera.project(p)) - p;
        EXPECT_LT(std::abs(off.x), 4 * std::sqrt(covariance.at<double>(0, 0)));
        EXPECT_LT(std::abs(off.y), 4 * std::sqrt(covariance.at<double>(1, 1)));
        EXPECT_LT(cv::norm(off), 0.003);
    }
    const std::vector<cv::Point2d> residuals = orx::planeResiduals(calibration, view);
    ASSERT_EQ(residuals.size(), 54U);
    double squares = 0;
    for (const cv::Point2d& r : residuals) squares += r.dot(r) / 54;
    EXPECT_NEAR(std::sqrt(squares), calibration.rms, 1e-3 * calibration.rms);
}

int count(const std::string& text, const std::string& word) {
    int n = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++n;
    return n;
}

TEST(TargetPage, SvgIsToScale) {
    const std::string board = orx::targetToSvg(targetOf(orx::tkChessboard));
    EXPECT_NE(board.find("width=\"297mm\" height=\"210mm\" viewBox=\"0 0 297 210\""), std::string::npos);
    // 10 x 7 squares, every other one dark; the outermost begins a pitch before the first corner, which lies
    // at (297 - 80) / 2, (210 - 50) / 2.
    EXPECT_EQ(count(board, "width=\"10\" height=\"10\""), 35);
    EXPECT_NE(board.find("<rect x=\"98.5\" y=\"70\" width=\"10\" height=\"10\"/>"), std::string::npos);
    EXPECT_NE(board.find("width=\"100\" height=\"0.25\""), std::string::npos);
    EXPECT_NE(board.find("This line is 100 mm long."), std::string::npos);

    const std::string dots = orx::targetToSvg(targetOf(orx::tkDotGrid));
    EXPECT_EQ(count(dots, "<circle "), 54);
    EXPECT_NE(dots.find("<circle cx=\"108.5\" cy=\"80\" r=\"2.5\"/>"), std::string::npos);
    EXPECT_NE(dots.find("<circle cx=\"188.5\" cy=\"130\" r=\"2.5\"/>"), std::string::npos);
}

TEST(TargetPage, PdfIsToScaleAndItsTableRight) {
    orx::TTargetPage page;
    page.width = 254;  // 10 inches: 720 points
    page.height = 127;
    const std::string pdf = orx::targetToPdf(targetOf(orx::tkChessboard), page);
    EXPECT_EQ(pdf.rfind("%PDF-1.", 0), 0U);
    EXPECT_NE(pdf.find("/MediaBox [0 0 720 360]"), std::string::npos);
    EXPECT_NE(pdf.find("/PrintScaling /None"), std::string::npos);
    // A square of 10 mm is 28.34646 points.
    EXPECT_EQ(count(pdf, "28.34646 28.34646 re f"), 35);
    std::istringstream end(pdf.substr(pdf.rfind("startxref") + 9));
    std::size_t table = 0;
    end >> table;
    ASSERT_EQ(pdf.compare(table, 5, "xref\n"), 0);
    std::istringstream entries(pdf.substr(table));
    std::string line;
    for (int i = 0; i < 3; ++i) std::getline(entries, line);
    for (int i = 1; i <= 5; ++i) {
        std::getline(entries, line);
        ASSERT_EQ(line.size(), 19U);  // 20 with the line's end, as the format asks
        const std::size_t at = std::stoul(line.substr(0, 10));
        EXPECT_EQ(pdf.compare(at, 7, std::to_string(i) + " 0 obj"), 0);
    }
    const std::size_t stream = pdf.find("stream\n") + 7;
    const std::size_t length = pdf.find("endstream") - stream;
    EXPECT_NE(pdf.find("/Length " + std::to_string(length) + " "), std::string::npos);
    EXPECT_EQ(count(orx::targetToPdf(targetOf(orx::tkDotGrid)), " c\n"), 54 * 4);
}

TEST(TargetPage, WhatDoesNotFitIsRefused) {
    orx::TTarget target = targetOf(orx::tkChessboard);
    target.pitch = 25;  // 8 x 25 and two margins of two squares each: 300 mm
    EXPECT_TRUE(orx::targetToSvg(target).empty());
    target.pitch = 23;  // 5 x 23 down and as much beyond: 207 mm of 210
    EXPECT_FALSE(orx::targetToSvg(target).empty());
    orx::TTargetPage page;
    page.width = std::nan("");
    EXPECT_TRUE(orx::targetToPdf(target, page).empty());
    target = targetOf(orx::tkDotGrid);
    target.diameter = 9.5;
    EXPECT_TRUE(orx::targetToPdf(target).empty());
}

}  // namespace
