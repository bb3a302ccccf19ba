#include "orxFunctions/display/overlay_painter_internal.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "orxFunctions/foundation/rounding_internal.h"

namespace orx::display {
namespace {

using Points = std::vector<cv::Point2d>;

constexpr int kShift = 4;  // a sixteenth of a pixel
constexpr int kThickest = 255;
constexpr double kFarthest = 1e6;     // window pixels: a larger circle is not drawn
constexpr double kLargestText = 1e3;  // window pixels
constexpr double kChordError = 0.03;  // between a circle and the polygon that stands for it, window pixels
constexpr double kPi = 3.14159265358979323846;

bool isFinite(const Points& points) {
    return std::all_of(points.begin(), points.end(),
                       [](cv::Point2d p) { return std::isfinite(p.x) && std::isfinite(p.y); });
}

// What can be drawn as strokes or filled, in window coordinates.
struct Figure {
    std::vector<Points> paths;
    bool isFilled = false;
    std::string text;  // at the first point of the first path
    double textHeight = 0.0;
};

Figure strokes(std::vector<Points> paths) {
    Figure figure;
    figure.paths = std::move(paths);
    return figure;
}

Figure filled(Points outline) {
    Figure figure = strokes({std::move(outline)});
    figure.isFilled = true;
    return figure;
}

Figure letters(cv::Point2d at, const std::string& text, double height) {
    if (!(height > 0.0 && height < kLargestText)) return {};
    Figure figure = strokes({{at}});
    figure.text = text;
    figure.textHeight = height;
    return figure;
}

// As a polygon; in a stretched window an ellipse.
Points roundOutline(cv::Point2d centre, cv::Point2d axes) {
    const double largest = std::max(axes.x, axes.y);
    if (!(largest < kFarthest) || !(std::min(axes.x, axes.y) >= 0.0)) return {};
    const double wanted = kPi / std::acos(1.0 - kChordError / std::max(largest, 1.0));
    const int corners = static_cast<int>(std::clamp(std::ceil(wanted), 16.0, 8192.0));
    Points outline;
    outline.reserve(static_cast<std::size_t>(corners) + 1);
    for (int i = 0; i <= corners; ++i) {
        const double angle = 2.0 * kPi * (i % corners) / corners;
        outline.emplace_back(centre.x + axes.x * std::cos(angle), centre.y + axes.y * std::sin(angle));
    }
    return outline;
}

Figure arrowOf(cv::Point2d from, cv::Point2d to, int thickness) {
    const cv::Point2d way = to - from;
    const double length = std::hypot(way.x, way.y);
    if (!(length > 0.0)) return strokes({{from, to}});
    const double head = std::min(0.4 * length, 8.0 + 2.0 * thickness);
    const cv::Point2d back = way * (-head / length);
    const double c = std::cos(kPi / 7.0);
    const double s = std::sin(kPi / 7.0);
    const cv::Point2d left(c * back.x - s * back.y, s * back.x + c * back.y);
    const cv::Point2d right(c * back.x + s * back.y, -s * back.x + c * back.y);
    return strokes({{from, to}, {to + left, to, to + right}});
}

Figure crossOf(cv::Point2d at, double arm) {
    if (!(arm > 0.0 && arm < kFarthest)) return {};
    const cv::Point2d across(arm, 0.0);
    const cv::Point2d down(0.0, arm);
    return strokes({{at - across, at + across}, {at - down, at + down}});
}

Figure figureOf(const TShape& shape, const ViewMapping& mapping, int thickness) {
    Points points;
    points.reserve(shape.points.size());
    for (const cv::Point2d& p : shape.points) points.push_back(mapping.placeInWindow(p));
    if (points.empty() || !isFinite(points)) return {};
    switch (shape.kind) {
        case TShapeKind::kPath:
            return strokes({std::move(points)});
        case TShapeKind::kArea:
            return filled(std::move(points));
        case TShapeKind::kCircle:
            return strokes({roundOutline(points[0], shape.size * mapping.scale())});
        case TShapeKind::kDisc:
            return filled(roundOutline(points[0], shape.size * mapping.scale()));
        case TShapeKind::kArrow:
            return points.size() < 2 ? Figure() : arrowOf(points[0], points[1], thickness);
        case TShapeKind::kCross:
            return crossOf(points[0], shape.size);
        case TShapeKind::kText:
            return letters(points[0], shape.text, shape.size);
    }
    return {};
}

// Where strokes of that width may still be seen.
cv::Rect2d seenFrom(cv::Size size, int thickness) {
    const double margin = thickness + 2.0;
    return {-margin, -margin, size.width + 2.0 * margin, size.height + 2.0 * margin};
}

// The part of a segment within the rectangle; false when there is none.
bool clip(cv::Point2d& a, cv::Point2d& b, const cv::Rect2d& within) {
    const cv::Point2d way = b - a;
    double first = 0.0;
    double last = 1.0;
    const auto cut = [&](double step, double room) {  // step * t <= room
        if (step == 0.0) return room >= 0.0;
        const double t = room / step;
        if (step > 0.0)
            last = std::min(last, t);
        else
            first = std::max(first, t);
        return first <= last;
    };
    if (!cut(-way.x, a.x - within.x) || !cut(way.x, within.br().x - a.x) || !cut(-way.y, a.y - within.y) ||
        !cut(way.y, within.br().y - a.y))
        return false;
    const cv::Point2d start = a;
    a = start + first * way;
    b = start + last * way;
    return true;
}

// The part of a polygon on that side of a straight line parallel to an axis, where value(p) >= 0.
template <typename Value>
Points cutPolygon(const Points& polygon, const Value& value) {
    Points kept;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const cv::Point2d a = polygon[i];
        const cv::Point2d b = polygon[(i + 1) % polygon.size()];
        const double atA = value(a);
        const double atB = value(b);
        if (atA >= 0.0) kept.push_back(a);
        if ((atA >= 0.0) != (atB >= 0.0)) kept.push_back(a + (b - a) * (atA / (atA - atB)));
    }
    return kept;
}

Points cutPolygon(const Points& polygon, const cv::Rect2d& within) {
    Points part = cutPolygon(polygon, [&](cv::Point2d p) { return p.x - within.x; });
    part = cutPolygon(part, [&](cv::Point2d p) { return within.br().x - p.x; });
    part = cutPolygon(part, [&](cv::Point2d p) { return p.y - within.y; });
    return cutPolygon(part, [&](cv::Point2d p) { return within.br().y - p.y; });
}

cv::Point inSixteenths(cv::Point2d p) {
    return {roundedInt(p.x * (1 << kShift)), roundedInt(p.y * (1 << kShift))};
}

struct Pen {
    cv::Scalar color;
    int thickness;
};

void stroke(cv::Mat& out, const Points& path, const Pen& pen) {
    const cv::Rect2d seen = seenFrom(out.size(), pen.thickness);
    const auto segment = [&](cv::Point2d a, cv::Point2d b) {
        if (clip(a, b, seen))
            cv::line(out, inSixteenths(a), inSixteenths(b), pen.color, pen.thickness, cv::LINE_AA, kShift);
    };
    if (path.size() == 1) segment(path[0], path[0]);
    for (std::size_t i = 1; i < path.size(); ++i) segment(path[i - 1], path[i]);
}

void fill(cv::Mat& out, const Points& outline, const Pen& pen) {
    std::vector<cv::Point> corners;
    for (const cv::Point2d& p : cutPolygon(outline, seenFrom(out.size(), 0)))
        corners.push_back(inSixteenths(p));
    if (corners.size() < 3) return;
    cv::fillPoly(out, std::vector<std::vector<cv::Point>>{std::move(corners)}, pen.color, cv::LINE_AA,
                 kShift);
}

struct LetterSize {
    LetterSize(const Figure& figure, int thickness)
        : scale(cv::getFontScaleFromHeight(cv::FONT_HERSHEY_SIMPLEX, roundedInt(figure.textHeight),
                                           thickness)) {
        const cv::Size size =
            cv::getTextSize(figure.text, cv::FONT_HERSHEY_SIMPLEX, scale, thickness, &below);
        width = size.width;
        above = size.height;
    }
    double scale;
    int below = 0;
    int above = 0;
    int width = 0;
};

void write(cv::Mat& out, const Figure& figure, cv::Point2d at, const Pen& pen) {
    if (!(std::abs(at.x) < kFarthest && std::abs(at.y) < kFarthest)) return;
    const LetterSize letterSize(figure, pen.thickness);
    cv::putText(out, figure.text, {roundedInt(at.x), roundedInt(at.y)}, cv::FONT_HERSHEY_SIMPLEX,
                std::max(letterSize.scale, 0.1), pen.color, pen.thickness, cv::LINE_AA);
}

// `origin`: the window pixel that is (0, 0) of `out`.
void draw(cv::Mat& out, const Figure& figure, cv::Point origin, const Pen& pen) {
    for (const Points& path : figure.paths) {
        Points moved = path;
        for (cv::Point2d& p : moved) p -= cv::Point2d(origin);
        if (!figure.text.empty())
            write(out, figure, moved[0], pen);
        else if (figure.isFilled)
            fill(out, moved, pen);
        else if (figure.textHeight == 0.0)
            stroke(out, moved, pen);
    }
}

// The window pixels that the figure may touch.
cv::Rect boundsOf(const Figure& figure, int thickness, cv::Size window) {
    const cv::Rect2d seen = seenFrom(window, thickness);
    double left = seen.br().x, right = seen.x, top = seen.br().y, bottom = seen.y;
    for (const Points& path : figure.paths) {
        for (const cv::Point2d& p : path) {
            left = std::min(left, p.x);
            right = std::max(right, p.x);
            top = std::min(top, p.y);
            bottom = std::max(bottom, p.y);
        }
    }
    if (!figure.text.empty()) {
        const LetterSize letterSize(figure, thickness);
        right += letterSize.width + thickness;
        top -= letterSize.above + thickness;
        bottom += letterSize.below + thickness;
    }
    const double margin = thickness + 2.0;
    const auto within = [](double v, double size) { return roundedInt(std::clamp(v, 0.0, size)); };
    const cv::Point first(within(std::floor(left - margin), window.width),
                          within(std::floor(top - margin), window.height));
    const cv::Point last(within(std::ceil(right + margin), window.width),
                         within(std::ceil(bottom + margin), window.height));
    return {first, last};
}

// Mixes the colour in, where the mask is 255 by `opacity`.
void blend(cv::Mat out, const cv::Mat& mask, const cv::Scalar& color, double opacity) {
    const auto weight = static_cast<int>(std::lround(opacity * 256.0));
    int wanted[3];
    for (int c = 0; c < 3; ++c) wanted[c] = cv::saturate_cast<std::uint8_t>(color[c]);
    constexpr int kWhole = 255 * 256;
    for (int y = 0; y < out.rows; ++y) {
        const auto* covered = mask.ptr<std::uint8_t>(y);
        auto* pixel = out.ptr<std::uint8_t>(y);
        for (int x = 0; x < out.cols; ++x, pixel += 3) {
            const int share = covered[x] * weight;
            if (share == 0) continue;
            for (int c = 0; c < 3; ++c)
                pixel[c] = static_cast<std::uint8_t>(
                    (pixel[c] * (kWhole - share) + wanted[c] * share + kWhole / 2) / kWhole);
        }
    }
}

}  // namespace

void OverlayPainter::paint(cv::Mat& picture, const TOverlay& overlay, const Groups& hidden,
                           const ViewMapping& mapping) {
    for (const TShape& shape : overlay.shapes())
        if (hidden.count(shape.group) == 0) paint(picture, shape, mapping);
}

void OverlayPainter::paint(cv::Mat& picture, const TShape& shape, const ViewMapping& mapping) {
    if (!(shape.style.opacity > 0.0)) return;
    const int thickness = std::clamp(shape.style.thickness, 1, kThickest);
    const Figure figure = figureOf(shape, mapping, thickness);
    if (shape.style.opacity >= 1.0) return draw(picture, figure, {}, {shape.style.color, thickness});
    const cv::Rect part = boundsOf(figure, thickness, picture.size());
    if (part.empty()) return;
    // Drawn as a whole first: where its strokes meet, it lets through no less than elsewhere.
    if (mask_.size() != picture.size()) mask_.create(picture.size(), CV_8UC1);
    cv::Mat mask = mask_(part);
    mask.setTo(0);
    draw(mask, figure, part.tl(), {cv::Scalar::all(255), thickness});
    blend(picture(part), mask, shape.style.color, shape.style.opacity);
}

}  // namespace orx::display
