#include "orxFunctions/measuring/recipe_result.h"

#include <json/json.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "orxFunctions/foundation/text_stream_internal.h"

namespace orx {
namespace {

constexpr int kDigits = 10;

Json::Value number(double value) { return std::isfinite(value) ? Json::Value(value) : Json::Value(); }

Json::Value textOrNull(const std::string& text) { return text.empty() ? Json::Value() : Json::Value(text); }

Json::Value jsonOf(const TRecipePose& pose) {
    Json::Value value;
    value["found"] = pose.found;
    if (!pose.problem.empty()) value["problem"] = pose.problem;
    if (!pose.found) return value;
    value["x"] = number(pose.pose.x);
    value["y"] = number(pose.pose.y);
    value["angle"] = number(pose.pose.angle);
    value["scale"] = number(pose.pose.scale);
    value["score"] = number(pose.score);
    value["deviationX"] = number(pose.deviationX);
    value["deviationY"] = number(pose.deviationY);
    value["deviationAngle"] = number(pose.deviationAngle);
    return value;
}

Json::Value jsonOf(const TRecipeFeature& feature) {
    Json::Value value;
    value["name"] = feature.name;
    value["kind"] = featureKindText(feature.kind);
    value["measured"] = feature.measured;
    if (!feature.problem.empty()) value["problem"] = feature.problem;
    value["searched"] = feature.searched;
    value["found"] = feature.found;
    value["used"] = static_cast<Json::UInt64>(feature.points.size());
    value["rms"] = number(feature.rms);
    return value;
}

Json::Value jsonOf(const TRecipeValue& told) {
    Json::Value value;
    value["name"] = told.name;
    value["type"] = told.type;
    value["unit"] = told.unit;
    value["verdict"] = verdictText(told.verdict);
    if (!told.problem.empty()) value["problem"] = told.problem;
    value["value"] = told.measured ? number(told.value) : Json::Value();
    value["deviation"] = told.measured ? number(told.deviation) : Json::Value();
    value["calibrationDeviation"] = told.measured ? number(told.calibrationDeviation) : Json::Value();
    value["degreesOfFreedom"] = told.measured ? number(told.degreesOfFreedom) : Json::Value();
    value["nominal"] = told.hasNominal ? number(told.nominal) : Json::Value();
    value["lower"] = number(told.tolerance.lower);
    value["upper"] = number(told.tolerance.upper);
    value["conformity"] = number(told.conformity);
    value["guard"] = told.measured ? number(told.guard) : Json::Value();
    return value;
}

std::string oneLine(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["commentStyle"] = "None";
    builder["emitUTF8"] = true;
    builder["precision"] = kDigits;
    builder["precisionType"] = "significant";
    TextStream text;
    std::unique_ptr<Json::StreamWriter>(builder.newStreamWriter())->write(value, &text);
    return text.str();
}

}  // namespace

const char* featureKindText(TFeatureKind kind) {
    switch (kind) {
        case fkLine:
            return "line";
        case fkCircle:
            return "circle";
        case fkArc:
            return "arc";
        case fkEllipse:
            return "ellipse";
        case fkEdgePair:
            return "edgePair";
        case fkChain:
            return "chain";
        case fkPoint:
            return "point";
    }
    return "unknown feature";
}

std::string measuredText(const TRecipeValue& value) {
    if (!value.measured) return value.problem.empty() ? verdictText(vdNotMeasured) : value.problem;
    TextStream text;
    if (value.deviation > 0.0 && std::isfinite(value.deviation)) {
        const int decimals = 1 - static_cast<int>(std::floor(std::log10(value.deviation)));
        text.precision(std::clamp(decimals, 0, 12));
        text << std::fixed << value.value << " +- " << value.deviation;
    } else {
        text << value.value;
    }
    if (!value.unit.empty()) text << " " << value.unit;
    return text.str();
}

std::string toJson(const TRecipeResult& result, const TJsonResultOptions& options) {
    Json::Value root;
    if (!options.picture.empty()) root["picture"] = options.picture;
    root["recipe"] = result.recipe;
    root["verdict"] = verdictText(result.verdict);
    root["problem"] = textOrNull(result.problem);
    root["confidence"] = number(result.confidence);
    root["width"] = result.size.width;
    root["height"] = result.size.height;
    root["part"] = jsonOf(result.pose);
    if (options.features) {
        root["features"] = Json::arrayValue;
        for (const TRecipeFeature& feature : result.features) root["features"].append(jsonOf(feature));
    }
    root["values"] = Json::arrayValue;
    for (const TRecipeValue& value : result.values) root["values"].append(jsonOf(value));
    if (options.milliseconds) root["milliseconds"] = number(result.milliseconds);
    return oneLine(root);
}

}  // namespace orx
