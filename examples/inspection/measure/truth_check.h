// Measured features beside the true shapes of a rendered scene.
#ifndef EXAMPLES_INSPECTION_TRUTH_CHECK_H
#define EXAMPLES_INSPECTION_TRUTH_CHECK_H

#include <string>
#include <vector>

#include "inspection/measure/measurement.h"
#include "support/synthetic_scene.h"

namespace inspection {

// The errors of one true shape, measured minus true.
struct TruthError {
    Shape shape = Shape::kCircle;
    cv::Point2d center;  // the true one
    int feature = -1;    // index of the feature measured there; -1 when there is none

    double centerError = 0.0;  // circle: distance of the centres, pixels
    double radiusError = 0.0;  // circle: pixels

    double angleError = 0.0;   // bar: degrees in [-90, 90)
    double offsetError = 0.0;  // bar: distance of its true centre from the measured axis, pixels
    double widthError = 0.0;   // bar: pixels
};

// One entry for each true shape, disks first: the feature of the same kind (an ellipse stands for a
// circle too) whose centre is nearest and lies within the shape.
std::vector<TruthError> compareWithTruth(const std::vector<Feature>& features, const scenes::Scene& scene);

}  // namespace inspection

#endif
