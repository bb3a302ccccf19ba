// Relations of measured shapes: distances, angles, intersections and tolerances of place, each with its
// standard uncertainty.
//
// Uncertainties are propagated to first order from the covariances of the shapes (Guide to the Expression of
// Uncertainty in Measurement, JCGM 100:2008, chapter 5), which are taken for independent of one another;
// degrees of freedom after Welch and Satterthwaite (ibid. G.4), so that coverageFactor (fitting/fit_report.h)
// gives the interval. Lengths are pixels, angles degrees. Tolerances as in ISO 1101.
//
// A length can't be below 0, nor an angle between lines beyond 90 degrees: what is measured near such an end
// is folded back from beyond it, and lies inwards of the truth on average. `folded` says so where the end is
// less than three deviations away; the interval then reaches to the end. The deviation of a folded distance
// of points covers their whole covariance: it is the root mean square error where the true distance is 0, and
// too large rather than too small elsewhere. signedDistance and signedAngle do not fold.
//
// What is refused says why in `status`, the rest is as initialised: rsNoShape for an argument that is not
// valid. It is the last refusal, too: rcNotReady for rsNoShape, rcDegenerate for rsParallel and
// rsNotParallel, rcNoResult for the others. All functions are reentrant.
#ifndef ORXFUNCTIONS_MEASURING_RELATIONS_H
#define ORXFUNCTIONS_MEASURING_RELATIONS_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/fitting/ellipse_geometric.h"
#include "orxFunctions/fitting/geometric_fit.h"

namespace orx {

enum TRelationStatus : int {
    rsOk = 0,
    rsNoShape = 1,          // an argument is not valid
    rsParallel = 2,         // lines parallel within three deviations of their angle: no intersection is told
    rsNotParallel = 3,      // lines more than 45 degrees apart have no distance
    rsNoCommonStretch = 4,  // no part of the lines lies side by side
    rsApart = 5,            // the shapes do not meet
    rsTouching = 6          // within three deviations of touching: it is not told whether they meet
};

// The status as a short English text, "ok" for rsOk; "unknown status" for other values. Never null.
ORX_API const char* relationStatusText(TRelationStatus status);

struct TMeasuredValue {
    TRelationStatus status = rsNoShape;
    double value = 0.0;
    double deviation = 0.0;         // standard uncertainty
    double degreesOfFreedom = 0.0;  // of the deviation; infinite where it is known
    bool folded = false;            // see above

    bool valid() const { return status == rsOk; }
};

struct TMeasuredPoint {
    TRelationStatus status = rsNoShape;
    cv::Point2d position;
    cv::Matx22d covariance;         // pixels^2
    double degreesOfFreedom = 0.0;  // of the covariance

    bool valid() const { return status == rsOk; }
};

ORX_API TMeasuredPoint centerOf(const TMeasuredCircle& circle);
ORX_API TMeasuredPoint centerOf(const TMeasuredEllipse& ellipse);
// line.point + along * line.direction; uncertain across the line alone.
ORX_API TMeasuredPoint pointOn(const TMeasuredLine& line, double along);

ORX_API TMeasuredValue distance(const TMeasuredPoint& a, const TMeasuredPoint& b);
// Across the line, which has no ends here. Above 0 on the side of line.normal(); `distance` is without sign.
ORX_API TMeasuredValue signedDistance(const TMeasuredPoint& point, const TMeasuredLine& line);
ORX_API TMeasuredValue distance(const TMeasuredPoint& point, const TMeasuredLine& line);

// Of two nearly parallel edges, across the line midway between them, where their measured stretches lie side
// by side. Where the lines cross there, `least` is 0.
struct TLineDistance {
    TMeasuredValue middle;  // in the middle of the common stretch
    TMeasuredValue least;   // at its ends; folded where they differ by less than three deviations
    TMeasuredValue largest;
};
ORX_API TLineDistance distance(const TMeasuredLine& a, const TMeasuredLine& b);

// Of the centres.
ORX_API TMeasuredValue distance(const TMeasuredCircle& a, const TMeasuredCircle& b);
// Between the outlines where they are nearest, also of a circle within the other; below 0 where they cross,
// by how much one must be moved (along the line of the centres) until they touch.
ORX_API TMeasuredValue gap(const TMeasuredCircle& a, const TMeasuredCircle& b);

// Between lines, 0 to 90.
ORX_API TMeasuredValue angle(const TMeasuredLine& a, const TMeasuredLine& b);
// From line a to line b, -90 to 90: as lines, whatever way their directions point.
ORX_API TMeasuredValue signedAngle(const TMeasuredLine& a, const TMeasuredLine& b);

// The width of the strip parallel (perpendicular) to the datum that holds the line's measured stretch, as a
// straight one: add the line's straightness (measuring/form.h) where it matters.
ORX_API TMeasuredValue parallelism(const TMeasuredLine& line, const TMeasuredLine& datum);
ORX_API TMeasuredValue perpendicularity(const TMeasuredLine& line, const TMeasuredLine& datum);
// The diameter of the circle about the datum's centre that holds that of the other: twice their distance.
ORX_API TMeasuredValue concentricity(const TMeasuredCircle& circle, const TMeasuredCircle& datum);

// Lines and circles go on beyond what was measured of them.
ORX_API TMeasuredPoint intersection(const TMeasuredLine& a, const TMeasuredLine& b);

// Two points where they are told, else none and the reason. In order along the line; those of circles with
// the one first that is on the right of the way from a to b on the screen (y down).
struct TIntersections {
    TRelationStatus status = rsNoShape;
    std::vector<TMeasuredPoint> points;

    bool valid() const { return status == rsOk; }
};
ORX_API TIntersections intersections(const TMeasuredLine& line, const TMeasuredCircle& circle);
ORX_API TIntersections intersections(const TMeasuredCircle& a, const TMeasuredCircle& b);

}  // namespace orx

#endif
