#include "inspection/batch/picture_record.h"

#include <json/json.h>

#include <limits>
#include <memory>

namespace inspection {
namespace {

constexpr std::size_t kLongestLine = std::size_t{16} << 20U;
constexpr int kDeepest = 20;

std::string quoted(const std::string& text) { return Json::valueToQuotedString(text.c_str()); }

bool parse(const std::string& line, Json::Value& root) {
    Json::CharReaderBuilder builder;
    builder["stackLimit"] = kDeepest;
    builder["failIfExtra"] = true;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string problem;
    try {
        return reader->parse(line.data(), line.data() + line.size(), &root, &problem) && root.isObject();
    } catch (const Json::Exception&) {  // too deep
        return false;
    }
}

std::string textIn(const Json::Value& object, const char* name) {
    const Json::Value& value = object[name];
    return value.isString() ? value.asString() : std::string();
}

double numberIn(const Json::Value& object, const char* name) {
    const Json::Value& value = object[name];
    return value.isNumeric() ? value.asDouble() : std::numeric_limits<double>::quiet_NaN();
}

int wholeIn(const Json::Value& object, const char* name) {
    const Json::Value& value = object[name];
    return value.isInt() ? value.asInt() : 0;
}

bool readVerdict(const Json::Value& object, orx::TVerdict& verdict) {
    const std::string text = textIn(object, "verdict");
    for (int i = orx::vdPass; i <= orx::vdNoLimits; ++i) {
        verdict = static_cast<orx::TVerdict>(i);
        if (text == orx::verdictText(verdict)) return true;
    }
    return false;
}

bool readFile(const Json::Value& file, PictureRecord& record) {
    if (!file.isObject() || !file["bytes"].isUInt64() || !file["modified"].isInt64()) return false;
    const std::string id = textIn(file, "id");
    if (id.size() != 16 || id.find_first_not_of("0123456789abcdef") != std::string::npos) return false;
    record.id = std::stoull(id, nullptr, 16);
    record.bytes = file["bytes"].asUInt64();
    record.modified = file["modified"].asInt64();
    return true;
}

bool readValue(const Json::Value& from, const orx::TRecipeTarget& target, orx::TRecipeValue& value) {
    if (!from.isObject() || textIn(from, "name") != target.name || !readVerdict(from, value.verdict))
        return false;
    value.name = target.name;
    value.type = target.type;
    value.unit = target.unit;
    value.hasNominal = target.hasNominal;
    value.nominal = target.nominal;
    value.tolerance = target.tolerance;
    value.problem = textIn(from, "problem");
    value.measured = from["value"].isNumeric();
    value.value = numberIn(from, "value");
    value.deviation = numberIn(from, "deviation");
    value.conformity = numberIn(from, "conformity");
    return value.measured || value.verdict == orx::vdNotMeasured;
}

// A name of a file alone, so that nothing outside the folder can be meant.
bool isPlainName(const std::string& name) {
    return name.find_first_of("/\\:") == std::string::npos && name != "." && name != "..";
}

}  // namespace

std::string lineOf(const PictureRecord& record) {
    orx::TJsonResultOptions options;
    options.features = false;
    options.milliseconds = false;
    options.picture = record.name;
    const std::string annotated =
        record.annotated.empty() ? "null" : quoted(std::string(kPicturesFolder) + "/" + record.annotated);
    return "{\"file\":{\"id\":\"" + hexOf(record.id) + "\",\"bytes\":" + std::to_string(record.bytes) +
           ",\"modified\":" + std::to_string(record.modified) + "},\"annotated\":" + annotated + "," +
           orx::toJson(record.result, options).substr(1);
}

bool readLine(const std::string& line, const orx::TRecipe& recipe, PictureRecord& record) {
    Json::Value root;
    if (line.size() > kLongestLine || !parse(line, root)) return false;
    record = PictureRecord();
    record.name = textIn(root, "picture");
    if (!readFile(root["file"], record) || !readVerdict(root, record.result.verdict)) return false;
    record.result.problem = textIn(root, "problem");
    record.result.size = {wholeIn(root, "width"), wholeIn(root, "height")};
    const std::string annotated = textIn(root, "annotated");
    const std::string folder = std::string(kPicturesFolder) + "/";
    if (annotated.compare(0, folder.size(), folder) == 0 && isPlainName(annotated.substr(folder.size())))
        record.annotated = annotated.substr(folder.size());
    const Json::Value& values = root["values"];
    const auto& targets = recipe.targets();
    if (!values.isArray() || values.size() != targets.size()) return false;
    record.result.values.resize(targets.size());
    for (std::size_t i = 0; i < targets.size(); ++i) {
        if (!readValue(values[static_cast<Json::ArrayIndex>(i)], targets[i], record.result.values[i]))
            return false;
    }
    return true;
}

}  // namespace inspection
