#include "orxFunctions/measuring/recipe/value_kinds.h"

#include <algorithm>

namespace orx::recipes {
namespace {

bool isRound(TFeatureKind kind) { return kind == fkCircle || kind == fkArc; }
bool isPoint(TFeatureKind kind) { return isRound(kind) || kind == fkEllipse || kind == fkPoint; }
bool isPlaced(TFeatureKind kind) { return isPoint(kind) || kind == fkLine; }

template <class Test>
bool all(const std::vector<TFeatureKind>& features, Test test) {
    return std::all_of(features.begin(), features.end(), test);
}

const char* misfitOfOne(ValueKind kind, TFeatureKind feature) {
    switch (kind) {
        case ValueKind::kDiameter:
        case ValueKind::kRadius:
            return isRound(feature) ? nullptr : "must be a circle or an arc";
        case ValueKind::kMajorDiameter:
        case ValueKind::kMinorDiameter:
            return feature == fkEllipse ? nullptr : "must be an ellipse";
        case ValueKind::kX:
        case ValueKind::kY:
            return isPoint(feature) ? nullptr : "must be a point, a circle, an arc or an ellipse";
        case ValueKind::kLength:
            return feature == fkChain ? nullptr : "must be a chain";
        case ValueKind::kWidth:
            return feature == fkEdgePair ? nullptr : "must be an edge pair";
        case ValueKind::kRoundness:
            return isRound(feature) || feature == fkChain ? nullptr : "must be a circle, an arc or a chain";
        case ValueKind::kStraightness:
            return feature == fkLine || feature == fkChain ? nullptr : "must be a line or a chain";
        default:
            return nullptr;
    }
}

}  // namespace

const Choices<ValueKind>& valueKinds() {
    static const Choices<ValueKind> kKinds{{"diameter", ValueKind::kDiameter},
                                           {"radius", ValueKind::kRadius},
                                           {"majorDiameter", ValueKind::kMajorDiameter},
                                           {"minorDiameter", ValueKind::kMinorDiameter},
                                           {"x", ValueKind::kX},
                                           {"y", ValueKind::kY},
                                           {"length", ValueKind::kLength},
                                           {"width", ValueKind::kWidth},
                                           {"distance", ValueKind::kDistance},
                                           {"gap", ValueKind::kGap},
                                           {"angle", ValueKind::kAngle},
                                           {"parallelism", ValueKind::kParallelism},
                                           {"perpendicularity", ValueKind::kPerpendicularity},
                                           {"concentricity", ValueKind::kConcentricity},
                                           {"roundness", ValueKind::kRoundness},
                                           {"straightness", ValueKind::kStraightness},
                                           {"partX", ValueKind::kPartX},
                                           {"partY", ValueKind::kPartY},
                                           {"partAngle", ValueKind::kPartAngle},
                                           {"partScale", ValueKind::kPartScale},
                                           {"score", ValueKind::kScore}};
    return kKinds;
}

Quantity quantityOf(ValueKind kind) {
    if (kind == ValueKind::kAngle || kind == ValueKind::kPartAngle) return Quantity::kAngle;
    if (kind == ValueKind::kPartScale || kind == ValueKind::kScore) return Quantity::kShare;
    return Quantity::kLength;
}

bool isOfPart(ValueKind kind) {
    return kind == ValueKind::kPartX || kind == ValueKind::kPartY || kind == ValueKind::kPartAngle ||
           kind == ValueKind::kPartScale || kind == ValueKind::kScore;
}

bool hasFrame(ValueKind kind, std::size_t features) {
    return kind == ValueKind::kX || kind == ValueKind::kY || (kind == ValueKind::kAngle && features == 1);
}

Counts featuresOf(ValueKind kind) {
    if (isOfPart(kind)) return {0, 0};
    switch (kind) {
        case ValueKind::kDistance:
        case ValueKind::kGap:
        case ValueKind::kParallelism:
        case ValueKind::kPerpendicularity:
        case ValueKind::kConcentricity:
            return {2, 2};
        case ValueKind::kAngle:
            return {1, 2};
        default:
            return {1, 1};
    }
}

const char* misfit(ValueKind kind, const std::vector<TFeatureKind>& features) {
    const auto isLine = [](TFeatureKind feature) { return feature == fkLine; };
    switch (kind) {
        case ValueKind::kDistance:
            return all(features, isPlaced) ? nullptr : "must be points, circles, arcs, ellipses or lines";
        case ValueKind::kGap:
        case ValueKind::kConcentricity:
            return all(features, isRound) ? nullptr : "must be circles or arcs";
        case ValueKind::kParallelism:
        case ValueKind::kPerpendicularity:
            return all(features, isLine) ? nullptr : "must be lines";
        case ValueKind::kAngle:
            if (features.size() == 1)
                return isLine(features[0]) || features[0] == fkEllipse ? nullptr
                                                                       : "must be a line or an ellipse";
            return all(features, isLine) ? nullptr : "must be lines";
        default:
            return features.empty() ? nullptr : misfitOfOne(kind, features[0]);
    }
}

}  // namespace orx::recipes
