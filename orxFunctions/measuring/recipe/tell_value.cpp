#include "orxFunctions/measuring/recipe/tell_value.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/measuring/recipe/tell_form.h"
#include "orxFunctions/measuring/recipe/value_kinds.h"

namespace orx::recipes {
namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

TMeasuredValue told(double value, double variance, double degreesOfFreedom) {
    return {rsOk, value, std::sqrt(std::max(0.0, variance)), degreesOfFreedom, false};
}

double squared(double x) { return x * x; }

// Welch and Satterthwaite's degrees of freedom of a sum (JCGM 100:2008, G.4).
double freedomOf(double varianceA, double freedomA, double varianceB, double freedomB) {
    const auto term = [](double variance, double freedom) {
        return variance > 0.0 ? variance * variance / freedom : 0.0;
    };
    const double terms = term(varianceA, freedomA) + term(varianceB, freedomB);
    return terms > 0.0 ? squared(varianceA + varianceB) / terms : kInfinite;
}

// The shapes and the pose of a space, as they are (-1) or by a shift of the calibration.
class Scene {
  public:
    Scene(const ValueSpec& asked, const Place& place, const std::vector<MeasuredFeature>& features,
          bool millimetres)
        : spec_(asked),
          features_(features),
          millimetres_(millimetres),
          pose_(millimetres ? place.millimetres : place.pixels) {}

    const Shape& shape(std::size_t i, int shift) const {
        const SpaceShape& space = features_[static_cast<std::size_t>(spec_.of[i])].in(millimetres_);
        return shift < 0 ? space.shape : space.shifted[static_cast<std::size_t>(shift)];
    }
    const UncertainPose& uncertainPose() const { return pose_; }
    const TPartPose& pose(int shift) const {
        return shift < 0 ? pose_.pose : pose_.shifted[static_cast<std::size_t>(shift)];
    }

  private:
    const ValueSpec& spec_;
    const std::vector<MeasuredFeature>& features_;
    bool millimetres_;
    const UncertainPose& pose_;
};

TMeasuredValue ofEllipse(double halfAxis, double deviation, const TMeasuredEllipse& ellipse) {
    return told(2.0 * halfAxis, squared(2.0 * deviation), ellipse.degreesOfFreedom);
}

TMeasuredValue distanceOf(const Shape& a, const Shape& b, Section section) {
    if (a.kind == fkLine && b.kind == fkLine) {
        const TLineDistance all = distance(a.line, b.line);
        return section == Section::kLeast     ? all.least
               : section == Section::kLargest ? all.largest
                                              : all.middle;
    }
    if (a.kind == fkLine) return distance(placeOf(b), a.line);
    if (b.kind == fkLine) return distance(placeOf(a), b.line);
    return distance(placeOf(a), placeOf(b));
}

// A coordinate in the part's frame; what the pose leaves open is taken for independent of the feature.
TMeasuredValue coordinateOf(const Scene& scene, bool inPart, int axis, int shift) {
    TMeasuredPoint point = placeOf(scene.shape(0, shift));
    if (inPart) {
        const TPartPose& pose = scene.pose(shift);
        const cv::Point2d own = applyPose(invertPose(pose), point.position);
        const cv::Matx22d sum =
            point.covariance + mappedCovariance(pose, scene.uncertainPose().covariance, own);
        const double turn = radians(pose.angle);
        const cv::Matx22d back(std::cos(turn), std::sin(turn), -std::sin(turn), std::cos(turn));
        point.covariance = back * sum * back.t() * (1.0 / squared(pose.scale));
        point.position = own;
    }
    return told(axis == 0 ? point.position.x : point.position.y, point.covariance(axis, axis),
                point.degreesOfFreedom);
}

// From the frame's x axis, (-90, 90].
TMeasuredValue directionOf(const Scene& scene, bool inPart, int shift) {
    const Shape& shape = scene.shape(0, shift);
    const bool isLine = shape.kind == fkLine;
    double value = isLine ? shape.line.angle : shape.ellipse.angle;
    const double deviation = isLine ? shape.line.angleDeviation : shape.ellipse.angleDeviation;
    double variance = squared(deviation);
    if (inPart) {
        value -= scene.pose(shift).angle;
        variance += scene.uncertainPose().covariance(2, 2);
    }
    value = std::remainder(value, 180.0);
    return told(value <= -90.0 ? value + 180.0 : value, variance,
                isLine ? shape.line.degreesOfFreedom : shape.ellipse.degreesOfFreedom);
}

TMeasuredValue ofPose(ValueKind kind, const Scene& scene, int shift) {
    const TPartPose& pose = scene.pose(shift);
    const UncertainPose& all = scene.uncertainPose();
    const auto at = [&](double value, int i) {
        return told(value, all.covariance(i, i), all.degreesOfFreedom);
    };
    if (kind == ValueKind::kPartX) return at(pose.x, 0);
    if (kind == ValueKind::kPartY) return at(pose.y, 1);
    if (kind == ValueKind::kPartAngle) return at(std::remainder(pose.angle, 360.0), 2);
    return at(pose.scale, 3);
}

TMeasuredValue evaluate(const ValueSpec& asked, const Scene& scene, int shift) {
    const auto shape = [&](std::size_t i) -> const Shape& { return scene.shape(i, shift); };
    switch (asked.kind) {
        case ValueKind::kDiameter:
        case ValueKind::kRadius: {
            const double factor = asked.kind == ValueKind::kDiameter ? 2.0 : 1.0;
            const TMeasuredCircle& circle = shape(0).circle;
            return told(factor * circle.radius, squared(factor * circle.radiusDeviation),
                        circle.degreesOfFreedom);
        }
        case ValueKind::kMajorDiameter:
            return ofEllipse(shape(0).ellipse.semiMajor, shape(0).ellipse.semiMajorDeviation,
                             shape(0).ellipse);
        case ValueKind::kMinorDiameter:
            return ofEllipse(shape(0).ellipse.semiMinor, shape(0).ellipse.semiMinorDeviation,
                             shape(0).ellipse);
        case ValueKind::kX:
        case ValueKind::kY:
            return coordinateOf(scene, asked.inPart, asked.kind == ValueKind::kX ? 0 : 1, shift);
        case ValueKind::kLength:
            return shape(0).length;
        case ValueKind::kWidth:
            return shape(0).width;
        case ValueKind::kDistance:
            return distanceOf(shape(0), shape(1), asked.section);
        case ValueKind::kGap:
            return gap(shape(0).circle, shape(1).circle);
        case ValueKind::kAngle:
            return asked.of.size() == 1 ? directionOf(scene, asked.inPart, shift)
                                        : angle(shape(0).line, shape(1).line);
        case ValueKind::kParallelism:
            return parallelism(shape(0).line, shape(1).line);
        case ValueKind::kPerpendicularity:
            return perpendicularity(shape(0).line, shape(1).line);
        case ValueKind::kConcentricity:
            return concentricity(shape(0).circle, shape(1).circle);
        default:
            return ofPose(asked.kind, scene, shift);
    }
}

// Why the value can't be told; empty where it can.
std::string obstacle(const ValueSpec& asked, const RecipeData& recipe, const Place& place,
                     const std::vector<MeasuredFeature>& features) {
    for (const int i : asked.of) {
        const MeasuredFeature& feature = features[static_cast<std::size_t>(i)];
        const std::string name = "\"" + recipe.features[static_cast<std::size_t>(i)].name + "\" ";
        if (!feature.measured) return name + "was not measured: " + feature.problem;
        if (!feature.in(asked.inMillimetres).valid)
            return name + "was not measured: " + feature.in(asked.inMillimetres).problem;
    }
    const bool isFramed = hasFrame(asked.kind, asked.of.size()) && asked.inPart;
    if (!isFramed && !isOfPart(asked.kind)) return "";
    if (asked.inMillimetres && !place.hasMillimetres) return "the part lies off the calibrated plane";
    const bool anyPlace = std::isfinite(place.told.deviationX) && std::isfinite(place.told.deviationY);
    const bool anyAngle = std::isfinite(place.told.deviationAngle);
    const bool wantsPlace = asked.kind != ValueKind::kPartAngle && asked.kind != ValueKind::kAngle &&
                            asked.kind != ValueKind::kScore && asked.kind != ValueKind::kPartScale;
    const bool wantsAngle = isFramed || asked.kind == ValueKind::kPartAngle;
    if (wantsPlace && !anyPlace) return "the part's outline can't tell its place";
    if (wantsAngle && !anyAngle) return "the part's outline can't tell its angle";
    return "";
}

double turnOf(ValueKind kind) {
    return kind == ValueKind::kPartAngle ? 360.0 : kind == ValueKind::kAngle ? 180.0 : 0.0;
}

// The variance that the calibration's covariance makes.
double calibrationVariance(const ValueSpec& asked, const Scene& scene, int shifts, double value) {
    double variance = 0.0;
    for (int k = 0; k < shifts; ++k) {
        const TMeasuredValue by = evaluate(asked, scene, k);
        if (!by.valid()) continue;  // so near a border that the value itself hardly is told
        const double turn = turnOf(asked.kind);
        const double change = by.value - value;
        variance += squared(turn > 0.0 ? std::remainder(change, turn) : change);
    }
    return variance;
}

// Angles come round: the one that is nearest to what the value should be.
double unwrapped(const ValueSpec& asked, double value) {
    if (asked.kind == ValueKind::kAngle && asked.of.size() == 2) return value;
    const TTolerance& limits = asked.target.tolerance;
    const bool bothLimits = std::isfinite(limits.lower) && std::isfinite(limits.upper);
    if (turnOf(asked.kind) == 0.0 || !(asked.target.hasNominal || bothLimits)) return value;
    const double middle = bothLimits ? (limits.lower + limits.upper) / 2.0 : asked.target.nominal;
    return middle + std::remainder(value - middle, turnOf(asked.kind));
}

// Without a calibration: of what the recipe measured itself.
TMeasuredValue scoreOf(const Place& place) { return told(place.told.score, 0.0, kInfinite); }

bool isForm(ValueKind kind) { return kind == ValueKind::kRoundness || kind == ValueKind::kStraightness; }

void judgeValue(const ValueSpec& asked, double confidence, TRecipeValue& value) {
    const TJudgement judgement =
        judge(value.value, value.deviation, value.degreesOfFreedom, asked.target.tolerance, confidence);
    value.verdict = judgement.verdict;
    value.conformity = judgement.conformity;
    value.guard = judgement.guard;
}

}  // namespace

TRecipeValue emptyValue(const ValueSpec& asked) {
    TRecipeValue value;
    value.name = asked.target.name;
    value.type = asked.target.type;
    value.unit = asked.target.unit;
    value.hasNominal = asked.target.hasNominal;
    value.nominal = asked.target.nominal;
    value.tolerance = asked.target.tolerance;
    value.conformity = std::numeric_limits<double>::quiet_NaN();
    return value;
}

TRecipeValue tellValue(const RecipeData& recipe, const ValueSpec& asked, const Place& place,
                       const std::vector<MeasuredFeature>& features) {
    TRecipeValue value = emptyValue(asked);
    value.problem = obstacle(asked, recipe, place, features);
    if (!value.problem.empty()) return value;
    const Plane* plane = asked.inMillimetres ? recipe.plane.get() : nullptr;
    const Scene scene(asked, place, features, asked.inMillimetres);
    TMeasuredValue measured;
    double calibration = 0.0;
    if (isForm(asked.kind)) {
        const MeasuredFeature& feature = features[static_cast<std::size_t>(asked.of[0])];
        measured = tellForm(asked.kind == ValueKind::kRoundness, feature, plane, calibration, value.problem);
    } else if (asked.kind == ValueKind::kScore) {
        measured = scoreOf(place);
    } else {
        measured = evaluate(asked, scene, -1);
        if (plane != nullptr && measured.valid())
            calibration = calibrationVariance(asked, scene, plane->shifts(), measured.value);
    }
    if (!measured.valid()) {
        if (value.problem.empty()) value.problem = relationStatusText(measured.status);
        return value;
    }
    const double own = squared(measured.deviation);
    const double added = squared(asked.addedDeviation);
    value.measured = true;
    value.value = unwrapped(asked, measured.value);
    value.deviation = std::sqrt(own + calibration + added);
    value.calibrationDeviation = std::sqrt(calibration);
    const double freedom = freedomOf(own, measured.degreesOfFreedom, calibration,
                                     plane != nullptr ? plane->degreesOfFreedom() : kInfinite);
    value.degreesOfFreedom = freedomOf(own + calibration, freedom, added, kInfinite);
    judgeValue(asked, recipe.confidence, value);
    if (value.verdict == vdNotMeasured) {
        value.measured = false;
        value.problem = "its uncertainty is not known";
    }
    return value;
}

}  // namespace orx::recipes
