// Fits for measuring: the line, circle or arc with the least orthogonal distances from sub-pixel points, with
// the covariance of its parameters.
//
// Prefer these to the estimators of fit_factories.h wherever a result is measured: those take whole pixels
// and tell no uncertainty. They need no start value. A robust loss (TFitOptions) bears up to 40 %
// outliers strewn about, and up to a third where they lie together on another smooth outline, such as a dent.
//
// Method: an algebraic start (total least squares; the moments of G. Taubin, IEEE Trans. PAMI 13 (1991)), or
// with a robust loss the least median of squares (P. J. Rousseeuw, J. Am. Stat. Assoc. 79 (1984)) over
// samples that are always the same; then Gauss-Newton steps with Levenberg's damping on the orthogonal
// distances, weights renewed at each step by a scale that follows the inliers. Two biases of second order are
// taken back: that of the curved outline under noise in x and y (A. Al-Sharadqah and N. Chernov, "Error
// analysis for circle fitting algorithms", Electronic Journal of Statistics 3 (2009)), and that of the curved
// parameters (M. J. Box, "Bias in nonlinear estimation", J. R. Statist. Soc. B 33 (1971)).
//
// Refused with the reason in `status` (see TFitStatus, also for the codes of lastRefusal()), looked for in
// this order: options, number of points, deviations, finite coordinates, their size, too few points with a
// deviation above 0, all in one place; then what the fit finds. The members are then as they are initialised,
// but for `points` and `iterations`. All functions are reentrant.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_FIT_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_FIT_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/fitting/fit_report.h"
#include "orxFunctions/foundation/records.h"

namespace orx {

// A straight line, upright ones like all others, and the stretch of it that the used points cover.
struct ORX_API TMeasuredLine : TFitReport {
    // On the line, at the middle of the used points by their weights: where its place is known best, or near
    // there for edge chains whose points lie unevenly.
    cv::Point2d point;
    cv::Point2d direction{1, 0};  // of length 1; leads from the first points to the last
    double angle = 0.0;           // of the direction, degrees in (-180, 180]
    double from = 0.0;            // the stretch: from point + from * direction
    double to = 0.0;              // to point + to * direction
    cv::Matx22d covariance;  // of the offset of `point` along normal(), pixels, and of the angle, degrees
    double offsetDeviation = 0.0;  // roots of its diagonal
    double angleDeviation = 0.0;

    cv::Point2d normal() const { return {-direction.y, direction.x}; }
    double signedDistance(cv::Point2d p) const { return (p - point).dot(normal()); }
    // The standard uncertainty of the line's place across itself at point + along * direction, pixels.
    double deviationAt(double along) const;
    // y = k x + b; k is infinite for a vertical line, as in TRansacLine. Not valid where the fit is not
    // (rcNotReady).
    TLine slopeForm() const;
};

// A circle, and the arc of it that the used points cover.
struct ORX_API TMeasuredCircle : TFitReport {
    cv::Point2d center;
    double radius = 0.0;
    double startAngle = 0.0;  // where the covered arc begins, degrees in (-180, 180]
    double sweep = 0.0;       // how far it reaches from there, degrees: 360 where no gap reaches 4 degrees
    cv::Matx33d covariance;   // of center.x, center.y and radius, pixels^2
    double xDeviation = 0.0;  // roots of its diagonal
    double yDeviation = 0.0;
    double radiusDeviation = 0.0;

    double signedDistance(cv::Point2d p) const { return cv::norm(p - center) - radius; }  // above 0 outside
    cv::Point2d at(double angle) const;  // on the outline, at an angle in degrees
};

// A circular arc: the circle, and its ends where the outermost points stand at it.
struct TMeasuredArc : TMeasuredCircle {
    cv::Point2d start;    // at(startAngle)
    cv::Point2d middle;   // halfway along
    cv::Point2d end;      // at(startAngle + sweep)
    double length = 0.0;  // along the arc, pixels
};

// At least 3 points (2 tell a line, but not how well).
ORX_API TMeasuredLine fitLineGeometric(const std::vector<cv::Point2d>& points,
                                       const TFitOptions& options = {});
ORX_API TMeasuredLine fitLineGeometric(const std::vector<cv::Point2f>& points,
                                       const TFitOptions& options = {});

// At least 4 points.
ORX_API TMeasuredCircle fitCircleGeometric(const std::vector<cv::Point2d>& points,
                                           const TFitOptions& options = {});
ORX_API TMeasuredCircle fitCircleGeometric(const std::vector<cv::Point2f>& points,
                                           const TFitOptions& options = {});

// As the circle, with the ends of the arc.
ORX_API TMeasuredArc fitArcGeometric(const std::vector<cv::Point2d>& points, const TFitOptions& options = {});
ORX_API TMeasuredArc fitArcGeometric(const std::vector<cv::Point2f>& points, const TFitOptions& options = {});

}  // namespace orx

#endif
