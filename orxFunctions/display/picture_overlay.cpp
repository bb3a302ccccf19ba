#include "orxFunctions/display/picture_overlay.h"

#include <utility>

TOverlay& TOverlay::setStyle(const TShapeStyle& style) {
    style_ = style;
    return *this;
}

TOverlay& TOverlay::setGroup(const std::string& group) {
    group_ = group;
    return *this;
}

TOverlay& TOverlay::line(cv::Point2d from, cv::Point2d to) { return add(TShapeKind::kPath, {from, to}); }

TOverlay& TOverlay::polyline(std::vector<cv::Point2d> points, bool closed) {
    if (closed && !points.empty()) points.push_back(points.front());
    return add(TShapeKind::kPath, std::move(points));
}

TOverlay& TOverlay::rectangle(const cv::Rect2d& rect) {
    const cv::Point2d right(rect.width, 0.0);
    return polyline({rect.tl(), rect.tl() + right, rect.br(), rect.br() - right}, true);
}

TOverlay& TOverlay::circle(cv::Point2d centre, double radius) {
    return add(TShapeKind::kCircle, {centre}, radius);
}

TOverlay& TOverlay::arrow(cv::Point2d from, cv::Point2d to) { return add(TShapeKind::kArrow, {from, to}); }

TOverlay& TOverlay::cross(cv::Point2d at, double armLength) {
    return add(TShapeKind::kCross, {at}, armLength);
}

TOverlay& TOverlay::text(cv::Point2d at, const std::string& letters, double height) {
    return add(TShapeKind::kText, {at}, height, letters);
}

TOverlay& TOverlay::area(std::vector<cv::Point2d> corners) {
    return add(TShapeKind::kArea, std::move(corners));
}

TOverlay& TOverlay::disc(cv::Point2d centre, double radius) {
    return add(TShapeKind::kDisc, {centre}, radius);
}

TOverlay& TOverlay::add(TShapeKind kind, std::vector<cv::Point2d> points, double size,
                        const std::string& letters) {
    shapes_.push_back({kind, std::move(points), size, letters, style_, group_});
    return *this;
}
