#include "orxFunctions/measuring/recipe/read_parts.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/matching/part_model_file.h"

namespace orx::recipes {
namespace {

const Choices<PlaceKind>& places() {
    static const Choices<PlaceKind> kPlaces{{"picture", PlaceKind::kPicture},
                                            {"fixed", PlaceKind::kFixed},
                                            {"model", PlaceKind::kModel},
                                            {"features", PlaceKind::kFeatures}};
    return kPlaces;
}

constexpr Range kTurn{-360.0, 360.0, false};
constexpr Range kScale{0.2, 5.0, false};

void readFixed(Fields& fields, PlaceSpec& place) {
    place.fixed.x = fields.number("x", kPlace, Need::kRequired).value_or(0.0);
    place.fixed.y = fields.number("y", kPlace, Need::kRequired).value_or(0.0);
    place.fixed.angle = fields.number("angle", kTurn).value_or(0.0);
    place.fixed.scale = fields.number("scale", {1e-3, 1e3, false}).value_or(1.0);
}

void readModel(Fields& fields, const std::string& folder, PlaceSpec& place) {
    static const Choices<TPartPolarity> kPolarities{
        {"same", ppSame}, {"reversed", ppReversed}, {"either", ppEither}};
    if (const auto name = fields.text("model", Need::kRequired)) {
        place.model = readPartModel(fileOf(folder, *name));
        if (!place.model.valid())
            fields.problem("model", quoted(*name) + ": " + matchStatusText(place.model.report().status));
    }
    TFindOptions& find = place.find;
    find.minScore = fields.number("minScore", {0.1, 1.0, false}).value_or(find.minScore);
    find.startAngle = fields.number("startAngle", kTurn).value_or(find.startAngle);
    find.angleRange = fields.number("angleRange", {0.0, 360.0, false}).value_or(find.angleRange);
    find.minScale = fields.number("minScale", kScale).value_or(find.minScale);
    find.maxScale = fields.number("maxScale", kScale).value_or(std::max(find.maxScale, find.minScale));
    if (find.maxScale < find.minScale) fields.problem("maxScale", "must not be below minScale");
    find.polarity = fields.choice("polarity", kPolarities).value_or(find.polarity);
    if (const auto box = fields.numbers("region", 4, {0.0, 1e6, false}))
        find.region = cv::Rect2d((*box)[0], (*box)[1], (*box)[2], (*box)[3]);
}

int placingFeature(Fields& fields, const char* name, const Json::Value& part, const FeatureIndex& index,
                   Problems& problems, RecipeData& data) {
    const auto feature = fields.text(name, Need::kRequired);
    if (!feature) return -1;
    const int found = referenceTo(*feature, index, part[name], fields.pathOf(name), problems);
    if (found < 0) return found;
    FeatureSpec& asked = data.features[static_cast<std::size_t>(found)];
    const bool isOrigin = name == std::string("origin");
    const bool isRound = asked.kind == fkCircle || asked.kind == fkArc || asked.kind == fkEllipse;
    if (asked.construction != Construction::kNone || !(isRound || (!isOrigin && asked.kind == fkLine)))
        fields.problem(name, isOrigin ? "must be a circle, an arc or an ellipse"
                                      : "must be a line, a circle, an arc or an ellipse");
    asked.places = true;
    return found;
}

void readPlacing(Fields& fields, const Json::Value& part, const FeatureIndex& index, Problems& problems,
                 RecipeData& data) {
    PlaceSpec& place = data.place;
    place.origin = placingFeature(fields, "origin", part, index, problems, data);
    place.direction = placingFeature(fields, "direction", part, index, problems, data);
    if (place.origin >= 0 && place.origin == place.direction)
        fields.problem("direction", "must be another feature than the origin");
    place.angle = fields.number("angle", kTurn).value_or(0.0);
}

}  // namespace

void readPlace(const Json::Value& part, const std::string& folder, const FeatureIndex& index,
               Problems& problems, RecipeData& data) {
    Fields fields(problems, part, "part");
    if (!fields.isObject()) return;
    const auto kind = fields.choice("by", places(), Need::kRequired);
    if (!kind) return;
    data.place.kind = *kind;
    fields.text("note");
    if (*kind == PlaceKind::kFixed) readFixed(fields, data.place);
    if (*kind == PlaceKind::kModel) readModel(fields, folder, data.place);
    if (*kind == PlaceKind::kFeatures) readPlacing(fields, part, index, problems, data);
    fields.finish();
}

}  // namespace orx::recipes
