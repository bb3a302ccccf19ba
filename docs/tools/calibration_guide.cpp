// The code and the pictures of docs/calibration.md, and the numbers in it.
//
//   calibration_guide FOLDER     writes calibration-view.png and calibration-residuals.png there, prints the
//                                numbers
//
// What the page shows stands here to the letter; a test compares.
#include <cmath>
#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

#include "calibration/residual_picture.h"
#include "orxFunctions/orxfunctions.h"
#include "support/plane_scene.h"

namespace {

orx::TPlaneCalibration calibrate(const std::vector<cv::Mat>& pictures) {
    orx::TTarget target;
    target.kind = orx::tkDotGrid;
    target.columns = 11;
    target.rows = 8;
    target.pitch = 10;
    target.diameter = 5;
    std::vector<orx::TTargetView> views;
    for (const cv::Mat& picture : pictures) views.push_back(orx::findTarget(picture, target));

    orx::TPlaneOptions options;
    options.planeView = 0;           // the first picture shows the target where parts will lie
    options.height = 3;              // and their upper side is 3 mm nearer to the camera
    options.heightDeviation = 0.02;  // give or take
    options.scaleDeviation = 1e-5;   // the target is good to 1 micrometre in 100 mm
    orx::TPlaneCalibration calibration = orx::calibratePlane(views, options);
    for (const std::string& warning : orx::planeWarnings(calibration, views))
        std::printf("warning: %s\n", warning.c_str());
    return calibration;
}

void keep(const orx::TPlaneCalibration& calibration, const std::string& file) {
    if (!calibration.valid()) {
        std::printf("no calibration: %s (%s)\n", orx::planeStatusText(calibration.status),
                    calibration.problem.c_str());
    } else if (orx::writePlaneCalibration(file, calibration) != orx::plOk) {
        std::printf("can't write %s\n", file.c_str());
    }
}

// The diameter of a hole in millimetres from the edges around it, whose places are pixels.
void tellDiameter(const orx::TPlaneCalibration& calibration, const std::vector<cv::Point2d>& edges) {
    const std::vector<cv::Point2d> places = orx::imageToPlane(calibration, edges);
    const orx::TMeasuredCircle hole = orx::fitCircleGeometric(places);
    std::printf("diameter %.4f mm at (%.4f, %.4f)\n", 2 * hole.radius, hole.center.x, hole.center.y);
}

void tellDistance(const orx::TPlaneCalibration& calibration, cv::Point2d a, cv::Point2d b,
                  const cv::Mat& pixelCovariance) {
    const std::vector<cv::Point2d> places = orx::imageToPlane(calibration, {a, b});
    const cv::Mat covariance = orx::planeCovariance(calibration, {a, b}, pixelCovariance);
    const cv::Point2d apart = places[1] - places[0];
    const double distance = cv::norm(apart);
    const cv::Matx14d along(-apart.x / distance, -apart.y / distance, apart.x / distance, apart.y / distance);
    const double variance = cv::Mat(cv::Mat(along) * covariance * cv::Mat(along.t())).at<double>(0);
    std::printf("distance %.4f mm, standard uncertainty %.4f mm\n", distance, std::sqrt(variance));
}

scenes::PlaneCamera cameraOfThePage() {
    scenes::PlaneCamera camera;
    camera.fx = 1700;
    camera.fy = 1695;
    camera.cx = 652;
    camera.cy = 471;
    camera.k1 = -0.18;
    camera.k2 = 0.11;
    camera.p1 = 4e-4;
    camera.p2 = -6e-4;
    return camera;
}

// The first straight down, the others tilted to all sides and towards the corners.
std::vector<scenes::PlaneCamera> posesOfThePage() {
    const cv::Point2d middle(50, 35);
    std::vector<scenes::PlaneCamera> poses{scenes::tilted(cameraOfThePage(), middle, 185, 6, 30, 2)};
    for (int i = 0; i < 8; ++i) {
        const cv::Point2d shift(14 * std::cos(0.8 * i), 9 * std::sin(0.8 * i));
        poses.push_back(
            scenes::tilted(cameraOfThePage(), middle + shift, 220 + 3 * i, 20 + 2 * i, 47 * i, 5 * i - 15));
    }
    return poses;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: calibration_guide FOLDER\n");
        return 2;
    }
    const std::string folder = argv[1];
    std::vector<cv::Mat> pictures;
    const std::vector<scenes::PlaneCamera> poses = posesOfThePage();
    for (const scenes::PlaneCamera& pose : poses) {
        scenes::PlaneExposure exposure;
        exposure.seed = pictures.size() + 1;
        pictures.push_back(scenes::renderPlane(pose, scenes::dotGridShape(11, 8, 10, 5), exposure));
    }
    const orx::TPlaneCalibration calibration = calibrate(pictures);
    if (!calibration.valid()) {
        std::printf("%s: %s\n", orx::planeStatusText(calibration.status), calibration.problem.c_str());
        return 1;
    }
    std::printf("rms %.4f px, %d views, coverage %.2f\n", calibration.rms, calibration.views,
                calibration.coverage);
    std::printf("fx %.3f +- %.3f, a pixel in the middle is %.5f mm\n", calibration.camera(0, 0),
                std::sqrt(calibration.covariance(0, 0)), orx::pixelSize(calibration, {640, 480}));

    // A hole of 12 mm and two points 80 mm apart, on the plane of the parts' upper side.
    scenes::PlaneCamera plane = poses.front();
    plane.translation -= 3 * cv::Vec3d(plane.rotation(0, 2), plane.rotation(1, 2), plane.rotation(2, 2));
    cv::RNG random(1);
    std::vector<cv::Point2d> edges;
    for (int k = 0; k < 120; ++k) {
        const double t = 2 * CV_PI * k / 120;
        edges.push_back(plane.project(cv::Point2d(30, 20) + 6 * cv::Point2d(std::cos(t), std::sin(t))) +
                        cv::Point2d(random.gaussian(0.02), random.gaussian(0.02)));
    }
    tellDiameter(calibration, edges);
    const cv::Mat exact;
    std::printf("of exact pixels: ");
    tellDistance(calibration, plane.project({10, 35}), plane.project({90, 35}), exact);
    std::printf("a tenth of it:   ");
    tellDistance(calibration, plane.project({46, 35}), plane.project({54, 35}), exact);
    std::printf("with the edges:  ");
    tellDistance(calibration, plane.project({10, 35}), plane.project({90, 35}),
                 1e-4 * cv::Mat::eye(4, 4, CV_64F));
    keep(calibration, folder + "/calibration-guide.json");
    std::remove((folder + "/calibration-guide.json").c_str());

    std::vector<orx::TTargetView> views;
    orx::TTarget target;
    target.kind = orx::tkDotGrid;
    target.columns = 11;
    target.rows = 8;
    for (const cv::Mat& picture : pictures) views.push_back(orx::findTarget(picture, target));
    cv::Mat small;
    cv::resize(pictures[3], small, cv::Size(), 0.5, 0.5, cv::INTER_AREA);
    const bool written =
        cv::imwrite(folder + "/calibration-view.png", small) &&
        cv::imwrite(folder + "/calibration-residuals.png", calibration::drawResiduals(calibration, views, 0));
    return written ? 0 : 1;
}
