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
