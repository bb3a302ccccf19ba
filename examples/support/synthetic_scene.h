// Synthetic pictures whose geometry is known exactly: disks and bars at sub-pixel positions, with uneven
// light, blur and noise.
//
// Coordinates are pixels, x to the right and y down, the centre of the top-left pixel at (0, 0); the pixel
// (x, y) is the square of side 1 around that point. A scene depends on its settings alone: the same settings
// give the same bytes on every run. Reentrant.
#ifndef EXAMPLES_SUPPORT_SYNTHETIC_SCENE_H
#define EXAMPLES_SUPPORT_SYNTHETIC_SCENE_H

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

namespace scenes {

struct Disk {
    cv::Point2d center;
    double radius = 0.0;
};

// A rectangle whose axis runs through `center`.
struct Bar {
    cv::Point2d center;
    double angle = 0.0;   // of the axis: degrees in [0, 180), from the x axis towards the y axis
    double length = 0.0;  // along the axis
    double width = 0.0;   // across it
};

// The area of the pixel at (column, row) that the shape covers, 0 to 1. Computed exactly, not by sampling:
// the coverages of all pixels of a disk add up to pi r^2.
double pixelCoverage(const Disk& disk, int column, int row);
double pixelCoverage(const Bar& bar, int column, int row);

// Lays a shape over a CV_32F image: each pixel is drawn from its value towards `level` by its coverage.
void paint(cv::Mat& image, const Disk& disk, double level);
void paint(cv::Mat& image, const Bar& bar, double level);

// What the camera does to an ideal picture.
struct Exposure {
    double lightFall = 0.35;  // the light in the darkest corner is 1 - lightFall of that in the brightest one
    double blurSigma = 0.9;   // pixels, Gaussian; 0 is none
    double noiseSigma = 2.5;  // grey levels, Gaussian; 0 is none
    std::uint64_t seed = 1;   // of the noise
};

// The 8-bit picture of an ideal CV_32F one.
cv::Mat expose(const cv::Mat& ideal, const Exposure& exposure);

struct SceneSettings {
    cv::Size size{900, 640};  // at least 240 x 200
    std::uint64_t seed = 1;
    double lightFall = 0.35;
    double blurSigma = 0.9;
    double noiseSigma = 2.5;
};

// A tray of parts: coin-like disks with a raised rim and a relief, and steel bars, brighter than the tray,
// none touching another or the border. What is drawn on a part stays well inside it, so its outline is
// exactly the recorded shape.
struct Scene {
    cv::Mat image;  // CV_8UC1
    std::vector<Disk> disks;
    std::vector<Bar> bars;
};

Scene renderScene(const SceneSettings& settings);

}  // namespace scenes

#endif
