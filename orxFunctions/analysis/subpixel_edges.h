// Edges with sub-pixel positions: chains of points with direction and strength.
//
// Pixel origin: the centre of the top-left pixel is (0, 0), x runs to the right and y down. A step between
// columns 4 and 5 lies at x = 4.5.
//
// EdgesSubPix is the operator that existing programs rely on. For new measuring programs prefer
// edgesSubPixMetric (subpixel_edges_metric.h): on slanted and curved edges EdgesSubPix scatters by 0.2
// pixels, the other by hundredths or less, and says how far each point may be trusted
// (docs/accuracy-edges.md).
//
// Method: J. Canny, "A computational approach to edge detection", IEEE Trans. PAMI 8 (1986); refinement after
// C. Steger, "An unbiased detector of curvilinear structures", IEEE Trans. PAMI 20 (1998).
//
// All functions are reentrant. They use the image library's threads; results do not depend on how many there
// are, nor on the instruction set of the processor.
#ifndef ORXFUNCTIONS_ANALYSIS_SUBPIXEL_EDGES_H
#define ORXFUNCTIONS_ANALYSIS_SUBPIXEL_EDGES_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"

namespace ORXEdge {

// One edge chain; index i of each vector describes point i.
struct TContour {
    std::vector<cv::Point2f> points;  // in chain order
    // Radians in [0, 2 pi): the angle of the refined normal from the y axis towards the x axis, so that a
    // vertical edge has pi / 2. The normal's sign carries no meaning.
    std::vector<float> direction;
    std::vector<float> response;  // gradient magnitude, in the units of the thresholds
};

// Finds edges in an 8-bit one-channel image. The image is smoothed (cv::GaussianBlur, sigma `alpha`) and
// differentiated along x and y by derivatives of a Gaussian of the same sigma; local maxima of the gradient
// across the edge above `low` that are connected to one above `high` are edge pixels; cv::findContours chains
// them (`mode` is its retrieval mode, all pixels kept); each pixel then moves to the extremum of a quadratic
// facet of the gradient magnitude if that lies within half a pixel on both axes, and stays otherwise.
//
// low, high: the units are grey levels, those of a sharp step; a ramp of one grey level a pixel reads 2.74 at
// alpha 1. They are not exchanged when low exceeds high, and their signs do not matter, but a negative `high`
// takes both from the image: high = calcEdgeThresVal of the gradients, low = 0.4 high, each without its
// fraction. alpha: pixels, above 0 to 1000; up to 1/6, and above 157, the derivative kernel is empty and
// nothing is found.
//
// contours: one for each chain, resized. A chain runs along both sides of a thin edge, so most points of open
// edges come twice. hierarchy: that of cv::findContours; may be cv::noArray().
// Arithmetic: 16-bit gradients, 32-bit squared magnitudes, refinement in doubles, results rounded to floats.
// False, everything untouched, for any other image type (rcImageType), an empty image of such a type
// (rcEmptyImage), more than two dimensions (rcImageDimensions) and an alpha above 1000 (rcOption); true
// otherwise, also when nothing is found. Exceptions of OpenCV pass to the caller: for an empty 8-bit image,
// an alpha that is not positive, an unknown mode. The image is never modified.
ORX_API bool EdgesSubPix(cv::Mat& gray, std::vector<TContour>& contours, const cv::_OutputArray& hierarchy,
                         int mode, int low, int high, double alpha);
ORX_API bool EdgesSubPix(const cv::Mat& gray, std::vector<TContour>& contours,
                         const cv::_OutputArray& hierarchy, int mode, int low, int high, double alpha);

// All chains without nesting (cv::RETR_LIST).
ORX_API bool EdgesSubPix(cv::Mat& gray, std::vector<TContour>& contours, int low, int high, double alpha);
ORX_API bool EdgesSubPix(const cv::Mat& gray, std::vector<TContour>& contours, int low, int high,
                         double alpha);

// The points of all chains alone.
ORX_API bool EdgesSubPix(cv::Mat& gray, std::vector<std::vector<cv::Point2f>>& contours, int low, int high,
                         double alpha);
ORX_API bool EdgesSubPix(const cv::Mat& gray, std::vector<std::vector<cv::Point2f>>& contours, int low,
                         int high, double alpha);

// The automatic high threshold: the highest level t below 255 such that more than 2.5 (rows + columns) pixels
// have a level of t to 254, where a pixel's level is (|gx| + |gy|) / 256 rounded half to even (255 and above
// do not count). -1.0 when there is none (rcNoResult), as in an empty image (rcEmptyImage), and for more than
// two dimensions (rcImageDimensions). gx and gy are the gradients along x and y, the order does not matter;
// 16-bit ones are read directly, others go through OpenCV, whose exceptions pass.
ORX_API double calcEdgeThresVal(cv::Mat gx, cv::Mat gy);

}  // namespace ORXEdge

#endif
