// The parts of a recipe's text, each read by a file of its own.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_READ_PARTS_H
#define ORXFUNCTIONS_MEASURING_RECIPE_READ_PARTS_H

#include <json/json.h>

#include <map>
#include <string>
#include <vector>

#include "orxFunctions/measuring/recipe/fields.h"
#include "orxFunctions/measuring/recipe/recipe_data.h"

namespace orx::recipes {

constexpr std::size_t kMostFeatures = 500;
constexpr std::size_t kMostValues = 2000;

// Features by their names; features that are refused have a name, too, so that what refers to them is no
// problem of its own.
using FeatureIndex = std::map<std::string, int>;

// A file that a recipe names.
std::string fileOf(const std::string& folder, const std::string& name);

// What features are made of comes after all of their names are known; circles among them are a problem.
void readFeatures(const Json::Value& list, Problems& problems, RecipeData& data, FeatureIndex& index);

// After the features; marks those that place the part.
void readPlace(const Json::Value& part, const std::string& folder, const FeatureIndex& index,
               Problems& problems, RecipeData& data);

// `millimetres`: the unit of lengths, where a value names none.
void readValues(const Json::Value& list, bool millimetres, const FeatureIndex& index, Problems& problems,
                RecipeData& data);

void readDrawing(const Json::Value& draw, Problems& problems, RecipeData& data);

// The feature of that name; -1 and a problem where there is none.
int referenceTo(const std::string& name, const FeatureIndex& index, const Json::Value& where,
                const std::string& field, Problems& problems);

}  // namespace orx::recipes

#endif
