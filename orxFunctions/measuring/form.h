// Form: how far an outline departs from a perfect circle or a perfect straight line.
//
// Each zone is exact to rounding: no other ring or strip is narrower, no other circle of its kind smaller or
// larger, wherever its centre lies; the least-squares shape of fitting/geometric_fit.h does not promise that.
// Terms as in ISO 1101 and ISO 12181-1 (roundness: minimum zone MZCI, minimum circumscribed MCCI, maximum
// inscribed MICI) and ISO 12780-1 (straightness). Lengths are in the unit of the points, pixels mostly.
//
// Noise gives a perfect outline a form error: the extremes of n points lie about 2 sqrt(2 ln n) noises apart,
// a tenth of a pixel where the noise is a fiftieth. Where the noise is told (TFormOptions::noise), `freed` is
// the form error with the share of the noise taken off, and `deviation` its standard uncertainty. Verdicts
// are for `freed`, pictures for `value`. The form is told from the noise by the harmonics and the single
// points that stand out of it; the share of the noise is then the mean over simulated outlines of that form
// (B. Efron and R. J. Tibshirani, "An Introduction to the Bootstrap" (1993), chapter 10). Over circles of 503
// points with three lobes of 0 to 1 pixel and noise of 0.02 to 0.2, independent or of a chain, `freed` is on
// average within 0.07 noises of the truth, where `value` is 3 to 6 noises above it; for a perfect circle it
// is 0 in half of the cases and 0.2 noises on average, since it stops at 0. Form smaller than the noise is
// found in part only where it has few points to show.
//
// Points are as many as 20 million, in any order (for pnEdgeChain in that of the outline), within 1e9 of the
// origin. Refused input gives its reason in `status` (see TFitStatus, also for the codes of
// lastRefusal()), the rest as initialised; duplicates are borne.
// Expected time is linear in the number of points for the ring and the circle around, n log n for the circle
// within, the strip and `freed`. All functions are reentrant; equal input gives equal results.
#ifndef ORXFUNCTIONS_MEASURING_FORM_H
#define ORXFUNCTIONS_MEASURING_FORM_H

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/fitting/fit_report.h"

namespace orx {

struct TFormOptions {
    // [0] The noise: standard deviation of a point across the outline, in the unit of the points, 0 or more.
    // 0 takes nothing off. It must be known apart from the form: from TMetricContour::deviation, from
    // repeated pictures, or as TFitReport::noise of a part whose form is much better than its noise.
    double noise = 0.0;
    TPointNoise pointNoise = pnNormal;  // as in TFitOptions; pnIndependent is the same here
    double smoothing = 1.0;             // [1] for pnEdgeChain, as in TFitOptions: 0.3 to 50
    std::uint64_t seed = 1;             // of the simulated outlines
};

struct TFormError {
    TFitStatus status = fsTooFewPoints;
    double value = 0.0;      // width of the zone
    double freed = 0.0;      // the same without the share of the noise, 0 or more
    double deviation = 0.0;  // standard uncertainty of `freed`; 0 where no noise is told
    // Indices of the points that the zone touches, of duplicates one.
    std::vector<int> contacts;

    bool valid() const { return status == fsOk; }
};

// A ring that holds all points.
struct TRoundness : TFormError {
    cv::Point2d center;
    double innerRadius = 0.0;
    double outerRadius = 0.0;  // value = outerRadius - innerRadius
    // Both without the share of the noise, and their standard uncertainties.
    double freedInner = 0.0;
    double freedOuter = 0.0;
    double innerDeviation = 0.0;
    double outerDeviation = 0.0;
};

// A strip between two parallel lines that holds all points.
struct TStraightness : TFormError {
    cv::Point2d point;            // on the middle line, amid the points
    cv::Point2d direction{1, 0};  // of length 1; leads from the first point to the last
    double angle = 0.0;           // of the direction, degrees in (-180, 180]
    double from = 0.0;            // the points reach from point + from * direction
    double to = 0.0;              // to point + to * direction
};

// Roundness: the ring of least width (P. K. Agarwal and M. Sharir, "Efficient randomized algorithms for some
// geometric optimization problems", Discrete Comput. Geom. 16 (1996)). Contacts are two points outside and
// two inside, in turn round the ring; the outer ones come first. At least 4 points. fsCollinear for points on
// a line, fsArcTooShort where a strip, or a ring 1e5 times as large as the points' extent, is narrower than
// every ring.
//
// Method: the exact ring of a few extreme points, from the edges of their farthest-point diagram; points that
// lie outside of it join them, until there are none. A ring of part of the points is never wider than that of
// all, so the last one is the narrowest of all.
ORX_API TRoundness minimumZoneCircle(const std::vector<cv::Point2d>& points,
                                     const TFormOptions& options = {});
ORX_API TRoundness minimumZoneCircle(const std::vector<cv::Point2f>& points,
                                     const TFormOptions& options = {});

// The smallest circle around all points: outerRadius, what a mating hole must have. innerRadius is that of
// the nearest point to its centre. Contacts: the two or three points on it. At least 2 points. E. Welzl,
// "Smallest enclosing disks" (1991), with the farthest point next (B. Gaertner, "Fast and robust smallest
// enclosing balls" (1999)).
ORX_API TRoundness minimumCircumscribedCircle(const std::vector<cv::Point2d>& points,
                                              const TFormOptions& options = {});
ORX_API TRoundness minimumCircumscribedCircle(const std::vector<cv::Point2f>& points,
                                              const TFormOptions& options = {});

// The largest circle that holds no point and has its centre within the points' convex hull: innerRadius, what
// a mating shaft must have. outerRadius is that of the farthest point from its centre. Contacts: the three
// points on it. At least 3 points. fsCollinear for points on a line, fsArcTooShort where the outline has a
// gap so wide (half a turn or more) that no three points hold the circle.
ORX_API TRoundness maximumInscribedCircle(const std::vector<cv::Point2d>& points,
                                          const TFormOptions& options = {});
ORX_API TRoundness maximumInscribedCircle(const std::vector<cv::Point2f>& points,
                                          const TFormOptions& options = {});

// Straightness: the strip of least width. Contacts: two points on one side and one between them on the other
// (two points where all lie on a line). At least 3 points. M. E. Houle and G. T. Toussaint, "Computing the
// width of a set", IEEE Trans. PAMI 10 (1988).
ORX_API TStraightness minimumZoneLine(const std::vector<cv::Point2d>& points,
                                      const TFormOptions& options = {});
ORX_API TStraightness minimumZoneLine(const std::vector<cv::Point2f>& points,
                                      const TFormOptions& options = {});

}  // namespace orx

#endif
