#include "orxFunctions/measuring/recipe/edge_points.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/fitting/geometric_fit.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/median_internal.h"

namespace orx::recipes {
namespace {

constexpr double kWidth = 5.0;  // of a caliper, pixels, where the recipe says nothing
// Where the recipe says nothing, calipers of short edges are narrower, so that there are about so many, and
// fewer rather than side by side too closely: neighbours would share pixels, and promise too much.
constexpr double kWanted = 12.0;
constexpr int kFewest = 8;

struct Calipers {
    int count;
    double width;
    TCaliperOptions options;
};

// As many as fit side by side, where the recipe says nothing: they do not share pixels then.
Calipers calipersFor(const FeatureSpec& feature, double length, int most) {
    Calipers calipers{};
    calipers.width = feature.width > 0.0 ? feature.width : std::clamp(length / kWanted - 1.0, 1.0, kWidth);
    const int sideBySide = static_cast<int>(length / (calipers.width + 1.0));
    calipers.count = feature.count > 0 ? feature.count : std::clamp(sideBySide, kFewest, 10000);
    if (most > 0) calipers.count = std::min(calipers.count, most);
    calipers.options = {feature.sigma, feature.minContrast, feature.polarity, esStrongest};
    return calipers;
}

void finish(EdgePoints& edges, const std::vector<double>& blurs) {
    edges.noise = pnNormal;
    edges.blur = medianOf(blurs);
}

// Calipers that stand around a circle of the picture.
struct Ring {
    cv::Point2d center;
    double radius;
    TCircleCaliperOptions options;
};

EdgePoints around(const Ring& ring, const Picture& picture, const FeatureSpec& feature) {
    EdgePoints edges;
    edges.searched = ring.options.count;
    edges.closed = std::abs(feature.sweep) >= 360.0;
    std::vector<double> blurs;
    for (const TContrastEdge& edge : getCircleEdges(picture.grey, ring.center, ring.radius, ring.options)) {
        if (!picture.holds(edge.position)) continue;
        edges.points.push_back(edge.position);
        edges.normals.push_back((edge.position - ring.center) / cv::norm(edge.position - ring.center));
        edges.deviations.push_back(caliperDeviation(edge, picture.noise, feature.sigma, ring.options.width));
        blurs.push_back(edge.blur);
    }
    finish(edges, blurs);
    return edges;
}

// The ring moved onto the circle that it saw, as far as its band reached. False where it stood there already,
// and where it saw none.
bool moveOnto(const EdgePoints& edges, Ring& ring) {
    constexpr double kThere = 0.1;  // pixels
    TFitOptions options;
    options.loss = flTukey;
    const TMeasuredCircle seen = fitCircleGeometric(edges.points, options);
    const double band = ring.options.searchLength / 2.0;
    if (!seen.valid() || cv::norm(seen.center - ring.center) > band) return false;
    if (std::abs(seen.radius - ring.radius) > band || cv::norm(seen.center - ring.center) < kThere)
        return false;
    ring.center = seen.center;
    ring.radius = seen.radius;
    return true;
}

// A circle of the picture; the calipers stand on the picture of the nominal one, which is as good as one, and
// then on the circle itself: the mean along the arc of a circle that stands aside sees only a part of how far
// aside, 0.993 of it where the arc is four tenths of the radius.
EdgePoints aroundCircle(const Picture& picture, const FeatureSpec& feature, const Frame& frame, int most) {
    const double turn = radians(feature.startAngle);
    const auto inImage = [&](double angle) {
        return frame.toImage(feature.center + feature.radius * cv::Point2d(std::cos(angle), std::sin(angle)));
    };
    const cv::Point2d center = frame.toImage(feature.center);
    const double radius = feature.radius * frame.scaleAt(feature.center);
    const cv::Point2d start = inImage(turn) - center;
    // A frame may be mirrored.
    const bool turnsOn = start.cross(inImage(turn + 0.1) - center) > 0.0;
    const Calipers calipers = calipersFor(feature, radians(std::abs(feature.sweep)) * radius, most);
    Ring ring{center, radius, {}};
    ring.options.edge = calipers.options;
    ring.options.count = calipers.count;
    ring.options.width = calipers.width;
    ring.options.searchLength = 2.0 * bandOf(feature, frame);
    ring.options.startAngle = degrees(std::atan2(start.y, start.x));
    ring.options.sweep = turnsOn ? feature.sweep : -feature.sweep;
    EdgePoints edges = around(ring, picture, feature);
    // Scouts need not be so exact.
    if (most > 0 || !moveOnto(edges, ring)) return edges;
    EdgePoints again = around(ring, picture, feature);
    return again.points.size() >= edges.points.size() ? again : edges;
}

// Along a line or another outline; what its bend does to edges under straight calipers is taken back.
EdgePoints acrossCurve(const Picture& picture, const FeatureSpec& feature, const Frame& frame, int most) {
    const Curve curve = curveOf(feature);
    const ToImage toImage = [&](cv::Point2d p) { return frame.toImage(p); };
    const double band = bandOf(feature, frame);
    const double length = lengthOf(polylineOf(curve, toImage, 4.0), curve.closed);
    const Calipers calipers = calipersFor(feature, length, most);
    EdgePoints edges;
    edges.searched = calipers.count;
    edges.closed = curve.closed;
    std::vector<double> blurs;
    std::vector<double> curvatures;
    const auto count = static_cast<std::size_t>(calipers.count);
    for (const TEdgeProbe& probe :
         probesAlong(curve, toImage, length / calipers.count, count, std::max<std::size_t>(3, count))) {
        const auto found =
            getContrastEdges(picture.grey, probe.point - band * probe.normal,
                             probe.point + band * probe.normal, calipers.width, calipers.options);
        if (found.empty() || !picture.holds(found.front().position)) continue;
        edges.points.push_back(found.front().position);
        edges.normals.push_back(probe.normal);
        edges.deviations.push_back(
            caliperDeviation(found.front(), picture.noise, feature.sigma, calipers.width));
        blurs.push_back(found.front().blur);
        curvatures.push_back(probe.curvature);
    }
    finish(edges, blurs);
    // A blurred outline lies inwards by curvature * blur^2 / 2 (analysis/caliper.h), and the mean over a
    // straight caliper's pixels by the mean square of their places.
    const double pixels = std::max(1.0, std::round(calipers.width));
    const double inwards = edges.blur * edges.blur / 2.0 + (pixels * pixels - 1.0) / 24.0;
    for (std::size_t i = 0; i < edges.points.size(); ++i) {
        edges.points[i] += curvatures[i] * inwards * edges.normals[i];
    }
    return edges;
}

}  // namespace

double bandOf(const FeatureSpec& feature, const Frame& frame) {
    const cv::Point2d at = feature.kind == fkLine || feature.kind == fkEdgePair
                               ? (feature.from + feature.to) / 2.0
                           : feature.kind == fkChain ? feature.path.front()
                                                     : feature.center;
    return feature.search * frame.scaleAt(at);
}

// White noise of the pixels, averaged over the width and smoothed by sigma: the second derivative of the
// profile at the edge has the variance noise^2 / width * 3 / (8 sqrt(pi) sigma^5), its slope there is that of
// a Gaussian of the total blur.
double caliperDeviation(const TContrastEdge& edge, double noise, double sigma, double width) {
    const double blur = std::sqrt(sigma * sigma + edge.blur * edge.blur);
    const double pixels = std::max(1.0, std::round(width));
    const double bend = noise * std::sqrt(3.0 / (8.0 * std::sqrt(kPi) * std::pow(sigma, 5) * pixels));
    return bend * std::sqrt(2.0 * kPi) * blur * blur * blur / std::max(1e-9, std::abs(edge.contrast));
}

EdgePoints caliperPoints(const Picture& picture, const FeatureSpec& feature, const Frame& frame, int most) {
    const bool isRound = feature.kind == fkCircle || feature.kind == fkArc;
    return isRound ? aroundCircle(picture, feature, frame, most) : acrossCurve(picture, feature, frame, most);
}

}  // namespace orx::recipes
