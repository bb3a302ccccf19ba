#include "orxFunctions/analysis/contour_edges.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "orxFunctions/analysis/edge_places_internal.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/option_range_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr double kMostProbes = 1e7;
// A normal stands on the chord from so many points before to as many behind.
constexpr std::size_t kHalfChord = 5;
constexpr std::size_t kLeastContour = 12;
constexpr double kHalfPixel = 0.5;

// Steps that divide a length; 0, and refused, where there would be too many.
std::size_t stepsOf(const char* function, double length, double spacing) {
    const double steps = std::max(1.0, std::round(length / spacing));
    if (steps < kMostProbes) return static_cast<std::size_t>(steps);
    refuse(rcTooMany, function, "%g pixels in steps of %g; less than %g probes are taken", length, spacing,
           kMostProbes);
    return 0;
}

// Twice the enclosed area, above 0 for a contour that turns from the x axis towards the y axis.
double turnOf(const std::vector<cv::Point>& contour) {
    double area = 0;
    cv::Point2d before = contour.back();
    for (const cv::Point& pixel : contour) {
        area += before.cross(cv::Point2d(pixel));
        before = pixel;
    }
    return area;
}

// The parameters of an ellipse at equal steps along its outline, from its length up to each of many equal
// steps of the parameter.
std::vector<double> parametersOf(const char* function, double a, double b, double spacing) {
    const std::size_t rough = stepsOf(function, 2 * kPi * std::max(a, b), spacing);
    if (rough == 0) return {};
    const std::size_t fine = 64 + 8 * rough;
    const double step = 2 * kPi / static_cast<double>(fine);
    std::vector<double> lengths(fine + 1);
    for (std::size_t i = 0; i < fine; ++i) {
        const double t = (static_cast<double>(i) + 0.5) * step;
        lengths[i + 1] = lengths[i] + step * std::hypot(a * std::sin(t), b * std::cos(t));
    }
    std::vector<double> parameters(stepsOf(function, lengths.back(), spacing));
    std::size_t i = 0;
    for (std::size_t k = 0; k < parameters.size(); ++k) {
        const double wanted =
            lengths.back() * static_cast<double>(k) / static_cast<double>(parameters.size());
        while (lengths[i + 1] < wanted) ++i;
        const double share = (wanted - lengths[i]) / (lengths[i + 1] - lengths[i]);
        parameters[k] = (static_cast<double>(i) + share) * step;
    }
    return parameters;
}

}  // namespace

std::vector<TEdgeProbe> probesAlongContour(const std::vector<cv::Point>& contour) {
    const std::size_t count = contour.size();
    if (count < kLeastContour) {
        refuse(rcTooFew, "probesAlongContour", "the contour has %zu points; at least %zu are taken", count,
               kLeastContour);
        return {};
    }
    const double turn = turnOf(contour);
    if (turn == 0) {
        refuse(rcDegenerate, "probesAlongContour", "the contour encloses nothing");
        return {};
    }
    std::vector<TEdgeProbe> probes;
    probes.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const cv::Point2d before = contour[(i + count - kHalfChord) % count];
        const cv::Point2d after = contour[(i + kHalfChord) % count];
        const cv::Point2d chord = turn > 0 ? after - before : before - after;
        const double length = cv::norm(chord);
        // At the tip of a stroke one pixel wide there is no chord, and no normal: a probe that finds nothing.
        const cv::Point2d normal = length > 0 ? cv::Point2d(chord.y, -chord.x) / length : cv::Point2d(0, 0);
        probes.push_back({cv::Point2d(contour[i]) + kHalfPixel * normal, normal, 0.0});
    }
    return probes;
}

std::vector<TEdgeProbe> probesAlongLine(cv::Point2d from, cv::Point2d to, double spacing) {
    constexpr const char* kFunction = "probesAlongLine";
    if (!takesPlace(kFunction, "the start", from) || !takesPlace(kFunction, "the end", to) ||
        !takesOptions(kFunction, {{"spacing", spacing, 0, kFarthestEdge, true}}))
        return {};
    const cv::Point2d way = to - from;
    const double length = std::hypot(way.x, way.y);
    if (!(length > 0)) {
        refuse(rcDegenerate, kFunction, "both ends of the line are at %g, %g", from.x, from.y);
        return {};
    }
    const std::size_t steps = stepsOf(kFunction, length, spacing);
    if (steps == 0) return {};
    const cv::Point2d normal(-way.y / length, way.x / length);
    std::vector<TEdgeProbe> probes;
    for (std::size_t i = 0; i <= steps; ++i)
        probes.push_back({from + way * (static_cast<double>(i) / static_cast<double>(steps)), normal, 0.0});
    return probes;
}

std::vector<TEdgeProbe> probesAlongCircle(cv::Point2d center, double radius, double spacing,
                                          double startAngle, double sweep) {
    constexpr const char* kFunction = "probesAlongCircle";
    if (!takesPlace(kFunction, "the centre", center) || !takesAngle(kFunction, "startAngle", startAngle) ||
        !takesOptions(kFunction, {{"the radius", radius, 0, kFarthestEdge, true},
                                  {"spacing", spacing, 0, kFarthestEdge, true},
                                  {"sweep", sweep, -360, 360}}))
        return {};
    const std::size_t steps = stepsOf(kFunction, std::fabs(radians(sweep)) * radius, spacing);
    if (steps == 0) return {};
    const std::size_t count = std::fabs(sweep) == 360 ? steps : steps + 1;
    std::vector<TEdgeProbe> probes;
    for (std::size_t i = 0; i < count; ++i) {
        const double angle =
            radians(startAngle + sweep * static_cast<double>(i) / static_cast<double>(steps));
        const cv::Point2d normal(std::cos(angle), std::sin(angle));
        probes.push_back({center + radius * normal, normal, 1 / radius});
    }
    return probes;
}

std::vector<TEdgeProbe> probesAlongEllipse(const cv::RotatedRect& ellipse, double spacing) {
    const double a = 0.5 * static_cast<double>(ellipse.size.width);
    const double b = 0.5 * static_cast<double>(ellipse.size.height);
    const double angle = radians(static_cast<double>(ellipse.angle));
    constexpr const char* kFunction = "probesAlongEllipse";
    if (!takesPlace(kFunction, "the centre", ellipse.center) || !takesAngle(kFunction, "the angle", angle) ||
        !takesOptions(kFunction, {{"half of the width", a, 0, kFarthestEdge, true},
                                  {"half of the height", b, 0, kFarthestEdge, true},
                                  {"spacing", spacing, 0, kFarthestEdge, true}}))
        return {};
    const cv::Point2d along(std::cos(angle), std::sin(angle));
    const cv::Point2d across(-along.y, along.x);
    std::vector<TEdgeProbe> probes;
    for (const double t : parametersOf(kFunction, a, b, spacing)) {
        const double c = std::cos(t);
        const double s = std::sin(t);
        const double speed = std::hypot(a * s, b * c);
        const cv::Point2d normal = (b * c / speed) * along + (a * s / speed) * across;
        probes.push_back({cv::Point2d(ellipse.center) + a * c * along + b * s * across, normal,
                          a * b / (speed * speed * speed)});
    }
    return probes;
}

}  // namespace orx
