#include "orxFunctions/measuring/recipe/fields.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>

namespace orx::recipes {
namespace {

constexpr std::size_t kMostText = 200;
constexpr std::size_t kMostQuoted = 60;

// V. I. Levenshtein's distance (1966).
std::size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row.back();
}

std::string shortNumber(double value) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%g", value);
    return buffer;
}

std::string rangeText(Range range) {
    const bool hasLow = range.low > -std::numeric_limits<double>::max();
    const bool hasHigh = range.high < std::numeric_limits<double>::max();
    const std::string low = (range.above ? "above " : "at least ") + shortNumber(range.low);
    const std::string high = "at most " + shortNumber(range.high);
    if (hasLow && hasHigh) return low + " and " + high;
    return hasLow ? low : high;
}

}  // namespace

std::string quoted(const std::string& text) {
    if (!isPlainText(text)) return "(a text with characters that can't be shown)";
    if (text.size() <= kMostQuoted) return "\"" + text + "\"";
    std::size_t end = kMostQuoted;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
    return "\"" + text.substr(0, end) + "...\"";
}

std::string suggestion(const std::string& given, const std::vector<std::string>& known) {
    if (given.size() > kMostQuoted || known.empty()) return "";
    const auto nearer = [&](const std::string& a, const std::string& b) {
        return editDistance(given, a) < editDistance(given, b);
    };
    const std::string& nearest = *std::min_element(known.begin(), known.end(), nearer);
    const bool isNear = editDistance(given, nearest) <= std::max<std::size_t>(1, given.size() / 3);
    return isNear ? ": did you mean " + quoted(nearest) + "?" : "";
}

Fields::Fields(Problems& problems, const Json::Value& value, std::string path)
    : problems_(problems), value_(value), path_(std::move(path)), isObject_(value.isObject()) {
    if (!isObject_) problems_.add(value.getOffsetStart(), path_, "must be an object: {...}");
}

std::string Fields::pathOf(const char* name) const { return path_.empty() ? name : path_ + "." + name; }

bool Fields::has(const char* name) const { return isObject_ && value_.isMember(name); }

void Fields::problem(const char* name, const std::string& text) {
    const std::ptrdiff_t where = has(name) ? value_[name].getOffsetStart() : offset();
    problems_.add(where, pathOf(name), text);
}

const Json::Value* Fields::any(const char* name) {
    if (std::find(known_.begin(), known_.end(), name) == known_.end()) known_.emplace_back(name);
    return has(name) ? &value_[name] : nullptr;
}

const Json::Value* Fields::find(const char* name, Need need) {
    const Json::Value* value = any(name);
    if (value == nullptr && need == Need::kRequired && isObject_) problem(name, "is missing");
    return value;
}

std::optional<double> Fields::checked(const Json::Value& value, const std::string& path, Range range) {
    const bool isNumber = value.isNumeric();
    const double number = isNumber ? value.asDouble() : 0.0;
    if (!isNumber || !std::isfinite(number)) {
        problems_.add(value.getOffsetStart(), path, "must be a number");
        return std::nullopt;
    }
    if (number < range.low || number > range.high || (range.above && number == range.low)) {
        problems_.add(value.getOffsetStart(), path, "must be " + rangeText(range));
        return std::nullopt;
    }
    return number;
}

std::optional<cv::Point2d> Fields::checkedPoint(const Json::Value& value, const std::string& path) {
    if (!value.isArray() || value.size() != 2) {
        problems_.add(value.getOffsetStart(), path, "must be a point: [x, y]");
        return std::nullopt;
    }
    const auto x = checked(value[0U], path + "[0]", kPlace);
    const auto y = checked(value[1U], path + "[1]", kPlace);
    if (!x || !y) return std::nullopt;
    return cv::Point2d(*x, *y);
}

std::optional<double> Fields::number(const char* name, Range range, Need need) {
    const Json::Value* value = find(name, need);
    return value == nullptr ? std::nullopt : checked(*value, pathOf(name), range);
}

std::optional<int> Fields::whole(const char* name, int low, int high) {
    const auto value = number(name, {static_cast<double>(low), static_cast<double>(high), false});
    if (!value) return std::nullopt;
    if (*value != std::floor(*value)) {
        problem(name, "must be a whole number");
        return std::nullopt;
    }
    return static_cast<int>(*value);
}

std::optional<bool> Fields::flag(const char* name) {
    const Json::Value* value = any(name);
    if (value == nullptr) return std::nullopt;
    if (value->isBool()) return value->asBool();
    problem(name, "must be true or false");
    return std::nullopt;
}

std::optional<std::string> Fields::text(const char* name, Need need) {
    const Json::Value* value = find(name, need);
    if (value == nullptr) return std::nullopt;
    if (!value->isString()) {
        problem(name, "must be a text: \"...\"");
        return std::nullopt;
    }
    std::string text = value->asString();
    if (text.empty() || text.size() > kMostText || !isPlainText(text)) {
        problem(name, "must be a text of 1 to 200 bytes without control characters");
        return std::nullopt;
    }
    return text;
}

std::optional<cv::Point2d> Fields::point(const char* name, Need need) {
    const Json::Value* value = find(name, need);
    return value == nullptr ? std::nullopt : checkedPoint(*value, pathOf(name));
}

const Json::Value* Fields::array(const char* name, std::size_t most, Need need) {
    const Json::Value* value = find(name, need);
    if (value == nullptr) return nullptr;
    if (!value->isArray()) {
        problem(name, "must be a list: [...]");
        return nullptr;
    }
    if (value->size() > most) {
        problem(name, "has more than " + std::to_string(most) + " entries");
        return nullptr;
    }
    return value;
}

std::optional<std::vector<double>> Fields::numbers(const char* name, std::size_t count, Range range) {
    const Json::Value* list = array(name, count);
    if (list == nullptr) return std::nullopt;
    if (list->size() != count) {
        problem(name, "must be a list of " + std::to_string(count) + " numbers");
        return std::nullopt;
    }
    std::vector<double> result;
    for (Json::ArrayIndex i = 0; i < list->size(); ++i) {
        const auto value = checked((*list)[i], pathOf(name) + "[" + std::to_string(i) + "]", range);
        if (!value) return std::nullopt;
        result.push_back(*value);
    }
    return result;
}

std::optional<std::vector<cv::Point2d>> Fields::points(const char* name, std::size_t least,
                                                       std::size_t most) {
    const Json::Value* list = array(name, most, Need::kRequired);
    if (list == nullptr) return std::nullopt;
    if (list->size() < least) {
        problem(name, "must have at least " + std::to_string(least) + " points");
        return std::nullopt;
    }
    std::vector<cv::Point2d> result;
    for (Json::ArrayIndex i = 0; i < list->size(); ++i) {
        const auto value = checkedPoint((*list)[i], pathOf(name) + "[" + std::to_string(i) + "]");
        if (!value) return std::nullopt;
        result.push_back(*value);
    }
    return result;
}

std::optional<std::vector<std::string>> Fields::texts(const char* name, std::size_t least, std::size_t most,
                                                      Need need) {
    const Json::Value* list = array(name, 1000, need);
    if (list == nullptr) return std::nullopt;
    if (list->size() < least || list->size() > most) {
        problem(name, least == most ? "must have " + std::to_string(least) + " entries"
                                    : "must have " + std::to_string(least) + " to " + std::to_string(most) +
                                          " entries");
        return std::nullopt;
    }
    std::vector<std::string> result;
    for (const Json::Value& entry : *list) {
        if (!entry.isString()) {
            problem(name, "must be a list of names");
            return std::nullopt;
        }
        result.push_back(entry.asString());
    }
    return result;
}

void Fields::refuseChoice(const char* name, const std::string& given, const std::vector<std::string>& known) {
    std::string list;
    for (const std::string& text : known) list += (list.empty() ? "" : ", ") + text;
    problem(name, "is " + quoted(given) + ", but must be one of: " + list + suggestion(given, known));
}

void Fields::finish() {
    if (!isObject_) return;
    for (const std::string& name : value_.getMemberNames()) {
        if (problems_.full()) return;
        if (std::find(known_.begin(), known_.end(), name) != known_.end()) continue;
        std::vector<std::string> sorted = known_;
        std::sort(sorted.begin(), sorted.end());
        std::string list;
        for (const std::string& known : sorted) list += (list.empty() ? "" : ", ") + known;
        const std::string shown = isPlainText(name) && name.size() <= kMostQuoted ? name : "(unreadable)";
        problems_.add(value_[name].getOffsetStart(), path_.empty() ? shown : path_ + "." + shown,
                      "unknown field " + quoted(name) + suggestion(name, known_) + " (known: " + list + ")");
    }
}

}  // namespace orx::recipes
