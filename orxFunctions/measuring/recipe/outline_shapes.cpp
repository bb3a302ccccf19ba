#include "orxFunctions/measuring/recipe/outline_shapes.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/measuring/edge_fit.h"

namespace orx::recipes {
namespace {

using ORXEdge::TMetricContour;

constexpr double kSigma = 1.0;
constexpr double kPolygon = 0.6;      // pixels that the polygon of a chain keeps within
constexpr double kMostRms = 0.35;     // of a shape's points, pixels
constexpr double kEnds = 4.0;         // pixels at each end of a line that a corner may round
constexpr double kMostTurn = 35.0;    // degrees between neighbouring chords of an arc
constexpr double kLeastSweep = 40.0;  // of an arc, degrees
constexpr double kSame = 2.0;         // pixels between shapes that are one

// Points first .. last of an edge, across its end where it is closed.
TMetricContour partOf(const TMetricContour& edge, std::size_t first, std::size_t last) {
    TMetricContour part;
    const std::size_t count = edge.points.size();
    for (std::size_t i = first; i <= last; ++i) {
        part.points.push_back(edge.points[i % count]);
        part.direction.push_back(edge.direction[i % count]);
        part.deviation.push_back(edge.deviation[i % count]);
    }
    return part;
}

// From the signs of the normals (dark to bright) against those of the shape.
template <class Normal>
TEdgePolarity polarityOf(const TMetricContour& edge, const Normal& normalAt) {
    double sum = 0.0;
    for (std::size_t i = 0; i < edge.points.size(); ++i) {
        const cv::Point2d n = normalAt(cv::Point2d(edge.points[i]));
        const double rise = std::cos(edge.direction[i]) * n.x + std::sin(edge.direction[i]) * n.y;
        sum += rise > 0.0 ? 1.0 : -1.0;
    }
    const double share = sum / static_cast<double>(std::max<std::size_t>(1, edge.points.size()));
    return share > 0.8 ? epDarkToBright : share < -0.8 ? epBrightToDark : epAny;
}

TEdgePolarity polarityAround(const TMetricContour& edge, cv::Point2d center) {
    return polarityOf(edge, [&](cv::Point2d p) { return p - center; });
}

bool circleOf(const TMetricContour& edge, OutlineShape& shape) {
    const TMeasuredCircle circle = fitCircleGeometric(edge, kSigma);
    if (!circle.valid() || circle.rms > kMostRms || circle.radius < 4.0) return false;
    const bool whole = circle.sweep >= 340.0;
    if (!whole && circle.sweep < kLeastSweep) return false;
    shape.kind = whole ? fkCircle : fkArc;
    shape.center = circle.center;
    shape.radius = circle.radius;
    if (!whole) {
        // The ends of an arc belong to what follows it, too.
        const double margin = std::min(circle.sweep / 8.0, degrees(kEnds / circle.radius));
        shape.startAngle = circle.startAngle + margin;
        shape.sweep = circle.sweep - 2.0 * margin;
    }
    shape.length = radians(shape.sweep) * circle.radius;
    shape.polarity = polarityAround(edge, circle.center);
    return true;
}

bool ellipseOf(const TMetricContour& edge, OutlineShape& shape) {
    const TMeasuredEllipse ellipse = fitEllipseGeometric(edge, kSigma);
    if (!ellipse.valid() || ellipse.rms > kMostRms || ellipse.sweep < 340.0 || ellipse.semiMinor < 4.0)
        return false;
    shape.kind = fkEllipse;
    shape.center = ellipse.center;
    shape.radius = ellipse.semiMajor;
    shape.semiMinor = ellipse.semiMinor;
    shape.angle = ellipse.angle;
    shape.length = static_cast<double>(edge.points.size());
    shape.polarity = polarityAround(edge, ellipse.center);
    return true;
}

bool lineOf(const TMetricContour& edge, OutlineShape& shape) {
    const TMeasuredLine line = fitLineGeometric(edge, kSigma);
    if (!line.valid() || line.rms > kMostRms || line.to - line.from <= 3.0 * kEnds) return false;
    shape.kind = fkLine;
    shape.from = line.point + (line.from + kEnds) * line.direction;
    shape.to = line.point + (line.to - kEnds) * line.direction;
    shape.length = line.to - line.from;
    shape.polarity = polarityOf(edge, [&](cv::Point2d) { return line.normal(); });
    return true;
}

// A chain as a polygon whose corners are points of it.
class Splitter {
  public:
    Splitter(const TMetricContour& edge, double minLength) : edge_(edge), minLength_(minLength) {
        std::vector<cv::Point2f> polygon;
        cv::approxPolyDP(edge.points, polygon, kPolygon, edge.closed);
        std::size_t at = 0;
        for (const cv::Point2f& corner : polygon) {
            // In order, but for where the polygon of a closed chain begins.
            for (std::size_t k = 0; k < edge.points.size(); ++k) {
                const std::size_t i = (at + k) % edge.points.size();
                if (edge.points[i] != corner) continue;
                at = i;
                break;
            }
            corners_.push_back(at);
        }
        std::sort(corners_.begin(), corners_.end());
        corners_.erase(std::unique(corners_.begin(), corners_.end()), corners_.end());
        if (edge.closed && !corners_.empty()) corners_.push_back(corners_.front() + edge.points.size());
    }

    void split(std::vector<OutlineShape>& shapes) const {
        std::size_t chord = 0;
        const std::size_t chords = corners_.empty() ? 0 : corners_.size() - 1;
        while (chord < chords) {
            const std::size_t last = endOfBend(chord, chords);
            OutlineShape shape;
            if (last > chord + 1 && isArc(chord, last, shape)) {
                shapes.push_back(shape);
                chord = last + 1;
                continue;
            }
            if (lengthOf(chord) >= minLength_ &&
                lineOf(partOf(edge_, corners_[chord], corners_[chord + 1]), shape))
                shapes.push_back(shape);
            ++chord;
        }
    }

  private:
    cv::Point2d corner(std::size_t i) const { return edge_.points[corners_[i] % edge_.points.size()]; }
    cv::Point2d way(std::size_t chord) const { return corner(chord + 1) - corner(chord); }
    double lengthOf(std::size_t chord) const { return cv::norm(way(chord)); }
    double turnAfter(std::size_t chord) const {
        return degrees(std::atan2(way(chord).cross(way(chord + 1)), way(chord).dot(way(chord + 1))));
    }

    // The last of the chords that go on bending as this one and the next do, all about as long.
    std::size_t endOfBend(std::size_t chord, std::size_t chords) const {
        std::size_t last = chord;
        while (last + 1 < chords) {
            const double turn = turnAfter(last);
            const bool goesOn = std::abs(turn) < kMostTurn && turn * turnAfter(chord) > 0.0;
            const double ratio = lengthOf(last + 1) / std::max(1e-9, lengthOf(last));
            if (!goesOn || ratio > 4.0 || ratio < 0.25) break;
            ++last;
        }
        return last;
    }

    bool isArc(std::size_t first, std::size_t last, OutlineShape& shape) const {
        const TMetricContour part = partOf(edge_, corners_[first], corners_[last + 1]);
        return static_cast<double>(part.points.size()) >= minLength_ && circleOf(part, shape) &&
               shape.length >= minLength_ / 2.0;
    }

    const TMetricContour& edge_;
    double minLength_;
    std::vector<std::size_t> corners_;
};

bool areSame(const OutlineShape& a, const OutlineShape& b) {
    if (a.kind != b.kind) return false;
    if (a.kind == fkLine) {
        return std::min(cv::norm(a.from - b.from) + cv::norm(a.to - b.to),
                        cv::norm(a.from - b.to) + cv::norm(a.to - b.from)) < 2.0 * kSame;
    }
    return cv::norm(a.center - b.center) < kSame && std::abs(a.radius - b.radius) < kSame &&
           std::abs(std::remainder(a.startAngle - b.startAngle, 360.0)) < 20.0;
}

}  // namespace

std::vector<OutlineShape> findOutlineShapes(const Picture& picture, const cv::Rect& region,
                                            double minLength) {
    ORXEdge::TMetricOptions options;
    options.sigma = kSigma;
    options.automaticThresholds = true;
    options.noise = picture.noise;
    options.minPoints = static_cast<int>(std::ceil(minLength));
    std::vector<TMetricContour> edges;
    ORXEdge::edgesSubPixMetric(picture.bytes(region), edges, options);
    std::vector<OutlineShape> all;
    for (TMetricContour& edge : edges) {
        for (cv::Point2f& p : edge.points) p += cv::Point2f(region.tl());
        OutlineShape shape;
        if (edge.closed && (circleOf(edge, shape) || ellipseOf(edge, shape))) {
            all.push_back(shape);
        } else {
            Splitter(edge, minLength).split(all);
        }
    }
    const auto longer = [](const OutlineShape& a, const OutlineShape& b) { return a.length > b.length; };
    std::stable_sort(all.begin(), all.end(), longer);
    std::vector<OutlineShape> shapes;
    for (const OutlineShape& shape : all) {
        const auto isKnown = [&](const OutlineShape& known) { return areSame(shape, known); };
        if (std::none_of(shapes.begin(), shapes.end(), isKnown)) shapes.push_back(shape);
    }
    return shapes;
}

}  // namespace orx::recipes
