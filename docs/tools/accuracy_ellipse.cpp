// Measures bias and spread of the ellipse fits on scenes whose truth is known, and prints
// docs/accuracy-ellipse.md.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <random>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

constexpr int kScenes = 200;
constexpr int kPoints = 200;
constexpr double kShorter = 60;
constexpr double kLonger = 100;
constexpr double kAnyAxis = 1e5;

struct Scene {
    double x;
    double y;
    double angle;  // radians, of the shorter axis
    std::vector<cv::Point2f> points;
};

// An ellipse of 120 x 200 pixels, seen over `arc` degrees from a random place on; every point is moved in x
// and y, and a part of them replaced by points anywhere in a frame of 640 x 480.
Scene makeScene(std::mt19937& random, double arc, double noise, double outliers) {
    std::uniform_real_distribution<double> unit(0, 1);
    std::normal_distribution<double> gauss(0, 1);
    Scene scene{300 + 40 * unit(random), 220 + 40 * unit(random), CV_PI * unit(random), {}};
    const double start = 2 * CV_PI * unit(random);
    const double c = std::cos(scene.angle);
    const double s = std::sin(scene.angle);
    for (int i = 0; i < kPoints; ++i) {
        const double t = start + arc * CV_PI / 180 * i / kPoints;
        const double u = kShorter * std::cos(t);
        const double v = kLonger * std::sin(t);
        double x = scene.x + u * c - v * s + noise * gauss(random);
        double y = scene.y + u * s + v * c + noise * gauss(random);
        if (unit(random) < outliers) {
            x = 640 * unit(random);
            y = 480 * unit(random);
        }
        scene.points.emplace_back(static_cast<float>(x), static_cast<float>(y));
    }
    return scene;
}

using Fit = std::function<orx::TEllipse(const std::vector<cv::Point2f>&)>;

// Mean and standard deviation of what was added.
class Statistics {
  public:
    void add(double value) {
        sum_ += value;
        squares_ += value * value;
        ++count_;
    }
    double mean() const { return sum_ / count_; }
    double deviation() const { return std::sqrt(std::max(0.0, squares_ / count_ - mean() * mean())); }
    int count() const { return count_; }

  private:
    double sum_ = 0;
    double squares_ = 0;
    int count_ = 0;
};

void printRow(const char* name, double arc, double noise, double outliers, const Fit& fit) {
    std::mt19937 random(1);
    Statistics centre;
    Statistics shorter;
    Statistics longer;
    Statistics angle;
    for (int i = 0; i < kScenes; ++i) {
        const Scene scene = makeScene(random, arc, noise, outliers);
        const orx::TEllipse e = fit(scene.points);
        if (e.valid != 1) continue;
        centre.add(std::hypot(static_cast<double>(e.x) - scene.x, static_cast<double>(e.y) - scene.y));
        shorter.add(static_cast<double>(e.width) - 2 * kShorter);
        longer.add(static_cast<double>(e.height) - 2 * kLonger);
        angle.add(std::remainder(static_cast<double>(e.angle) - scene.angle * 180 / CV_PI, 180));
    }
    if (centre.count() == 0) {
        std::printf("| %s | %.0f | %.2f | %.0f %% | 0 %% | | | | |\n", name, arc, noise, outliers * 100);
        return;
    }
    std::printf(
        "| %s | %.0f | %.2f | %.0f %% | %.0f %% | %.3f | %+.3f ± %.3f | %+.3f ± %.3f | %+.3f ± %.3f |\n",
        name, arc, noise, outliers * 100, 100.0 * centre.count() / kScenes, centre.mean(), shorter.mean(),
        shorter.deviation(), longer.mean(), longer.deviation(), angle.mean(), angle.deviation());
}

orx::TEllipse fitAll(const std::vector<cv::Point2f>& points) {
    return orxFit::fitEllipseNorm(points, 3, 0.5, 0, kAnyAxis, 0, kAnyAxis);
}

orx::TEllipse search(const std::vector<cv::Point2f>& points) {
    return orxFit::fitEllipseRansac(points, 2, 200, 0.3, 0, kAnyAxis, 0, kAnyAxis);
}

}  // namespace

int main() {
    std::printf(
        "# Accuracy of the ellipse fits\n\n"
        "Printed by `accuracy_ellipse` (docs/tools); do not edit. Each row: %d random scenes of %d points on "
        "an\n"
        "ellipse of 120 x 200 pixels in any orientation, seen over an arc (degrees), moved by Gaussian "
        "noise\n"
        "(pixels, in x and in y), a part of them replaced by points anywhere in the frame. `valid` counts "
        "the\n"
        "accepted fits; errors are over those: mean distance of the centres, then mean ± standard deviation "
        "of\n"
        "the error of both axes (pixels) and of the angle (degrees).\n\n"
        "| fit | arc | noise | outliers | valid | centre | shorter axis | longer axis | angle |\n"
        "|---|---|---|---|---|---|---|---|---|\n",
        kScenes, kPoints);
    for (const double arc : {360.0, 180.0, 90.0, 45.0}) {
        for (const double noise : {0.0, 0.1, 0.5, 1.0}) printRow("fitEllipseNorm", arc, noise, 0, fitAll);
    }
    for (const double arc : {360.0, 180.0}) {
        for (const double noise : {0.0, 0.1, 0.5}) {
            for (const double outliers : {0.0, 0.1, 0.3}) {
                printRow("fitEllipseRansac", arc, noise, outliers, search);
            }
        }
    }
    std::printf(
        "\nfitEllipseNorm with outliers, for comparison:\n\n"
        "| fit | arc | noise | outliers | valid | centre | shorter axis | longer axis | angle |\n"
        "|---|---|---|---|---|---|---|---|---|\n");
    for (const double outliers : {0.05, 0.1, 0.3}) printRow("fitEllipseNorm", 360, 0.1, outliers, fitAll);
    return 0;
}
