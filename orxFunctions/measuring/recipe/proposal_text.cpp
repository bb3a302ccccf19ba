#include "orxFunctions/measuring/recipe/proposal_text.h"

#include <json/json.h>

#include <cstdio>

namespace orx::recipes {
namespace {

std::string quotedJson(const std::string& text) { return Json::valueToQuotedString(text.c_str()); }

// Where a calibration is wanted, the camera may look at the plane askew: elsewhere in the picture, or turned,
// a part's outline then has another shape. Of a plate over most of the picture, tilted by 8 degrees, 0.6 is
// seen as it was taught.
constexpr const char* kAskew = ", \"minScore\": 0.4";

std::string number(double value, const char* format = "%.6g") {
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, format, value);
    return buffer;
}

std::string point(cv::Point2d p) { return "[" + number(p.x) + ", " + number(p.y) + "]"; }

std::string geometry(const OutlineShape& shape) {
    switch (shape.kind) {
        case fkLine:
            return "\"from\": " + point(shape.from) + ", \"to\": " + point(shape.to);
        case fkEllipse:
            return "\"center\": " + point(shape.center) + ", \"semiMajor\": " + number(shape.radius) +
                   ", \"semiMinor\": " + number(shape.semiMinor) + ", \"angle\": " + number(shape.angle);
        case fkArc:
            return "\"center\": " + point(shape.center) + ", \"radius\": " + number(shape.radius) +
                   ", \"start\": " + number(shape.startAngle) + ", \"sweep\": " + number(shape.sweep);
        default:
            return "\"center\": " + point(shape.center) + ", \"radius\": " + number(shape.radius);
    }
}

const char* edgeText(TEdgePolarity polarity) {
    return polarity == epDarkToBright ? "darkToBright" : polarity == epBrightToDark ? "brightToDark" : "any";
}

// Edges that a recipe would not take for such, unless it is told.
std::string contrastText(const OutlineShape& shape) {
    constexpr double kWeak = 30.0;
    return shape.contrast < kWeak ? ", \"minContrast\": " + number(shape.contrast / 3.0, "%.2g")
                                  : std::string();
}

std::string featureText(const ProposedFeature& feature) {
    return "{\"name\": " + quotedJson(feature.name) + ", \"type\": \"" + featureKindText(feature.shape.kind) +
           "\", " + geometry(feature.shape) + ", \"search\": " + number(feature.search, "%.3g") +
           ", \"edge\": \"" + edgeText(feature.shape.polarity) + "\"" + contrastText(feature.shape) + "}";
}

std::string valueText(const ProposedValue& value) {
    std::string text =
        "{\"name\": " + quotedJson(value.name) + ", \"type\": \"" + value.type + "\", \"of\": [";
    for (std::size_t i = 0; i < value.of.size(); ++i) text += (i > 0 ? ", " : "") + quotedJson(value.of[i]);
    text += "]";
    if (value.hasNominal)
        text += ", \"nominal\": " + number(value.nominal) +
                ", \"tolerance\": " + number(value.tolerance, "%.4g") + ", \"note\": \"" +
                (value.widened ? "tolerance as wide as this picture's noise wants it: edit"
                               : "tolerance proposed: edit") +
                "\"";
    return text + "}";
}

template <class Entry, class Text>
std::string listOf(const std::vector<Entry>& entries, Text text) {
    std::string list = "[";
    for (std::size_t i = 0; i < entries.size(); ++i)
        list += (i > 0 ? ",\n    " : "\n    ") + text(entries[i]);
    return list + "\n  ]";
}

}  // namespace

std::string proposalText(const TProposalOptions& options, const std::vector<ProposedFeature>& features,
                         const std::vector<ProposedValue>& values) {
    std::string text = "{\n  \"recipe\": 1,\n  \"name\": " + quotedJson(options.name) + ",\n";
    if (!options.calibration.empty())
        text += "  \"unit\": \"mm\",\n  \"coordinates\": \"mm\",\n  \"calibration\": " +
                quotedJson(options.calibration) + ",\n";
    if (!options.model.empty())
        text += "  \"part\": {\"by\": \"model\", \"model\": " + quotedJson(options.model) +
                (options.calibration.empty() ? "" : kAskew) + "},\n";
    text += "  \"features\": " + listOf(features, featureText) + ",\n";
    text += "  \"values\": " + listOf(values, valueText) + "\n}\n";
    return text;
}

}  // namespace orx::recipes
