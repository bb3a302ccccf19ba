// The text of a recipe as JSON values that know their lines.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_JSON_TEXT_H
#define ORXFUNCTIONS_MEASURING_RECIPE_JSON_TEXT_H

#include <json/json.h>

#include <cstddef>
#include <string>
#include <vector>

#include "orxFunctions/measuring/recipe.h"

namespace orx::recipes {

// Collects what is wrong, up to a number that a person can read.
class Problems {
  public:
    explicit Problems(const std::string& text);

    void add(std::ptrdiff_t offset, const std::string& field, const std::string& text);
    void addAtLine(int line, const std::string& field, const std::string& text);
    bool none() const { return found_.empty(); }
    // Whether another one would still be kept: reading can stop where not.
    bool full() const;
    std::vector<TRecipeProblem> take();

  private:
    int lineOf(std::ptrdiff_t offset) const;

    std::vector<std::ptrdiff_t> lineStarts_;
    std::vector<TRecipeProblem> found_;
};

// Valid UTF-8 without control characters: what may be shown and written to a report.
bool isPlainText(const std::string& text);

// False, and a problem, for what is no JSON, too long, too deep or of too many entries.
bool parseJson(const std::string& text, Json::Value& root, Problems& problems);

}  // namespace orx::recipes

#endif
