// What a shape found through a few points is worth to all of them: the loop in which a consensus search
// spends its time.
//
// A point within the tolerance of the shape gains 1 - (distance / tolerance)^2, the others nothing: the
// number of points less the truncated cost of P. H. S. Torr and A. Zisserman (MSAC). Sums run in four
// interleaved parts that are added at the end of each block, so that every instruction set gives the same
// bits.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_CONSENSUS_H
#define ORXFUNCTIONS_FITTING_KERNELS_CONSENSUS_H

#include <cstddef>

#include "orxFunctions/fitting/kernels/distance.h"

namespace orx::consensus_kernels {

// Columns are filled up to a multiple of this with not-a-number, which gains nothing: no loop needs a tail.
constexpr std::size_t kPointsPerStep = 4;

struct PointSpan {
    const double* x;
    const double* y;
    std::size_t size;   // with the filling
    std::size_t mixed;  // so many of the first ones are a random choice among all
};

// An ellipse a dx^2 + b dx dy + c dy^2 = 1 about its centre. Its distances are those of P. D. Sampson
// (Computer Graphics and Image Processing 18 (1982)), true to first order.
struct Conic {
    double x, y, a, b, c;
};

struct Bar {
    double perTolerance2;  // 1 / tolerance^2
    double best;           // the gain to beat
    // Given up at the end of a block of the mixed points when the gain so far is below its share of `best`,
    // s, by more than the root of doubt s. By H. Chernoff's bound a shape that beats `best` is given up at
    // one block with a probability of at most exp(-doubt / 2). Infinite: never.
    double doubt;
};

struct Support {
    double gain;
    double within;  // number of points within the tolerance
};

struct Kernels {
    // All there is where the gain is above bar.best; otherwise any gain up to it, found sooner.
    Support (*ofLine)(const PointSpan& points, const distance_kernels::Line& line, const Bar& bar);
    Support (*ofCircle)(const PointSpan& points, const distance_kernels::Circle& circle, const Bar& bar);
    Support (*ofEllipse)(const PointSpan& points, const Conic& conic, const Bar& bar);
};

extern const Kernels kAvx2;

// Ask once per search.
const Kernels& chosen();

}  // namespace orx::consensus_kernels

#endif
