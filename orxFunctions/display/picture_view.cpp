#include "orxFunctions/display/picture_view_internal.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <opencv2/highgui.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>

#include "orxFunctions/display/overlay_internal.h"
#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/message_colours_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/foundation/rounding_internal.h"
#include "orxFunctions/platform/fine_pauses_internal.h"

using namespace orx::display;

namespace {

constexpr int kDecimals = 3;
const cv::Scalar kGrey(128, 128, 128);

void traceRect(const char* prefix, const cv::Rect2d& rect) {
    const std::string start = prefix;
    orx::outPutDebugString(start + "x:", rect.x, kDecimals);
    orx::outPutDebugString(start + "y:", rect.y, kDecimals);
    orx::outPutDebugString(start + "w:", rect.width, kDecimals);
    orx::outPutDebugString(start + "h:", rect.height, kDecimals);
}

// Of any thickness; beyond the largest one that is drawn it does not count how much.
int twice(int thickness) { return 2 * std::clamp(thickness, -1, 255); }

void tellNotTaken() {
    const std::string text = zul::toAnsi("设置图片失败!");
    orx::APPshowMessage(text, orx::kErrorColor);
    orx::outPutDebugString(text);
}

}  // namespace

TPictureBox::View::View(TPictureBox& box, TPictureOf whose)
    : own_(whose == TPictureOf::kBox ? std::make_unique<ViewState>() : nullptr),
      state(own_ != nullptr ? *own_ : viewState),
      box_(box),
      window_(orx::platform::createNativeWindow(box.winName)) {
    if (own_ != nullptr) ownViewStates.add(own_.get());
    takeHandles();
}

TPictureBox::View::~View() {
    if (own_ != nullptr) ownViewStates.remove(own_.get());
}

void TPictureBox::View::start() {
    thread_ = std::thread([this] { run(); });
}

void TPictureBox::View::wakeUp() {
    const zul::LockGuard lock(sleepLock_);
    wake_.notify_all();
}

void TPictureBox::View::join() {
    // A box that was never started has nothing to wait for.
    if (thread_.joinable()) thread_.join();
}

// The thread object is the thread's own for as long as it runs: nothing empties it before join.
void TPictureBox::View::run() {
    const orx::platform::FinePauses finePauses;
    while (!box_.killFlag) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(box_.sleepMs);
        {
            const zul::LockGuard lock(sleepLock_);
            wake_.wait_until(sleepLock_, end, [this] { return box_.killFlag.load(); });
        }
        // An image that comes in from here on is for the next turn.
        const bool hasChanged = hasChanged_.exchange(false);
        if (!box_.redraw.exchange(false) && !hasChanged) continue;
        try {
            show(Occasion::kNewImage, "showImage");
            box_.calShowFrame();
        } catch (
            const std::exception&) {  // no memory, not even to trace it: as show does with what it can trace
        }
    }
    try {
        orx::outPutDebugString(zul::toAnsi("图片显示线程已经关闭"));
    } catch (const std::exception&) {  // untold, then
    }
}

void TPictureBox::View::moveInto(void* newHost) {
    const bool wasHeadless = isHeadless();
    isPlaced_ = window_->moveInto(newHost);
    takeHandles();
    // A new window is empty until the image is shown again.
    if (!wasHeadless || isHeadless()) return;
    const zul::LockGuard lock(state.imageLock);
    if (!state.image.empty()) box_.redraw = true;
}

void TPictureBox::View::takeHandles() {
    box_.cvWindow = window_->handle();
    box_.cvFrame = window_->frame();
}

void TPictureBox::View::show(Occasion occasion, const char* caller) {
    const zul::LockGuard lock(state.imageLock);
    if (!mayShow(occasion, caller)) return;
    try {
        const bool isPlain = occasion == Occasion::kPlain;
        // Asked once: what is handed in meanwhile must not be drawn on the host's pixels.
        const bool isDrawnOn = !isPlain && hasDrawings();
        makeDisplay(isPlain, isDrawnOn);
        if (isDrawnOn) draw(occasion);
        sendToWindow(caller);
        if (occasion == Occasion::kNewImage) box_.redraw = false;
    } catch (const std::exception& error) {  // OpenCV's for pixels that it can't convert, or no memory
        orx::refuse(orx::rcFailed, caller, "%s", error.what());
        orx::outPutDebugString(zul::toAnsi("显示图像失败:"), error.what());
    }
}

void TPictureBox::View::waitUntilShown() {
    window_->waitUntilShown();
    takeHandles();
}

bool TPictureBox::View::takePicture(const cv::Mat& picture, bool noRedraw,
                                    std::shared_ptr<const TOverlay> overlay, const char* caller) {
    const zul::LockGuard lock(state.imageLock);
    if (!orx::takesImage(picture, caller)) {
        if (!picture.empty()) tellNotTaken();
        return false;
    }
    try {
        cv::Mat image = picture;
        if (image.type() == CV_8UC4) cv::cvtColor(image, image, cv::COLOR_BGRA2BGR);
        state.image = image;
        box_.origWidth = image.cols;
        box_.origHeight = image.rows;
    } catch (const std::exception&) {
        tellNotTaken();
        return orx::refuse(orx::rcMemory, caller, "no memory for %d x %d pixels of three channels",
                           picture.cols, picture.rows);
    }
    if (overlay != nullptr) {
        const zul::LockGuard overlaysLock(overlayLock);
        overlay_ = std::move(overlay);
    }
    if (!noRedraw) box_.redraw = true;
    return true;
}

void TPictureBox::View::setOverlay(std::shared_ptr<const TOverlay> overlay) {
    {
        const zul::LockGuard lock(overlayLock);
        overlay_ = std::move(overlay);
    }
    showSoon();
}

std::shared_ptr<const TOverlay> TPictureBox::View::overlay() {
    const zul::LockGuard lock(overlayLock);
    return overlay_;
}

void TPictureBox::View::showGroup(const std::string& group, bool shown) {
    {
        const zul::LockGuard lock(overlayLock);
        if (shown)
            hiddenGroups_.erase(group);
        else
            hiddenGroups_.insert(group);
    }
    showSoon();
}

bool TPictureBox::View::isGroupShown(const std::string& group) {
    const zul::LockGuard lock(overlayLock);
    return hiddenGroups_.count(group) == 0;
}

void TPictureBox::View::showSoon() {
    if (!(box_.shownWidth > 0.0)) return;
    hasChanged_ = true;
    box_.redraw = true;
}

bool TPictureBox::View::mayShow(Occasion occasion, const char* caller) {
    if (state.image.empty()) {
        orx::refuse(orx::rcNotReady, caller, "no image was handed in");
        orx::outPutDebugString(zul::toAnsi("显示图像为空"));
        return false;
    }
    if (box_.frozen) return false;
    return occasion == Occasion::kDrag || state.refreshAllowed;
}

// `drawable`: as 8-bit colour in memory of this box's own; the host's pixels are never drawn on.
void TPictureBox::View::makeDisplay(bool endZoom, bool drawable) {
    cv::Mat picture = fittedPicture(endZoom);
    const bool isOurs = !picture.empty();
    if (!isOurs) picture = state.image;
    if (drawable && (!isOurs || picture.type() != CV_8UC3)) picture = fitter_.copy(picture);
    box_.display = picture;
    state.lastShown = box_.display;
}

// Empty where the image is shown as it is.
cv::Mat TPictureBox::View::fittedPicture(bool endZoom) {
    const cv::Mat image = state.image;
    const zul::LockGuard lock(state.sizeLock);
    const cv::Size window(box_.windowWidth, box_.windowHeight);
    const FitGeometry fit = fitIntoWindow(window, image.size(), box_.keepAspect);
    box_.shownWidth = fit.shownWidth;
    box_.shownHeight = fit.shownHeight;
    box_.offsetX = fit.offsetX;
    box_.offsetY = fit.offsetY;
    // The image may have been handed to another box.
    box_.origWidth = image.cols;
    box_.origHeight = image.rows;
    // Taken back by every fit: a change that another box's zoom finds still waiting would end that zoom.
    const bool hasNewSize = box_.sizeChanged.exchange(false);
    if (endZoom || (hasNewSize && state.zoom.active())) state.zoom = Zoom();
    if (state.zoom.active() && window.width > 5 && window.height > 5)
        return fitter_.zoom(image, fit, state.zoom, background());
    if (!needsFit(window, image.size())) return {};
    return box_.keepAspect ? fitter_.fit(image, fit, background()) : fitter_.stretch(image, window);
}

// The host may have put anything into `canvas`.
const cv::Mat& TPictureBox::View::background() {
    const cv::Size window(box_.windowWidth, box_.windowHeight);
    if (box_.canvas.type() == CV_8UC3 && box_.canvas.size() == window) return box_.canvas;
    if (plainBackground_.size() != window) plainBackground_ = cv::Mat(window, CV_8UC3, kGrey);
    return plainBackground_;
}

bool TPictureBox::View::hasDrawings() {
    if (box_.selectRect || box_.selectCircle) return true;
    const zul::LockGuard lock(overlayLock);
    return !overlay_->empty() || !box_.rects.empty() || !box_.circles.empty() || !box_.texts.texts.empty();
}

void TPictureBox::View::draw(Occasion occasion) {
    {
        const zul::LockGuard sizeLock(state.sizeLock);
        const zul::LockGuard lock(overlayLock);
        if (!box_.circles.empty() || !box_.rects.empty()) keepScale(mapping());
        drawCircles(box_.display, box_.circles, mapping());
        drawRects(box_.display, box_.rects, mapping());
    }
    drawOverlay();
    if (box_.selectRect) drawSelectedRect(occasion);
    if (box_.selectCircle) drawSelectedCircle();
    const zul::LockGuard lock(overlayLock);
    if (!box_.texts.texts.empty()) drawTexts(box_.display, box_.texts);
}

void TPictureBox::View::drawOverlay() {
    std::shared_ptr<const TOverlay> shapes;
    Groups hidden;
    {
        const zul::LockGuard lock(overlayLock);
        shapes = overlay_;
        hidden = hiddenGroups_;
    }
    if (shapes->empty()) return;
    const zul::LockGuard lock(state.sizeLock);
    painter_.paint(box_.display, *shapes, hidden, mapping());
}

void TPictureBox::View::drawSelectedRect(Occasion occasion) {
    cv::Rect2d before;
    cv::Rect2d after;
    bool isConverted = false;
    {
        const zul::LockGuard lock(state.sizeLock);
        RectSelection& selection = state.rect;
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
                after = rectInImage(before, view);
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

void TPictureBox::View::drawSelectedCircle() {
    const zul::LockGuard lock(state.sizeLock);
    const CircleSelection selection = state.circle;
    if (!selection.exists()) return;
    drawSelection(box_.display, selection.centre, selection.radius, mapping(),
                  cv::Scalar(0, box_.selectionGreen, 0), twice(box_.selectionThickness));
}

void TPictureBox::View::sendToWindow(const char* caller) {
    if (!isShowable(box_.display)) {
        orx::refuse(orx::rcImageType, caller, "the image has %d channels; 1, 3 or 4 are shown",
                    box_.display.channels());
        orx::outPutDebugString(zul::toAnsi("图像类型无法显示"));
        return;
    }
    const bool isPlain = box_.display.depth() == CV_8U;
    window_->show(isPlain ? box_.display : fitter_.copy(box_.display));
    takeHandles();
}

cv::Point2d TPictureBox::View::toWindow(cv::Point2d p) {
    const zul::LockGuard lock(state.sizeLock);
    const ViewMapping view = mapping();
    keepScale(view);
    return view.toWindow(p);
}

cv::Point2d TPictureBox::View::toImage(cv::Point2d p) {
    const zul::LockGuard lock(state.sizeLock);
    const ViewMapping view = mapping();
    keepScale(view);
    return view.toImage(p);
}

ViewMapping TPictureBox::View::mapping() const {
    const FitGeometry fit{box_.shownWidth, box_.shownHeight, box_.offsetX, box_.offsetY};
    return {fit, cv::Size2d(box_.origWidth, box_.origHeight), state.zoom,
            cv::Size(box_.windowWidth, box_.windowHeight)};
}

void TPictureBox::View::keepScale(const ViewMapping& mapping) {
    box_.scaleX = mapping.scale().x;
    box_.scaleY = mapping.scale().y;
}
