#include "orxFunctions/measuring/recipe/read_parts.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace orx::recipes {
namespace {

enum class FeatureType {
    kLine,
    kCircle,
    kArc,
    kEllipse,
    kEdgePair,
    kChain,
    kIntersection,
    kMidpoint,
    kConnection
};

const Choices<FeatureType>& featureTypes() {
    static const Choices<FeatureType> kTypes{{"line", FeatureType::kLine},
                                             {"circle", FeatureType::kCircle},
                                             {"arc", FeatureType::kArc},
                                             {"ellipse", FeatureType::kEllipse},
                                             {"edgePair", FeatureType::kEdgePair},
                                             {"chain", FeatureType::kChain},
                                             {"intersection", FeatureType::kIntersection},
                                             {"midpoint", FeatureType::kMidpoint},
                                             {"connection", FeatureType::kConnection}};
    return kTypes;
}

constexpr Range kAngle{-360.0, 360.0, false};
constexpr Range kShare{0.05, 1.0, false};
constexpr std::size_t kMostPathPoints = 1000;

// Search, edge, contrast and robustness: what all that is looked for in the picture has in common.
class MeasuredFields {
  public:
    MeasuredFields(Fields& fields, FeatureSpec& asked) : fields_(fields), spec_(asked) {}

    void readCommon() {
        static const Choices<TEdgePolarity> kEdges{
            {"any", epAny}, {"darkToBright", epDarkToBright}, {"brightToDark", epBrightToDark}};
        static const Choices<TFitLoss> kLosses{{"leastSquares", flLeastSquares},
                                               {"huber", flHuber},
                                               {"cauchy", flCauchy},
                                               {"tukey", flTukey},
                                               {"gemanMcClure", flGemanMcClure}};
        spec_.search = fields_.number("search", {0.0, 1e5, true}, Need::kRequired).value_or(1.0);
        spec_.polarity = fields_.choice("edge", kEdges).value_or(epAny);
        spec_.minContrast = fields_.number("minContrast", {0.0, 255.0, false}).value_or(spec_.minContrast);
        spec_.minShare = fields_.number("minShare", kShare).value_or(spec_.minShare);
        spec_.loss = fields_.choice("loss", kLosses).value_or(spec_.loss);
    }

    // Calipers or probes or a chain; the fields of calipers belong to none but them.
    void readMethod() {
        static const Choices<Method> kMethods{
            {"edges", Method::kEdges}, {"calipers", Method::kCalipers}, {"chain", Method::kChain}};
        spec_.method = fields_.choice("by", kMethods).value_or(Method::kCalipers);
        readCalipers();
        if (spec_.method == Method::kEdges) {
            for (const char* name : {"count", "width", "sigma"}) {
                if (fields_.has(name)) fields_.problem(name, "means nothing by \"edges\"");
            }
        }
        if (spec_.method == Method::kChain) {
            for (const char* name : {"count", "width"}) {
                if (fields_.has(name)) fields_.problem(name, "means nothing by \"chain\"");
            }
        }
    }

    void readCalipers() {
        spec_.count = fields_.whole("count", 1, 10000).value_or(0);
        spec_.width = fields_.number("width", {1.0, 1000.0, false}).value_or(0.0);
        readSigma();
    }

    void readSigma() { spec_.sigma = fields_.number("sigma", {0.5, 20.0, false}).value_or(1.0); }

    void readEnds() {
        spec_.from = fields_.point("from", Need::kRequired).value_or(cv::Point2d(0, 0));
        spec_.to = fields_.point("to", Need::kRequired).value_or(cv::Point2d(1, 0));
        if (spec_.from == spec_.to && fields_.has("to"))
            fields_.problem("to", "is the same place as \"from\"");
    }

    void readCenter() { spec_.center = fields_.point("center", Need::kRequired).value_or(cv::Point2d(0, 0)); }

    void readRadius() {
        spec_.radius = fields_.number("radius", kSize, Need::kRequired).value_or(1.0);
        if (spec_.search >= spec_.radius && fields_.has("search") && fields_.has("radius"))
            fields_.problem("search", "must be less than the radius");
    }

    void readSweep() {
        spec_.startAngle = fields_.number("start", kAngle, Need::kRequired).value_or(0.0);
        spec_.sweep = fields_.number("sweep", kAngle, Need::kRequired).value_or(90.0);
        if (std::abs(spec_.sweep) < 5.0) fields_.problem("sweep", "must be 5 degrees or more");
    }

    void readAxes() {
        spec_.semiMajor = fields_.number("semiMajor", kSize, Need::kRequired).value_or(2.0);
        spec_.semiMinor = fields_.number("semiMinor", kSize, Need::kRequired).value_or(1.0);
        spec_.angle = fields_.number("angle", kAngle).value_or(0.0);
        if (spec_.semiMinor > spec_.semiMajor && fields_.has("semiMinor"))
            fields_.problem("semiMinor", "must not be above semiMajor");
        if (spec_.search >= spec_.semiMinor && fields_.has("search") && fields_.has("semiMinor"))
            fields_.problem("search", "must be less than semiMinor");
    }

    void readPath() {
        spec_.path = fields_.points("path", 2, kMostPathPoints).value_or(std::vector<cv::Point2d>{});
        spec_.closed = fields_.flag("closed").value_or(false);
        if (spec_.closed && spec_.path.size() == 2)
            fields_.problem("path", "must have 3 points to be closed");
    }

  private:
    Fields& fields_;
    FeatureSpec& spec_;
};

void readConstruction(FeatureType type, Fields& fields, FeatureSpec& asked) {
    static const Choices<int> kWhich{{"first", 0}, {"second", 1}};
    asked.kind = type == FeatureType::kConnection ? fkLine : fkPoint;
    if (type == FeatureType::kIntersection) {
        asked.construction = Construction::kIntersection;
        asked.which = fields.choice("which", kWhich).value_or(0);
    } else {
        asked.construction =
            type == FeatureType::kMidpoint ? Construction::kMidpoint : Construction::kConnection;
    }
}

void readGeometry(FeatureType type, Fields& fields, FeatureSpec& asked) {
    MeasuredFields measured(fields, asked);
    measured.readCommon();
    switch (type) {
        case FeatureType::kLine:
            asked.kind = fkLine;
            measured.readEnds();
            return measured.readMethod();
        case FeatureType::kCircle:
        case FeatureType::kArc:
            asked.kind = type == FeatureType::kArc ? fkArc : fkCircle;
            measured.readCenter();
            measured.readRadius();
            if (type == FeatureType::kArc) measured.readSweep();
            return measured.readMethod();
        case FeatureType::kEllipse:
            asked.kind = fkEllipse;
            measured.readCenter();
            measured.readAxes();
            return measured.readMethod();
        case FeatureType::kEdgePair:
            asked.kind = fkEdgePair;
            asked.method = Method::kCalipers;
            measured.readEnds();
            return measured.readCalipers();
        default:
            asked.kind = fkChain;
            asked.method = Method::kChain;
            measured.readPath();
            return measured.readSigma();
    }
}

bool isConstructed(FeatureType type) {
    return type == FeatureType::kIntersection || type == FeatureType::kMidpoint ||
           type == FeatureType::kConnection;
}

FeatureSpec readFeature(const Json::Value& value, const std::string& path, Problems& problems,
                        std::vector<std::string>& parts) {
    Fields fields(problems, value, path);
    FeatureSpec asked;
    if (!fields.isObject()) return asked;
    asked.name = fields.text("name", Need::kRequired).value_or("");
    fields.text("note");
    const auto type = fields.choice("type", featureTypes(), Need::kRequired);
    if (!type) return asked;  // which fields it may have is not known then
    if (isConstructed(*type)) {
        parts = fields.texts("of", 2, 2, Need::kRequired).value_or(parts);
        readConstruction(*type, fields, asked);
    } else {
        readGeometry(*type, fields, asked);
    }
    fields.finish();
    return asked;
}

bool isPoint(const FeatureSpec& asked) {
    return asked.kind == fkCircle || asked.kind == fkArc || asked.kind == fkEllipse || asked.kind == fkPoint;
}
bool isRound(const FeatureSpec& asked) { return asked.kind == fkCircle || asked.kind == fkArc; }

// What two features a construction takes.
const char* misfit(const FeatureSpec& asked, const FeatureSpec& a, const FeatureSpec& b) {
    if (asked.construction != Construction::kIntersection)
        return isPoint(a) && isPoint(b) ? nullptr : "must be two points, circles, arcs or ellipses";
    const bool good = (a.kind == fkLine || isRound(a)) && (b.kind == fkLine || isRound(b));
    return good ? nullptr : "must be lines, circles or arcs";
}

// Puts the features into an order in which each comes after its parts; tells the rings.
class Order {
  public:
    Order(RecipeData& data, const Json::Value& list, Problems& problems)
        : data_(data), list_(list), problems_(problems), state_(data.features.size(), State::kNew) {}

    void find() {
        for (std::size_t i = 0; i < data_.features.size(); ++i) visit(static_cast<int>(i));
    }

  private:
    enum class State { kNew, kOpen, kDone };

    // As deep as features refer to one another, 500 at the most.
    void visit(int i) {
        const auto at = static_cast<std::size_t>(i);
        if (state_[at] == State::kDone) return;
        if (state_[at] == State::kOpen) {
            const Json::Value& entry = list_[static_cast<Json::ArrayIndex>(i)];
            problems_.add(
                entry["of"].getOffsetStart(), "features[" + std::to_string(i) + "].of",
                "goes round in a circle: " + quoted(data_.features[at].name) + " is made of itself");
            return;
        }
        state_[at] = State::kOpen;
        for (const int part : data_.features[at].of) {
            if (part >= 0) visit(part);
        }
        state_[at] = State::kDone;
        data_.order.push_back(i);
    }

    RecipeData& data_;
    const Json::Value& list_;
    Problems& problems_;
    std::vector<State> state_;
};

}  // namespace

int referenceTo(const std::string& name, const FeatureIndex& index, const Json::Value& where,
                const std::string& field, Problems& problems) {
    const auto found = index.find(name);
    if (found != index.end()) return found->second;
    std::vector<std::string> known;
    for (const auto& entry : index) known.push_back(entry.first);
    problems.add(where.getOffsetStart(), field,
                 "there is no feature " + quoted(name) + suggestion(name, known));
    return -1;
}

void readFeatures(const Json::Value& list, Problems& problems, RecipeData& data, FeatureIndex& index) {
    std::vector<std::vector<std::string>> parts(list.size());
    for (Json::ArrayIndex i = 0; i < list.size() && !problems.full(); ++i) {
        const std::string path = "features[" + std::to_string(i) + "]";
        data.features.push_back(readFeature(list[i], path, problems, parts[i]));
        const std::string& name = data.features.back().name;
        if (!name.empty() && !index.emplace(name, static_cast<int>(i)).second)
            problems.add(list[i]["name"].getOffsetStart(), path + ".name",
                         "another feature is called " + quoted(name));
    }
    for (std::size_t i = 0; i < data.features.size(); ++i) {
        FeatureSpec& asked = data.features[i];
        for (std::size_t k = 0; k < parts[i].size(); ++k) {
            const Json::Value& entry =
                list[static_cast<Json::ArrayIndex>(i)]["of"][static_cast<Json::ArrayIndex>(k)];
            const std::string path = "features[" + std::to_string(i) + "].of[" + std::to_string(k) + "]";
            asked.of.push_back(referenceTo(parts[i][k], index, entry, path, problems));
        }
        if (asked.of.size() != 2 || asked.of[0] < 0 || asked.of[1] < 0) continue;
        const char* wrong = misfit(asked, data.features[static_cast<std::size_t>(asked.of[0])],
                                   data.features[static_cast<std::size_t>(asked.of[1])]);
        const Json::Value& of = list[static_cast<Json::ArrayIndex>(i)]["of"];
        const std::string path = "features[" + std::to_string(i) + "].of";
        if (wrong != nullptr) problems.add(of.getOffsetStart(), path, wrong);
        if (asked.of[0] == asked.of[1]) problems.add(of.getOffsetStart(), path, "names one feature twice");
    }
    Order(data, list, problems).find();
}

}  // namespace orx::recipes
