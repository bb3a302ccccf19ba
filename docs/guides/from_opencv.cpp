// The programs of docs/guides/from-opencv.md: the same jobs by OpenCV's calls and by ours, beside the truth.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "guide.h"
#include "orxFunctions/orxfunctions.h"
#include "support/part_scene.h"
#include "support/plane_scene.h"
#include "support/synthetic_scene.h"

namespace {

const cv::Scalar kGreen(60, 190, 40);
const cv::Scalar kOrange(0, 110, 235);
const cv::Scalar kBlue(255, 200, 60);

cv::Mat diskPicture(const scenes::Disk& disk) {
    cv::Mat ideal(160, 160, CV_32F, cv::Scalar(50.0));
    scenes::paint(ideal, disk, 190.0);
    return scenes::expose(ideal, {0.0, 0.8, 2.5, 5});
}

// ---- A grey level ----------------------------------------------------------------------------------------

// [threshold cv]
int levelByOpenCv(const cv::Mat& image) {
    cv::Mat binary;
    return cvRound(cv::threshold(image, binary, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU));
}
// [threshold cv end]

// [threshold]
int levelOf(const cv::Mat& image) {
    const int level = orx::getThresholdValue(image, orx::tmOtsu);
    if (level < 0) std::printf("no level: %s\n", orx::lastRefusal().text.c_str());
    return level;  // for cv::threshold, as ever
}
// [threshold end]

void compareThresholds() {
    cv::Mat image = diskPicture({{79.3, 80.6}, 30.0});
    const int plain = levelOf(image);
    guide::expect(std::abs(plain - levelByOpenCv(image)) <= 1, "both say the same of a plain picture");
    image(cv::Rect(0, 0, 160, 30)).setTo(255);  // a lamp in the picture
    std::printf("level without and with glare: OpenCV %d, %d; ours %d, %d\n", plain, levelByOpenCv(image),
                plain, levelOf(image));
    guide::expect(levelByOpenCv(image) - plain > 10, "glare raises OpenCV's level");
    guide::expect(std::abs(levelOf(image) - plain) <= 2, "glare leaves ours where it was");
    guide::expect(levelOf(cv::Mat()) == -1 && orx::lastRefusal().code == orx::rcEmptyImage,
                  "no picture is refused, not thrown at");
}

// ---- A diameter ------------------------------------------------------------------------------------------

// [diameter cv]
double diameterByOpenCv(const cv::Mat& image) {
    cv::Mat edges;
    cv::Canny(image, edges, 50, 100);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(edges, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
    cv::Point2f center;
    float radius = 0;
    cv::minEnclosingCircle(contours.at(0), center, radius);
    return 2.0 * static_cast<double>(radius);
}
// [diameter cv end]

// [diameter]
orx::TMeasuredCircle circleOf(const cv::Mat& image) {
    ORXEdge::TMetricOptions finder;
    finder.mode = cv::RETR_EXTERNAL;
    std::vector<ORXEdge::TMetricContour> edges;
    ORXEdge::edgesSubPixMetric(image, edges, finder);
    return edges.empty() ? orx::TMeasuredCircle() : orx::fitCircleGeometric(edges[0], finder.sigma);
}
// [diameter end]

void drawEdges(const cv::Mat& image, const scenes::Disk& disk) {
    constexpr int kScale = 24;
    const cv::Rect area(112, 64, 24, 16);
    cv::Mat canvas;
    cv::resize(image(area), canvas, area.size() * kScale, 0, 0, cv::INTER_NEAREST);
    cv::cvtColor(canvas, canvas, cv::COLOR_GRAY2BGR);
    const auto shown = [&](cv::Point2d p) {
        const cv::Point2d q = (p - cv::Point2d(area.tl()) + cv::Point2d(0.5, 0.5)) * kScale;
        return cv::Point(cvRound(q.x * 16), cvRound(q.y * 16));
    };
    cv::circle(canvas, shown(disk.center), cvRound(disk.radius * kScale * 16), kBlue, 2, cv::LINE_AA, 4);

    cv::Mat canny;
    cv::Canny(image, canny, 50, 100);
    std::vector<cv::Point> pixels;
    cv::findNonZero(canny, pixels);
    for (const cv::Point& p : pixels) {
        if (area.contains(p)) cv::circle(canvas, shown(p), 7 * 16, kOrange, cv::FILLED, cv::LINE_AA, 4);
    }
    std::vector<ORXEdge::TMetricContour> edges;
    ORXEdge::edgesSubPixMetric(image, edges);
    for (const auto& edge : edges) {
        for (const cv::Point2f& p : edge.points)
            cv::circle(canvas, shown(p), 5 * 16, kGreen, cv::FILLED, cv::LINE_AA, 4);
    }
    guide::save("from-opencv-edges", canvas);
}

void compareDiameters() {
    const scenes::Disk disk{{79.3, 80.6}, 52.3};
    const cv::Mat image = diskPicture(disk);
    const double plain = diameterByOpenCv(image);
    const orx::TMeasuredCircle circle = circleOf(image);
    std::printf("diameter 104.6: OpenCV %.3f; ours %.4f, standard uncertainty %.4f\n", plain,
                2 * circle.radius, 2 * circle.radiusDeviation);
    guide::expect(std::abs(plain - 104.6) > 0.3, "whole pixels are off by tenths of a pixel");
    guide::expect(circle.valid() && std::abs(2 * circle.radius - 104.6) < 0.02, "ours by less than 0.02");
    guide::expect(circle.radiusDeviation > 0 && circle.radiusDeviation < 0.01, "and it says how well");
    drawEdges(image, disk);
}

// ---- An ellipse, circles, a bar --------------------------------------------------------------------------

void compareEllipses() {
    cv::Mat ideal(390, 390, CV_32F, cv::Scalar(50.0));
    scenes::paint(ideal, scenes::Disk{{194.0, 194.0}, 100.0}, 190.0);
    cv::resize(ideal, ideal, {390, 260}, 0, 0, cv::INTER_AREA);  // a disk seen askew
    const cv::Mat image = scenes::expose(ideal, {0.0, 0.8, 2.5, 5});
    const double minor = 200.0 * 260 / 390;
    const double major = 200.0;

    // [ellipse cv]
    cv::Mat binary;
    cv::threshold(image, binary, 120, 255, cv::THRESH_BINARY);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(binary, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
    const auto longer = [](const auto& a, const auto& b) { return a.size() < b.size(); };
    const cv::RotatedRect box = cv::fitEllipse(*std::max_element(contours.begin(), contours.end(), longer));
    // [ellipse cv end]

    // [ellipse]
    ORXEdge::TMetricOptions finder;
    std::vector<ORXEdge::TMetricContour> edges;
    ORXEdge::edgesSubPixMetric(image, edges, finder);
    orx::TMeasuredEllipse ellipse;
    if (!edges.empty()) ellipse = orx::fitEllipseGeometric(edges[0], finder.sigma);
    // [ellipse end]

    std::printf("axes %.3f, %.3f: OpenCV %.3f, %.3f; ours %.4f +- %.4f, %.4f +- %.4f\n", minor, major,
                static_cast<double>(box.size.width), static_cast<double>(box.size.height),
                2 * ellipse.semiMinor, 2 * ellipse.semiMinorDeviation, 2 * ellipse.semiMajor,
                2 * ellipse.semiMajorDeviation);
    guide::expect(std::abs(static_cast<double>(box.size.width) - minor) > 0.5,
                  "the ellipse through pixels is too small by more than half a pixel");
    guide::expect(
        std::abs(2 * ellipse.semiMinor - minor) < 0.05 && std::abs(2 * ellipse.semiMajor - major) < 0.05,
        "ours is right to 0.05");
}

void compareCircles() {
    const std::vector<scenes::Disk> disks{{{46.4, 52.7}, 33.0}, {{88.8, 61.3}, 27.0}};
    cv::Mat ideal(130, 130, CV_32F, cv::Scalar(50.0));
    for (const scenes::Disk& disk : disks) scenes::paint(ideal, disk, 190.0);
    scenes::paint(ideal, scenes::Bar{{61.0, 90.0}, 24.0, 90.0, 18.0}, 190.0);
    const cv::Mat image = scenes::expose(ideal, {0.0, 0.8, 2.5, 1});

    // [circles cv]
    std::vector<cv::Vec3f> hough;
    cv::HoughCircles(image, hough, cv::HOUGH_GRADIENT, 1, 20, 100, 15, 20, 40);
    // [circles cv end]

    // [circles]
    std::vector<ORXEdge::TMetricContour> edges;
    ORXEdge::edgesSubPixMetric(image, edges);
    std::vector<cv::Point2f> points;
    for (const auto& edge : edges) points.insert(points.end(), edge.points.begin(), edge.points.end());
    orx::TConsensusOptions options;
    options.tolerance = 0.2;  // some noises of a point
    options.minRadius = 10;
    options.minSupport = 0.15;
    options.fit.noise = orx::pnEdgeChain;
    options.fit.smoothing = orx::chainSmoothing(1.0);
    const std::vector<orx::TMeasuredCircle> circles = orx::findCircles(points, options);
    // [circles end]

    const auto worst = [&](const auto& centerAndRadius, std::size_t count) {
        double most = 0;
        for (const scenes::Disk& disk : disks) {
            double nearest = 1e9;
            for (std::size_t i = 0; i < count; ++i) {
                const auto [center, radius] = centerAndRadius(i);
                const double error = std::max(cv::norm(center - disk.center), std::abs(radius - disk.radius));
                nearest = std::min(nearest, error);
            }
            most = std::max(most, nearest);
        }
        return most;
    };
    const double houghError = worst(
        [&](std::size_t i) {
            return std::pair(cv::Point2d(static_cast<double>(hough[i][0]), static_cast<double>(hough[i][1])),
                             static_cast<double>(hough[i][2]));
        },
        hough.size());
    const double error =
        worst([&](std::size_t i) { return std::pair(circles[i].center, circles[i].radius); }, circles.size());
    std::printf("two circles and a bar: HoughCircles finds %zu, off by %.2f; ours %zu, off by %.3f\n",
                hough.size(), houghError, circles.size(), error);
    guide::expect(houghError > 0.3, "HoughCircles is off by tenths of a pixel or more");
    guide::expect(circles.size() == 2 && error < 0.15, "ours are the two, right to 0.15");
}

struct Widths {
    double rough = 0;
    double measured = 0;
};

Widths widthsOf(const cv::Mat& image) {
    // [bar cv]
    cv::Mat binary;
    cv::threshold(image, binary, 120, 255, cv::THRESH_BINARY);
    std::vector<cv::Point> pixels;
    cv::findNonZero(binary, pixels);
    const cv::RotatedRect box = cv::minAreaRect(pixels);
    const double roughWidth = static_cast<double>(std::min(box.size.width, box.size.height));
    // [bar cv end]

    // [bar]
    // A caliper across the box, 60 pixels wide, so that it averages over as many profiles. It is searched
    // along its first side.
    const cv::Size2f size(static_cast<float>(roughWidth) + 20, 60);
    const float angle = box.size.width > box.size.height ? box.angle + 90 : box.angle;
    const std::vector<orx::TContrastEdge> edges =
        orx::getContrastEdges(image, cv::RotatedRect(box.center, size, angle));
    const double width = edges.size() == 2 ? edges[1].distance - edges[0].distance : 0;
    // [bar end]
    return {roughWidth, width};
}

void compareBars() {
    double worstRough = 0;
    double worst = 0;
    for (const double angle : {0.0, 12.0, 24.0, 36.0, 48.0, 60.0, 72.0, 84.0}) {
        cv::Mat ideal(160, 160, CV_32F, cv::Scalar(50.0));
        scenes::paint(ideal, scenes::Bar{{80.2, 79.7}, angle, 100.0, 31.4}, 190.0);
        const Widths widths = widthsOf(scenes::expose(ideal, {0.0, 0.8, 2.5, 1}));
        worstRough = std::max(worstRough, std::abs(widths.rough - 31.4));
        worst = std::max(worst, std::abs(widths.measured - 31.4));
    }
    std::printf("width 31.4 at eight angles: minAreaRect off by %.2f at the most; caliper by %.3f\n",
                worstRough, worst);
    guide::expect(worstRough > 0.3, "minAreaRect is off by tenths of a pixel");
    guide::expect(worst < 0.05, "the caliper is right to 0.05");
}

// ---- A part ----------------------------------------------------------------------------------------------

void compareParts() {
    scenes::PartSceneSettings settings;
    settings.kind = scenes::PartKind::bracket;
    settings.size = {400, 300};
    settings.angleRange = 300;
    settings.seed = 4;
    const scenes::PartScene scene = scenes::renderParts(settings);
    const scenes::PartPicture lesson = scenes::renderPartAlone(scenes::PartKind::bracket, 2);
    const cv::Rect region(20, 20, 120, 120);

    // [part cv]
    cv::Mat scores;
    cv::matchTemplate(scene.image, lesson.image(region), scores, cv::TM_CCOEFF_NORMED);
    double best = 0;
    cv::Point corner;
    cv::minMaxLoc(scores, nullptr, &best, nullptr, &corner);
    // [part cv end]

    // [part]
    orx::TTeachOptions teach;
    teach.hasReference = true;
    teach.reference = {lesson.pose.x, lesson.pose.y};
    teach.direction = lesson.pose.angle;
    const orx::TPartModel model = orx::teachPart(lesson.image, region, teach);
    const orx::TFindResult found = orx::findParts(scene.image, model);
    // [part end]

    const scenes::ScenePose truth = scene.parts.at(0).pose;
    const cv::Point2d middle = cv::Point2d(corner) + cv::Point2d(lesson.pose.x - 20, lesson.pose.y - 20);
    const double templateError = cv::norm(middle - cv::Point2d(truth.x, truth.y));
    guide::expect(best < 0.8 && templateError > 1, "the template does not fit a turned part");
    guide::expect(found.parts.size() == 1, "the part is found");
    if (found.parts.empty()) return;
    const orx::TFoundPart& part = found.parts[0];
    const double error = std::hypot(part.pose.x - truth.x, part.pose.y - truth.y);
    const double turn = std::remainder(part.pose.angle - truth.angle, 360);
    std::printf(
        "bracket turned by %.1f: matchTemplate scores %.2f, off by %.1f; ours %.2f, off by %.4f, %.4f°"
        " (+- %.4f, %.4f, %.4f°)\n",
        truth.angle - lesson.pose.angle, best, templateError, part.score, error, turn, part.deviationX,
        part.deviationY, part.deviationAngle);
    guide::expect(error < 0.02 && std::abs(turn) < 0.03, "to hundredths of a pixel and of a degree");

    cv::Mat canvas;
    cv::cvtColor(scene.image, canvas, cv::COLOR_GRAY2BGR);
    cv::resize(canvas, canvas, {}, 2, 2, cv::INTER_CUBIC);
    cv::rectangle(canvas, cv::Rect(corner * 2, cv::Size(240, 240)), kOrange, 2);
    orx::TPartPose pose = part.pose;
    pose.x = 2 * pose.x + 0.5;
    pose.y = 2 * pose.y + 0.5;
    pose.scale *= 2;
    orx::TPartColours colours;
    colours.thickness = 2;
    orx::drawPartModel(canvas, model, pose, colours);
    guide::save("from-opencv-parts", canvas);
}

// ---- Millimetres -----------------------------------------------------------------------------------------

// Six views of a grid of points, as findTarget gives them.
std::vector<orx::TTargetView> viewsOfTarget() {
    scenes::PlaneCamera lens;
    lens.size = {640, 480};
    lens.fx = lens.fy = 1500;
    lens.cx = 322;
    lens.cy = 237;
    lens.k1 = -0.25;
    std::vector<orx::TTargetView> views;
    cv::RNG noise(1);
    for (int i = 0; i < 6; ++i) {
        const scenes::PlaneCamera camera =
            scenes::tilted(lens, {50, 35}, 300, i == 0 ? 10 : 25, 60 * i, 5 * i);
        orx::TTargetView view;
        view.found = true;
        view.imageSize = lens.size;
        for (int k = 0; k < 88; ++k) {
            view.plane.emplace_back(10 * (k % 11), 10 * (k / 11));
            const cv::Point2d error(noise.gaussian(0.01), noise.gaussian(0.01));
            view.pixels.push_back(camera.project(view.plane.back()) + error);
            view.deviations.push_back(0.01);
        }
        views.push_back(view);
    }
    return views;
}

void compareMillimetres() {
    const std::vector<orx::TTargetView> views = viewsOfTarget();
    const orx::TPlaneCalibration calibration = orx::calibratePlane(views);
    guide::expect(calibration.valid(), "the views tell lens and plane");
    const std::vector<cv::Point2d>& pixels = views[0].pixels;

    // [millimetres cv]
    std::vector<cv::Point2d> straight;  // cv::undistort does this to every pixel, and interpolates
    cv::undistortPoints(pixels, straight, calibration.camera, calibration.distortion, cv::noArray(),
                        calibration.camera);
    const cv::Mat homography = cv::findHomography(straight, views[0].plane);
    std::vector<cv::Point2d> byOpenCv;
    cv::perspectiveTransform(straight, byOpenCv, homography);
    // [millimetres cv end]

    // [millimetres]
    const std::vector<cv::Point2d> places = orx::imageToPlane(calibration, pixels);
    const cv::Mat covariance = orx::planeCovariance(calibration, {pixels[0], pixels[87]});
    // [millimetres end]

    double apart = 0;
    for (std::size_t i = 0; i < places.size(); ++i)
        apart = std::max(apart, cv::norm(places[i] - byOpenCv[i]));
    const double diagonal = cv::norm(places[0] - places[87]);
    const double stated = std::sqrt(covariance.at<double>(0, 0));
    std::printf("both ways differ by %.4f mm at the most; diagonal 122.066 mm: %.4f; first x +- %.4f\n",
                apart, diagonal, stated);
    guide::expect(apart < 0.01, "both ways give the same places, to a hundredth of a millimetre");
    guide::expect(std::abs(diagonal - 122.066) < 0.01 && stated > 0 && stated < 0.01,
                  "and ours knows how well");
}

}  // namespace

int main(int argc, char** argv) {
    return guide::run(argc, argv, [] {
        compareThresholds();
        compareDiameters();
        compareEllipses();
        compareCircles();
        compareBars();
        compareParts();
        compareMillimetres();
    });
}
