// The direct least-squares fit of an ellipse's conic.
#ifndef ORXFUNCTIONS_FITTING_ELLIPSE_CONIC_INTERNAL_H
#define ORXFUNCTIONS_FITTING_ELLIPSE_CONIC_INTERNAL_H

#include <cstddef>
#include <opencv2/core.hpp>

namespace orx {

// a x^2 + b xy + c y^2 + d x + e y + f = 0
struct Conic {
    double a;
    double b;
    double c;
    double d;
    double e;
    double f;
};

// The entries of the scatter matrix of (x^2, xy, y^2, x, y, 1), each once, but for the last.
struct ConicMoments {
    double x4 = 0, x3y = 0, x2y2 = 0, xy3 = 0, y4 = 0;
    double x3 = 0, x2y = 0, xy2 = 0, y3 = 0;
    double x2 = 0, xy = 0, y2 = 0;
    double x = 0, y = 0;

    void add(double px, double py, double weight = 1.0) {
        const double wx = weight * px;
        const double wy = weight * py;
        const double xx = px * px;
        const double xy1 = px * py;
        const double yy = py * py;
        const double wxx = weight * xx;
        const double wyy = weight * yy;
        x4 += wxx * xx;
        x3y += wxx * xy1;
        x2y2 += wxx * yy;
        xy3 += wyy * xy1;
        y4 += wyy * yy;
        x3 += wxx * px;
        x2y += wxx * py;
        xy2 += wyy * px;
        y3 += wyy * py;
        x2 += wxx;
        xy += weight * xy1;
        y2 += wyy;
        x += wx;
        y += wy;
    }

    // Those of (x s, y t), each multiplied by `weight`.
    ConicMoments scaled(double s, double t, double weight) const {
        const double ss = s * s;
        const double st = s * t;
        const double tt = t * t;
        ConicMoments m;
        m.x4 = x4 * ss * ss * weight;
        m.x3y = x3y * ss * st * weight;
        m.x2y2 = x2y2 * ss * tt * weight;
        m.xy3 = xy3 * st * tt * weight;
        m.y4 = y4 * tt * tt * weight;
        m.x3 = x3 * ss * s * weight;
        m.x2y = x2y * ss * t * weight;
        m.xy2 = xy2 * tt * s * weight;
        m.y3 = y3 * tt * t * weight;
        m.x2 = x2 * ss * weight;
        m.xy = xy * st * weight;
        m.y2 = y2 * tt * weight;
        m.x = x * s * weight;
        m.y = y * t * weight;
        return m;
    }

    cv::Matx33d quadratic() const { return {x4, x3y, x2y2, x3y, x2y2, xy3, x2y2, xy3, y4}; }
    cv::Matx33d mixed() const { return {x3, x2y, x2, x2y, xy2, xy, xy2, y3, y2}; }
    cv::Matx33d linear() const { return {x2, xy, x, xy, y2, y, x, y, 1}; }
};

// The conic of least algebraic distances with 4ac - b^2 = 1, up to a factor. The moments must be divided by
// the sum of weights, and best have variances of 1. False when the points are in fewer than five places or on
// one line.
bool solveConic(const ConicMoments& moments, Conic& out);

// Fits the conic that minimises the sum of squared algebraic distances among those with 4ac - b^2 = 1, and
// scales it so that f = 1. False, with `out` untouched, when the points don't determine an ellipse: fewer
// than 6, coordinates that are not finite, all on one line as far as single precision can tell, or on fewer
// than five different places.
//
// A. Fitzgibbon, M. Pilu, R. Fisher, "Direct least square fitting of ellipses", IEEE Trans. PAMI 21 (1999);
// the reduced form is that of R. Halir and J. Flusser, "Numerically stable direct least squares fitting of
// ellipses" (1998). The 6x6 eigenproblem on the inverted scatter matrix is the same problem, but that matrix
// is singular exactly where a fit is perfect, and nearly so for a short arc or far from the origin.
bool fitConic(const cv::Point2f* points, std::size_t count, Conic& out);

}  // namespace orx

#endif
