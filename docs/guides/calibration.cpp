// Guide "calibration and millimetres": the short way from pictures of a target to a diameter in millimetres.
#include <cmath>
#include <cstdio>
#include <opencv2/imgproc.hpp>

#include "canvas.h"
#include "orxFunctions/orxfunctions.h"
#include "support/plate_scene.h"

namespace {

// [calibrate]
orx::TPlaneCalibration calibrate(const std::vector<cv::Mat>& pictures) {
    orx::TTarget target;
    target.kind = orx::tkDotGrid;
    target.columns = 11;
    target.rows = 8;
    target.pitch = 10;  // millimetres
    std::vector<orx::TTargetView> views;
    views.reserve(pictures.size());
    for (const cv::Mat& picture : pictures) views.push_back(orx::findTarget(picture, target));

    orx::TPlaneOptions options;
    options.planeView = 0;  // the first picture shows the target where parts will lie
    orx::TPlaneCalibration calibration = orx::calibratePlane(views, options);
    if (!calibration.valid())
        std::printf("no calibration: %s (%s)\n", orx::planeStatusText(calibration.status),
                    calibration.problem.c_str());
    for (const std::string& warning : orx::planeWarnings(calibration, views))
        std::printf("warning: %s\n", warning.c_str());
    return calibration;
}
// [calibrate end]

// [length]
// How well a length between two places of the picture is known: by the edges' own uncertainty (pixels) and by
// the calibration, which both ends share.
double lengthDeviation(const orx::TPlaneCalibration& calibration, cv::Point2d a, cv::Point2d b,
                       double pixels) {
    const cv::Mat covariance =
        orx::planeCovariance(calibration, {a, b}, pixels * pixels * cv::Mat::eye(4, 4, CV_64F));
    if (covariance.empty()) return -1;  // a place that the plane does not have
    const cv::Point2d apart = orx::imageToPlane(calibration, b) - orx::imageToPlane(calibration, a);
    const cv::Matx41d along(-apart.x, -apart.y, apart.x, apart.y);
    const cv::Mat variance = cv::Mat(along.t()) * covariance * cv::Mat(along);
    return std::sqrt(variance.at<double>(0)) / cv::norm(apart);
}
// [length end]

// [hole]
// A hole near a place of the drawing, millimetres. Edges are found in the picture and fitted on the plane.
orx::TMeasuredCircle holeNear(const cv::Mat& grey, const orx::TPlaneCalibration& calibration,
                              cv::Point2d millimetres, double diameter) {
    const cv::Point2d center = orx::planeToImage(calibration, millimetres);
    const double pixel = orx::pixelSize(calibration, center);  // millimetres
    // Two pixels apart, so that no two edges see the same pixels: each errs by itself, across the outline.
    const auto edges = orx::edgesAcross(grey, orx::probesAlongCircle(center, diameter / 2 / pixel, 2.0));
    orx::TFitOptions options;
    options.noise = orx::pnNormal;
    return orx::fitCircleGeometric(orx::imageToPlane(calibration, orx::pointsOf(edges)), options);
}
// [hole end]

cv::Mat pictureOf(const scenes::PlaneCamera& camera, const scenes::PlaneShape& shape, std::uint64_t seed) {
    scenes::PlaneExposure exposure;
    exposure.seed = seed;
    return scenes::renderPlane(camera, shape, exposure);
}

std::vector<cv::Mat> targetPictures() {
    const scenes::PlaneShape dots = scenes::dotGridShape(11, 8, 10, 5);
    std::vector<cv::Mat> pictures;
    for (const scenes::PlaneCamera& camera : scenes::plateTargetCameras()) {
        if (pictures.size() < 6) pictures.push_back(pictureOf(camera, dots, pictures.size() + 1));
    }
    return pictures;
}

cv::Mat smaller(const cv::Mat& picture) {
    cv::Mat small;
    cv::resize(picture, small, cv::Size(), 0.5, 0.5, cv::INTER_AREA);
    return small;
}

cv::Point2d placed(const scenes::PlatePose& pose, cv::Point2d p) {
    const double c = std::cos(pose.angle * CV_PI / 180), s = std::sin(pose.angle * CV_PI / 180);
    return pose.origin + cv::Point2d(c * p.x - s * p.y, s * p.x + c * p.y);
}

// Lines of the plane, ten millimetres apart, over the picture.
guide::Enlarged withGrid(const cv::Mat& grey, const orx::TPlaneCalibration& calibration) {
    guide::Enlarged panel(grey, 2);
    const auto line = [&](cv::Point2d from, cv::Point2d to) {
        for (int i = 0; i < 20; ++i)
            panel.line(orx::planeToImage(calibration, from + i / 20.0 * (to - from)),
                       orx::planeToImage(calibration, from + (i + 1) / 20.0 * (to - from)), guide::kBlue, 1);
    };
    for (int x = -10; x <= 110; x += 10) line({double(x), -10}, {double(x), 80});
    for (int y = -10; y <= 80; y += 10) line({-10, double(y)}, {110, double(y)});
    return panel;
}

void make() {
    const std::vector<cv::Mat> pictures = targetPictures();
    const orx::TPlaneCalibration calibration = calibrate(pictures);
    guide::expect(calibration.valid(), "the camera is calibrated");
    if (!calibration.valid()) return;
    std::printf("%d views, %.4f pixels from the camera that was found; a pixel is %.4f mm\n",
                calibration.views, calibration.rms, orx::pixelSize(calibration, {320, 240}));
    guide::expectAbout(calibration.rms, 0.008, 0.002, "how far points lie from the camera found");
    guide::save("calibration-targets",
                guide::sheet({smaller(pictures[0]), smaller(pictures[3]), smaller(pictures[5])}, 3));

    const scenes::PlatePose pose = scenes::plateToTeach();
    const scenes::Plate plate;
    const cv::Mat grey = pictureOf(scenes::plateCamera(), scenes::plateShape(plate, pose), 99);
    guide::Enlarged panel = withGrid(grey, calibration);
    std::vector<orx::TMeasuredCircle> circles;
    for (const scenes::PlateHole& hole : plate.holes) {
        const cv::Point2d there = placed(pose, hole.center);
        circles.push_back(holeNear(grey, calibration, there, hole.diameter));
        const orx::TMeasuredCircle& circle = circles.back();
        std::printf("hole of %g: diameter %.4f mm, standard uncertainty %.4f\n", hole.diameter,
                    2 * circle.radius, 2 * circle.radiusDeviation);
        guide::expectAbout(2 * circle.radius, hole.diameter, 0.004, "diameter of a hole");
        for (int i = 0; i < 360; ++i)
            panel.dot(orx::planeToImage(calibration, circle.at(i)), 1.3, guide::kGreen);
        panel.text(guide::formatted("%.3f", 2 * circle.radius),
                   orx::planeToImage(calibration, circle.center + cv::Point2d(-2.6, -hole.diameter / 2 - 1)),
                   cv::Scalar(120, 220, 255));
    }
    guide::save("calibration-plate", panel.canvas());

    const cv::Point2d a = orx::planeToImage(calibration, circles[0].center);
    const cv::Point2d b = orx::planeToImage(calibration, circles[1].center);
    const double length = cv::norm(circles[1].center - circles[0].center);
    const double truth = cv::norm(plate.holes[1].center - plate.holes[0].center);
    const double naive = cv::norm(b - a) * orx::pixelSize(calibration, {320, 240});
    std::printf(
        "from hole to hole %.4f mm, standard uncertainty %.4f; by one scale for all %.4f; true %.4f\n",
        length, lengthDeviation(calibration, a, b, 0.008), naive, truth);
    guide::expectAbout(length, truth, 0.006, "distance of two holes");
    guide::expectAbout(naive, 56.55, 0.02, "the same by one scale for all");
}

}  // namespace

int main(int argc, char** argv) { return guide::run(argc, argv, make); }
