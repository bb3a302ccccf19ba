#include "orxFunctions/measuring/recipe/read_parts.h"

#include <cmath>
#include <set>

#include "orxFunctions/measuring/recipe/value_kinds.h"

namespace orx::recipes {
namespace {

constexpr Range kLimit{-1e9, 1e9, false};

// Nominal value and limits, which may be given in two ways.
class ToleranceFields {
  public:
    ToleranceFields(Fields& fields, TRecipeTarget& target) : fields_(fields), target_(target) {}

    void read() {
        if (const auto nominal = fields_.number("nominal", kLimit)) {
            target_.hasNominal = true;
            target_.nominal = *nominal;
        }
        const Json::Value* tolerance = fields_.any("tolerance");
        const auto lower = fields_.number("lower", kLimit);
        const auto upper = fields_.number("upper", kLimit);
        if (tolerance != nullptr) {
            if (fields_.has("lower") || fields_.has("upper"))
                fields_.problem("tolerance", "can't stand beside \"lower\" or \"upper\"");
            readTolerance(*tolerance);
            return;
        }
        if (lower) target_.tolerance.lower = *lower;
        if (upper) target_.tolerance.upper = *upper;
        if (!target_.tolerance.valid()) fields_.problem("upper", "must not be below \"lower\"");
        // It looks like a limit and is none: every value would be let by.
        if (target_.hasNominal && !fields_.has("lower") && !fields_.has("upper"))
            fields_.problem("nominal",
                            "wants \"tolerance\", or \"lower\" or \"upper\": by itself it limits nothing");
    }

  private:
    void readTolerance(const Json::Value& tolerance) {
        if (!fields_.has("nominal")) fields_.problem("tolerance", "wants \"nominal\", too");
        double below = 0.0;
        double above = 0.0;
        if (tolerance.isArray()) {
            const auto both = fields_.numbers("tolerance", 2, kLimit);
            if (!both) return;
            below = (*both)[0];
            above = (*both)[1];
            if (below > above) fields_.problem("tolerance", "must be [lower, upper]");
        } else {
            const auto half = fields_.number("tolerance", {0.0, 1e9, false});
            if (!half) return;
            below = -*half;
            above = *half;
        }
        target_.tolerance = {target_.nominal + below, target_.nominal + above};
    }

    Fields& fields_;
    TRecipeTarget& target_;
};

void readUnit(Fields& fields, bool millimetres, const RecipeData& data, ValueSpec& asked) {
    static const Choices<std::string> kUnits{{"px", "px"}, {"mm", "mm"}, {"deg", "deg"}};
    const Quantity quantity = quantityOf(asked.kind);
    const std::string length = millimetres ? "mm" : "px";
    asked.target.unit = quantity == Quantity::kLength ? length : quantity == Quantity::kAngle ? "deg" : "";
    if (const auto unit = fields.choice("unit", kUnits)) {
        const bool fits = quantity == Quantity::kLength  ? *unit != "deg"
                          : quantity == Quantity::kAngle ? *unit == "deg"
                                                         : false;
        if (!fits) {
            fields.problem("unit", quoted(*unit) + " is no unit of " + quoted(asked.target.type));
        } else {
            asked.target.unit = *unit;
        }
    }
    // Angles are those of the plane where there is one: a tilted camera changes them.
    asked.inMillimetres = asked.target.unit == "mm" || (quantity == Quantity::kAngle && millimetres);
    if (asked.inMillimetres && data.plane == nullptr && fields.has("unit") && *fields.any("unit") == "mm")
        fields.problem("unit", "\"mm\" wants a calibration in the recipe");
}

void readPieces(Fields& fields, const Json::Value& value, const std::string& path, const FeatureIndex& index,
                Problems& problems, const RecipeData& data, ValueSpec& asked) {
    const Counts counts = featuresOf(asked.kind);
    if (counts.most == 0) return;
    const auto names = fields.texts("of", counts.least, counts.most, Need::kRequired);
    if (!names) return;
    std::vector<TFeatureKind> kinds;
    for (std::size_t i = 0; i < names->size(); ++i) {
        const Json::Value& entry = value["of"][static_cast<Json::ArrayIndex>(i)];
        const int found =
            referenceTo((*names)[i], index, entry, path + ".of[" + std::to_string(i) + "]", problems);
        if (found < 0) return;
        asked.of.push_back(found);
        kinds.push_back(data.features[static_cast<std::size_t>(found)].kind);
    }
    if (const char* wrong = misfit(asked.kind, kinds)) fields.problem("of", wrong);
    if (asked.of.size() == 2 && asked.of[0] == asked.of[1]) fields.problem("of", "names one feature twice");
}

void readFrame(Fields& fields, const RecipeData& data, ValueSpec& asked) {
    static const Choices<bool> kFrames{{"part", true}, {"picture", false}};
    asked.inPart = data.place.kind != PlaceKind::kPicture;
    const bool mayHaveFrame = hasFrame(asked.kind, 1);
    if (!mayHaveFrame) return;
    if (asked.of.size() == 2 && fields.has("frame"))
        fields.problem("frame", "means nothing for an angle between two lines");
    if (const auto inPart = fields.choice("frame", kFrames)) {
        if (*inPart && data.place.kind == PlaceKind::kPicture)
            fields.problem("frame", "\"part\" wants a part in the recipe");
        asked.inPart = *inPart;
    }
}

bool isOfTwoLines(const ValueSpec& asked, const RecipeData& data) {
    const auto isLine = [&](int i) { return data.features[static_cast<std::size_t>(i)].kind == fkLine; };
    return asked.kind == ValueKind::kDistance && asked.of.size() == 2 && isLine(asked.of[0]) &&
           isLine(asked.of[1]);
}

ValueSpec readValue(const Json::Value& value, const std::string& path, bool millimetres,
                    const FeatureIndex& index, Problems& problems, const RecipeData& data) {
    static const Choices<Section> kSections{
        {"middle", Section::kMiddle}, {"least", Section::kLeast}, {"largest", Section::kLargest}};
    Fields fields(problems, value, path);
    ValueSpec asked;
    if (!fields.isObject()) return asked;
    asked.target.name = fields.text("name", Need::kRequired).value_or("");
    fields.text("note");
    const auto kind = fields.choice("type", valueKinds(), Need::kRequired);
    if (!kind) return asked;
    asked.kind = *kind;
    asked.target.type = value["type"].asString();
    readPieces(fields, value, path, index, problems, data, asked);
    readUnit(fields, millimetres, data, asked);
    ToleranceFields(fields, asked.target).read();
    readFrame(fields, data, asked);
    if (asked.kind == ValueKind::kDistance) {
        asked.section = fields.choice("at", kSections).value_or(asked.section);
        if (fields.has("at") && asked.of.size() == 2 && !isOfTwoLines(asked, data))
            fields.problem("at", "means nothing but for the distance of two lines");
    }
    asked.addedDeviation = fields.number("addedDeviation", {0.0, 1e6, false}).value_or(0.0);
    fields.finish();
    return asked;
}

}  // namespace

void readValues(const Json::Value& list, bool millimetres, const FeatureIndex& index, Problems& problems,
                RecipeData& data) {
    std::set<std::string> names;
    for (Json::ArrayIndex i = 0; i < list.size() && !problems.full(); ++i) {
        const std::string path = "values[" + std::to_string(i) + "]";
        data.values.push_back(readValue(list[i], path, millimetres, index, problems, data));
        const std::string& name = data.values.back().target.name;
        if (!name.empty() && !names.insert(name).second)
            problems.add(list[i]["name"].getOffsetStart(), path + ".name",
                         "another value is called " + quoted(name));
    }
}

}  // namespace orx::recipes
