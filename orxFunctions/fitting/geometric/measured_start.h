// Where a robust fit begins when a search has found the shape already.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_MEASURED_START_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_MEASURED_START_H

namespace orx::geometric {

// In columns: a shape near the one sought, and the noise of the points that follow it, within a factor of
// two.
template <class Shape>
struct Start {
    Shape shape;
    double scale;
};

}  // namespace orx::geometric

#endif
