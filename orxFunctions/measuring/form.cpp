#include "orxFunctions/measuring/form.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/fitting/fit_refusal_internal.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/measuring/zones/circle_zones.h"
#include "orxFunctions/measuring/zones/noise_share.h"
#include "orxFunctions/measuring/zones/strip_zone.h"
#include "orxFunctions/measuring/zones/zone_points.h"

namespace orx {
namespace {

using namespace zones;

bool optionsFit(const TFormOptions& options) {
    const bool chain = options.pointNoise == pnEdgeChain;
    return options.noise >= 0.0 && std::isfinite(options.noise) && options.pointNoise >= pnIndependent &&
           options.pointNoise <= pnEdgeChain &&
           (!chain || (options.smoothing >= 0.3 && options.smoothing <= 50.0));
}

template <class Point>
TFitStatus begin(const std::vector<Point>& given, std::size_t least, const TFormOptions& options,
                 ZonePoints& taken) {
    return optionsFit(options) ? take(given, least, taken) : fsBadOptions;
}

// Closed where the widest gap, seen from the centre, is no more than a few steps.
bool isClosed(const std::vector<OutlinePoint>& points) {
    std::vector<double> places;
    for (const OutlinePoint& p : points) places.push_back(p.place);
    std::sort(places.begin(), places.end());
    double gap = places.front() + 2.0 * kPi - places.back();
    for (std::size_t i = 1; i < places.size(); ++i) gap = std::max(gap, places[i] - places[i - 1]);
    constexpr double kWidest = 0.5;  // radians
    return gap < kWidest;
}

// Seen from the centre.
Outline ringOutline(const ZonePoints& taken, const Ring& ring) {
    Outline outline;
    double length = 0.0;
    for (std::size_t i = 0; i < taken.points.size(); ++i) {
        const cv::Point2d arm = taken.points[i] - ring.center;
        const double distance = cv::norm(arm);
        const cv::Point2d away = distance > 0.0 ? arm / distance : cv::Point2d(1.0, 0.0);
        outline.points.push_back({(distance - ring.inner) * taken.scale, away, std::atan2(arm.y, arm.x)});
        if (i > 0) length += cv::norm(taken.points[i] - taken.points[i - 1]);
    }
    outline.closed = isClosed(outline.points);
    outline.length = length * taken.scale;
    return outline;
}

Outline stripOutline(const ZonePoints& taken, const Strip& strip) {
    Outline outline;
    const cv::Point2d normal(-strip.direction.y, strip.direction.x);
    double length = 0.0;
    for (std::size_t i = 0; i < taken.points.size(); ++i) {
        const cv::Point2d arm = taken.points[i] - strip.point;
        const double along = arm.dot(strip.direction);
        outline.points.push_back({arm.dot(normal) * taken.scale, {along, 0.0}, along});
        if (i > 0) length += cv::norm(taken.points[i] - taken.points[i - 1]);
    }
    outline.length = length * taken.scale;
    return outline;
}

void takeOffNoise(const NoiseShare& share, TFormError& form) {
    form.freed = std::max(0.0, form.value - share.width);
    form.deviation = share.widthDeviation;
}

TRoundness roundness(const ZonePoints& taken, const Ring& ring, ZoneKind kind, const TFormOptions& options) {
    TRoundness result;
    result.status = fsOk;
    result.contacts = ring.contacts;
    result.center = taken.toPixels(ring.center);
    result.innerRadius = result.freedInner = ring.inner * taken.scale;
    result.outerRadius = result.freedOuter = ring.outer * taken.scale;
    result.value = result.freed = ring.width * taken.scale;
    if (options.noise == 0.0) return result;
    const NoiseShare share = noiseShare(ringOutline(taken, ring), kind, options);
    takeOffNoise(share, result);
    result.freedInner -= share.inner;
    result.freedOuter -= share.outer;
    result.innerDeviation = share.innerDeviation;
    result.outerDeviation = share.outerDeviation;
    return result;
}

template <class Point>
TRoundness circleZone(const char* function, const std::vector<Point>& given, std::size_t least, ZoneKind kind,
                      TFitStatus (*solve)(const Points&, Ring&), const TFormOptions& options) {
    TRoundness result;
    ZonePoints taken;
    result.status = begin(given, least, options, taken);
    if (!isFitted(result.status, function)) return result;
    Ring ring;
    result.status = solve(taken.points, ring);
    if (!isFitted(result.status, function)) return result;
    return roundness(taken, ring, kind, options);
}

void placeAlong(const ZonePoints& taken, Strip strip, TStraightness& result) {
    const cv::Point2d way = taken.points.back() - taken.points.front();
    if (way.dot(strip.direction) < 0.0) strip.direction = -strip.direction;
    double from = 0.0;
    double to = 0.0;
    for (const cv::Point2d& p : taken.points) {
        const double along = (p - strip.point).dot(strip.direction);
        from = std::min(from, along);
        to = std::max(to, along);
    }
    result.direction = strip.direction;
    result.angle = degrees(std::atan2(strip.direction.y, strip.direction.x));
    if (result.angle <= -180.0) result.angle = 180.0;
    result.point = taken.toPixels(strip.point + (from + to) / 2.0 * strip.direction);
    result.to = (to - from) / 2.0 * taken.scale;
    result.from = -result.to;
}

template <class Point>
TStraightness lineZone(const std::vector<Point>& given, const TFormOptions& options) {
    TStraightness result;
    ZonePoints taken;
    result.status = begin(given, 3, options, taken);
    if (!isFitted(result.status, "minimumZoneLine")) return result;
    const Strip strip = narrowestStrip(taken.points);
    placeAlong(taken, strip, result);
    result.contacts = strip.contacts;
    result.value = result.freed = strip.width * taken.scale;
    if (options.noise > 0.0)
        takeOffNoise(noiseShare(stripOutline(taken, strip), zkLeastWidth, options), result);
    return result;
}

}  // namespace

TRoundness minimumZoneCircle(const std::vector<cv::Point2d>& points, const TFormOptions& options) {
    return circleZone("minimumZoneCircle", points, 4, zkLeastWidth, narrowestRing, options);
}

TRoundness minimumZoneCircle(const std::vector<cv::Point2f>& points, const TFormOptions& options) {
    return circleZone("minimumZoneCircle", points, 4, zkLeastWidth, narrowestRing, options);
}

TRoundness minimumCircumscribedCircle(const std::vector<cv::Point2d>& points, const TFormOptions& options) {
    return circleZone("minimumCircumscribedCircle", points, 2, zkAround, smallestAround, options);
}

TRoundness minimumCircumscribedCircle(const std::vector<cv::Point2f>& points, const TFormOptions& options) {
    return circleZone("minimumCircumscribedCircle", points, 2, zkAround, smallestAround, options);
}

TRoundness maximumInscribedCircle(const std::vector<cv::Point2d>& points, const TFormOptions& options) {
    return circleZone("maximumInscribedCircle", points, 3, zkWithin, largestWithin, options);
}

TRoundness maximumInscribedCircle(const std::vector<cv::Point2f>& points, const TFormOptions& options) {
    return circleZone("maximumInscribedCircle", points, 3, zkWithin, largestWithin, options);
}

TStraightness minimumZoneLine(const std::vector<cv::Point2d>& points, const TFormOptions& options) {
    return lineZone(points, options);
}

TStraightness minimumZoneLine(const std::vector<cv::Point2f>& points, const TFormOptions& options) {
    return lineZone(points, options);
}

}  // namespace orx
