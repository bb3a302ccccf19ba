// A profile y = f(x) as a chain of overlapping local polynomials whose values are averaged.
//
// Prefer it over TPolynomial (fitting/polynomial.h) for profiles that no low order follows: it passes near
// every sample, and so smooths little. Reentrant; one thread at a time on the same object.
#ifndef ORXFUNCTIONS_FITTING_SPLINE_CURVE_H
#define ORXFUNCTIONS_FITTING_SPLINE_CURVE_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"

namespace orx {

// One local polynomial through neighbouring samples.
struct TSplineSegment {
    double startX = 0.0;           // x of the first sample
    double endX = 0.0;             // x of the last sample
    std::vector<double> paraList;  // coefficients, constant term first
    cv::Mat paraMat;               // the same, (n + 1) x 1, CV_64F
};

class ORX_API TSplineCurve {
  public:
    // As fit() builds them, ascending in startX and in endX. Evaluation finds the segments of an x by binary
    // search and reads `paraList`: keep them ascending when changing them, or it may miss some.
    std::vector<TSplineSegment> segments;

    // Replaces the chain: the samples in ascending x (in the order given where equal, those whose x is not a
    // number last), and one polynomial of order n through each n + 1 neighbours. No segments for n samples or
    // fewer (rcTooFew), for an n outside 0 .. 200 (rcOption), and for more than 2 10^9 steps, (n + 1)^3 for
    // each segment (rcTooMany; 30 million samples at order 3, 1.5 million at order 10). Samples with the same
    // x within one run make its system singular: the coefficients of that segment are then 0, where rounding
    // does not hide it.
    void fit(std::vector<cv::Point2d> points, int n);
    // Lists of different length change nothing (rcSizesDiffer).
    void fit(std::vector<double> x, std::vector<double> y, int n);

    // The average of all segments with startX <= x <= endX; not a number where there is none (rcOutside, in
    // an empty chain rcNotReady).
    double getY(double x) const;

    // The maximum (mode 1) or minimum (any other) as (x, y), searched in steps of 0.01 over the whole chain
    // or over [minX, maxX]; the smallest x among equals, values that are not numbers last. Swapped bounds are
    // exchanged, with a trace line; equal bounds give (0, 0), with another (rcOption); so do, without one, an
    // empty chain in the first form (rcNotReady), bounds that are not finite (rcNotFinite), and ranges that
    // take more than 10^9 terms: a coefficient at a step is one, and each step (rcTooMany; 700,000 units of x
    // at order 3).
    cv::Point2d getExtremeValue(int mode) const;
    cv::Point2d getExtremeValue(double minX, double maxX, int mode) const;

    // (x, getY(x)) over the whole chain in steps of 10^-digits. An empty chain changes nothing, with a trace
    // line (rcNotReady). A range of ten million steps or more, or of more than 10^9 terms (both rcTooMany),
    // and a chain whose ends are no numbers (rcNotFinite) give an empty list; a step too small to change x
    // ends it.
    void getSplineList(std::vector<cv::Point2d>& list, int digits) const;
};

}  // namespace orx

#endif
