// One value of a recipe, told of what was measured, and judged.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_TELL_VALUE_H
#define ORXFUNCTIONS_MEASURING_RECIPE_TELL_VALUE_H

#include <vector>

#include "orxFunctions/measuring/recipe/measure_feature.h"
#include "orxFunctions/measuring/recipe/place_part.h"

namespace orx::recipes {

// With its name, unit, nominal value and limits, and not measured.
TRecipeValue emptyValue(const ValueSpec& asked);

TRecipeValue tellValue(const RecipeData& recipe, const ValueSpec& asked, const Place& place,
                       const std::vector<MeasuredFeature>& features);

}  // namespace orx::recipes

#endif
