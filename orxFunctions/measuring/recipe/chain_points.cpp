#include "orxFunctions/measuring/recipe/edge_points.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "orxFunctions/measuring/edge_fit.h"

namespace orx::recipes {
namespace {

using ORXEdge::TMetricContour;

constexpr double kMargin = 12.0;      // pixels around the band that smoothing reads
constexpr std::size_t kShortest = 5;  // points of a stretch that counts
constexpr double kProbeSpacing = 3.0;

// The nominal outline with a grid over it, to find the nearest place of it.
class Band {
  public:
    Band(std::vector<TEdgeProbe> probes, double reach, bool closed)
        : probes_(std::move(probes)), reach_(reach), closed_(closed) {}

    // The index of the nearest probe within the band; -1 outside. `near` is where to look first.
    int nearest(cv::Point2d p, int near) const {
        const int local = nearestOf(p, near - kNeighbours, near + kNeighbours);
        const int found = near >= 0 && isWithin(p, local) ? local : nearestOf(p, 0, count() - 1);
        return isWithin(p, found) ? found : -1;
    }
    const TEdgeProbe& probe(int i) const { return probes_[static_cast<std::size_t>(i)]; }

    cv::Rect box(cv::Size size) const {
        double left = std::numeric_limits<double>::max();
        double top = left;
        double right = -left;
        double bottom = -left;
        for (const TEdgeProbe& probe : probes_) {
            left = std::min(left, probe.point.x);
            right = std::max(right, probe.point.x);
            top = std::min(top, probe.point.y);
            bottom = std::max(bottom, probe.point.y);
        }
        const double margin = reach_ + kMargin;
        const auto column = [&](double x) { return static_cast<int>(std::clamp(x, 0.0, size.width - 1.0)); };
        const auto row = [&](double y) { return static_cast<int>(std::clamp(y, 0.0, size.height - 1.0)); };
        return {cv::Point(column(left - margin), row(top - margin)),
                cv::Point(column(right + margin) + 1, row(bottom + margin) + 1)};
    }

  private:
    static constexpr int kNeighbours = 4;

    int count() const { return static_cast<int>(probes_.size()); }

    int nearestOf(cv::Point2d p, int from, int to) const {
        int best = 0;
        double least = std::numeric_limits<double>::max();
        for (int i = std::max(0, from); i <= std::min(to, count() - 1); ++i) {
            const cv::Point2d way = p - probe(i).point;
            if (way.dot(way) < least) {
                least = way.dot(way);
                best = i;
            }
        }
        return best;
    }
    bool isWithin(cv::Point2d p, int i) const {
        const cv::Point2d way = p - probe(i).point;
        const bool isNear =
            std::abs(way.dot(probe(i).normal)) <= reach_ && cv::norm(way) <= reach_ + kProbeSpacing;
        return isNear && !isBeyondEnd(way, i);
    }
    bool isBeyondEnd(cv::Point2d way, int i) const {
        if (closed_ || (i > 0 && i < count() - 1)) return false;
        const cv::Point2d inwards =
            i == 0 ? probe(1).point - probe(0).point : probe(i - 1).point - probe(i).point;
        return way.dot(inwards) < 0.0;
    }

    std::vector<TEdgeProbe> probes_;
    double reach_;
    bool closed_;
};

bool hasPolarity(const TMetricContour& edge, std::size_t i, const TEdgeProbe& probe, TEdgePolarity polarity) {
    if (polarity == epAny) return true;
    const double rise =
        std::cos(edge.direction[i]) * probe.normal.x + std::sin(edge.direction[i]) * probe.normal.y;
    return polarity == epDarkToBright ? rise > 0.0 : rise < 0.0;
}

// The stretches of an edge that lie in the band.
std::vector<TMetricContour> stretchesOf(const TMetricContour& edge, cv::Point2f shift, const Band& band,
                                        TEdgePolarity polarity, std::vector<std::vector<int>>& places) {
    std::vector<TMetricContour> stretches;
    TMetricContour current;
    std::vector<int> nearest;
    const auto close = [&] {
        if (current.points.size() >= kShortest) {
            stretches.push_back(current);
            places.push_back(nearest);
        }
        current = TMetricContour();
        nearest.clear();
    };
    int near = -1;
    for (std::size_t i = 0; i < edge.points.size(); ++i) {
        const cv::Point2f p = edge.points[i] + shift;
        near = band.nearest(p, near);
        if (near < 0 || !hasPolarity(edge, i, band.probe(near), polarity)) {
            close();
            continue;
        }
        current.points.push_back(p);
        current.deviation.push_back(edge.deviation[i]);
        nearest.push_back(near);
    }
    current.closed = edge.closed && current.points.size() == edge.points.size();
    close();
    return stretches;
}

void append(EdgePoints& edges, const TMetricContour& stretch, const std::vector<int>& places,
            const Band& band, double sigma) {
    const TFitOptions options = edgeFitOptions(stretch, sigma);
    for (std::size_t i = 0; i < stretch.points.size(); ++i) {
        edges.points.emplace_back(stretch.points[i]);
        edges.normals.push_back(band.probe(places[i]).normal);
        edges.deviations.push_back(options.deviations.empty() ? 0.0 : options.deviations[i]);
    }
    edges.weighted = edges.weighted && !options.deviations.empty();
    edges.smoothing = options.smoothing;
}

}  // namespace

EdgePoints chainPoints(const Picture& picture, const FeatureSpec& asked, const Frame& frame,
                       bool longestAlone) {
    const Curve curve = curveOf(asked);
    const ToImage toImage = [&](cv::Point2d p) { return frame.toImage(p); };
    std::vector<TEdgeProbe> probes = probesAlong(curve, toImage, kProbeSpacing);
    EdgePoints edges;
    if (probes.size() < 3) return edges;
    edges.searched =
        static_cast<int>(std::lround(lengthOf(polylineOf(curve, toImage, kProbeSpacing), curve.closed)));
    edges.noise = pnEdgeChain;
    edges.weighted = true;
    const Band band(std::move(probes), bandOf(asked, frame), curve.closed);
    const cv::Rect box = band.box(picture.bytes.size());
    ORXEdge::TMetricOptions options;
    options.sigma = asked.sigma;
    options.high = asked.minContrast;
    options.low = asked.minContrast / 2.0;
    options.noise = picture.noise;
    std::vector<TMetricContour> found;
    ORXEdge::edgesSubPixMetric(picture.bytes(box), found, options);
    std::vector<TMetricContour> stretches;
    std::vector<std::vector<int>> places;
    for (const TMetricContour& edge : found) {
        const auto more = stretchesOf(edge, cv::Point2f(box.tl()), band, asked.polarity, places);
        stretches.insert(stretches.end(), more.begin(), more.end());
    }
    if (stretches.empty()) return edges;
    if (!longestAlone) {
        for (std::size_t i = 0; i < stretches.size(); ++i)
            append(edges, stretches[i], places[i], band, asked.sigma);
        edges.closed = stretches.size() == 1 && stretches[0].closed;
        return edges;
    }
    const auto shorter = [](const TMetricContour& a, const TMetricContour& b) {
        return a.points.size() < b.points.size();
    };
    const auto longest = std::max_element(stretches.begin(), stretches.end(), shorter);
    append(edges, *longest, places[static_cast<std::size_t>(longest - stretches.begin())], band, asked.sigma);
    edges.closed = longest->closed;
    return edges;
}

}  // namespace orx::recipes
