// What can be told of features: names, units and what each value is told of.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_VALUE_KINDS_H
#define ORXFUNCTIONS_MEASURING_RECIPE_VALUE_KINDS_H

#include <string>
#include <vector>

#include "orxFunctions/measuring/recipe/fields.h"
#include "orxFunctions/measuring/recipe/recipe_data.h"

namespace orx::recipes {

enum class Quantity { kLength, kAngle, kShare };

const Choices<ValueKind>& valueKinds();
Quantity quantityOf(ValueKind kind);

// How many features the value is told of: from .. to.
struct Counts {
    std::size_t least;
    std::size_t most;
};
Counts featuresOf(ValueKind kind);

// Why these features have no such value, in English; null where they have.
const char* misfit(ValueKind kind, const std::vector<TFeatureKind>& features);

bool isOfPart(ValueKind kind);
// Whether it is told in a frame: the part's or the picture's.
bool hasFrame(ValueKind kind, std::size_t features);

}  // namespace orx::recipes

#endif
