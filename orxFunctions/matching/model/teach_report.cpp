#include "orxFunctions/matching/model/teach_report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>

#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/matching/model/bounds.h"
#include "orxFunctions/matching/model/freedom.h"
#include "orxFunctions/matching/model/model_limits.h"
#include "orxFunctions/matching/model/self_match.h"
#include "orxFunctions/matching/model/symmetry.h"
#include "orxFunctions/matching/model/teach_edges.h"

namespace orx::matching {
namespace {

// Weaker edges are lost where the light is a little less.
constexpr double kWeakContrast = 10;
// Smaller parts are found in many places.
constexpr double kSmallRadius = 8;

// A few words with numbers in them.
template <typename... Values>
std::string words(const char* format, Values... values) {
    char text[240];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

void warnOfSymmetry(TTeachReport& report) {
    if (report.symmetry == 0) {
        report.warnings.push_back("the part looks the same at every angle: its angle can't be told");
    } else if (report.symmetry > 1) {
        report.warnings.push_back(
            words("the part looks the same after each %.4g degrees of a turn: its angle "
                  "is told up to that",
                  360.0 / report.symmetry));
    }
    if (report.nearSymmetry == 0) {
        report.warnings.push_back(
            words("the part looks nearly the same at every angle: %.0f %% of the outline is, the rest tells "
                  "the angle",
                  100 * report.nearShare));
    } else if (report.nearSymmetry > 1) {
        report.warnings.push_back(
            words("the part looks nearly the same after %.4g degrees: %.0f %% of the "
                  "outline is, the rest tells the angle",
                  360.0 / report.nearSymmetry, 100 * report.nearShare));
    }
}

void warnOfFreedom(TTeachReport& report) {
    if (report.anglesAreFree && report.symmetry != 0) {
        report.warnings.push_back(
            words("the outline can be turned along itself about (%.1f, %.1f): angle and "
                  "place are told only together",
                  report.symmetryCentre.x, report.symmetryCentre.y));
    }
    if (report.aShiftIsFree) {
        report.warnings.push_back(
            words("the outline can be shifted along itself, in the direction of %.1f "
                  "degrees: the place is told only across",
                  report.freeDirection));
    }
    if (report.scaleIsFree) {
        report.warnings.push_back("the outline looks the same at other scales: its scale can't be told");
    }
}

void warnOfWeakness(const ModelData& model, TTeachReport& report) {
    if (model.contrast > 0 && report.leastContrast < kWeakContrast) {
        report.warnings.push_back(
            words("part of the outline is weak: %.0f grey levels of contrast", report.leastContrast));
    }
    const double extent = boundsOf(model.outline).extent();
    if (extent < 2 * kSmallRadius) {
        report.warnings.push_back(words("the part is small: %.0f pixels", extent));
    }
}

}  // namespace

TPartModel refusedModel(TMatchStatus status) {
    auto data = std::make_shared<ModelData>();
    data->report.status = status;
    return TPartModel(data);
}

bool takesModel(const TPartModel& model, const char* function) {
    return model.valid() ||
           refuse(rcNotReady, function, "there is no model: %s", matchStatusText(model.report().status));
}

TMatchStatus checkCount(std::size_t points) {
    if (points >= kLeastPoints && points <= kMostPoints) return msOk;
    const bool isFew = points < kLeastPoints;
    refuse(isFew ? rcTooFew : rcTooMany, "teachPart", "the outline has %zu points; %zu to %zu are taken",
           points, kLeastPoints, kMostPoints);
    return isFew ? msTooFewEdges : msTooLarge;
}

void completeReport(ModelData& model) {
    TTeachReport& report = model.report;
    report.pointsPerLevel.clear();
    for (const ModelLevel& level : model.levels) {
        report.pointsPerLevel.push_back(static_cast<int>(level.points.size()));
    }
    report.leastContrast = contrastQuantile(model.outline, 0.05);
    for (const OutlinePoint& point : model.outline) {
        report.radius = std::max(report.radius, std::hypot(point.position.x, point.position.y));
    }
    const MatchedOutline outline(model.outline, model.signsAreKnown);
    const Symmetry symmetry = findSymmetry(outline);
    report.symmetry = symmetry.order;
    report.nearSymmetry = symmetry.nearOrder;
    report.nearShare = symmetry.nearShare;
    const Freedom freedom = findFreedom(outline);
    report.anglesAreFree = freedom.turn;
    report.aShiftIsFree = freedom.shift;
    report.freeDirection = freedom.direction;
    report.scaleIsFree = freedom.scale;
    if (symmetry.order != 1 || symmetry.nearOrder != 1) {
        report.symmetryCentre = symmetry.centre;
    } else if (freedom.turn) {
        report.symmetryCentre = freedom.centre;
    }
    warnOfSymmetry(report);
    warnOfFreedom(report);
    warnOfWeakness(model, report);
    report.status = msOk;
}

}  // namespace orx::matching
