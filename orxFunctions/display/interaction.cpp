#include "orxFunctions/display/interaction_internal.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/highgui.hpp>
#include <optional>

#include "orxFunctions/foundation/rounding_internal.h"

namespace orx::display {
namespace {

constexpr double kZoomStep = 1.25;  // for a notch of the wheel
constexpr double kLargestZoom = 64.0;
constexpr double kNotch = 120.0;
constexpr std::size_t kCentreHandle = 4;

bool isPress(const platform::MouseEvent& event) {
    return event.event == cv::EVENT_LBUTTONDOWN || event.event == cv::EVENT_LBUTTONDBLCLK;
}

// A release may have been lost, with the window for instance.
bool endsDrag(const platform::MouseEvent& event) {
    return event.event == cv::EVENT_LBUTTONUP ||
           (event.event == cv::EVENT_MOUSEMOVE && (event.flags & cv::EVENT_FLAG_LBUTTON) == 0);
}

double distance(cv::Point2d a, cv::Point2d b) { return std::hypot(a.x - b.x, a.y - b.y); }

double within(double value, double low, double high) { return std::min(std::max(value, low), high); }

cv::Point2d insideImage(cv::Point2d p, cv::Size2d image) {
    return {within(p.x, 0.0, image.width), within(p.y, 0.0, image.height)};
}

// The point of the image that is nearest to a point of the window.
cv::Point2d imagePoint(cv::Point2d at, const InteractionView& view) {
    return insideImage(view.mapping.toImage(at), view.image);
}

// Between two corners, in whatever order.
cv::Rect2d rectBetween(cv::Point2d a, cv::Point2d b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::abs(a.x - b.x), std::abs(a.y - b.y)};
}

void keepInside(Zoom& zoom, cv::Size window) {
    zoom.panX = within(zoom.panX, 0.0, zoom.width - window.width);
    zoom.panY = within(zoom.panY, 0.0, zoom.height - window.height);
}

// What is under `at` stays there.
void zoomTo(double factor, cv::Point2d at, cv::Size window, Zoom& zoom) {
    const Zoom before = zoom;
    if (!(factor > 1.0)) {
        zoom = Zoom();
        return;
    }
    zoom.factor = std::min(factor, kLargestZoom);
    zoom.width = window.width * zoom.factor;
    zoom.height = window.height * zoom.factor;
    const double oldWidth = before.active() ? before.width : window.width;
    const double oldHeight = before.active() ? before.height : window.height;
    zoom.panX = (before.panX + at.x) * (zoom.width / oldWidth) - at.x;
    zoom.panY = (before.panY + at.y) * (zoom.height / oldHeight) - at.y;
    keepInside(zoom, window);
}

// The upper 16 bits hold how far the wheel was turned, as highgui packs its flags.
double notchesOf(const platform::MouseEvent& event) {
    return static_cast<std::int16_t>(static_cast<std::uint32_t>(event.flags) >> 16U) / kNotch;
}

std::optional<std::size_t> handleAt(cv::Point2d at, const Handles& handles, double reach) {
    std::optional<std::size_t> nearest;
    for (std::size_t i = 0; i < handles.size(); ++i) {
        const double away = distance(at, handles[i]);
        if (away > reach) continue;
        if (!nearest || away < distance(at, handles[*nearest])) nearest = i;
    }
    return nearest;
}

// The side or corner at `handle` goes to p; the opposite one stays.
cv::Rect2d withHandleAt(const cv::Rect2d& rect, std::size_t handle, cv::Point2d p) {
    cv::Point2d first = rect.tl();
    cv::Point2d last = rect.br();
    if (handle % 3 == 0) first.x = p.x;
    if (handle % 3 == 2) last.x = p.x;
    if (handle / 3 == 0) first.y = p.y;
    if (handle / 3 == 2) last.y = p.y;
    return rectBetween(first, last);
}

cv::Rect2d movedInside(cv::Rect2d rect, cv::Point2d by, cv::Size2d image) {
    rect.x = within(rect.x + by.x, 0.0, image.width - rect.width);
    rect.y = within(rect.y + by.y, 0.0, image.height - rect.height);
    return rect;
}

double largestRadius(cv::Point centre, cv::Size2d image) {
    return std::max(
        0.0, std::min({double(centre.x), double(centre.y), image.width - centre.x, image.height - centre.y}));
}

}  // namespace

bool Interaction::zoomAndPan(const platform::MouseEvent& event, const InteractionView& view, Zoom& zoom) {
    const cv::Point2d at(event.x, event.y);
    if (event.event == cv::EVENT_MOUSEWHEEL) {
        zoomTo(zoom.factor * std::pow(kZoomStep, notchesOf(event)), at, view.window, zoom);
        return true;
    }
    if (isPress(event)) {
        drag_ = Drag::kPan;
        from_ = at;
        if (event.event == cv::EVENT_LBUTTONDBLCLK) zoom = Zoom();
        panFrom_ = {zoom.panX, zoom.panY};
        return event.event == cv::EVENT_LBUTTONDBLCLK;
    }
    if (!dragging()) return false;
    if (endsDrag(event)) {
        endDrag();
        return true;
    }
    if (event.event != cv::EVENT_MOUSEMOVE || !zoom.active()) return false;
    const cv::Point2d way = (at - from_) * (view.panGain / 256.0);
    zoom.panX = panFrom_.x - way.x;
    zoom.panY = panFrom_.y - way.y;
    keepInside(zoom, view.window);
    return true;
}

bool Interaction::editRect(const platform::MouseEvent& event, const InteractionView& view,
                           const TPictureBox* box, RectSelection& selection) {
    const cv::Point2d at(event.x, event.y);
    if (isPress(event)) {
        grabRect(at, view, selection);
        return false;
    }
    if (!dragging()) return false;
    if (endsDrag(event)) {
        const bool drew = drag_ == Drag::kDraw && selection.drawnIn == box;
        endDrag();
        if (!drew) return true;
        const cv::Point2d scale = view.mapping.scale();
        const bool isTooSmall = selection.rect.width < view.smallestSelection * scale.x ||
                                selection.rect.height < view.smallestSelection * scale.y;
        if (isTooSmall) selection = RectSelection();
        return true;
    }
    if (event.event != cv::EVENT_MOUSEMOVE) return false;
    dragRect(at, view, box, selection);
    return true;
}

void Interaction::grabRect(cv::Point2d at, const InteractionView& view, const RectSelection& selection) {
    from_ = at;
    rectFrom_ = selection.rect;
    drag_ = Drag::kDraw;
    if (!selection.exists() || selection.drawnIn != nullptr) return;
    // Of this box: the handles in the shared state may be those of another one.
    const auto handle = handleAt(at, handlesOf(rectInWindow(selection.rect, view.mapping)), view.reach);
    if (!handle) return;
    handle_ = *handle;
    drag_ = handle_ == kCentreHandle ? Drag::kMove : Drag::kHandle;
}

void Interaction::dragRect(cv::Point2d at, const InteractionView& view, const TPictureBox* box,
                           RectSelection& selection) {
    selection.handlesValid = false;
    if (drag_ == Drag::kDraw) {
        const cv::Point2d first = view.mapping.toWindow(imagePoint(from_, view));
        const cv::Point2d last = view.mapping.toWindow(imagePoint(at, view));
        selection.rect = rectBetween(first, last);
        selection.drawnIn = box;
    } else if (drag_ == Drag::kMove) {
        selection.rect =
            movedInside(rectFrom_, view.mapping.toImage(at) - view.mapping.toImage(from_), view.image);
    } else {
        selection.rect = withHandleAt(rectFrom_, handle_, imagePoint(at, view));
    }
}

bool Interaction::editCircle(const platform::MouseEvent& event, const InteractionView& view,
                             CircleSelection& selection) {
    const cv::Point2d at(event.x, event.y);
    if (isPress(event)) {
        grabCircle(at, view, selection);
        return false;
    }
    if (!dragging()) return false;
    if (endsDrag(event)) {
        endDrag();
        if (selection.radius < view.smallestSelection) selection = CircleSelection();
        return true;
    }
    if (event.event != cv::EVENT_MOUSEMOVE) return false;
    dragCircle(at, view, selection);
    return true;
}

void Interaction::grabCircle(cv::Point2d at, const InteractionView& view, const CircleSelection& selection) {
    from_ = at;
    circleFrom_ = selection.centre;
    drag_ = Drag::kDraw;
    if (!selection.exists()) return;
    const cv::Point2d pressed = view.mapping.toImage(at);
    const double fromCentre = distance(at, view.mapping.toWindow(selection.centre));
    // The point of the edge in the direction of the cursor.
    const double away = distance(pressed, selection.centre);
    const cv::Point2d direction =
        away > 0.0 ? (pressed - cv::Point2d(selection.centre)) / away : cv::Point2d(1.0, 0.0);
    const cv::Point2d edge =
        view.mapping.toWindow(cv::Point2d(selection.centre) + selection.radius * direction);
    const double fromEdge = distance(at, edge);
    if (std::min(fromCentre, fromEdge) > view.reach) return;
    drag_ = fromEdge < fromCentre ? Drag::kResize : Drag::kMove;
}

void Interaction::dragCircle(cv::Point2d at, const InteractionView& view, CircleSelection& selection) {
    if (drag_ == Drag::kMove) {
        const cv::Point2d to = circleFrom_ + view.mapping.toImage(at) - view.mapping.toImage(from_);
        const double r = selection.radius;
        // Rounded inwards: the circle stays inside.
        const auto inside = [r](double v, double size) {
            return roundedInt(within(std::round(v), std::ceil(r), std::floor(size - r)));
        };
        selection.centre = {inside(to.x, view.image.width), inside(to.y, view.image.height)};
        return;
    }
    if (drag_ == Drag::kDraw) {
        const cv::Point2d centre = imagePoint(from_, view);
        selection.centre = {roundedInt(centre.x), roundedInt(centre.y)};
    }
    selection.radius = std::min(distance(view.mapping.toImage(at), selection.centre),
                                largestRadius(selection.centre, view.image));
}

}  // namespace orx::display
