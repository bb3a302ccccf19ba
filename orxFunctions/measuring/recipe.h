// Recipes: what is measured of a part, and what it may be, as a text that a person writes and a program
// checks.
//
// A recipe says where the part is (found by its model, by two features of it, or at a fixed place), which
// features are measured there (lines, circles, arcs, ellipses, widths, edges), which values are told of them
// and between which limits they must lie. docs/recipes.md leads through the format, docs/recipe.schema.json
// is its JSON schema. Run on a picture, it gives values with their standard uncertainty and a verdict each
// (measuring/verdict.h). proposeRecipe (recipe_proposal.h) writes a first one from a picture of a good part.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_H
#define ORXFUNCTIONS_MEASURING_RECIPE_H

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/measuring/recipe_result.h"
#include "orxFunctions/measuring/verdict.h"

namespace orx {

namespace recipes {
struct RecipeData;
}

// What is wrong with a recipe, and where. A plain value: its const members are reentrant.
struct TRecipeProblem {
    int line = 0;       // of the text, from 1; 0 where it is of no line: a file that can't be read
    std::string field;  // its path in the text: features[2].radius; empty for the text as a whole
    std::string text;   // in English, for a person

    // "line 12, features[2].radius: must be above 0"
    ORX_API std::string sentence() const;
};

// What a value of the recipe is called and what it must be, known before anything is measured.
struct TRecipeTarget {
    std::string name;
    std::string type;  // as in the recipe: "diameter", "distance" ...
    std::string unit;  // "px", "mm", "deg", or "" for a share
    bool hasNominal = false;
    double nominal = 0.0;
    TTolerance tolerance;  // absolute limits, in the unit; infinite where there are none
};

// A recipe that was read and checked. A value: copies share what never changes, so it is cheap to pass on;
// one recipe may run on several threads at once, with the same answers as on one. All members are const and
// reentrant.
class ORX_API TRecipe {
  public:
    TRecipe();  // of nothing: valid() is false
    explicit TRecipe(std::shared_ptr<const recipes::RecipeData> data);
    TRecipe(const TRecipe&);
    TRecipe(TRecipe&&) noexcept;
    TRecipe& operator=(const TRecipe&);
    TRecipe& operator=(TRecipe&&) noexcept;
    ~TRecipe();

    // False where problems() has an entry.
    bool valid() const;
    const std::vector<TRecipeProblem>& problems() const;

    const std::string& name() const;
    double confidence() const;  // at which verdicts are given
    const std::vector<TRecipeTarget>& targets() const;
    std::vector<std::string> featureNames() const;
    const std::string& text() const;  // as it was read
    // Of the calibration, (0, 0) without one: pictures of another size are refused.
    cv::Size pictureSize() const;

    // Measures the part in a picture: 8- or 16-bit unsigned, 1 to 4 channels. Every target has its value in
    // the result, in the same order, whatever happens: what could not be measured says why. A recipe that is
    // not valid() gives a result without values, whose problem says so (rcNotReady). Other problems of the
    // whole are rcEmptyImage, rcImageType, rcImageDimensions, rcSizesDiffer where the calibration is of
    // pictures of another size, and rcNoResult for a part that is not there.
    TRecipeResult run(const cv::Mat& img) const;

    // For the parts of the library that read, run and draw recipes.
    const std::shared_ptr<const recipes::RecipeData>& data() const { return data_; }

  private:
    std::shared_ptr<const recipes::RecipeData> data_;
};

// Reads a recipe from its text (UTF-8 JSON). Names of files in it are relative to `folder`; they are read at
// once, so that a recipe that is valid() needs nothing more. The text is at most 4 MiB, 16 deep, with at
// most 500 features and 2,000 values; all that is wrong with it is told, up to 100 problems
// (rcFileFormat). Reentrant.
ORX_API TRecipe parseRecipe(const std::string& text, const std::string& folder = ".");

// The recipe in a file, whose folder is that of the files it names. The file's name as in the library's other
// file functions. One that is not valid() for what can't be read (rcFileName, rcFileMissing,
// rcFileUnreadable), or is no recipe (rcFileFormat). Reentrant.
ORX_API TRecipe readRecipe(const std::string& fileName);

}  // namespace orx

#endif
