#include "orxFunctions/display/fit_geometry_internal.h"

#include <cmath>

namespace orx::display {
namespace {

// Taller than wide, or square.
FitGeometry fitUpright(double w, double h, double ratio) {
    FitGeometry fit;
    if (w < std::floor(h * ratio)) {
        fit.shownWidth = w;
        fit.shownHeight = std::floor(w / ratio);
        fit.offsetY = (h - fit.shownHeight) * 0.5;
    } else {
        fit.shownWidth = std::floor(h * ratio);
        fit.shownHeight = h;
        fit.offsetX = (w - fit.shownWidth) * 0.5;
    }
    return fit;
}

FitGeometry fitLying(double w, double h, double ratio) {
    FitGeometry fit;
    if (h < std::floor(w * ratio)) {
        fit.shownWidth = std::floor(h / ratio);
        fit.shownHeight = h;
        fit.offsetX = (w - fit.shownWidth) * 0.5;
    } else {
        fit.shownWidth = w;
        fit.shownHeight = std::floor(w * ratio);
        // The only offset without a half pixel; the difference is intended.
        fit.offsetY = std::floor((h - fit.shownHeight) * 0.5);
    }
    return fit;
}

}  // namespace

bool needsFit(cv::Size window, cv::Size image) {
    return window.width > 5 && window.height > 5 && window != image;
}

FitGeometry fitIntoWindow(cv::Size window, cv::Size image, bool keepAspect) {
    const double w = window.width;
    const double h = window.height;
    const double cols = image.width;
    const double rows = image.height;
    if (!needsFit(window, image)) return {cols, rows, 0.0, 0.0};
    if (!keepAspect) return {w, h, 0.0, 0.0};
    return cols <= rows ? fitUpright(w, h, cols / rows) : fitLying(w, h, rows / cols);
}

ViewMapping::ViewMapping(const FitGeometry& fit, cv::Size2d original, const Zoom& zoom, cv::Size window)
    : fit_(fit),
      fitScale_(fit.shownWidth / original.width, fit.shownHeight / original.height),
      zoomed_(zoom.active()),
      zoomScale_(zoom.width / window.width, zoom.height / window.height),
      pan_(zoom.panX, zoom.panY) {}

cv::Point2d ViewMapping::toWindow(cv::Point2d image) const {
    const cv::Point2d q(fitScale_.x * image.x + fit_.offsetX, fitScale_.y * image.y + fit_.offsetY);
    if (!zoomed_) return q;
    return {q.x * zoomScale_.x - pan_.x, q.y * zoomScale_.y - pan_.y};
}

cv::Point2d ViewMapping::toImage(cv::Point2d window) const {
    cv::Point2d q = window;
    if (zoomed_) q = {(q.x + pan_.x) / zoomScale_.x, (q.y + pan_.y) / zoomScale_.y};
    return {(q.x - fit_.offsetX) / fitScale_.x, (q.y - fit_.offsetY) / fitScale_.y};
}

cv::Point2d ViewMapping::painted() const {
    if (zoomed_) return {};
    return {std::floor(fit_.offsetX) - fit_.offsetX, std::floor(fit_.offsetY) - fit_.offsetY};
}

cv::Point2d ViewMapping::placeInWindow(cv::Point2d image) const {
    const cv::Point2d half(0.5, 0.5);
    return toWindow(image + half) + painted() - half;
}

cv::Point2d ViewMapping::placeInImage(cv::Point2d window) const {
    const cv::Point2d half(0.5, 0.5);
    return toImage(window + half - painted()) - half;
}

cv::Point2d ViewMapping::scale() const {
    if (!zoomed_) return fitScale_;
    return {zoomScale_.x * fitScale_.x, zoomScale_.y * fitScale_.y};
}

}  // namespace orx::display
