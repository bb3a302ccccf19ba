// What the pictures of results share.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_DRAW_H
#define ORXFUNCTIONS_MEASURING_RECIPE_DRAW_H

#include <opencv2/core.hpp>
#include <string>

#include "orxFunctions/measuring/recipe/canvas.h"
#include "orxFunctions/measuring/recipe/recipe_data.h"

namespace orx::recipes {

// A copy in colour, 8-bit BGR, of a picture that takesPicture() took.
cv::Mat inColour(const cv::Mat& img);

// 8 bits, of any number of channels; shares the pixels of such a picture.
cv::Mat inBytes(const cv::Mat& img);

// Features and pose onto a picture, as far as the recipe asks for them. `broader`: lines and letters, against
// those that suit a picture of this size.
void drawShapes(Canvas& picture, const RecipeData& recipe, const TRecipeResult& result, double broader = 1.0);

// As ASCII, which is all that OpenCV's letters have.
std::string drawable(const std::string& text);

}  // namespace orx::recipes

#endif
