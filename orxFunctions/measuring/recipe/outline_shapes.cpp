#include "orxFunctions/measuring/recipe/outline_shapes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/median_internal.h"
#include "orxFunctions/measuring/edge_fit.h"
#include "orxFunctions/measuring/recipe/curve.h"

namespace orx::recipes {
namespace {

using ORXEdge::TMetricContour;

constexpr double kPolygon = 0.6;      // pixels that the polygon of a chain keeps within
constexpr double kMostRms = 0.35;     // of a shape's points, pixels
constexpr double kEnds = 4.0;         // pixels at each end of a line that a corner may round
constexpr double kMostTurn = 35.0;    // degrees between neighbouring chords of an arc
constexpr double kLeastSweep = 40.0;  // of an arc, degrees
constexpr double kSame = 2.0;         // pixels between shapes that are one

constexpr double kNearest = 3.0;     // pixels across a shape that its own edge may take
constexpr double kFarthest = 16.0;   // pixels that are looked for other edges
constexpr double kSpacing = 2.0;     // pixels along a shape between the places that are looked at
constexpr double kNearShare = 0.05;  // of those places, for an edge that is near

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

bool circleOf(const TMetricContour& edge, double sigma, OutlineShape& shape) {
    const TMeasuredCircle circle = fitCircleGeometric(edge, sigma);
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

bool ellipseOf(const TMetricContour& edge, double sigma, OutlineShape& shape) {
    const TMeasuredEllipse ellipse = fitEllipseGeometric(edge, sigma);
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

bool lineOf(const TMetricContour& edge, double sigma, OutlineShape& shape) {
    const TMeasuredLine line = fitLineGeometric(edge, sigma);
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
    Splitter(const TMetricContour& edge, double sigma, double minLength)
        : edge_(edge), sigma_(sigma), minLength_(minLength) {
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
                lineOf(partOf(edge_, corners_[chord], corners_[chord + 1]), sigma_, shape))
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
        return static_cast<double>(part.points.size()) >= minLength_ && circleOf(part, sigma_, shape) &&
               shape.length >= minLength_ / 2.0;
    }

    const TMetricContour& edge_;
    double sigma_;
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

// Pixels of the middle of the picture's size, on the plane: an edge keeps its length about.
TMetricContour onPlane(const TMetricContour& edge, const Plane& plane, double unit) {
    TMetricContour result = edge;
    for (std::size_t i = 0; i < edge.points.size(); ++i) {
        const cv::Point2d pixel(edge.points[i]);
        result.points[i] = cv::Point2f(plane.toPlane(pixel) / unit);
        // A normal goes with the inverse of the transposed derivative.
        const cv::Matx22d back = plane.jacobian(pixel).inv().t();
        const cv::Vec2d normal = back * cv::Vec2d(std::cos(edge.direction[i]), std::sin(edge.direction[i]));
        result.direction[i] = static_cast<float>(std::atan2(normal[1], normal[0]));
    }
    return result;
}

bool isFinite(const TMetricContour& edge) {
    return std::all_of(edge.points.begin(), edge.points.end(),
                       [](const cv::Point2f& p) { return std::isfinite(p.x) && std::isfinite(p.y); });
}

OutlineShape inUnits(OutlineShape shape, double unit) {
    shape.from *= unit;
    shape.to *= unit;
    shape.center *= unit;
    shape.radius *= unit;
    shape.semiMinor *= unit;
    return shape;
}

Curve curveOf(const OutlineShape& shape) {
    if (shape.kind == fkLine) return lineCurve(shape.from, shape.to);
    if (shape.kind == fkEllipse)
        return ellipseCurve(shape.center, shape.radius, shape.semiMinor, shape.angle);
    return circleCurve(shape.center, shape.radius, shape.startAngle, shape.sweep);
}

// Where the edges run, for looking what lies beside a shape.
class EdgeMap {
  public:
    EdgeMap(const std::vector<TMetricContour>& edges, cv::Size picture)
        : map_(picture, CV_8UC1, cv::Scalar(0)) {
        for (const TMetricContour& edge : edges) {
            for (const cv::Point2f& p : edge.points) {
                if (holds(p)) map_.at<uchar>(pixel(p)) = 1;
            }
        }
    }

    double roomBeside(const OutlineShape& shape, const Plane* plane) const {
        const ToImage toImage = [&](cv::Point2d p) { return plane != nullptr ? plane->toImage(p) : p; };
        std::vector<double> free;
        for (const TEdgeProbe& probe : probesAlong(curveOf(shape), toImage, kSpacing))
            free.push_back(std::min(freeWay(probe, 1.0), freeWay(probe, -1.0)));
        if (free.empty()) return std::numeric_limits<double>::infinity();
        const auto place =
            free.begin() + static_cast<std::ptrdiff_t>(kNearShare * static_cast<double>(free.size()));
        std::nth_element(free.begin(), place, free.end());
        return *place;
    }

  private:
    static cv::Point pixel(cv::Point2d p) { return {cvRound(p.x), cvRound(p.y)}; }
    bool holds(cv::Point2d p) const { return cv::Rect({}, map_.size()).contains(pixel(p)); }

    double freeWay(const TEdgeProbe& probe, double sense) const {
        for (double way = kNearest; way <= kFarthest; way += 0.5) {
            const cv::Point2d p = cv::Point2d(probe.point) + sense * way * cv::Point2d(probe.normal);
            if (!holds(p)) break;
            if (map_.at<uchar>(pixel(p)) != 0) return way;
        }
        return std::numeric_limits<double>::infinity();
    }

    cv::Mat map_;
};

void addShapesOf(const TMetricContour& edge, double sigma, double minLength,
                 std::vector<OutlineShape>& shapes) {
    OutlineShape shape;
    const std::size_t before = shapes.size();
    if (edge.closed && (circleOf(edge, sigma, shape) || ellipseOf(edge, sigma, shape))) {
        shapes.push_back(shape);
    } else {
        Splitter(edge, sigma, minLength).split(shapes);
    }
    const double contrast = medianOf(edge.contrast);
    for (std::size_t i = before; i < shapes.size(); ++i) shapes[i].contrast = contrast;
}

}  // namespace

std::vector<OutlineShape> findOutlineShapes(const PartEdges& found, const std::vector<cv::Point2d>& polygon,
                                            const Plane* plane, cv::Size picture, double minLength) {
    const std::vector<cv::Point2f> border(polygon.begin(), polygon.end());
    const double unit =
        plane != nullptr ? plane->pixelSize({picture.width / 2.0, picture.height / 2.0}) : 1.0;
    if (!(unit > 0.0)) return {};
    std::vector<OutlineShape> all;
    for (const TMetricContour& edge : found.edges) {
        if (!liesWithin(edge, border)) continue;
        const TMetricContour placed = plane != nullptr ? onPlane(edge, *plane, unit) : edge;
        if (isFinite(placed)) addShapesOf(placed, found.sigma, minLength, all);
    }
    const auto longer = [](const OutlineShape& a, const OutlineShape& b) { return a.length > b.length; };
    std::stable_sort(all.begin(), all.end(), longer);
    std::vector<OutlineShape> shapes;
    for (const OutlineShape& shape : all) {
        const auto isKnown = [&](const OutlineShape& known) { return areSame(shape, known); };
        if (std::none_of(shapes.begin(), shapes.end(), isKnown)) shapes.push_back(shape);
    }
    const EdgeMap map(found.edges, picture);
    for (OutlineShape& shape : shapes) {
        shape = inUnits(shape, unit);
        shape.room = map.roomBeside(shape, plane);
    }
    return shapes;
}

}  // namespace orx::recipes
