// Recipes of tests, and what they answer.
#ifndef TESTS_MEASURING_RECIPE_ANSWERS_H
#define TESTS_MEASURING_RECIPE_ANSWERS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "orxFunctions/orxfunctions.h"

namespace recipe_answers {

// A failure for each thing that is wrong with the text.
inline orx::TRecipe parsed(const std::string& text, const std::string& folder = ".") {
    orx::TRecipe recipe = orx::parseRecipe(text, folder);
    for (const orx::TRecipeProblem& problem : recipe.problems()) ADD_FAILURE() << problem.sentence();
    return recipe;
}

inline const orx::TRecipeValue& valueOf(const orx::TRecipeResult& result, const std::string& name) {
    const auto found = std::find_if(result.values.begin(), result.values.end(),
                                    [&](const orx::TRecipeValue& value) { return value.name == name; });
    EXPECT_NE(found, result.values.end()) << name;
    return *found;
}

}  // namespace recipe_answers

#endif
