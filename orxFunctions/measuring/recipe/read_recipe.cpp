#include "orxFunctions/measuring/recipe/read_parts.h"

#include <filesystem>

#include "orxFunctions/platform/file_name_internal.h"

namespace orx::recipes {
namespace {

constexpr int kVersion = 1;

enum class LengthUnit { kPixels, kMillimetres };

const Choices<LengthUnit>& lengthUnits() {
    static const Choices<LengthUnit> kUnits{{"px", LengthUnit::kPixels}, {"mm", LengthUnit::kMillimetres}};
    return kUnits;
}

void readCalibration(Fields& fields, const std::string& folder, RecipeData& data) {
    const auto name = fields.text("calibration");
    if (!name) return;
    std::string problem;
    data.plane = readPlane(fileOf(folder, *name), problem);
    if (data.plane == nullptr) fields.problem("calibration", quoted(*name) + ": " + problem);
}

// Of lengths and of coordinates: millimetres want a calibration.
bool readLengthUnit(Fields& fields, const char* name) {
    const bool millimetres =
        fields.choice(name, lengthUnits()).value_or(LengthUnit::kPixels) == LengthUnit::kMillimetres;
    if (millimetres && !fields.has("calibration"))
        fields.problem(name, "\"mm\" wants a calibration in the recipe");
    return millimetres;
}

void readRoot(const Json::Value& root, const std::string& folder, Problems& problems, RecipeData& data) {
    Fields fields(problems, root, "");
    if (!fields.isObject()) return;
    if (const auto version = fields.number("recipe", {}, Need::kRequired); version && *version != kVersion)
        fields.problem("recipe", "is of another version than 1, which is read here");
    fields.any("$schema");
    fields.text("note");
    data.name = fields.text("name").value_or("recipe");
    data.confidence = fields.number("confidence", {0.5, 0.999999, false}).value_or(data.confidence);
    readCalibration(fields, folder, data);
    const bool millimetres = readLengthUnit(fields, "unit");
    data.millimetres = readLengthUnit(fields, "coordinates");
    const Json::Value* features = fields.array("features", kMostFeatures);
    const Json::Value* values = fields.array("values", kMostValues);
    const Json::Value* part = fields.any("part");
    const Json::Value* draw = fields.any("draw");
    FeatureIndex index;
    if (features != nullptr) readFeatures(*features, problems, data, index);
    if (part != nullptr) readPlace(*part, folder, index, problems, data);
    if (values != nullptr) readValues(*values, millimetres, index, problems, data);
    if (draw != nullptr) readDrawing(*draw, problems, data);
    fields.finish();
}

}  // namespace

std::string fileOf(const std::string& folder, const std::string& name) {
    const std::filesystem::path path = platform::toPath(name);
    if (path.is_absolute() || folder.empty()) return name;
    return folder + "/" + name;
}

void readDrawing(const Json::Value& draw, Problems& problems, RecipeData& data) {
    Fields fields(problems, draw, "draw");
    if (!fields.isObject()) return;
    DrawSpec& asked = data.draw;
    asked.features = fields.flag("features").value_or(asked.features);
    asked.points = fields.flag("points").value_or(asked.points);
    asked.values = fields.flag("values").value_or(asked.values);
    asked.pose = fields.flag("pose").value_or(asked.pose);
    fields.finish();
}

void readRecipeText(const std::string& text, const std::string& folder, RecipeData& data) {
    Problems problems(text);
    Json::Value root;
    if (parseJson(text, root, problems)) {
        data.text = text;
        readRoot(root, folder, problems, data);
    }
    for (const ValueSpec& asked : data.values) data.targets.push_back(asked.target);
    data.problems = problems.take();
}

}  // namespace orx::recipes
