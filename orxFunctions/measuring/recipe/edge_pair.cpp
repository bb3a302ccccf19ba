#include "orxFunctions/measuring/recipe/edge_pair.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orx::recipes {
namespace {

constexpr double kWidth = 5.0;  // of a caliper, pixels, where the recipe says nothing
// From so many pairs on, their scatter tells the uncertainty; for fewer the picture's noise does.
constexpr std::size_t kTelling = 5;
// What the pixels' grid leaves of an edge under a caliper one pixel wide (analysis/caliper.h).
constexpr double kGrid = 0.01;

struct Pair {
    TContrastEdge first;
    TContrastEdge second;
    bool found = false;
};

bool rises(const TContrastEdge& edge) { return edge.contrast > 0.0; }

bool suits(const TContrastEdge& first, const TContrastEdge& second, TEdgePolarity polarity) {
    if (polarity == epAny) return true;
    return rises(first) == (polarity == epDarkToBright) && rises(first) != rises(second);
}

// The pair of most contrast whose edges lie within the search of their nominal places.
Pair strongestPair(const std::vector<TContrastEdge>& edges, double search, double nominal,
                   TEdgePolarity polarity) {
    Pair best;
    double most = 0.0;
    for (std::size_t i = 0; i < edges.size() && edges[i].distance <= 2.0 * search; ++i) {
        for (std::size_t j = i + 1; j < edges.size(); ++j) {
            const double contrast = std::abs(edges[i].contrast) + std::abs(edges[j].contrast);
            const bool near = std::abs(edges[j].distance - search - nominal) <= search;
            if (!near || contrast <= most || !suits(edges[i], edges[j], polarity)) continue;
            best = {edges[i], edges[j], true};
            most = contrast;
        }
    }
    return best;
}

}  // namespace

EdgePoints pairPoints(const Picture& picture, const FeatureSpec& asked, const Frame& frame) {
    const cv::Point2d from = frame.toImage(asked.from);
    const cv::Point2d to = frame.toImage(asked.to);
    EdgePoints pairs;
    pairs.searched = std::max(1, asked.count);
    const double nominal = cv::norm(to - from);
    if (!(nominal > 0.0) || !std::isfinite(nominal)) return pairs;
    const cv::Point2d way = (to - from) / nominal;
    const cv::Point2d across(-way.y, way.x);
    const double width = asked.width > 0.0 ? asked.width : kWidth;
    const double search = bandOf(asked, frame);
    const TCaliperOptions options{asked.sigma, asked.minContrast, epAny, esAll};
    for (int i = 0; i < pairs.searched; ++i) {
        const cv::Point2d shift = (i - (pairs.searched - 1) / 2.0) * (width + 1.0) * across;
        const auto edges = getContrastEdges(picture.grey, from + shift - search * way,
                                            to + shift + search * way, width, options);
        const Pair pair = strongestPair(edges, search, nominal, asked.polarity);
        if (!pair.found || !picture.holds(pair.first.position) || !picture.holds(pair.second.position))
            continue;
        for (const TContrastEdge& edge : {pair.first, pair.second}) {
            pairs.points.push_back(edge.position);
            pairs.normals.push_back(way);
            pairs.deviations.push_back(std::hypot(caliperDeviation(edge, picture.noise, asked.sigma, width),
                                                  kGrid / std::sqrt(width)));
        }
    }
    return pairs;
}

SpaceShape widthOf(const EdgePoints& pairs, const Plane* plane) {
    SpaceShape result;
    result.shape.kind = fkEdgePair;
    const PlacedPoints placed = placedPoints(pairs, plane);
    const std::size_t count = placed.points.size() / 2;
    if (count == 0) {
        result.problem =
            pairs.points.empty() ? "no pair of edges was found" : "has no place on the calibrated plane";
        return result;
    }
    cv::Point2d first;
    cv::Point2d second;
    double sum = 0.0;
    double squares = 0.0;
    double noise = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        const cv::Point2d a = placed.size * placed.points[2 * i];
        const cv::Point2d b = placed.size * placed.points[2 * i + 1];
        const double width = cv::norm(b - a);
        first += a;
        second += b;
        sum += width;
        squares += width * width;
        const double share = std::hypot(placed.deviations[2 * i], placed.deviations[2 * i + 1]) * placed.size;
        noise += share * share;
    }
    const auto n = static_cast<double>(count);
    TMeasuredValue& width = result.shape.width;
    width.status = rsOk;
    width.value = sum / n;
    if (count >= kTelling) {
        width.deviation = std::sqrt(std::max(0.0, squares - sum * sum / n) / (n - 1.0) / n);
        width.degreesOfFreedom = n - 1.0;
    } else {
        width.deviation = std::sqrt(noise) / n;
        width.degreesOfFreedom = std::numeric_limits<double>::infinity();
    }
    result.valid = true;
    if (plane == nullptr) return result;
    const cv::Mat shifts = plane->shiftsOf(pairs.points);
    const cv::Point2d way = (second - first) / std::max(1e-300, cv::norm(second - first));
    for (int k = 0; k < shifts.cols; ++k) {
        double longer = 0.0;
        for (int i = 0; i < static_cast<int>(count); ++i) {
            const cv::Point2d by(shifts.at<double>(4 * i + 2, k) - shifts.at<double>(4 * i, k),
                                 shifts.at<double>(4 * i + 3, k) - shifts.at<double>(4 * i + 1, k));
            longer += by.dot(way);
        }
        result.shifted.push_back(result.shape);
        result.shifted.back().width.value += longer / n;
    }
    return result;
}

}  // namespace orx::recipes
