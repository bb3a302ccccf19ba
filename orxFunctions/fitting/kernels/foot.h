// What the ellipse's fit for measuring takes of points in each pass, by their true feet on the outline.
//
// An ellipse is c + M u for all u of length 1, with the symmetric matrix M = [m + p, q; q, m - p]: its five
// parameters, the center's x and y, m, p and q, are regular also where the axes are equal. All derivatives
// are with regard to these parameters in the ellipse's own frame (its first axis along x, where q is 0), in
// this order.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_FOOT_H
#define ORXFUNCTIONS_FITTING_KERNELS_FOOT_H

#include "orxFunctions/fitting/kernels/distance.h"

namespace orx::foot_kernels {

using namespace distance_kernels;

constexpr int kEllipseParameters = 5;
constexpr int kEllipsePairs = 15;  // of a lower triangle, row by row

// Semi axes a >= b > 0; (cosine, sine) is the direction of the first.
struct Ellipse {
    double x, y, a, b, cosine, sine;
};

// The row of a point is how far the outline moves towards it with each parameter: less the derivative of its
// signed distance d.
struct EllipseSums {
    DistanceSums distances;
    double rows[kEllipsePairs];               // of w row row'
    double rowDistances[kEllipseParameters];  // of w row d
};

// What the biases of second order are made of.
struct EllipseBiasSums {
    // Of w row trace(covariance * H), with H the second derivatives of the distance.
    double parameters[kEllipseParameters];
    // Of omega row kappa, with kappa the outline's curvature at the foot.
    double outline[kEllipseParameters];
};

struct Kernels {
    EllipseSums (*sums)(const Columns& points, const Ellipse& ellipse, const Loss& loss);
    // `covariance`: lower triangle.
    EllipseBiasSums (*biasSums)(const Columns& points, const Ellipse& ellipse, const Loss& loss,
                                const double* covariance);
    // The signed distance of each point, above 0 outside.
    void (*distances)(const Columns& points, const Ellipse& ellipse, double* distances);
    // The same without the foot, three times as fast: exact for circles, right to first order near the
    // outline, of the right size elsewhere.
    void (*nearDistances)(const Columns& points, const Ellipse& ellipse, double* distances);
    // The foot of each point in the ellipse's own frame is (a cosine, b sine).
    void (*feet)(const Columns& points, const Ellipse& ellipse, double* cosines, double* sines);
};

extern const Kernels kAvx2;

const Kernels& chosen();

}  // namespace orx::foot_kernels

#endif
