// The mouse in a picture box: what it changes, and what the host is told of it.
#include "orxFunctions/display/picture_view_internal.h"

#include <algorithm>
#include <exception>
#include <opencv2/highgui.hpp>
#include <utility>

#include "orxFunctions/display/overlay_internal.h"
#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/rounding_internal.h"

using namespace orx::display;
using orx::platform::MouseEvent;

namespace {

bool areEqual(const TSelectionChange& a, const TSelectionChange& b) {
    return a.hasRect == b.hasRect && a.rect == b.rect && a.hasCircle == b.hasCircle && a.center == b.center &&
           a.radius == b.radius;
}

int keysOf(int flags) {
    return flags & (cv::EVENT_FLAG_CTRLKEY | cv::EVENT_FLAG_SHIFTKEY | cv::EVENT_FLAG_ALTKEY);
}

void readPixel(const cv::Mat& image, TPicturePlace& place) {
    try {
        cv::Mat pixel = image(cv::Rect(place.pixel, cv::Size(1, 1)));
        if (pixel.depth() == CV_16F) pixel.convertTo(pixel, CV_32F);  // OpenCV knows no other way
        pixel.convertTo(pixel, CV_64F);
        for (int c = 0; c < std::min(pixel.channels(), 4); ++c) place.value[c] = pixel.ptr<double>()[c];
        const cv::Scalar& v = place.value;
        place.grey = pixel.channels() < 3 ? v[0] : 0.114 * v[0] + 0.587 * v[1] + 0.299 * v[2];
    } catch (const std::exception& error) {
        orx::outPutDebugString("readPixel", error.what());
    }
}

// A host's mistake must not end the thread that brings the mouse.
template <typename Function, typename Told>
void call(const Function& callback, const Told& told) {
    if (!callback) return;
    try {
        callback(told);
    } catch (const std::exception& error) {
        orx::outPutDebugString(zul::toAnsi("图片框回调异常:"), error.what());
    } catch (...) {
        orx::outPutDebugString(zul::toAnsi("图片框回调异常"));
    }
}

}  // namespace

bool TPictureBox::View::selectedRect(cv::Rect2d& rect) const {
    const zul::LockGuard lock(state.sizeLock);
    const RectSelection selection = state.rect;
    if (!selection.exists()) return false;
    if (selection.drawnIn != nullptr && selection.drawnIn != &box_) return false;
    rect = selection.drawnIn == nullptr ? selection.rect : rectInImage(selection.rect, mapping());
    return true;
}

bool TPictureBox::View::selectedCircle(cv::Point& centre, double& radius) const {
    const zul::LockGuard lock(state.sizeLock);
    if (!state.circle.exists()) return false;
    centre = state.circle.centre;
    radius = state.circle.radius;
    return true;
}

void TPictureBox::View::installHandler(TFunction mode) {
    handler_ = mode;
    window_->setMouseListener(mode == FUNC_NONE ? nullptr : this);
    const zul::LockGuard lock(mouseLock_);
    if (!interaction_.dragging()) return;
    interaction_.endDrag();
    state.refreshAllowed = true;
}

void TPictureBox::View::forgetSelection() {
    const zul::LockGuard lock(state.sizeLock);
    if (state.rect.drawnIn == &box_) state.rect = RectSelection();
}

// Selections that drawing leaves in window coordinates are told in those of the image.
TSelectionChange TPictureBox::View::selections(bool isDragging) const {
    TSelectionChange found;
    found.hasRect = selectedRect(found.rect);
    found.hasCircle = selectedCircle(found.center, found.radius);
    found.isDragging = isDragging;
    return found;
}

void TPictureBox::View::onMouse(const MouseEvent& event) {
    TSelectionChange after;
    bool mustTell = false;
    {
        const zul::LockGuard lock(mouseLock_);
        const bool wasDragging = interaction_.dragging();
        const TSelectionChange before = selections(wasDragging);
        const bool hasChanged = handleMouse(event);
        const bool isDragging = interaction_.dragging();
        if (isDragging != wasDragging) state.refreshAllowed = !isDragging;
        if (hasChanged) show(isDragging ? Occasion::kDrag : Occasion::kNewImage, "mouseEvent");
        // Images that came during the drag were not shown.
        if (wasDragging && !isDragging) showSoon();

        after = selections(isDragging);
        const bool isOther = !areEqual(before, after);
        mustTell = isOther || (wasDragging && !isDragging && hasDragChanged_);
        hasDragChanged_ = isDragging && (hasDragChanged_ || isOther);
    }
    tell(event, mustTell ? &after : nullptr);
}

void TPictureBox::View::changeCallbacks(const std::function<void(Callbacks&)>& change) {
    const zul::LockGuard lock(callbackLock_);
    auto all = std::make_shared<Callbacks>(*callbacks_);
    change(*all);
    callbacks_ = std::move(all);
}

void TPictureBox::View::tell(const MouseEvent& event, const TSelectionChange* change) {
    std::shared_ptr<const Callbacks> callbacks;
    std::optional<Click> click;
    {
        const zul::LockGuard lock(callbackLock_);
        callbacks = callbacks_;
        click = clicks_.take(event);
    }
    if (!(box_.shownWidth > 0.0)) return;
    if (change != nullptr) call(callbacks->selection, *change);
    if (callbacks->cursor && event.event != cv::EVENT_MOUSEWHEEL && event.event != cv::EVENT_MOUSEHWHEEL)
        call(callbacks->cursor, placeAt({event.x, event.y}));
    if (callbacks->click && click)
        call(callbacks->click,
             TPictureClick{placeAt(click->at), click->button, click->isDouble, keysOf(event.flags)});
}

TPicturePlace TPictureBox::View::placeAt(cv::Point window) {
    TPicturePlace place;
    {
        const zul::LockGuard lock(state.sizeLock);
        place.point = mapping().placeInImage(window);
    }
    place.pixel = {orx::roundedInt(place.point.x), orx::roundedInt(place.point.y)};
    const zul::LockGuard lock(state.imageLock);
    const cv::Mat image = state.image;
    place.isInside = cv::Rect({}, image.size()).contains(place.pixel);
    if (place.isInside) readPixel(image, place);
    return place;
}

bool TPictureBox::View::handleMouse(const MouseEvent& event) {
    const TFunction mode = handler_;
    const zul::LockGuard lock(state.sizeLock);
    if (!(box_.origWidth > 0.0 && box_.shownWidth > 0.0 && box_.shownHeight > 0.0)) {  // nothing shown yet
        interaction_.endDrag();
        return false;
    }
    const bool wasZoomed = state.zoom.active();
    const bool hasChanged = applyMouse(mode, event);
    // A zoom that begins now is made for the size that the window has now.
    if (!wasZoomed && state.zoom.active()) box_.sizeChanged = false;
    if (state.rect.drawnIn == &box_) box_.drawnOnce = false;
    return hasChanged;
}

bool TPictureBox::View::applyMouse(TFunction mode, const MouseEvent& event) {
    const InteractionView view{mapping(),
                               cv::Size2d(box_.origWidth, box_.origHeight),
                               cv::Size(box_.windowWidth, box_.windowHeight),
                               box_.panGain,
                               box_.smallestSelection,
                               2.0 * box_.handleRadius};
    switch (mode) {
        case FUNC_ZOOM_PAN:
            if (view.window.width > 5 && view.window.height > 5)
                return interaction_.zoomAndPan(event, view, state.zoom);
            // Without a size the image is shown as it is, and can't be zoomed.
            interaction_.endDrag();
            return false;
        case FUNC_EDIT_RECT:
            return interaction_.editRect(event, view, &box_, state.rect);
        case FUNC_EDIT_CIRCLE:
            return interaction_.editCircle(event, view, state.circle);
        default:
            return false;
    }
}
