#include "orxFunctions/measuring/recipe/curve.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::recipes {
namespace {

constexpr int kRough = 64;  // pieces that tell the length

cv::Point2d polar(double angle) { return {std::cos(angle), std::sin(angle)}; }

bool isFinite(cv::Point2d p) { return std::isfinite(p.x) && std::isfinite(p.y); }

std::vector<cv::Point2d> sampled(const Curve& curve, const ToImage& toImage, std::size_t count) {
    std::vector<cv::Point2d> points;
    points.reserve(count);
    const double last = static_cast<double>(curve.closed ? count : count - 1);
    for (std::size_t i = 0; i < count; ++i) {
        points.push_back(toImage(curve.at(static_cast<double>(i) / last)));
        if (!isFinite(points.back())) return {};
    }
    return points;
}

}  // namespace

Curve lineCurve(cv::Point2d from, cv::Point2d to) {
    return {[=](double t) { return from + t * (to - from); }, false, false, {}};
}

Curve circleCurve(cv::Point2d center, double radius, double startAngle, double sweep) {
    const auto at = [=](double t) { return center + radius * polar(radians(startAngle + t * sweep)); };
    return {at, std::abs(sweep) >= 360.0, true, center};
}

Curve ellipseCurve(cv::Point2d center, double semiMajor, double semiMinor, double angle) {
    const cv::Point2d major = semiMajor * polar(radians(angle));
    const cv::Point2d minor = semiMinor * polar(radians(angle + 90.0));
    const auto at = [=](double t) {
        const double turn = 2.0 * kPi * t;
        return center + std::cos(turn) * major + std::sin(turn) * minor;
    };
    return {at, true, true, center};
}

Curve pathCurve(std::vector<cv::Point2d> path, bool closed) {
    if (closed) path.push_back(path.front());
    std::vector<double> places{0.0};
    for (std::size_t i = 1; i < path.size(); ++i) {
        places.push_back(places.back() + cv::norm(path[i] - path[i - 1]));
    }
    const auto at = [path = std::move(path), places = std::move(places)](double t) {
        const double place = t * places.back();
        const auto next = std::upper_bound(places.begin() + 1, places.end() - 1, place) - places.begin();
        const auto i = static_cast<std::size_t>(next);
        const double step = places[i] - places[i - 1];
        return path[i - 1] + (step > 0.0 ? (place - places[i - 1]) / step : 0.0) * (path[i] - path[i - 1]);
    };
    return {at, closed, false, {}};
}

Curve curveOf(const FeatureSpec& asked) {
    switch (asked.kind) {
        case fkCircle:
        case fkArc:
            return circleCurve(asked.center, asked.radius, asked.startAngle, asked.sweep);
        case fkEllipse:
            return ellipseCurve(asked.center, asked.semiMajor, asked.semiMinor, asked.angle);
        case fkChain:
            return pathCurve(asked.path, asked.closed);
        default:
            return lineCurve(asked.from, asked.to);
    }
}

double lengthOf(const std::vector<cv::Point2d>& polyline, bool closed) {
    double length = 0.0;
    for (std::size_t i = 1; i < polyline.size(); ++i) length += cv::norm(polyline[i] - polyline[i - 1]);
    if (closed && polyline.size() > 1) length += cv::norm(polyline.front() - polyline.back());
    return length;
}

std::vector<cv::Point2d> polylineOf(const Curve& curve, const ToImage& toImage, double spacing,
                                    std::size_t least, std::size_t most) {
    const double length = lengthOf(sampled(curve, toImage, kRough + 1), curve.closed);
    if (!(length > 0.0)) return {};
    const double steps = std::min(length / spacing, static_cast<double>(most) - 1.0);
    const auto count = static_cast<std::size_t>(std::lround(steps)) + (curve.closed ? 0 : 1);
    return sampled(curve, toImage, std::clamp(count, least, most));
}

std::vector<TEdgeProbe> probesAlong(const Curve& curve, const ToImage& toImage, double spacing,
                                    std::size_t least, std::size_t most) {
    const std::vector<cv::Point2d> points =
        polylineOf(curve, toImage, spacing, std::max<std::size_t>(3, least), most);
    const std::size_t count = points.size();
    std::vector<TEdgeProbe> probes;
    probes.reserve(count);
    const cv::Point2d inside = curve.hasInside ? toImage(curve.inside) : cv::Point2d();
    for (std::size_t i = 0; i < count; ++i) {
        // At the ends of what is open the neighbours of the inner point serve.
        const std::size_t middle = curve.closed ? i : std::clamp<std::size_t>(i, 1, count - 2);
        const cv::Point2d before = points[(middle + count - 1) % count];
        const cv::Point2d after = points[(middle + 1) % count];
        const cv::Point2d chord = after - before;
        const double length = cv::norm(chord);
        if (!(length > 0.0)) continue;
        TEdgeProbe probe;
        probe.point = points[i];
        probe.normal = cv::Point2d(-chord.y, chord.x) / length;
        if (curve.hasInside && probe.normal.dot(points[i] - inside) < 0.0) probe.normal = -probe.normal;
        const cv::Point2d bend = before + after - 2.0 * points[middle];
        probe.curvature = -4.0 * bend.dot(probe.normal) / (length * length);
        probes.push_back(probe);
    }
    return probes;
}

}  // namespace orx::recipes
