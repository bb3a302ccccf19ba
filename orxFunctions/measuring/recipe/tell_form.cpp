#include "orxFunctions/measuring/recipe/tell_form.h"

#include <cmath>
#include <limits>

#include "orxFunctions/measuring/form.h"
#include "orxFunctions/measuring/recipe/calibration_shift.h"

namespace orx::recipes {
namespace {

TFormOptions formOptions(const EdgePoints& edges, const PlacedPoints& placed) {
    TFormOptions options;
    double squares = 0.0;
    for (const double d : placed.deviations) squares += d * d;
    options.noise = std::sqrt(squares / static_cast<double>(placed.deviations.size()));
    options.pointNoise = edges.noise;
    options.smoothing = edges.smoothing;
    return options;
}

// The zone as a shape, to see how the calibration moves it.
Shape zoneShape(const TRoundness& zone, double size) {
    Shape shape;
    shape.kind = fkCircle;
    shape.circle.center = zone.center * size;
    shape.circle.radius = 0.5 * (zone.innerRadius + zone.outerRadius) * size;
    return shape;
}

Shape zoneShape(const TStraightness& zone, double size) {
    Shape shape;
    shape.kind = fkLine;
    shape.line.point = zone.point * size;
    shape.line.direction = zone.direction;
    return shape;
}

template <class Zone>
TMeasuredValue valueOf(const Zone& zone, const EdgePoints& edges, double size, const Plane* plane,
                       double& calibration, std::string& problem) {
    TMeasuredValue value;
    if (!zone.valid()) {
        problem = fitStatusText(zone.status);
        return value;
    }
    value.status = rsOk;
    value.value = zone.freed * size;
    value.deviation = zone.deviation * size;
    value.degreesOfFreedom = std::numeric_limits<double>::infinity();
    calibration = 0.0;
    if (plane == nullptr) return value;
    for (const double shift : formShifts(zoneShape(zone, size), edges, {}, *plane))
        calibration += shift * shift;
    return value;
}

}  // namespace

TMeasuredValue tellForm(bool roundness, const MeasuredFeature& feature, const Plane* plane,
                        double& calibration, std::string& problem) {
    const PlacedPoints placed = placedPoints(feature.edges, plane);
    if (placed.points.empty()) {
        problem = "has no place on the calibrated plane";
        return {};
    }
    const TFormOptions options = formOptions(feature.edges, placed);
    if (roundness)
        return valueOf(minimumZoneCircle(placed.points, options), feature.edges, placed.size, plane,
                       calibration, problem);
    return valueOf(minimumZoneLine(placed.points, options), feature.edges, placed.size, plane, calibration,
                   problem);
}

}  // namespace orx::recipes
