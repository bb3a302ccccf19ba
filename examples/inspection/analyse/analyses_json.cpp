#include "inspection/analyse/analyses_json.h"

#include "inspection/parts/parts_json.h"

namespace inspection {
namespace {

Json::Value emptyList() { return Json::Value(Json::arrayValue); }

Json::Value contourValue(const SplitContour& contour) {
    Json::Value value;
    value["feature"] = static_cast<Json::UInt64>(contour.feature + 1);
    value["lines"] = emptyList();
    value["arcs"] = emptyList();
    for (const StraightPiece& line : contour.lines) {
        Json::Value piece;
        piece["fromX"] = line.from.x;
        piece["fromY"] = line.from.y;
        piece["toX"] = line.to.x;
        piece["toY"] = line.to.y;
        piece["length"] = line.length();
        piece["angle"] = line.angle();
        piece["deviation"] = line.deviation;
        value["lines"].append(piece);
    }
    for (const ArcPiece& arc : contour.arcs) {
        Json::Value piece;
        piece["x"] = arc.circle.center.x;
        piece["y"] = arc.circle.center.y;
        piece["radius"] = arc.circle.radius;
        piece["startAngle"] = arc.startAngle;
        piece["endAngle"] = arc.endAngle;
        piece["deviation"] = arc.deviation;
        value["arcs"].append(piece);
    }
    return value;
}

Json::Value edgesValue(const EdgeChains& edges) {
    Json::Value value;
    value["chains"] = static_cast<Json::UInt64>(edges.chains.size());
    value["points"] = static_cast<Json::UInt64>(edges.pointCount);
    value["length"] = edges.length;
    value["meanContrast"] = edges.meanContrast;
    value["medianDeviation"] = edges.medianDeviation;
    if (edges.crop.empty()) return value;
    value["crop"]["x"] = edges.crop.x;
    value["crop"]["y"] = edges.crop.y;
    value["crop"]["width"] = edges.crop.width;
    value["crop"]["height"] = edges.crop.height;
    return value;
}

Json::Value edgeList(const std::vector<orx::TContrastEdge>& edges) {
    Json::Value list = emptyList();
    for (const orx::TContrastEdge& edge : edges) {
        Json::Value value;
        value["x"] = edge.position.x;
        value["y"] = edge.position.y;
        value["distance"] = edge.distance;
        value["contrast"] = edge.contrast;
        value["blur"] = edge.blur;
        value["caliper"] = edge.caliper;
        list.append(value);
    }
    return list;
}

Json::Value boxValue(const BoxCaliper& caliper) {
    Json::Value value;
    value["x"] = caliper.box.x;
    value["y"] = caliper.box.y;
    value["width"] = caliper.box.width;
    value["height"] = caliper.box.height;
    value["direction"] = caliper.downwards ? "down" : "right";
    value["profile"] = emptyList();
    for (const double level : caliper.profile) value["profile"].append(level);
    value["edges"] = edgeList(caliper.edges);
    return value;
}

void setCircle(Json::Value& value, const Circle& circle) {
    value["x"] = circle.center.x;
    value["y"] = circle.center.y;
    value["radius"] = circle.radius;
}

Json::Value circleValue(const CircleCaliper& caliper) {
    Json::Value value;
    setCircle(value["nominal"], caliper.nominal);
    value["calipers"] = caliper.calipers;
    value["edges"] = edgeList(caliper.edges);
    if (!caliper.fitted.valid()) return value;
    Json::Value& fitted = value["fitted"];
    setCircle(fitted, {caliper.fitted.center, caliper.fitted.radius});
    fitted["xDeviation"] = caliper.fitted.xDeviation;
    fitted["yDeviation"] = caliper.fitted.yDeviation;
    fitted["radiusDeviation"] = caliper.fitted.radiusDeviation;
    fitted["edgesUsed"] = caliper.fitted.usedPoints;
    fitted["meanResidual"] = caliper.meanResidual;
    return value;
}

Json::Value focusValue(const FocusValues& focus) {
    Json::Value value;
    value["greyDifference"] = focus.greyDifference;
    value["brenner"] = focus.brenner;
    value["tenengrad"] = focus.tenengrad;
    value["laplacianVariance"] = focus.laplacianVariance;
    return value;
}

}  // namespace

void addAnalyses(Json::Value& image, const Analyses& analyses) {
    if (analyses.contours) {
        image["segments"] = emptyList();
        for (const SplitContour& contour : *analyses.contours)
            image["segments"].append(contourValue(contour));
    }
    if (analyses.edges) image["edges"] = edgesValue(*analyses.edges);
    for (const BoxCaliper& caliper : analyses.boxCalipers) image["calipers"].append(boxValue(caliper));
    for (const CircleCaliper& caliper : analyses.circleCalipers)
        image["circleCalipers"].append(circleValue(caliper));
    if (analyses.focus) image["focus"] = focusValue(*analyses.focus);
    if (analyses.taught) image["taughtPart"] = taughtValue(*analyses.taught);
    if (analyses.parts) image["parts"] = foundValue(*analyses.parts);
}

}  // namespace inspection
