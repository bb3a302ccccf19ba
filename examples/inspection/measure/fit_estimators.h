// The library's circle and line estimators on the pixels of one contour.
#ifndef EXAMPLES_INSPECTION_FIT_ESTIMATORS_H
#define EXAMPLES_INSPECTION_FIT_ESTIMATORS_H

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "inspection/measure/shapes.h"
#include "inspection/run/settings.h"

namespace inspection {

// As the command line names them.
const char* nameOf(CircleEstimator estimator);
const char* nameOf(LineEstimator estimator);
const char* nameOf(EllipseEstimator estimator);

// The circle of the chosen estimator, through the centres of the pixels; nothing where it finds none. The
// choice must not be kSearch. Draws from rand(): one thread at a time.
std::optional<Circle> estimateCircle(const std::vector<cv::Point>& points, const Settings& settings);

// The long sides of an elongated object: the axis between them and their distance, through the centres of the
// pixels; of a stroke thinner than twice the tolerance one line and the width 0. The sides are told apart by
// the smallest rectangle around the points, each is one fit of the chosen estimator. As above otherwise.
std::optional<ParallelLines> estimateSides(const std::vector<cv::Point>& points, const Settings& settings);

}  // namespace inspection

#endif
