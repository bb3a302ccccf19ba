// Calipers: contrast edges along a direction, to sub-pixel accuracy.
//
// A caliper is a narrow rectangle that is laid across an edge. The grey levels are averaged across its width
// into a profile along its length, the profile is smoothed, and every extremum of its slope is an edge. This
// is the tool for measuring where the edge to be found is roughly known: widths, gaps, positions. It takes
// microseconds; prefer edge chains of the whole image where the shape is unknown. Circle calipers are a fan
// of them around a nominal circle, whose points go to a circle fit.
//
// Images are 8- or 16-bit unsigned with 1 to 4 channels; colour is weighted to grey, as toGray does. Grey
// levels are those of 8-bit images; 16-bit levels are divided by 257, so that options keep their meaning.
// Positions are pixels, the centre of the top-left pixel at (0, 0). Outside of the image the border pixels
// are repeated, so a caliper may reach over the border; there is no edge where the image ends.
//
// The answer is an empty list for what is no image: no pixels (rcEmptyImage), more than two dimensions
// (rcImageDimensions), another depth or more channels (rcImageType); for coordinates that are not finite
// (rcNotFinite) or that lie farther than 1e6 pixels from the origin, options outside their ranges, and a
// caliper shorter than one pixel or longer or wider than twice the sum of the image's sides (rcOption); and
// where there is no edge that counts (rcNoResult), as in a single pixel. All functions are reentrant.
//
// Accuracy, from the tests: root mean square below 0.01 pixel for a width of 1 and below 0.002 pixel for a
// width of 9 on straight edges without noise, of any angle and shift, with a blur (standard deviation) of 0.7
// to 1.5 pixels. With noise it is what the number of averaged pixels allows.
//
// Method: the first derivative of a Gaussian as the edge filter, after J. Canny, "A computational approach to
// edge detection", IEEE Trans. PAMI 8 (1986); its extremum is located by the parabola through value, slope
// and curvature of the derivative, taken anew at each vertex until it stays.
#ifndef ORXFUNCTIONS_ANALYSIS_CALIPER_H
#define ORXFUNCTIONS_ANALYSIS_CALIPER_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"

namespace orx {

// Which edges count, seen along the direction of the caliper.
enum TEdgePolarity : int { epAny = 0, epDarkToBright = 1, epBrightToDark = 2 };

// Which of the edges that count are returned. "Strongest" is the one of the largest absolute contrast.
enum TEdgeSelection : int { esAll = 0, esFirst = 1, esLast = 2, esStrongest = 3 };

struct TCaliperOptions {
    // Standard deviation of the smoothing along the profile, pixels, 0.5 to 50. Larger values suppress noise,
    // and merge edges closer than about three times the value.
    double sigma = 1.0;
    // Least absolute contrast of an edge, grey levels; 0 or more. Three times the noise of an averaged pixel
    // is a sensible lower bound.
    double minContrast = 10.0;
    TEdgePolarity polarity = epAny;
    TEdgeSelection selection = esAll;
};

struct TContrastEdge {
    cv::Point2d position;   // on the centre line of the caliper, pixels
    double distance = 0.0;  // along the caliper from its start, pixels
    // Grey step across the edge, levels: positive from dark to bright. The height of the whole step also of a
    // blurred edge; of edges wider than four times sigma only a part.
    double contrast = 0.0;
    double blur = 0.0;  // standard deviation of the edge's own transition, pixels; 0 for the sharpest
    int caliper = 0;    // index of the caliper that found it; 0 for a single one
};

// The edges along the segment from -> to, in their order along it.
//
// `width` is the number of pixels averaged across the segment, half to each side; it is rounded to whole
// pixels, values below 1 count as 1. The wider, the less noise, as long as the edge is perpendicular to the
// segment: one that is tilted by t is blurred over width * tan(t) pixels, without being displaced.
ORX_API std::vector<TContrastEdge> getContrastEdges(const cv::Mat& img, cv::Point2d from, cv::Point2d to,
                                                    double width, const TCaliperOptions& options = {});

// The direction in which an upright rectangle is searched.
enum TScanDirection : int { sdLeftToRight = 0, sdRightToLeft = 1, sdTopToBottom = 2, sdBottomToTop = 3 };

// The edges in the pixels of an upright rectangle: the profile runs from the centres of its first row or
// column to those of its last, `distance` counts from the first.
ORX_API std::vector<TContrastEdge> getContrastEdges(const cv::Mat& img, const cv::Rect& rect,
                                                    TScanDirection direction,
                                                    const TCaliperOptions& options = {});

// The edges in a turned rectangle, searched along its `width` side in the direction of its angle (degrees,
// from the x axis towards the y axis); averaged across its `height`.
ORX_API std::vector<TContrastEdge> getContrastEdges(const cv::Mat& img, const cv::RotatedRect& rect,
                                                    const TCaliperOptions& options = {});

// The direction in which the calipers of a circle are searched.
enum TRadialDirection : int { rdOutward = 0, rdInward = 1 };

struct TCircleCaliperOptions {
    // For each caliper; one edge from each is what a fit wants.
    TCaliperOptions edge = {1.0, 10.0, epAny, esStrongest};
    int count = 36;              // calipers, 1 to 100,000
    double searchLength = 20.0;  // length of each, half to each side of the nominal circle, pixels
    double width = 5.0;          // arc over which each averages, pixels; rounded, values below 1 count as 1
    TRadialDirection direction = rdOutward;
    double startAngle = 0.0;  // of the first caliper, degrees from the x axis towards the y axis
    // Degrees, -360 to 360, negative against that sense. A full turn is divided into `count` equal steps; of
    // a shorter arc the first and the last caliper stand at its ends (a single one at its start).
    double sweep = 360.0;
    // Takes back what the optics' blur does to a curved edge: it moves it inwards by blur^2 / (2 R) at the
    // radius R. Blur and radius are the medians over the edges of the same number along their calipers; edges
    // too wide to show their blur (four sigma in all) stay where they are. False gives all as found.
    bool compensateBlur = true;
};

// The edges along calipers that stand around a nominal circle or arc, in the order of the calipers.
//
// A caliper averages along the arc, not along its tangent: with the centre right, a circle keeps its radius
// however wide the calipers are. `distance` is counted from where a caliper starts. A search that would reach
// over the centre ends there.
//
// Diameters fitted to the points are within 0.001 pixel on rendered disks of radius 28 without noise, with a
// blur of 0.5 to 1.5; without the compensation they are 0.013 to 0.085 too small. After P. W. Verbeek and L.
// J. van Vliet, "On the location error of curved edges in low-pass filtered 2-D and 3-D images", IEEE Trans.
// PAMI 16 (1994).
//
// Refused like the above, `width` and `searchLength` in the place of the sides; radius not above 0 too.
ORX_API std::vector<TContrastEdge> getCircleEdges(const cv::Mat& img, cv::Point2d centre, double radius,
                                                  const TCircleCaliperOptions& options = {});

}  // namespace orx

#endif
