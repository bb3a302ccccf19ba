#include "inspection/parts/parts_json.h"

#include <cmath>

#include "inspection/parts/part_sections.h"

namespace inspection {
namespace {

const char* polarityName(orx::TPartPolarity polarity) {
    return polarity == orx::ppSame ? "same" : polarity == orx::ppReversed ? "reversed" : "either";
}

void setPose(Json::Value& value, double x, double y, double angle, double scale) {
    value["x"] = x;
    value["y"] = y;
    value["angle"] = angle;
    value["scale"] = scale;
}

// What the outline can't tell is null: JSON knows no infinity.
void setDeviation(Json::Value& value, const char* name, double deviation) {
    value[name] = std::isfinite(deviation) ? Json::Value(deviation) : Json::Value();
}

Json::Value partValue(const orx::TFoundPart& part) {
    Json::Value value;
    setPose(value, part.pose.x, part.pose.y, part.pose.angle, part.pose.scale);
    value["score"] = part.score;
    value["reversed"] = part.reversed;
    value["rms"] = part.rms;
    setDeviation(value["deviations"], "x", part.deviationX);
    setDeviation(value["deviations"], "y", part.deviationY);
    setDeviation(value["deviations"], "angle", part.deviationAngle);
    setDeviation(value["deviations"], "scale", part.deviationScale);
    return value;
}

Json::Value errorValue(const PartError& error) {
    Json::Value value;
    setPose(value["truth"], error.truth.x, error.truth.y, error.truth.angle, error.truth.scale);
    value["found"] = error.part >= 0;
    if (error.part < 0) return value;
    value["part"] = error.part + 1;
    value["xError"] = error.x;
    value["yError"] = error.y;
    value["angleError"] = error.angle;
    return value;
}

}  // namespace

Json::Value partSearchValue(const PartSettings& settings) {
    const orx::TFindOptions& find = settings.find;
    Json::Value value;
    value["model"] = settings.modelFile;
    value["minScore"] = find.minScore;
    value["maxParts"] = find.maxParts;
    value["minScale"] = find.minScale;
    value["maxScale"] = find.maxScale;
    value["polarity"] = polarityName(find.polarity);
    return value;
}

Json::Value taughtValue(const TaughtPart& taught) {
    const orx::TTeachReport& report = taught.model.report();
    Json::Value value;
    value["status"] = orx::matchStatusText(report.status);
    for (const std::string& line : describe(report)) value["report"].append(line);
    if (!taught.model.valid()) return value;
    value["model"] = taught.file;
    value["symmetry"] = report.symmetry;
    value["radius"] = report.radius;
    for (const int points : report.pointsPerLevel) value["pointsPerLevel"].append(points);
    const orx::TPartPose pose = taught.model.taughtPose();
    setPose(value["pose"], pose.x, pose.y, pose.angle, pose.scale);
    return value;
}

Json::Value foundValue(const FoundParts& found) {
    Json::Value value;
    value["status"] = orx::matchStatusText(found.result.status);
    value["milliseconds"] = found.milliseconds;
    value["found"] = Json::Value(Json::arrayValue);
    for (const orx::TFoundPart& part : found.result.parts) value["found"].append(partValue(part));
    for (const PartError& error : found.truth) value["truth"].append(errorValue(error));
    return value;
}

}  // namespace inspection
