// Where an outline really passes: sub-pixel edge points across a contour, or across a nominal line, circle or
// ellipse.
//
// For outlines that are already known to within a few pixels: the contour of a thresholded object, the shape
// of a drawing, the result of a first fit. One answer for each place asked for, found or not. Prefer it to
// calipers (analysis/caliper.h) for a point on every pixel of an outline, to edge chains
// (analysis/subpixel_edges_metric.h) where an outline must be followed through gaps and past other edges;
// chains are a little finer where edges are not known beforehand. The points go to the fits of
// fitting/geometric_fit.h, with their deviations and as an edge chain (pnEdgeChain) with
// kContourEdgeSmoothing.
//
// Images are 8- or 16-bit unsigned with 1 to 4 channels; colour is weighted to grey, as toGray does. Grey
// levels are those of 8-bit images; 16-bit levels are divided by 257. Coordinates are pixels, the centre of
// the top-left pixel at (0, 0); angles are degrees from the x axis towards the y axis. All functions are
// reentrant.
//
// Method: the grey profile along the normal, interpolated by quadratic B-splines; the edge is where it
// crosses the middle between the mean levels at its two ends, which takes uneven light out; the profile is
// then centred on that place and read again. A blurred outline that bends lies inwards by blur^2 / (2 R) (P.
// W. Verbeek and L. J. van Vliet, IEEE Trans. PAMI 16 (1994)): where the curvature is told, that is taken
// back, with the blur that the profiles of the call show.
//
// Accuracy, from the tests: on disks of radius 12 to 60 with a blur of 0.5 to 1.5 pixels the mean place is
// right to 0.004 pixel, whatever the blur; single points to 0.006 pixel at a blur of 0.9, to 0.017 at 0.5,
// where the pixels' grid shows. With noise the deviations are those of the points to within a tenth.
#ifndef ORXFUNCTIONS_ANALYSIS_CONTOUR_EDGES_H
#define ORXFUNCTIONS_ANALYSIS_CONTOUR_EDGES_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/analysis/caliper.h"
#include "orxFunctions/api.h"

namespace orx {

// Neighbouring points share pixels as those of an edge finder that smooths by so many pixels do
// (TFitOptions::smoothing, where points lie about one pixel apart).
constexpr double kContourEdgeSmoothing = 0.51;

// A place to look at, and how.
struct TEdgeProbe {
    cv::Point2d point;
    cv::Point2d normal{1, 0};  // of length 1; the direction of the profile: out of the object
    // Of the outline, 1 / pixels: above 0 where it bends away from the normal, as a disk does seen from its
    // middle; 0 for straight outlines, and where it is not known.
    double curvature = 0.0;
};

struct TContourEdgeOptions {
    // [3] How far the profile reaches to either side, pixels, 1.5 to 50. Its outer thirds must lie on the
    // object and on the ground. Edges are found up to this far from the place asked for.
    double reach = 3.0;
    double minContrast = 8.0;        // [8] Least step between the two levels, grey levels; 0 or more.
    TEdgePolarity polarity = epAny;  // seen along the normal
    // [0] Standard deviation of the image noise, grey levels; 0 measures it in the image (getImageNoise).
    double noise = 0.0;
};

struct TContourEdge {
    bool found = false;
    cv::Point2d position;   // of the edge, pixels; of the place asked for where none was found
    cv::Point2d normal;     // of the probe
    double offset = 0.0;    // from the place asked for, along the normal, pixels
    double contrast = 0.0;  // grey levels along the normal: positive from dark to bright
    // Standard deviation of the position along the normal, pixels: by the image noise and the pixels' grid;
    // 0 where none was found.
    double deviation = 0.0;
};

// One answer for each probe, in their order. Not found: where the profile leaves the image, the step is too
// small or of the other polarity, the edge does not lie within the reach (of an outline told to bend far more
// sharply than its blur, too), or the probe is no good (not finite, a normal whose length is not 1 to within
// a thousandth). Empty for what is no image: no pixels (rcEmptyImage), more than two dimensions
// (rcImageDimensions), another depth or more channels (rcImageType); for options outside their ranges
// (rcOption), and without probes (rcTooFew).
ORX_API std::vector<TContourEdge> edgesAcross(const cv::Mat& img, const std::vector<TEdgeProbe>& probes,
                                              const TContourEdgeOptions& options = {});

// The edges that were found, and their deviations: what the fits take.
ORX_API std::vector<cv::Point2d> pointsOf(const std::vector<TContourEdge>& edges);
ORX_API std::vector<double> deviationsOf(const std::vector<TContourEdge>& edges);

// Probes at every pixel of a closed contour of whole pixels (cv::findContours, getContours with cpAll), half
// a pixel outside of it, where the outline of an object passes on average. Normals point out of the area that
// it encloses, and are smoothed over 11 pixels; the curvature is 0, since pixels do not tell it: fit, then
// probe across the fit. Empty for fewer than 12 points (rcTooFew) and for a contour that encloses nothing
// (rcDegenerate).
ORX_API std::vector<TEdgeProbe> probesAlongContour(const std::vector<cv::Point>& contour);

// Probes at equal steps of about `spacing` pixels, above 0 to 1e6; both ends of what is open belong to it.
// Empty for coordinates and angles that are not finite (rcNotFinite), coordinates beyond 1e6 and sizes not
// above 0 to 1e6 (rcOption), a line of no length (rcDegenerate) and for more than 10 million probes
// (rcTooMany). The normal of a line is (-dy, dx), the right side of one who walks along it on the screen;
// those of circles and ellipses point outwards. The sweep is -360 to 360 degrees. The rectangle's sides are
// the ellipse's axes, as cv::fitEllipse gives it.
ORX_API std::vector<TEdgeProbe> probesAlongLine(cv::Point2d from, cv::Point2d to, double spacing = 1.0);
ORX_API std::vector<TEdgeProbe> probesAlongCircle(cv::Point2d center, double radius, double spacing = 1.0,
                                                  double startAngle = 0.0, double sweep = 360.0);
ORX_API std::vector<TEdgeProbe> probesAlongEllipse(const cv::RotatedRect& ellipse, double spacing = 1.0);

}  // namespace orx

#endif
