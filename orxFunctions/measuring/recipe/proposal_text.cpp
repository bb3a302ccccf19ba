#include "orxFunctions/measuring/recipe/proposal_text.h"

#include <json/json.h>

#include <cstdio>

namespace orx::recipes {
namespace {

std::string quotedJson(const std::string& text) { return Json::valueToQuotedString(text.c_str()); }

std::string number(double value) {
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%.4g", value);
    // Four digits of what is small, three decimals of what is large.
    if (value >= 10.0 || value <= -10.0) std::snprintf(buffer, sizeof buffer, "%.3f", value);
    return buffer;
}

std::string point(cv::Point2d p) {
    char buffer[80];
    std::snprintf(buffer, sizeof buffer, "[%.2f, %.2f]", p.x, p.y);
    return buffer;
}

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

std::string featureText(const ProposedFeature& feature) {
    return "{\"name\": " + quotedJson(feature.name) + ", \"type\": \"" + featureKindText(feature.shape.kind) +
           "\", " + geometry(feature.shape) + ", \"search\": " + number(feature.search) + ", \"edge\": \"" +
           edgeText(feature.shape.polarity) + "\"}";
}

std::string valueText(const ProposedValue& value) {
    std::string text =
        "{\"name\": " + quotedJson(value.name) + ", \"type\": \"" + value.type + "\", \"of\": [";
    for (std::size_t i = 0; i < value.of.size(); ++i) text += (i > 0 ? ", " : "") + quotedJson(value.of[i]);
    text += "]";
    if (value.hasNominal)
        text += ", \"nominal\": " + number(value.nominal) + ", \"tolerance\": " + number(value.tolerance) +
                ", \"note\": \"tolerance proposed: edit\"";
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
        text += "  \"unit\": \"mm\",\n  \"calibration\": " + quotedJson(options.calibration) + ",\n";
    if (!options.model.empty())
        text += "  \"part\": {\"by\": \"model\", \"model\": " + quotedJson(options.model) + "},\n";
    text += "  \"features\": " + listOf(features, featureText) + ",\n";
    text += "  \"values\": " + listOf(values, valueText) + "\n}\n";
    return text;
}

}  // namespace orx::recipes
