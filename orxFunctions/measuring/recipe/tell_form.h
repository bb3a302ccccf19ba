// Roundness and straightness of a measured feature.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_TELL_FORM_H
#define ORXFUNCTIONS_MEASURING_RECIPE_TELL_FORM_H

#include <string>

#include "orxFunctions/measuring/recipe/measure_feature.h"

namespace orx::recipes {

// The width of the zone without the share of the noise, over all edge points: a dent is no outlier here.
// `calibration` is the variance that the calibration adds. Refused with the problem.
TMeasuredValue tellForm(bool roundness, const MeasuredFeature& feature, const Plane* plane,
                        double& calibration, std::string& problem);

}  // namespace orx::recipes

#endif
