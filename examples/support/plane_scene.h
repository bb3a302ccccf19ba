// Pictures of a flat scene as a camera with a lens sees it, at an angle: calibration targets, and parts.
//
// The scene is given in millimetres by how far each place lies outside of its dark areas. Edges are averaged
// over each pixel and blurred before pixels gather them, so they lie where the truth says. A picture depends
// on its settings alone, as in synthetic_scene.h. Reentrant.
#ifndef EXAMPLES_SUPPORT_PLANE_SCENE_H
#define EXAMPLES_SUPPORT_PLANE_SCENE_H

#include <cstdint>
#include <functional>
#include <opencv2/core.hpp>
#include <vector>

namespace scenes {

// A pinhole, a lens and where the plane z = 0 lies before it.
struct PlaneCamera {
    cv::Size size{1280, 960};
    double fx = 2000;  // pixels
    double fy = 2000;
    double cx = 640;
    double cy = 480;
    double k1 = 0;  // radial and tangential distortion, Brown's formula as OpenCV writes it
    double k2 = 0;
    double p1 = 0;
    double p2 = 0;
    double k3 = 0;
    cv::Matx33d rotation = cv::Matx33d::eye();  // plane to camera
    cv::Vec3d translation{0, 0, 400};           // millimetres

    // Where a place of the plane is seen.
    cv::Point2d project(cv::Point2d millimetres) const;
    // The place that is seen there, for lenses that draw wider rings for wider angles.
    cv::Point2d place(cv::Point2d pixel) const;
};

// The same camera before a plane that is turned about its point `middle`, first in itself by `turn`, then by
// `tilt` about an axis in it at the angle `axis` (degrees), and that lies with that point at `distance`
// millimetres in the middle of the picture.
PlaneCamera tilted(const PlaneCamera& camera, cv::Point2d middle, double distance, double tilt, double axis,
                   double turn);

// How far a place lies outside of the dark areas, millimetres; below 0 within them.
using PlaneShape = std::function<double(cv::Point2d)>;

PlaneShape chessboardShape(int columns, int rows, double pitch);  // of inner corners, the first at (0, 0)
PlaneShape dotGridShape(int columns, int rows, double pitch, double diameter);

struct PlaneExposure {
    double dark = 40;  // grey levels
    double bright = 200;
    double blurSigma = 0.7;  // pixels
    double noiseSigma = 2;   // grey levels
    std::uint64_t seed = 1;
};

// Renders many scenes before one camera: the way back through its lens is taken once. Reentrant.
class PlaneRenderer {
  public:
    explicit PlaneRenderer(const PlaneCamera& camera);

    // The grey levels without noise, CV_32F.
    cv::Mat levels(const PlaneShape& shape, const PlaneExposure& exposure) const;
    // The same, ten times faster where edges are few: only their surroundings are looked at closely. The
    // shape must tell no more than the distance to the nearest edge.
    cv::Mat levelsOfFewEdges(const PlaneShape& shape, const PlaneExposure& exposure) const;

  private:
    cv::Mat corners_;  // of the pixels: their places, millimetres
};

// The same for one scene.
cv::Mat renderPlaneLevels(const PlaneCamera& camera, const PlaneShape& shape, const PlaneExposure& exposure);
// The 8-bit picture of such levels, with noise.
cv::Mat withNoise(const cv::Mat& levels, double noiseSigma, std::uint64_t seed);
// Both.
cv::Mat renderPlane(const PlaneCamera& camera, const PlaneShape& shape, const PlaneExposure& exposure);

}  // namespace scenes

#endif
