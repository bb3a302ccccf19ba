// Guide "geometry and curves": points, angles, polygons, motions in space, polynomials and splines.
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "canvas.h"
#include "orxFunctions/orxfunctions.h"

namespace {

void tellPoints() {
    // [points]
    const cv::Point a(10, 40), b(110, 40), c(60, 90);
    const double direction = orx::angleToX(a, c);                      // 45: clockwise on the screen
    const double slope = orx::angleFrom2Points(c, a, orx::ANGLE_ABS);  // 45, whichever comes first
    const double far = orx::pointDistance2Line(c, a, b);               // 50
    cv::Point3d circle;                                                // x, y, radius
    if (!orx::threePoints2circle2(a, b, c, circle)) std::printf("on one line\n");
    // [points end]
    guide::expectAbout(direction, 45, 1e-9, "direction");
    guide::expectAbout(slope, 45, 1e-9, "slope");
    guide::expectAbout(far, 50, 1e-9, "distance from the line");
    guide::expectAbout(circle.x, 60, 1e-9, "x of the circle");
    guide::expectAbout(circle.y, 40, 1e-9, "y of the circle");
    guide::expectAbout(circle.z, 50, 1e-9, "radius of the circle");
    guide::expect(!orx::threePoints2circle2(a, b, {60, 40}, circle), "points on a line have no circle");
    guide::expect(orx::lastRefusal().code == orx::rcDegenerate, "and it says why");

    // [lists]
    std::vector<cv::Point> points(100);
    for (int x = 0; x < 100; ++x) points[static_cast<std::size_t>(x)] = {x, 20 + x / 50};
    orx::deleteImageSidePoints(points, {100, 60}, 5);  // edges at the border are no edges of the part
    const std::size_t inner = points.size();           // 90
    std::vector<cv::Point> chosen;
    orx::getPointListFromIdxList(points, {0, 10, 20}, chosen);
    orx::deletePointsInList(points, {0, 1});  // the order of the others changes
    // [lists end]
    guide::expect(inner == 90 && points.size() == 88 && chosen.size() == 3,
                  "points are left out at the border");

    // [polygon]
    std::vector<cv::Point> corners{{10, 60}, {70, 10}, {10, 10}, {70, 60}};  // as they were clicked
    const double area = orx::calcPolygonArea(corners);                       // 3000, in any order
    const bool inside = orx::isPointInRect({30, 30}, {10, 10}, {70, 10}, {70, 60}, {10, 60});
    orx::TORXRect region(600, 20, 80, 80);
    const bool fits = region.checkROI(cv::Mat(480, 640, CV_8UC1));  // false: it leaves the picture
    // [polygon end]
    guide::expectAbout(area, 3000, 1e-9, "area of a polygon");
    guide::expect(inside && !fits, "a point within, and a region that is not");
}

// [motion]
// From the camera's axes to the robot's: the same marks, measured by both.
cv::Mat cameraToRobot(const std::vector<cv::Point3d>& byCamera, const std::vector<cv::Point3d>& byRobot) {
    cv::Mat motion;  // 4 x 4: rotation and translation
    if (!orx::calcAXequalsB(byCamera, byRobot, motion)) return {};
    return motion;
}
// [motion end]

void tellMotion() {
    const cv::Mat truth = orx::TPoint6DToMatrix().Point6D2Matrix44({250, -40, 600, 3, -4, 30});
    std::vector<cv::Point3d> camera{{0, 0, 0}, {100, 0, 5}, {0, 80, -5}, {90, 70, 10}, {40, 20, 60}}, robot;
    cv::RNG random(3);
    for (const cv::Point3d& p : camera) {
        const cv::Mat q = truth * cv::Mat(cv::Vec4d(p.x, p.y, p.z, 1));
        robot.emplace_back(q.at<double>(0) + random.gaussian(0.02), q.at<double>(1) + random.gaussian(0.02),
                           q.at<double>(2) + random.gaussian(0.02));
    }
    const cv::Mat motion = cameraToRobot(camera, robot);
    guide::expect(!motion.empty() && cv::norm(motion - truth, cv::NORM_INF) < 0.1, "the motion is found");
    if (motion.empty()) return;
    std::printf("translation (%.2f, %.2f, %.2f)\n", motion.at<double>(0, 3), motion.at<double>(1, 3),
                motion.at<double>(2, 3));
    cv::Vec4d middle(0, 0, 0, 1);
    for (const cv::Point3d& p : camera)
        middle += cv::Vec4d(p.x, p.y, p.z, 0) / static_cast<double>(camera.size());
    const double off = cv::norm((motion - truth) * cv::Mat(middle), cv::NORM_INF);
    std::printf("off by %.4f where the marks lie\n", off);
    guide::expect(off < 0.01, "the translation is right to 0.01 where the marks lie");
}

// [curves]
// Where a measured profile is highest: one parabola through the samples near the top.
cv::Point2d topOf(const std::vector<cv::Point2d>& samples, int from, int to) {
    const orx::TPolynomial parabola(samples, 2);
    return parabola.getExtremeValue(from, to, 1);
}

// The profile between its samples.
double heightAt(const std::vector<cv::Point2d>& samples, double x) {
    orx::TSplineCurve curve;
    curve.fit(samples, 3);  // cubics through four neighbours each
    return curve.getY(x);
}
// [curves end]

// A bead of glue: its height over the position, millimetres.
double bead(double x) { return 4 * std::exp(-std::pow((x - 21.3) / 9, 2)); }

void tellCurves() {
    cv::RNG random(2);
    std::vector<cv::Point2d> samples, near;
    for (int x = 0; x <= 45; x += 3) {
        samples.emplace_back(x, bead(x) + random.gaussian(0.03));
        if (std::abs(x - 21) <= 6) near.push_back(samples.back());
    }
    const cv::Point2d top = topOf(near, 15, 27);
    std::printf("top at %.2f, height %.2f; height at 10: %.2f of %.2f\n", top.x, top.y, heightAt(samples, 10),
                bead(10));
    guide::expectAbout(top.x, 21.23, 0.02, "place of the top");
    guide::expectAbout(heightAt(samples, 10), bead(10), 0.1, "height between the samples");

    const orx::TPolynomial sixth(samples, 6);
    double sse = 0, rmse = 0, r2 = 0;
    sixth.getError(sse, rmse, r2);
    guide::expectAbout(sixth.getExtremeValue(15, 27, 1).y, 3.8, 0.1, "a sixth order is too low at the top");
    guide::expectAbout(rmse, 0.13, 0.02, "and looks good by its residuals");
    guide::expectAbout(r2, 0.992, 0.002, "both of them");
    std::printf("order 6: rms %.3f, r2 %.4f\n", rmse, r2);
    orx::TSplineCurve spline;
    spline.fit(samples, 3);
    std::vector<cv::Point2d> splineLine, sixthLine, parabolaLine;
    spline.getSplineList(splineLine, 1);
    sixth.getPloyList(sixthLine, 1);
    orx::TPolynomial(near, 2).getPloyList(parabolaLine, 1);
    guide::Plot plot({640, 360}, {"position", -2, 47, {0, 10, 20, 30, 40}},
                     {"height", -1, 5.5, {0, 1, 2, 3, 4, 5}});
    plot.line(sixthLine, guide::kOrange);
    plot.line(splineLine, guide::kBlue);
    plot.line(parabolaLine, guide::kGreen);
    plot.dots(samples, guide::kInk);
    plot.legend("TPolynomial of order 6", guide::kOrange);
    plot.legend("TPolynomial of order 2, near the top", guide::kGreen);
    plot.legend("TSplineCurve of order 3", guide::kBlue);
    guide::save("geometry-curves", plot.canvas());
}

void make() {
    tellPoints();
    tellMotion();
    tellCurves();
}

}  // namespace

int main(int argc, char** argv) { return guide::run(argc, argv, make); }
