// The fit of an ellipse for measuring: the ellipse with the least orthogonal distances from sub-pixel points,
// with the covariance of its parameters. Beside geometric_fit.h, which see for what all fits share; prefer it
// to ellipse_fit.h wherever a result is measured.
//
// Method: the direct ellipse of R. Halir and J. Flusser ("Numerically stable direct least squares fitting of
// ellipses", 1998) as a start, or with a robust loss the least median of squares over samples of five; then
// Gauss-Newton steps with Levenberg's damping on the orthogonal distances (S. J. Ahn, W. Rauh and
// H.-J. Warnecke, "Least-squares orthogonal distances fitting of circle, sphere, ellipse, hyperbola, and
// parabola", Pattern Recognition 34 (2001)), in parameters that are regular where the axes are equal. The
// biases of second order are taken back: of the curved outline under noise in x and y (to fourth order where
// the outline turns within the noise), of the curved parameters (M. J. Box), and of axes that noise drives
// apart where they are (nearly) equal.
#ifndef ORXFUNCTIONS_FITTING_ELLIPSE_GEOMETRIC_H
#define ORXFUNCTIONS_FITTING_ELLIPSE_GEOMETRIC_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/fitting/fit_report.h"

namespace orx {

// An ellipse, and the part of it that the used points cover. A plain value: its const members are reentrant.
struct ORX_API TMeasuredEllipse : TFitReport {
    cv::Point2d center;
    double semiMajor = 0.0;  // half axes, semiMajor >= semiMinor > 0
    double semiMinor = 0.0;
    double angle = 0.0;  // of the major axis, degrees in [0, 180)
    // False where the points do not tell the angle: the axes are equal within twice the standard uncertainty
    // of their difference, or the angle is uncertain by more than 30 degrees. It then counts as evenly spread
    // over the half turn: angleDeviation is 180 / sqrt(12) = 51.96, without covariance with the others.
    bool angleTold = false;
    double startAngle = 0.0;  // the covered part as seen from the center, as for a circle
    double sweep = 0.0;
    // Of center.x, center.y, semiMajor, semiMinor (pixels) and angle (degrees).
    cv::Matx<double, 5, 5> covariance;
    double xDeviation = 0.0;  // roots of its diagonal
    double yDeviation = 0.0;
    double semiMajorDeviation = 0.0;
    double semiMinorDeviation = 0.0;
    double angleDeviation = 0.0;

    // Valid fits only; 0 and the center without one (rcNotReady).
    double signedDistance(cv::Point2d p) const;  // orthogonal, above 0 outside
    cv::Point2d nearest(cv::Point2d p) const;    // the foot of the orthogonal distance; one of them in a tie
    // On the outline; the parameter is the eccentric angle in degrees from the major axis.
    cv::Point2d at(double parameter) const;
};

// At least 6 points in different places. Refused beside what geometric_fit.h names (codes: fit_report.h):
// - fsTooFewPoints: also where fewer than 6 places are left that a robust loss uses;
// - fsCollinear: on a line as far as their noise tells, also where a long ellipse hugs a noisy line (its
//   minor half axis below 4 times the noise);
// - fsArcTooShort: a half axis is more uncertain than a fifth of it, or without end as far as the noise
//   tells. Close to this limit axes err more upwards than downwards;
// - fsNotThatShape: they turn like a parabola or a hyperbola, beyond doubt, or fill an area.
// Reentrant.
ORX_API TMeasuredEllipse fitEllipseGeometric(const std::vector<cv::Point2d>& points,
                                             const TFitOptions& options = {});
ORX_API TMeasuredEllipse fitEllipseGeometric(const std::vector<cv::Point2f>& points,
                                             const TFitOptions& options = {});

}  // namespace orx

#endif
