// Where the part lies, and so its features.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_PLACE_PART_H
#define ORXFUNCTIONS_MEASURING_RECIPE_PLACE_PART_H

#include <string>
#include <vector>

#include "orxFunctions/measuring/recipe/measure_feature.h"

namespace orx::recipes {

struct Place {
    TRecipePose told;
    Frame frame;           // of the features
    UncertainPose pixels;  // of the part
    UncertainPose millimetres;
    bool hasMillimetres = false;
    double deviationScale = 0.0;
};

// `features` holds those that place the part, measured; null where there are none of them.
Place placePart(const RecipeData& recipe, const Picture& picture,
                const std::vector<MeasuredFeature>& features);

}  // namespace orx::recipes

#endif
