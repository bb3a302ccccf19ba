// Edges for measuring: sub-pixel positions without bias on slanted and curved edges, each with its
// uncertainty.
#ifndef ORXFUNCTIONS_ANALYSIS_SUBPIXEL_EDGES_METRIC_H
#define ORXFUNCTIONS_ANALYSIS_SUBPIXEL_EDGES_METRIC_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"

namespace ORXEdge {

struct TMetricOptions {
    // [1] Smoothing in pixels, 0.5 to 20. Edges closer together than about 4 sigma disturb one another.
    double sigma = 1.0;
    // [12, 36] An edge point must reach `low` and be connected to one that reaches `high`: grey levels of a
    // sharp step. A step that the optics blurs by s reads sigma / sqrt(sigma^2 + s^2) of its contrast.
    double low = 12.0;
    double high = 36.0;
    // [false] Take both thresholds from the image instead, as EdgesSubPix does for a negative `high`.
    bool automaticThresholds = false;
    // [list] Which borders of the edge pixels are followed: a retrieval mode of cv::findContours for 8-bit
    // images. RETR_EXTERNAL leaves out what lies inside closed edges; the others find the same edges.
    int mode = 1;
    // [0] Standard deviation of the image noise in grey levels; 0 measures it in the image (fine texture
    // counts as noise).
    double noise = 0.0;
    // [3] Contours of fewer points are left out.
    int minPoints = 3;
};

// One edge; where edges branch it runs straight on, or begins or ends. Index i of each vector describes point
// i.
struct TMetricContour {
    // Pixels, the centre of the top-left pixel at (0, 0), in order along the edge, about one point a pixel.
    std::vector<cv::Point2f> points;
    // Radians in [0, 2 pi): the unit normal from dark to bright is (cos, sin), from the x axis towards the y
    // axis. (EdgesSubPix counts its directions the other way, from the y axis.)
    std::vector<float> direction;
    std::vector<float> contrast;   // grey levels between the two sides, for a blurred step edge
    std::vector<float> deviation;  // estimated standard deviation of the position along the normal, pixels
    bool closed = false;           // the last point is followed by the first
};

// Finds the edges of an 8-bit one-channel image. Prefer it to EdgesSubPix for measuring; it takes about the
// same time. One point for each place where an edge crosses the pixel grid, none doubled.
//
// Method: Gaussian gradients; Canny's suppression and hysteresis; across an edge the gradient magnitude of a
// blurred step is a Gaussian, whose logarithm is a quadratic, so a least-squares quadratic through 3 x 3
// logarithms, evaluated along the gradient's direction, finds the edge at any angle (a quadratic through the
// magnitudes themselves is biased by up to several hundredths of a pixel). Its curvature tells the total
// blur. Smoothing moves the edge of a disk of radius R inwards by blur^2 / (2 R) - blur^4 / (8 R^3);
// the curvature of the contour, fitted over 13 points, takes that back: chains keep six pixels away from
// where an arc becomes straight. So it does with the aliasing of sharp edges within 20
// degrees of an axis, whose size follows from the measured blur as long as the optics blurs about like a
// Gaussian: sigma 0.4 (0.49 with the pixel) leaves 0.006 pixels of error, sigma 0.25 leaves 0.024, and what
// is sharper than that is undersampled too far for this filter. Points on corners sharper than twice sigma
// are compensated only in part. After P. W. Verbeek and L. J. van Vliet, "On the location error of curved
// edges in low-pass filtered 2-D and 3-D images", IEEE Trans. PAMI 16 (1994).
//
// False, and `contours` untouched, for an empty image (rcEmptyImage), another type (rcImageType), more
// dimensions (rcImageDimensions), a sigma or a mode out of range, thresholds or a noise that are negative or
// not numbers (rcOption); true otherwise, also when nothing is found.
// Reentrant; the result does not depend on the number of threads.
ORX_API bool edgesSubPixMetric(const cv::Mat& gray, std::vector<TMetricContour>& contours,
                               const TMetricOptions& options = TMetricOptions());

}  // namespace ORXEdge

#endif
