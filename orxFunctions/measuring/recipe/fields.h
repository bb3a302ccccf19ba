// The fields of one JSON object of a recipe, each asked for by name and checked; what is never asked for is
// unknown.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_FIELDS_H
#define ORXFUNCTIONS_MEASURING_RECIPE_FIELDS_H

#include <json/json.h>

#include <limits>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "orxFunctions/measuring/recipe/json_text.h"

namespace orx::recipes {

struct Range {
    double low = -std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::max();
    bool above = false;  // low itself is out of it
};

// Nothing beyond takes part in measuring; it keeps every computation finite.
constexpr Range kPlace{-1e6, 1e6, false};
constexpr Range kSize{0.0, 1e6, true};

enum class Need { kOptional, kRequired };

template <class Value>
using Choices = std::vector<std::pair<const char*, Value>>;

class Fields {
  public:
    // An object; anything else is a problem, and has no fields.
    Fields(Problems& problems, const Json::Value& value, std::string path);

    bool isObject() const { return isObject_; }
    // Of the object: not null.
    bool has(const char* name) const;
    std::string pathOf(const char* name) const;
    std::ptrdiff_t offset() const { return value_.getOffsetStart(); }

    // Each is a problem where the field is of another type, out of range, or missing and required.
    std::optional<double> number(const char* name, Range range = {}, Need need = Need::kOptional);
    std::optional<int> whole(const char* name, int low, int high);
    std::optional<bool> flag(const char* name);
    // Plain text of 1 to 200 bytes.
    std::optional<std::string> text(const char* name, Need need = Need::kOptional);
    std::optional<cv::Point2d> point(const char* name, Need need = Need::kOptional);
    // Of exactly `count` numbers, from `least` for at most `most`.
    std::optional<std::vector<double>> numbers(const char* name, std::size_t count, Range range = {});
    std::optional<std::vector<cv::Point2d>> points(const char* name, std::size_t least, std::size_t most);
    std::optional<std::vector<std::string>> texts(const char* name, std::size_t least, std::size_t most,
                                                  Need need = Need::kOptional);
    // The field as it is, null where it is not there.
    const Json::Value* any(const char* name);
    const Json::Value* array(const char* name, std::size_t most, Need need = Need::kOptional);

    template <class Value>
    std::optional<Value> choice(const char* name, const Choices<Value>& choices,
                                Need need = Need::kOptional) {
        const auto given = text(name, need);
        if (!given) return std::nullopt;
        std::vector<std::string> known;
        for (const auto& [text, value] : choices) {
            if (*given == text) return value;
            known.emplace_back(text);
        }
        refuseChoice(name, *given, known);
        return std::nullopt;
    }

    void problem(const char* name, const std::string& text);
    // Names the fields that were never asked for, and what could have been meant.
    void finish();

  private:
    const Json::Value* find(const char* name, Need need);
    void refuseChoice(const char* name, const std::string& given, const std::vector<std::string>& known);
    std::optional<double> checked(const Json::Value& value, const std::string& path, Range range);
    std::optional<cv::Point2d> checkedPoint(const Json::Value& value, const std::string& path);

    Problems& problems_;
    const Json::Value& value_;
    std::string path_;
    bool isObject_;
    std::vector<std::string> known_;
};

// The name nearest to one that is not known, as ": did you mean ...?"; empty where none is near.
std::string suggestion(const std::string& given, const std::vector<std::string>& known);

// Of a text that goes into a problem: short, and fit to be shown.
std::string quoted(const std::string& text);

}  // namespace orx::recipes

#endif
