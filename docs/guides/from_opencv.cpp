// The programs of docs/guides/from-opencv.md: the same jobs by OpenCV's calls and by ours, beside the truth.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <string>
#include <vector>

#include "canvas.h"
#include "orxFunctions/orxfunctions.h"
#include "support/part_scene.h"
#include "support/plane_scene.h"
#include "support/synthetic_scene.h"

namespace {

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
    const int plainByOpenCv = levelByOpenCv(image);
    const int plain = levelOf(image);
    image(cv::Rect(0, 0, 160, 30)).setTo(255);  // a lamp in the picture
    std::printf("level without and with glare: OpenCV %d, %d; ours %d, %d\n", plainByOpenCv,
                levelByOpenCv(image), plain, levelOf(image));
    guide::expectAbout(plainByOpenCv, 118, 2, "OpenCV's level of a plain picture");
    guide::expectAbout(plain, 118, 2, "our level of it");
    guide::expectAbout(levelByOpenCv(image), 140, 3, "glare raises OpenCV's level");
    guide::expectAbout(levelOf(image), 118, 2, "glare leaves ours where it was");
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
bool shorter(const ORXEdge::TMetricContour& a, const ORXEdge::TMetricContour& b) {
    return a.points.size() < b.points.size();
}

// The circle of the longest edge. Where it is not valid(), nothing was found, or orx::lastRefusal() says why.
orx::TMeasuredCircle circleOf(const cv::Mat& image) {
    ORXEdge::TMetricOptions finder;
    finder.mode = cv::RETR_EXTERNAL;
    std::vector<ORXEdge::TMetricContour> edges;
    if (!ORXEdge::edgesSubPixMetric(image, edges, finder) || edges.empty()) return {};
    return orx::fitCircleGeometric(*std::max_element(edges.begin(), edges.end(), shorter), finder.sigma);
}
// [diameter end]

void drawEdges(const cv::Mat& image, const scenes::Disk& disk) {
    guide::Enlarged panel(image, {112, 64, 24, 16}, 24);
    panel.circle(disk.center, disk.radius, guide::kBlue, 2);
    cv::Mat canny;
    cv::Canny(image, canny, 50, 100);
    std::vector<cv::Point> pixels;
    cv::findNonZero(canny, pixels);
    for (const cv::Point& p : pixels) panel.dot(p, 7, guide::kOrange);
    std::vector<ORXEdge::TMetricContour> edges;
    guide::expect(ORXEdge::edgesSubPixMetric(image, edges), "the picture is taken");
    for (const auto& edge : edges)
        for (const cv::Point2f& p : edge.points) panel.dot(p, 5, guide::kGreen);
    guide::save("from-opencv-edges", panel.canvas());
}

void compareDiameters() {
    const scenes::Disk disk{{79.3, 80.6}, 52.3};
    const cv::Mat image = diskPicture(disk);
    const double plain = diameterByOpenCv(image);
    const orx::TMeasuredCircle circle = circleOf(image);
    std::printf("diameter 104.6: OpenCV %.3f; ours %.4f, standard uncertainty %.4f\n", plain,
                2 * circle.radius, 2 * circle.radiusDeviation);
    guide::expectAbout(plain, 105.9, 0.2, "the circle around whole pixels");
    guide::expect(circle.valid(), "the disk has a circle");
    guide::expectAbout(2 * circle.radius, 104.601, 0.01, "our diameter");
    guide::expectAbout(2 * circle.radiusDeviation, 0.005, 0.001, "its uncertainty");
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

    cv::Mat binary;
    cv::threshold(image, binary, 120, 255, cv::THRESH_BINARY);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(binary, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
    const auto fewer = [](const auto& a, const auto& b) { return a.size() < b.size(); };
    const cv::RotatedRect box = cv::fitEllipse(*std::max_element(contours.begin(), contours.end(), fewer));

    ORXEdge::TMetricOptions finder;
    std::vector<ORXEdge::TMetricContour> edges;
    orx::TMeasuredEllipse ellipse;
    if (ORXEdge::edgesSubPixMetric(image, edges, finder) && !edges.empty())
        ellipse =
            orx::fitEllipseGeometric(*std::max_element(edges.begin(), edges.end(), shorter), finder.sigma);
    guide::expect(ellipse.valid(), "there is an ellipse");

    std::printf("axes %.3f, %.3f: OpenCV %.3f, %.3f; ours %.4f +- %.4f, %.4f +- %.4f\n", minor, major,
                static_cast<double>(box.size.width), static_cast<double>(box.size.height),
                2 * ellipse.semiMinor, 2 * ellipse.semiMinorDeviation, 2 * ellipse.semiMajor,
                2 * ellipse.semiMajorDeviation);
    guide::expectAbout(static_cast<double>(box.size.width), 132.35, 0.1, "shorter axis through pixels");
    guide::expectAbout(static_cast<double>(box.size.height), 199.00, 0.1, "longer axis through pixels");
    guide::expectAbout(2 * ellipse.semiMinor, 133.332, 0.015, "our shorter axis");
    guide::expectAbout(2 * ellipse.semiMajor, 199.987, 0.02, "our longer axis");
    guide::expectAbout(2 * ellipse.semiMinorDeviation, 0.007, 0.0015, "uncertainty of the shorter axis");
    guide::expectAbout(2 * ellipse.semiMajorDeviation, 0.010, 0.0015, "uncertainty of the longer axis");
}

// [circles]
std::vector<orx::TMeasuredCircle> circlesIn(const cv::Mat& image) {
    std::vector<ORXEdge::TMetricContour> edges;
    if (!ORXEdge::edgesSubPixMetric(image, edges)) return {};  // found with its default sigma, 1
    std::vector<cv::Point2f> points;
    for (const auto& edge : edges) points.insert(points.end(), edge.points.begin(), edge.points.end());
    orx::TConsensusOptions options;
    options.tolerance = 0.2;  // some noises of a point
    options.minRadius = 10;
    options.minSupport = 0.15;  // the share of all points that a circle holds at the least
    options.fit.noise = orx::pnEdgeChain;
    options.fit.smoothing = orx::chainSmoothing(1.0);
    return orx::findCircles(points, options);
}
// [circles end]

void compareCircles() {
    const std::vector<scenes::Disk> disks{{{46.4, 52.7}, 33.0}, {{88.8, 61.3}, 27.0}};
    cv::Mat ideal(130, 130, CV_32F, cv::Scalar(50.0));
    for (const scenes::Disk& disk : disks) scenes::paint(ideal, disk, 190.0);
    scenes::paint(ideal, scenes::Bar{{61.0, 90.0}, 24.0, 90.0, 18.0}, 190.0);
    const cv::Mat image = scenes::expose(ideal, {0.0, 0.8, 2.5, 1});

    std::vector<cv::Vec3f> hough;
    cv::HoughCircles(image, hough, cv::HOUGH_GRADIENT, 1, 20, 100, 15, 20, 40);

    const std::vector<orx::TMeasuredCircle> circles = circlesIn(image);

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
    guide::expect(hough.size() == 2, "HoughCircles finds two");
    guide::expectAbout(houghError, 0.8, 0.3, "error of HoughCircles");
    guide::expect(circles.size() == 2, "ours are the two");
    guide::expectAbout(error, 0.02, 0.015, "our error");
}

// [bar cv]
cv::RotatedRect boxOf(const cv::Mat& image) {
    cv::Mat binary;
    cv::threshold(image, binary, 120, 255, cv::THRESH_BINARY);
    std::vector<cv::Point> pixels;
    cv::findNonZero(binary, pixels);
    return cv::minAreaRect(pixels);
}
// [bar cv end]

// [bar]
// Across the box of a bright bar, averaged over 60 pixels along it; none where an edge is missing.
std::optional<double> widthAcross(const cv::Mat& image, const cv::RotatedRect& box) {
    const cv::Size2f size(std::min(box.size.width, box.size.height) + 20, 60);
    const float angle = box.size.width > box.size.height ? box.angle + 90 : box.angle;
    const cv::RotatedRect caliper(box.center, size, angle);  // searched along its first side
    orx::TCaliperOptions options;
    options.minContrast = 60;  // half of what the bar has
    options.polarity = orx::epDarkToBright;
    options.selection = orx::esFirst;
    const auto from = orx::getContrastEdges(image, caliper, options);
    options.polarity = orx::epBrightToDark;
    options.selection = orx::esLast;
    const auto to = orx::getContrastEdges(image, caliper, options);
    if (from.empty() || to.empty()) {
        std::printf("no width: %s\n", orx::lastRefusal().text.c_str());
        return std::nullopt;
    }
    return to[0].distance - from[0].distance;
}
// [bar end]

void compareBars() {
    double worstRough = 0;
    double worst = 0;
    for (const double angle : {0.0, 12.0, 24.0, 36.0, 48.0, 60.0, 72.0, 84.0}) {
        cv::Mat ideal(160, 160, CV_32F, cv::Scalar(50.0));
        scenes::paint(ideal, scenes::Bar{{80.2, 79.7}, angle, 100.0, 31.4}, 190.0);
        const cv::Mat image = scenes::expose(ideal, {0.0, 0.8, 2.5, 1});
        const cv::RotatedRect box = boxOf(image);
        const double rough = static_cast<double>(std::min(box.size.width, box.size.height));
        const std::optional<double> width = widthAcross(image, box);
        guide::expect(width.has_value(), "the bar has a width");
        worstRough = std::max(worstRough, std::abs(rough - 31.4));
        worst = std::max(worst, std::abs(width.value_or(0) - 31.4));
    }
    const cv::Mat even(160, 160, CV_8UC1, cv::Scalar(50));
    guide::expect(!widthAcross(even, {{80, 80}, {31, 100}, 0}), "where there is no bar there is no width");
    std::printf("width 31.4 at eight angles: minAreaRect off by %.2f at the most; caliper by %.3f\n",
                worstRough, worst);
    guide::expectAbout(worstRough, 0.40, 0.1, "error of minAreaRect");
    guide::expectAbout(worst, 0.025, 0.01, "error of the caliper");
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

    cv::Mat scores;
    cv::matchTemplate(scene.image, lesson.image(region), scores, cv::TM_CCOEFF_NORMED);
    double best = 0;
    cv::Point corner;
    cv::minMaxLoc(scores, nullptr, &best, nullptr, &corner);

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
    guide::expectAbout(best, 0.43, 0.02, "the template's score of a turned part");
    guide::expectAbout(templateError, 6, 0.6, "its error");
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
    guide::expectAbout(truth.angle - lesson.pose.angle, 74, 0.5, "how far the bracket is turned");
    guide::expectAbout(part.score, 1, 0.01, "our score");
    guide::expectAbout(error, 0.007, 0.004, "our error");
    guide::expectAbout(std::abs(turn), 0.005, 0.004, "our error of the angle");
    guide::expect(
        error < 2 * std::hypot(part.deviationX, part.deviationY) && std::abs(turn) < 2 * part.deviationAngle,
        "both are within what is stated");

    cv::Mat canvas = guide::inColour(scene.image);
    cv::resize(canvas, canvas, {}, 2, 2, cv::INTER_CUBIC);
    cv::rectangle(canvas, cv::Rect(corner * 2, cv::Size(240, 240)), guide::kOrange, 2);
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

    std::vector<cv::Point2d> straight;  // cv::undistort does this to every pixel, and interpolates
    cv::undistortPoints(pixels, straight, calibration.camera, calibration.distortion, cv::noArray(),
                        calibration.camera);
    const cv::Mat homography = cv::findHomography(straight, views[0].plane);
    std::vector<cv::Point2d> byOpenCv;
    cv::perspectiveTransform(straight, byOpenCv, homography);

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
    guide::expectAbout(apart, 0.0012, 0.0006, "both ways give the same places");
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
