// From the shared image to the window.
#include <exception>
#include <string>
#include <utility>

#include "orxFunctions/display/overlay_internal.h"
#include "orxFunctions/display/picture_box_core_internal.h"
#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/rounding_internal.h"

using namespace orx::display;

namespace {

constexpr int kDecimals = 3;
const cv::Scalar kGrey(128, 128, 128);

void traceFailure(const std::exception& error) {
    orx::outPutDebugString(zul::toAnsi("显示图像失败:"), error.what());
}

void traceRect(const char* prefix, const cv::Rect2d& rect) {
    const std::string start = prefix;
    orx::outPutDebugString(start + "x:", rect.x, kDecimals);
    orx::outPutDebugString(start + "y:", rect.y, kDecimals);
    orx::outPutDebugString(start + "w:", rect.width, kDecimals);
    orx::outPutDebugString(start + "h:", rect.height, kDecimals);
}

}  // namespace

void TPictureBox::Core::showImage() { showPicture(Occasion::kNewImage); }

void TPictureBox::Core::showPicture(Occasion occasion) {
    const zul::LockGuard lock(viewState.imageLock);
    if (!mayShow(occasion)) return;
    try {
        present(occasion);
    } catch (const std::exception& error) {  // OpenCV's for pixels that it can't convert, or no memory
        traceFailure(error);
    }
}

void TPictureBox::Core::showImageLast() {
    const zul::LockGuard lock(viewState.imageLock);
    if (!mayShow(Occasion::kNewImage)) return;
    try {
        makeDisplay(true, false);
        sendToWindow();
    } catch (const std::exception& error) {
        traceFailure(error);
    }
}

bool TPictureBox::Core::mayShow(Occasion occasion) {
    if (viewState.image.empty()) {
        orx::outPutDebugString(zul::toAnsi("显示图像为空"));
        return false;
    }
    if (box_.frozen) return false;
    return occasion == Occasion::kDrag || viewState.refreshAllowed;
}

void TPictureBox::Core::present(Occasion occasion) {
    makeDisplay(false, hasDrawings());
    draw(occasion);
    sendToWindow();
    if (occasion == Occasion::kNewImage) box_.redraw = false;
}

// `drawable`: as 8-bit colour in memory of this box's own; the host's pixels are never drawn on.
void TPictureBox::Core::makeDisplay(bool endZoom, bool drawable) {
    cv::Mat picture = fittedPicture(endZoom);
    const bool isOurs = !picture.empty();
    if (!isOurs) picture = viewState.image;
    if (drawable && (!isOurs || picture.type() != CV_8UC3)) picture = fitter_.copy(picture);
    box_.display = picture;
    viewState.lastShown = box_.display;
}

// Empty where the image is shown as it is.
cv::Mat TPictureBox::Core::fittedPicture(bool endZoom) {
    const cv::Mat image = viewState.image;
    const zul::LockGuard lock(viewState.sizeLock);
    const cv::Size window(box_.windowWidth, box_.windowHeight);
    const FitGeometry fit = fitIntoWindow(window, image.size(), box_.keepAspect);
    box_.shownWidth = fit.shownWidth;
    box_.shownHeight = fit.shownHeight;
    box_.offsetX = fit.offsetX;
    box_.offsetY = fit.offsetY;
    // The image may have been handed to another box.
    box_.origWidth = image.cols;
    box_.origHeight = image.rows;
    if (endZoom || (box_.sizeChanged && viewState.zoom.active())) {
        viewState.zoom = Zoom();
        box_.sizeChanged = false;
    }
    if (viewState.zoom.active() && window.width > 5 && window.height > 5)
        return fitter_.zoom(image, fit, viewState.zoom, background());
    if (!needsFit(window, image.size())) return {};
    return box_.keepAspect ? fitter_.fit(image, fit, background()) : fitter_.stretch(image, window);
}

// The host may have put anything into `canvas`.
const cv::Mat& TPictureBox::Core::background() {
    const cv::Size window(box_.windowWidth, box_.windowHeight);
    if (box_.canvas.type() == CV_8UC3 && box_.canvas.size() == window) return box_.canvas;
    if (plainBackground_.size() != window) plainBackground_ = cv::Mat(window, CV_8UC3, kGrey);
    return plainBackground_;
}

bool TPictureBox::Core::hasDrawings() {
    if (box_.selectRect || box_.selectCircle) return true;
    const zul::LockGuard lock(overlayLock);
    return !box_.rects.empty() || !box_.circles.empty() || !box_.texts.texts.empty();
}

void TPictureBox::Core::draw(Occasion occasion) {
    {
        const zul::LockGuard sizeLock(viewState.sizeLock);
        const zul::LockGuard lock(overlayLock);
        if (!box_.circles.empty() || !box_.rects.empty()) keepScale(mapping());
        drawCircles(box_.display, box_.circles, mapping());
        drawRects(box_.display, box_.rects, mapping());
    }
    if (box_.selectRect) drawSelectedRect(occasion);
    if (box_.selectCircle) drawSelectedCircle();
    const zul::LockGuard lock(overlayLock);
    if (!box_.texts.texts.empty()) drawTexts(box_.display, box_.texts);
}

void TPictureBox::Core::drawSelectedRect(Occasion occasion) {
    cv::Rect2d before;
    cv::Rect2d after;
    bool isConverted = false;
    {
        const zul::LockGuard lock(viewState.sizeLock);
        RectSelection& selection = viewState.rect;
        if (!selection.exists()) return;
        const bool isInWindow = selection.drawnIn != nullptr;
        if (isInWindow && selection.drawnIn != &box_) return;  // another box's coordinates
        const ViewMapping view = mapping();
        cv::Rect shown;
        if (isInWindow && occasion == Occasion::kDrag) {
            const cv::Rect2d& r = selection.rect;
            shown = {orx::roundedInt(r.x), orx::roundedInt(r.y), orx::roundedInt(r.width),
                     orx::roundedInt(r.height)};
        } else {
            if (isInWindow) {
                before = selection.rect;
                const cv::Point2d corner = view.toImage(before.tl());
                after = {corner.x, corner.y, before.width / view.scale().x, before.height / view.scale().y};
                selection.rect = after;
                selection.drawnIn = nullptr;
                isConverted = true;
            }
            box_.drawnOnce = true;
            keepScale(view);
            shown = rectInWindow(selection.rect, view);
            selection.handles = handlesOf(shown);
            selection.handlesValid = true;
        }
        drawSelection(box_.display, shown, cv::Scalar(0, box_.selectionGreen, 0), box_.selectionThickness);
    }
    if (!isConverted) return;
    traceRect("", before);
    traceRect("img", after);
    orx::outPutDebugString("mScaleX:", box_.scaleX, kDecimals);
    orx::outPutDebugString("mScaleY:", box_.scaleY, kDecimals);
}

void TPictureBox::Core::drawSelectedCircle() {
    const zul::LockGuard lock(viewState.sizeLock);
    const CircleSelection selection = viewState.circle;
    if (!selection.exists()) return;
    drawSelection(box_.display, selection.centre, selection.radius, mapping(),
                  cv::Scalar(0, box_.selectionGreen, 0), 2 * box_.selectionThickness);
}

void TPictureBox::Core::sendToWindow() {
    if (!isShowable(box_.display)) {
        orx::outPutDebugString(zul::toAnsi("图像类型无法显示"));
        return;
    }
    const bool isPlain = box_.display.depth() == CV_8U;
    window_->show(isPlain ? box_.display : fitter_.copy(box_.display));
    takeHandles();
}

ViewMapping TPictureBox::Core::mapping() const {
    const FitGeometry fit{box_.shownWidth, box_.shownHeight, box_.offsetX, box_.offsetY};
    return {fit, cv::Size2d(box_.origWidth, box_.origHeight), viewState.zoom,
            cv::Size(box_.windowWidth, box_.windowHeight)};
}

void TPictureBox::Core::keepScale(const ViewMapping& mapping) {
    box_.scaleX = mapping.scale().x;
    box_.scaleY = mapping.scale().y;
}
