#include "orxFunctions/measuring/relations.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr double kTold = 3.0;  // deviations

double squared(double x) { return x * x; }

// A share of a variance, and how well it is known.
struct Share {
    double variance;
    double degreesOfFreedom;
};

double freedomOf(const Share& a, const Share& b) {
    const auto term = [](const Share& s) {
        return s.variance > 0.0 ? s.variance * s.variance / s.degreesOfFreedom : 0.0;
    };
    const double terms = term(a) + term(b);
    const double freedom = squared(a.variance + b.variance) / terms;
    return terms > 0.0 ? freedom : std::numeric_limits<double>::infinity();
}

TMeasuredValue valueOf(double value, const Share& a, const Share& b) {
    const double deviation = std::sqrt(std::max(0.0, a.variance + b.variance));
    return {rsOk, value, deviation, freedomOf(a, b), false};
}

void refuseStatus(TRelationStatus status, const char* function) {
    const bool isDegenerate = status == rsParallel || status == rsNotParallel;
    refuse(status == rsNoShape ? rcNotReady
           : isDegenerate      ? rcDegenerate
                               : rcNoResult,
           function, "%s", relationStatusText(status));
}

template <class... Shapes>
bool areValid(const char* function, const Shapes&... shapes) {
    if ((shapes.valid() && ...)) return true;
    refuseStatus(rsNoShape, function);
    return false;
}

// What tells nothing but why.
template <class Result>
Result refused(TRelationStatus status, const char* function) {
    refuseStatus(status, function);
    Result none;
    none.status = status;
    return none;
}

bool isNear(double value, double end, double deviation) { return std::abs(value - end) < kTold * deviation; }

double varianceAlong(const cv::Matx22d& covariance, cv::Point2d unit) {
    return squared(unit.x) * covariance(0, 0) + 2.0 * unit.x * unit.y * covariance(0, 1) +
           squared(unit.y) * covariance(1, 1);
}

Share shareAt(const TMeasuredLine& line, double along) {
    return {squared(line.deviationAt(along)), line.degreesOfFreedom};
}

// Of the angle, radians.
Share angleShare(const TMeasuredLine& line) {
    return {squared(radians(line.angleDeviation)), line.degreesOfFreedom};
}

// Of `center` times the centre's place along a unit vector plus `radius` times the radius.
Share circleShare(const TMeasuredCircle& circle, cv::Point2d unit, double radius) {
    const cv::Vec3d factors(unit.x, unit.y, radius);
    return {factors.dot(circle.covariance * factors), circle.degreesOfFreedom};
}

double placeAlong(const TMeasuredLine& line, cv::Point2d p) { return (p - line.point).dot(line.direction); }

// From the direction of a to that of b as lines, radians in (-pi / 2, pi / 2].
double angleBetween(const TMeasuredLine& a, const TMeasuredLine& b) {
    double sine = a.direction.cross(b.direction);
    double cosine = a.direction.dot(b.direction);
    if (cosine < 0.0) {
        sine = -sine;
        cosine = -cosine;
    }
    return std::atan2(sine, cosine);
}

// Where two outlines cross that may each move across themselves, along their unit normals.
TMeasuredPoint crossingAt(cv::Point2d position, cv::Point2d normalA, const Share& a, cv::Point2d normalB,
                          const Share& b) {
    const double det = normalA.cross(normalB);
    const cv::Vec2d byA(normalB.y / det, -normalB.x / det);
    const cv::Vec2d byB(-normalA.y / det, normalA.x / det);
    TMeasuredPoint point;
    point.status = rsOk;
    point.position = position;
    point.covariance = a.variance * (byA * byA.t()) + b.variance * (byB * byB.t());
    point.degreesOfFreedom = freedomOf({a.variance * byA.dot(byA), a.degreesOfFreedom},
                                       {b.variance * byB.dot(byB), b.degreesOfFreedom});
    return point;
}

// How a length across the line midway between two lines is cut out of them.
class Section {
  public:
    Section(const TMeasuredLine& a, const TMeasuredLine& b) : a_(a), b_(b) {
        const cv::Point2d turned = a.direction.dot(b.direction) < 0.0 ? -b.direction : b.direction;
        const cv::Point2d sum = a.direction + turned;
        along_ = sum / cv::norm(sum);
        across_ = {-along_.y, along_.x};
        from_ = std::max(least(a), least(b));
        to_ = std::min(largest(a), largest(b));
    }

    bool isEmpty() const { return !(from_ < to_); }
    double from() const { return from_; }
    double to() const { return to_; }
    double middle() const { return (from_ + to_) / 2.0; }

    // From a to b, signed.
    TMeasuredValue at(double place) const {
        const Cut first = cut(a_, place);
        const Cut second = cut(b_, place);
        return valueOf(second.height - first.height, first.share, second.share);
    }
    // The variance of the difference of the lengths at both ends.
    double slopeVariance() const {
        return squared(to_ - from_) * (angleShare(a_).variance + angleShare(b_).variance);
    }

  private:
    struct Cut {
        double height;
        Share share;
    };

    cv::Point2d relative(cv::Point2d p) const { return p - a_.point; }
    double endOf(const TMeasuredLine& line, double along) const {
        return relative(line.point + along * line.direction).dot(along_);
    }
    double least(const TMeasuredLine& line) const {
        return std::min(endOf(line, line.from), endOf(line, line.to));
    }
    double largest(const TMeasuredLine& line) const {
        return std::max(endOf(line, line.from), endOf(line, line.to));
    }

    Cut cut(const TMeasuredLine& line, double place) const {
        const double cosine = line.direction.dot(along_);
        const double along = (place - relative(line.point).dot(along_)) / cosine;
        Share share = shareAt(line, along);
        share.variance /= cosine * cosine;
        return {relative(line.point + along * line.direction).dot(across_), share};
    }

    const TMeasuredLine& a_;
    const TMeasuredLine& b_;
    cv::Point2d along_;
    cv::Point2d across_;
    double from_ = 0.0;
    double to_ = 0.0;
};

TMeasuredValue withoutSign(TMeasuredValue value) {
    value.value = std::abs(value.value);
    value.folded = isNear(value.value, 0.0, value.deviation);
    return value;
}

TMeasuredValue times(TMeasuredValue value, double factor) {
    value.value *= factor;
    value.deviation *= factor;
    return value;
}

// The height of the line's stretch over a direction, from which it departs by an angle in radians.
TMeasuredValue heightOf(const TMeasuredLine& line, const TMeasuredLine& datum, double departure) {
    const double length = line.to - line.from;
    const double cosine = std::cos(departure);
    const auto scaled = [&](Share share) {
        share.variance *= squared(length * cosine);
        return share;
    };
    return withoutSign(
        valueOf(length * std::sin(departure), scaled(angleShare(line)), scaled(angleShare(datum))));
}

cv::Point2d unitFrom(cv::Point2d from, cv::Point2d to) {
    const double length = cv::norm(to - from);
    return length > 0.0 ? (to - from) / length : cv::Point2d(1.0, 0.0);
}

TMeasuredValue gapOf(const TMeasuredCircle& a, const TMeasuredCircle& b) {
    const double between = cv::norm(b.center - a.center);
    const cv::Point2d unit = unitFrom(a.center, b.center);
    const double outside = between - a.radius - b.radius;
    const double inside = std::abs(a.radius - b.radius) - between;
    if (outside >= inside) {
        return valueOf(outside, circleShare(a, -unit, -1.0), circleShare(b, unit, -1.0));
    }
    const double larger = a.radius > b.radius ? 1.0 : -1.0;
    TMeasuredValue value = valueOf(inside, circleShare(a, unit, larger), circleShare(b, -unit, -larger));
    // The gap all round is widest on the other side; with the centres as good as one, where is not told.
    const double apart = std::sqrt(varianceAlong(a.covariance.get_minor<2, 2>(0, 0), unit) +
                                   varianceAlong(b.covariance.get_minor<2, 2>(0, 0), unit));
    value.folded = isNear(between, 0.0, apart);
    return value;
}

TMeasuredValue heightAbove(const TMeasuredPoint& point, const TMeasuredLine& line) {
    return valueOf(line.signedDistance(point.position),
                   {varianceAlong(point.covariance, line.normal()), point.degreesOfFreedom},
                   shareAt(line, placeAlong(line, point.position)));
}

// Signed, degrees.
TMeasuredValue turnBetween(const TMeasuredLine& a, const TMeasuredLine& b) {
    return times(valueOf(angleBetween(a, b), angleShare(a), angleShare(b)), 180.0 / kPi);
}

}  // namespace

const char* relationStatusText(TRelationStatus status) {
    switch (status) {
        case rsOk:
            return "ok";
        case rsNoShape:
            return "a shape is not valid";
        case rsParallel:
            return "the lines are parallel within their uncertainty";
        case rsNotParallel:
            return "the lines are more than 45 degrees apart";
        case rsNoCommonStretch:
            return "the lines do not lie side by side";
        case rsApart:
            return "the shapes do not meet";
        case rsTouching:
            return "the shapes touch within their uncertainty";
    }
    return "unknown status";
}

TMeasuredPoint centerOf(const TMeasuredCircle& circle) {
    if (!areValid("centerOf", circle)) return {};
    return {rsOk, circle.center, circle.covariance.get_minor<2, 2>(0, 0), circle.degreesOfFreedom};
}

TMeasuredPoint centerOf(const TMeasuredEllipse& ellipse) {
    if (!areValid("centerOf", ellipse)) return {};
    return {rsOk, ellipse.center, ellipse.covariance.get_minor<2, 2>(0, 0), ellipse.degreesOfFreedom};
}

TMeasuredPoint pointOn(const TMeasuredLine& line, double along) {
    if (!areValid("pointOn", line)) return {};
    const cv::Vec2d normal(line.normal().x, line.normal().y);
    const Share share = shareAt(line, along);
    return {rsOk, line.point + along * line.direction, share.variance * (normal * normal.t()),
            share.degreesOfFreedom};
}

TMeasuredValue distance(const TMeasuredPoint& a, const TMeasuredPoint& b) {
    if (!areValid("distance", a, b)) return {};
    const cv::Point2d unit = unitFrom(a.position, b.position);
    TMeasuredValue value =
        valueOf(cv::norm(b.position - a.position), {varianceAlong(a.covariance, unit), a.degreesOfFreedom},
                {varianceAlong(b.covariance, unit), b.degreesOfFreedom});
    const Share all{cv::trace(a.covariance), a.degreesOfFreedom};
    const Share others{cv::trace(b.covariance), b.degreesOfFreedom};
    const TMeasuredValue whole = valueOf(value.value, all, others);
    if (!isNear(value.value, 0.0, std::max(value.deviation, whole.deviation / std::sqrt(2.0)))) return value;
    value = whole;
    value.folded = true;
    return value;
}

TMeasuredValue signedDistance(const TMeasuredPoint& point, const TMeasuredLine& line) {
    return areValid("signedDistance", point, line) ? heightAbove(point, line) : TMeasuredValue();
}

TMeasuredValue distance(const TMeasuredPoint& point, const TMeasuredLine& line) {
    return areValid("distance", point, line) ? withoutSign(heightAbove(point, line)) : TMeasuredValue();
}

TLineDistance distance(const TMeasuredLine& a, const TMeasuredLine& b) {
    const auto all = [](TRelationStatus status) {
        const auto none = refused<TMeasuredValue>(status, "distance");
        return TLineDistance{none, none, none};
    };
    if (!areValid("distance", a, b)) return {};
    if (std::abs(angleBetween(a, b)) > kPi / 4.0) return all(rsNotParallel);
    const Section section(a, b);
    if (section.isEmpty()) return all(rsNoCommonStretch);
    const TMeasuredValue first = section.at(section.from());
    const TMeasuredValue last = section.at(section.to());
    TLineDistance result;
    result.middle = withoutSign(section.at(section.middle()));
    const bool firstIsLess = std::abs(first.value) <= std::abs(last.value);
    result.least = withoutSign(firstIsLess ? first : last);
    result.largest = withoutSign(firstIsLess ? last : first);
    const bool alike = isNear(first.value, last.value, std::sqrt(section.slopeVariance()));
    result.least.folded = result.least.folded || alike;
    result.largest.folded = result.largest.folded || alike;
    if (first.value * last.value < 0.0) {
        result.least.value = 0.0;
        result.least.folded = true;
    }
    return result;
}

TMeasuredValue distance(const TMeasuredCircle& a, const TMeasuredCircle& b) {
    return areValid("distance", a, b) ? distance(centerOf(a), centerOf(b)) : TMeasuredValue();
}

TMeasuredValue gap(const TMeasuredCircle& a, const TMeasuredCircle& b) {
    return areValid("gap", a, b) ? gapOf(a, b) : TMeasuredValue();
}

TMeasuredValue signedAngle(const TMeasuredLine& a, const TMeasuredLine& b) {
    return areValid("signedAngle", a, b) ? turnBetween(a, b) : TMeasuredValue();
}

TMeasuredValue angle(const TMeasuredLine& a, const TMeasuredLine& b) {
    if (!areValid("angle", a, b)) return {};
    TMeasuredValue value = withoutSign(turnBetween(a, b));
    value.folded = value.folded || isNear(value.value, 90.0, value.deviation);
    return value;
}

TMeasuredValue parallelism(const TMeasuredLine& line, const TMeasuredLine& datum) {
    if (!areValid("parallelism", line, datum)) return {};
    return heightOf(line, datum, angleBetween(datum, line));
}

TMeasuredValue perpendicularity(const TMeasuredLine& line, const TMeasuredLine& datum) {
    if (!areValid("perpendicularity", line, datum)) return {};
    return heightOf(line, datum, kPi / 2.0 - std::abs(angleBetween(datum, line)));
}

TMeasuredValue concentricity(const TMeasuredCircle& circle, const TMeasuredCircle& datum) {
    return areValid("concentricity", circle, datum) ? times(distance(circle, datum), 2.0) : TMeasuredValue();
}

TMeasuredPoint intersection(const TMeasuredLine& a, const TMeasuredLine& b) {
    if (!areValid("intersection", a, b)) return {};
    const TMeasuredValue between = turnBetween(a, b);
    const double det = a.direction.cross(b.direction);
    if (det == 0.0 || isNear(between.value, 0.0, between.deviation))
        return refused<TMeasuredPoint>(rsParallel, "intersection");
    const double along = (b.point - a.point).cross(b.direction) / det;
    const cv::Point2d at = a.point + along * a.direction;
    return crossingAt(at, a.normal(), shareAt(a, along), b.normal(), shareAt(b, placeAlong(b, at)));
}

TIntersections intersections(const TMeasuredLine& line, const TMeasuredCircle& circle) {
    constexpr const char* kFunction = "intersections";
    if (!areValid(kFunction, line, circle)) return {};
    const double height = line.signedDistance(circle.center);
    const double along = placeAlong(line, circle.center);
    // How far the line reaches into the circle.
    const double side = height < 0.0 ? -1.0 : 1.0;
    const TMeasuredValue depth = valueOf(circle.radius - std::abs(height), shareAt(line, along),
                                         circleShare(circle, -side * line.normal(), 1.0));
    if (isNear(depth.value, 0.0, depth.deviation) || depth.value == 0.0)
        return refused<TIntersections>(rsTouching, kFunction);
    if (depth.value < 0.0) return refused<TIntersections>(rsApart, kFunction);
    const double half = std::sqrt(depth.value * (circle.radius + std::abs(height)));
    TIntersections result;
    result.status = rsOk;
    for (const double place : {along - half, along + half}) {
        const cv::Point2d at = line.point + place * line.direction;
        const cv::Point2d outwards = unitFrom(circle.center, at);
        result.points.push_back(crossingAt(at, line.normal(), shareAt(line, place), outwards,
                                           circleShare(circle, outwards, 1.0)));
    }
    return result;
}

TIntersections intersections(const TMeasuredCircle& a, const TMeasuredCircle& b) {
    constexpr const char* kFunction = "intersections";
    if (!areValid(kFunction, a, b)) return {};
    const TMeasuredValue between = gapOf(a, b);
    if (isNear(between.value, 0.0, between.deviation) || between.value == 0.0)
        return refused<TIntersections>(rsTouching, kFunction);
    if (between.value > 0.0) return refused<TIntersections>(rsApart, kFunction);
    const cv::Point2d unit = unitFrom(a.center, b.center);
    const double apart = cv::norm(b.center - a.center);
    const double along = (apart + (a.radius - b.radius) * (a.radius + b.radius) / apart) / 2.0;
    const double half = std::sqrt(std::max(0.0, (a.radius - along) * (a.radius + along)));
    TIntersections result;
    result.status = rsOk;
    for (const double side : {half, -half}) {
        const cv::Point2d at = a.center + along * unit + side * cv::Point2d(-unit.y, unit.x);
        const cv::Point2d fromA = unitFrom(a.center, at);
        const cv::Point2d fromB = unitFrom(b.center, at);
        result.points.push_back(
            crossingAt(at, fromA, circleShare(a, fromA, 1.0), fromB, circleShare(b, fromB, 1.0)));
    }
    return result;
}

}  // namespace orx
