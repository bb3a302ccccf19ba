// Sums over points that the fits for measuring take in each pass, with the weights of a robust loss.
//
// Points are columns of doubles, centred and scaled (geometric/fit_points.h). Sums run in four interleaved
// parts that are added at the end, so that every instruction set gives the same bits.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_DISTANCE_H
#define ORXFUNCTIONS_FITTING_KERNELS_DISTANCE_H

#include <cstddef>

namespace orx::distance_kernels {

struct Columns {
    const double* x;
    const double* y;
    const double* weights;  // of each point; null where all are 1
    std::size_t count;
};

// Numbered as TFitLoss.
enum LossKind : int { lkLeastSquares = 0, lkHuber = 1, lkCauchy = 2, lkTukey = 3, lkGemanMcClure = 4 };

// A robust loss in the units of the columns. A point's distance d counts as q = weight d^2; the loss
// multiplies its weight by omega(q / bend2), which is 1 at 0.
struct Loss {
    LossKind kind;
    double bend2;   // square of the tuning constant times the scale
    double reach2;  // points with q up to this are used: to Tukey's bend, else infinite
};

struct Circle {
    double x, y, r;
};

// d = (x - px) nx + (y - py) ny; the normal has length 1, the direction is (ny, -nx).
struct Line {
    double x, y, nx, ny;
};

// What both shapes sum: w is a point's weight times omega, d its signed distance.
struct DistanceSums {
    double used;            // number of points within reach
    double w, d, dd;        // sums of w, w d, w d^2
    double omega;           // sums over the points of omega
    double slope, slope2;   // of psi'(u) and its square, where psi(u) = u omega(u)
    double influence2;      // of omega^2 q: psi^2 in squared units of the columns
    double usedSquares;     // of d^2 without weights, over the used points
    double least, largest;  // signed distance of the used points
};

// u, v: direction from the centre to the point.
struct CircleSums {
    DistanceSums distances;
    double u, v, uu, uv, ud, vd;  // vv = w - uu
    double uuu, uuv;              // uvv = u - uuu, vvv = v - uuv
};

struct LineSums {
    DistanceSums distances;
    double x, y, xx, xy, yy;  // weighted moments about the line's point
    double from, to;          // of the used points, along the direction from the line's point
};

// Weighted moments about the origin; z = x^2 + y^2.
struct Moments {
    double w, x, y, xx, xy, yy, xz, yz, zz;
};

struct Kernels {
    Moments (*moments)(const Columns& points);
    // Steps leave undefined what a step with a robust loss does not need: used, slope2, influence2,
    // usedSquares, least, largest; uuu, uuv; from, to.
    CircleSums (*circleSums)(const Columns& points, const Circle& circle, const Loss& loss);
    CircleSums (*circleSteps)(const Columns& points, const Circle& circle, const Loss& loss);
    LineSums (*lineSums)(const Columns& points, const Line& line, const Loss& loss);
    LineSums (*lineSteps)(const Columns& points, const Line& line, const Loss& loss);
    // The signed distance of each point.
    void (*circleDistances)(const Columns& points, const Circle& circle, double* distances);
    void (*lineDistances)(const Columns& points, const Line& line, double* distances);
};

extern const Kernels kAvx2;

const Kernels& chosen();

}  // namespace orx::distance_kernels

#endif
