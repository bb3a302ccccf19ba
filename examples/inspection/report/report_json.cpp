#include "inspection/report/report_json.h"

#include <json/writer.h>

#include "inspection/analyse/analyses_json.h"
#include "inspection/measure/fit_estimators.h"
#include "inspection/parts/parts_json.h"

namespace inspection {
namespace {

const char* polarityText(Polarity polarity) {
    return polarity == Polarity::kBright ? "bright" : polarity == Polarity::kDark ? "dark" : "auto";
}

const char* shapeChoiceText(ShapeChoice choice) {
    return choice == ShapeChoice::kCircle ? "circle" : choice == ShapeChoice::kLine ? "line" : "auto";
}

Json::Value settingsValue(const Settings& settings) {
    Json::Value value;
    value["method"] = settings.method;
    value["objects"] = polarityText(settings.polarity);
    value["smooth"] = settings.smooth;
    value["background"] = settings.background;
    value["close"] = settings.close;
    value["minArea"] = settings.minArea;
    value["shape"] = shapeChoiceText(settings.shape);
    value["circle"] = nameOf(settings.circle);
    value["line"] = nameOf(settings.line);
    value["ellipse"] = nameOf(settings.ellipse);
    value["tolerance"] = settings.tolerance;
    value["trials"] = settings.trials;
    value["seed"] = settings.seed;
    value["minInliers"] = settings.minInliers;
    value["subPixel"] = settings.subPixel;
    if (!settings.parts.modelFile.empty()) value["find"] = partSearchValue(settings.parts);
    return value;
}

const char* statusText(const ImageResult& result) {
    if (!result.measured()) return "not measured";
    return result.complete() ? "measured" : "measured with problems";
}

// Standard uncertainties, of what has one.
Json::Value deviationsValue(const Deviations& deviations) {
    Json::Value value(Json::objectValue);
    const auto add = [&](const char* name, double deviation) {
        if (deviation > 0.0) value[name] = deviation;
    };
    add("x", deviations.x);
    add("y", deviations.y);
    add("radius", deviations.radius);
    add("angle", deviations.angle);
    add("length", deviations.length);
    add("width", deviations.width);
    add("offset", deviations.offset);
    return value;
}

Json::Value featureValue(int number, const Feature& feature) {
    Json::Value value;
    value["number"] = number;
    value["x"] = feature.center.x;
    value["y"] = feature.center.y;
    value["shape"] = nameOf(feature.shape);
    if (feature.isRound()) value["radius"] = feature.radius;
    if (feature.shape != Shape::kCircle) {
        value["angle"] = feature.angle;
        value["length"] = feature.length;
        value["width"] = feature.width;
    }
    value["deviations"] = deviationsValue(feature.deviations);
    value["area"] = feature.area;
    value["contourPoints"] = feature.contourPoints;
    value["inlierRatio"] = feature.inlierRatio;
    value["meanResidual"] = feature.meanResidual;
    value["inlierResidual"] = feature.inlierResidual;
    value["weak"] = feature.weak;
    return value;
}

Json::Value truthValue(const TruthError& error) {
    Json::Value value;
    value["shape"] = error.shape == Shape::kCircle ? "circle" : "line";
    value["x"] = error.center.x;
    value["y"] = error.center.y;
    value["found"] = error.feature >= 0;
    if (error.feature < 0) return value;
    value["feature"] = error.feature + 1;
    if (error.shape == Shape::kCircle) {
        value["centerError"] = error.centerError;
        value["radiusError"] = error.radiusError;
    } else {
        value["angleError"] = error.angleError;
        value["offsetError"] = error.offsetError;
        value["widthError"] = error.widthError;
    }
    return value;
}

void addShapes(Json::Value& image, const ImageResult& result) {
    image["level"] = result.level;
    image["objects"] = result.brightObjects ? "bright" : "dark";
    image["annotated"] = result.annotatedFile;
    image["features"] = Json::Value(Json::arrayValue);
    int number = 0;
    for (const Feature& feature : result.features) image["features"].append(featureValue(++number, feature));
    if (!result.hasTruth) return;
    image["truth"] = Json::Value(Json::arrayValue);
    for (const TruthError& error : result.truth) image["truth"].append(truthValue(error));
}

void addMeasured(Json::Value& image, const ImageResult& result) {
    image["width"] = result.size.width;
    image["height"] = result.size.height;
    for (const std::string& file : result.moreFiles) image["pictures"].append(file);
    if (result.hasShapes) addShapes(image, result);
    addAnalyses(image, result.analyses);
}

}  // namespace

JsonReport::JsonReport(const Settings& settings) {
    root_["program"] = "orx_inspection";
    root_["version"] = INSPECTION_VERSION;
    root_["settings"] = settingsValue(settings);
    root_["images"] = Json::Value(Json::arrayValue);
}

void JsonReport::add(const ImageResult& result) {
    Json::Value image;
    image["name"] = result.name;
    image["measured"] = result.measured();
    image["status"] = statusText(result);
    if (!result.problems.empty()) image["problem"] = result.problemText();
    for (const std::string& problem : result.problems) image["problems"].append(problem);
    if (result.measured()) addMeasured(image, result);
    if (!result.messages.empty()) {
        image["messages"] = Json::Value(Json::arrayValue);
        for (const std::string& message : result.messages) image["messages"].append(message);
    }
    root_["images"].append(image);
}

std::string JsonReport::text() const {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    builder["emitUTF8"] = true;
    builder["precision"] = 10;
    return Json::writeString(builder, root_) + "\n";
}

}  // namespace inspection
