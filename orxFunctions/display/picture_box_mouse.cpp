// What the mouse does in a picture box.
#include <opencv2/highgui.hpp>

#include "orxFunctions/display/picture_box_core_internal.h"

using namespace orx::display;
using orx::platform::MouseEvent;

void TPictureBox::Core::installHandler(TFunction mode) {
    handler_ = mode;
    window_->setMouseListener(mode == FUNC_NONE ? nullptr : this);
    const zul::LockGuard lock(mouseLock_);
    if (!interaction_.dragging()) return;
    interaction_.endDrag();
    viewState.refreshAllowed = true;
}

void TPictureBox::Core::forgetSelection() {
    const zul::LockGuard lock(viewState.sizeLock);
    if (viewState.rect.drawnIn == &box_) viewState.rect = RectSelection();
}

void TPictureBox::Core::onMouse(const MouseEvent& event) {
    const zul::LockGuard lock(mouseLock_);
    const bool wasDragging = interaction_.dragging();
    const bool hasChanged = handleMouse(event);
    const bool isDragging = interaction_.dragging();
    if (isDragging != wasDragging) viewState.refreshAllowed = !isDragging;
    if (hasChanged) showPicture(isDragging ? Occasion::kDrag : Occasion::kNewImage);
    // Images that came during the drag were not shown.
    if (wasDragging && !isDragging) box_.redraw = true;
}

bool TPictureBox::Core::handleMouse(const MouseEvent& event) {
    const TFunction mode = handler_;
    const zul::LockGuard lock(viewState.sizeLock);
    if (!(box_.origWidth > 0.0 && box_.shownWidth > 0.0 && box_.shownHeight > 0.0)) {  // nothing shown yet
        interaction_.endDrag();
        return false;
    }
    const bool wasZoomed = viewState.zoom.active();
    const bool hasChanged = applyMouse(mode, event);
    // A zoom that begins now is made for the size that the window has now.
    if (!wasZoomed && viewState.zoom.active()) box_.sizeChanged = false;
    if (viewState.rect.drawnIn == &box_) box_.drawnOnce = false;
    return hasChanged;
}

bool TPictureBox::Core::applyMouse(TFunction mode, const MouseEvent& event) {
    const InteractionView view{mapping(),
                               cv::Size2d(box_.origWidth, box_.origHeight),
                               cv::Size(box_.windowWidth, box_.windowHeight),
                               box_.panGain,
                               box_.smallestSelection,
                               2 * box_.handleRadius};
    switch (mode) {
        case FUNC_ZOOM_PAN:
            // Without a size the image is shown as it is, and can't be zoomed.
            return view.window.width > 5 && view.window.height > 5 &&
                   interaction_.zoomAndPan(event, view, viewState.zoom);
        case FUNC_EDIT_RECT:
            return interaction_.editRect(event, view, &box_, viewState.rect);
        case FUNC_EDIT_CIRCLE:
            return interaction_.editCircle(event, view, viewState.circle);
        default:
            return false;
    }
}
