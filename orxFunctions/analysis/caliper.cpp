#include "orxFunctions/analysis/caliper.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "orxFunctions/analysis/caliper_profile_internal.h"
#include "orxFunctions/analysis/edge_places_internal.h"
#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/median_internal.h"
#include "orxFunctions/foundation/option_range_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

bool takesEdges(const char* function, const TCaliperOptions& options) {
    return takesOptions(function,
                        {{"sigma", options.sigma, 0.5, 50},
                         {"minContrast", options.minContrast, 0, kNoHighEnd},
                         {"polarity", static_cast<double>(options.polarity), epAny, epBrightToDark},
                         {"selection", static_cast<double>(options.selection), esAll, esStrongest}});
}

bool takesSize(const char* function, const cv::Mat& img, double length, double width) {
    const double longest = 2.0 * (img.rows + img.cols);
    return takesOptions(function,
                        {{"the length", length, 1, longest}, {"the width", width, -longest, longest}});
}

// No edge is what refused input has, too, so it is told.
std::vector<TContrastEdge> told(const char* function, std::vector<TContrastEdge> edges,
                                const TCaliperOptions& options) {
    if (edges.empty())
        refuse(rcNoResult, function, "there is no edge of the polarity asked for with %g levels or more",
               options.minContrast);
    return edges;
}

// Offsets of the rays from the centre line, a pixel apart.
std::vector<double> offsetsAcross(double width) {
    const auto rays = static_cast<std::size_t>(std::max(1L, std::lround(width)));
    std::vector<double> offsets(rays);
    for (std::size_t i = 0; i < rays; ++i) {
        offsets[i] = static_cast<double>(i) - static_cast<double>(rays - 1) / 2;
    }
    return offsets;
}

// Samples at most half a pixel apart. A pixel apart, all of them would lie at the same share between the
// pixels and take over what the interpolation does to an edge there; so they take its mean. And at most half
// a sigma apart, so that the sampled filter stays a Gaussian.
struct Sampling {
    Sampling(double length, double sigma)
        : steps(static_cast<int>(std::ceil(length / (0.5 * std::min(1.0, sigma)) - 1e-9))),
          spacing(length / steps) {}
    int steps;
    double spacing;  // pixels
};

// The part of the picture that the rays can touch, as grey; moves the rays along with it. Only colour is
// converted, and only where needed.
cv::Mat greyAround(const cv::Mat& img, std::vector<Ray>& rays, int lead, int count) {
    cv::Point2d low = rays.front().start;
    cv::Point2d high = low;
    for (const Ray& ray : rays) {
        for (const int i : {-lead, count - 1 + lead}) {
            const cv::Point2d p = ray.start + ray.step * i;
            low = {std::min(low.x, p.x), std::min(low.y, p.y)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y)};
        }
    }
    const auto pixel = [](double value, int size) {
        return static_cast<int>(std::clamp(value, 0.0, size - 1.0));
    };
    // Levels between pixels are told by one pixel more before them, and one behind the next.
    const cv::Point first(pixel(low.x - 1, img.cols), pixel(low.y - 1, img.rows));
    const cv::Point last(pixel(high.x + 2, img.cols), pixel(high.y + 2, img.rows));
    for (Ray& ray : rays) ray.start -= cv::Point2d(first);
    return greyOf(img(cv::Rect(first, last + cv::Point(1, 1))));
}

// A caliper: its rays, and the line on which the positions of its edges lie.
struct Caliper {
    std::vector<Ray> rays;
    Ray centre;
    Sampling sampling;
};

std::vector<TContrastEdge> edgesOf(const cv::Mat& img, const Caliper& caliper,
                                   const TCaliperOptions& options) {
    const double spacing = caliper.sampling.spacing;
    const double sigma = options.sigma / spacing;
    const int lead = leadOf(sigma);
    const int count = caliper.sampling.steps + 1;
    std::vector<Ray> rays = caliper.rays;
    const cv::Mat grey = greyAround(img, rays, lead, count);
    std::vector<TContrastEdge> edges;
    for (const ProfileEdge& edge : edgesOfProfile(sampleProfile(grey, rays, lead, count), sigma, options)) {
        TContrastEdge found;
        found.position = caliper.centre.start + caliper.centre.step * edge.place;
        found.distance = edge.place * spacing;
        found.contrast = edge.contrast;
        found.blur = edge.blur * spacing;
        edges.push_back(found);
    }
    return edges;
}

Caliper straightCaliper(cv::Point2d from, cv::Point2d direction, double length, double width, double sigma) {
    const Sampling sampling(length, sigma);
    const Ray centre{from, direction * sampling.spacing};
    const cv::Point2d across(-direction.y, direction.x);
    std::vector<Ray> rays;
    for (const double offset : offsetsAcross(width)) {
        rays.push_back({from + across * offset, centre.step});
    }
    return {rays, centre, sampling};
}

cv::Point2d unitVector(double angle) { return {std::cos(angle), std::sin(angle)}; }

Caliper radialCaliper(cv::Point2d centre, double radius, double angle, const TCircleCaliperOptions& options) {
    const double inner = std::max(0.0, radius - options.searchLength / 2);
    const double outer = radius + options.searchLength / 2;
    const bool outward = options.direction == rdOutward;
    const Sampling sampling(outer - inner, options.edge.sigma);
    const auto rayAt = [&](double direction) {
        const cv::Point2d unit = unitVector(direction);
        return Ray{centre + unit * (outward ? inner : outer),
                   unit * (outward ? sampling.spacing : -sampling.spacing)};
    };
    std::vector<Ray> rays;
    for (const double offset : offsetsAcross(options.width)) rays.push_back(rayAt(angle + offset / radius));
    return {rays, rayAt(angle), sampling};
}

double angleOf(int index, const TCircleCaliperOptions& options) {
    const bool fullTurn = std::fabs(options.sweep) == 360.0;
    const int steps = std::max(1, fullTurn ? options.count : options.count - 1);
    return radians(options.startAngle + options.sweep * index / steps);
}

// Moves edges of one circle outwards by what their blur has moved them inwards.
void compensateGroup(const std::vector<TContrastEdge*>& group, cv::Point2d centre, double along) {
    std::vector<double> blurs;
    std::vector<double> radii;
    for (const TContrastEdge* edge : group) {
        blurs.push_back(edge->blur);
        radii.push_back(cv::norm(edge->position - centre));
    }
    const double blur = medianOf(blurs);
    const double radius = medianOf(radii);
    if (radius < 2.0 * blur) return;  // nothing is told of circles so small
    const double shift = blur * blur / (2.0 * radius);
    for (TContrastEdge* edge : group) {
        const cv::Point2d arm = edge->position - centre;
        const double length = cv::norm(arm);
        if (!(length > 0.0)) continue;
        edge->position += arm * (shift / length);
        edge->distance += along * shift;
    }
}

void compensateBlur(cv::Point2d centre, const TCircleCaliperOptions& options,
                    std::vector<TContrastEdge>& edges) {
    // Edges of the same number along their calipers are mostly of the same circle.
    std::vector<std::vector<TContrastEdge*>> groups;
    std::size_t number = 0;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        number = i > 0 && edges[i].caliper == edges[i - 1].caliper ? number + 1 : 0;
        if (groups.size() <= number) groups.emplace_back();
        if (edges[i].blur < widestBlur(options.edge.sigma)) groups[number].push_back(&edges[i]);
    }
    const double along = options.direction == rdOutward ? 1.0 : -1.0;
    for (const auto& group : groups) compensateGroup(group, centre, along);
}

}  // namespace

std::vector<TContrastEdge> getContrastEdges(const cv::Mat& img, cv::Point2d from, cv::Point2d to,
                                            double width, const TCaliperOptions& options) {
    constexpr const char* kFunction = "getContrastEdges";
    if (!takesPicture(img, kFunction) || !takesEdges(kFunction, options) ||
        !takesPlace(kFunction, "the start", from) || !takesPlace(kFunction, "the end", to))
        return {};
    const cv::Point2d path = to - from;
    const double length = std::hypot(path.x, path.y);
    if (!takesSize(kFunction, img, length, width)) return {};
    const Caliper caliper = straightCaliper(from, path / length, length, width, options.sigma);
    return told(kFunction, edgesOf(img, caliper, options), options);
}

std::vector<TContrastEdge> getContrastEdges(const cv::Mat& img, const cv::Rect& rect,
                                            TScanDirection direction, const TCaliperOptions& options) {
    if (rect.width < 1 || rect.height < 1) {
        refuse(rcOption, "getContrastEdges", "the rectangle has %d x %d pixels", rect.width, rect.height);
        return {};
    }
    const double left = rect.x;
    const double top = rect.y;
    const double right = left + rect.width - 1;
    const double bottom = top + rect.height - 1;
    const cv::Point2d middle((left + right) / 2, (top + bottom) / 2);
    switch (direction) {
        case sdLeftToRight:
            return getContrastEdges(img, {left, middle.y}, {right, middle.y}, rect.height, options);
        case sdRightToLeft:
            return getContrastEdges(img, {right, middle.y}, {left, middle.y}, rect.height, options);
        case sdTopToBottom:
            return getContrastEdges(img, {middle.x, top}, {middle.x, bottom}, rect.width, options);
        case sdBottomToTop:
            return getContrastEdges(img, {middle.x, bottom}, {middle.x, top}, rect.width, options);
    }
    refuse(rcOption, "getContrastEdges", "there is no direction %d", static_cast<int>(direction));
    return {};
}

std::vector<TContrastEdge> getContrastEdges(const cv::Mat& img, const cv::RotatedRect& rect,
                                            const TCaliperOptions& options) {
    const cv::Point2d half = unitVector(radians(rect.angle)) * (rect.size.width / 2.0);
    const cv::Point2d centre(rect.center);
    return getContrastEdges(img, centre - half, centre + half, rect.size.height, options);
}

std::vector<TContrastEdge> getCircleEdges(const cv::Mat& img, cv::Point2d centre, double radius,
                                          const TCircleCaliperOptions& options) {
    constexpr const char* kFunction = "getCircleEdges";
    if (!takesPicture(img, kFunction) || !takesEdges(kFunction, options.edge) ||
        !takesPlace(kFunction, "the centre", centre) ||
        !takesOptions(kFunction, {{"the radius", radius, 0, kFarthestEdge, true},
                                  {"count", static_cast<double>(options.count), 1, 100000},
                                  {"direction", static_cast<double>(options.direction), rdOutward, rdInward},
                                  {"sweep", options.sweep, -360, 360}}) ||
        !takesAngle(kFunction, "startAngle", options.startAngle) ||
        !takesSize(kFunction, img, options.searchLength, options.width))
        return {};
    std::vector<TContrastEdge> edges;
    for (int i = 0; i < options.count; ++i) {
        const Caliper caliper = radialCaliper(centre, radius, angleOf(i, options), options);
        for (TContrastEdge edge : edgesOf(img, caliper, options.edge)) {
            edge.caliper = i;
            edges.push_back(edge);
        }
    }
    if (options.compensateBlur) compensateBlur(centre, options, edges);
    return told(kFunction, std::move(edges), options.edge);
}

}  // namespace orx
