// What noise in x and y adds to the normal equations of an ellipse: distances from a curved outline err
// outwards.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_OUTLINE_BIAS_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_OUTLINE_BIAS_H

#include "orxFunctions/fitting/geometric/ellipse_steps.h"

namespace orx::geometric {

// Whether noise of this deviation is so large against the outline's smallest radius that the second order
// alone (EllipseBiasSums::outline) does not tell it.
bool outlineTurnsWithinNoise(const Ellipse& ellipse, double noise);

// The mean of the sums of w row d, for points whose true places are the feet of these, a point of weight 1
// with noise of this deviation in x and in y.
EllipseVector outlineBiasSums(const Columns& points, const Ellipse& ellipse, const Loss& loss, double noise);

}  // namespace orx::geometric

#endif
