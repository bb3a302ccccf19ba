#include "orxFunctions/display/picture_box.h"

#include <cmath>
#include <cstdint>
#include <exception>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "orxFunctions/display/frame_pacing_internal.h"
#include "orxFunctions/display/picture_view_internal.h"
#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/refusal_internal.h"

using namespace orx::display;

namespace {

constexpr int kSmallestSide = 5;
constexpr int kLargestSide = 32767;
constexpr std::int64_t kMostPixels = std::int64_t{1} << 27;

bool isWindowSize(int w, int h) {
    return w >= kSmallestSide && h >= kSmallestSide && w <= kLargestSide && h <= kLargestSide &&
           std::int64_t{w} * h <= kMostPixels;
}

bool isFinite(const cv::Rect2d& r) { return std::isfinite(r.x + r.y + r.width + r.height); }

void select(ViewState& state, const cv::Rect2d& rect, const char* function) {
    if (!isFinite(rect)) orx::refuse(orx::rcNotFinite, function, "a side of the rectangle is not finite");
    const zul::LockGuard lock(state.sizeLock);
    state.rect = RectSelection();
    if (isFinite(rect) && rect.width > 0.0 && rect.height > 0.0) state.rect.rect = rect;
}

void select(ViewState& state, cv::Point centre, double radius, const char* function) {
    if (!std::isfinite(radius)) orx::refuse(orx::rcNotFinite, function, "the radius is %g", radius);
    const zul::LockGuard lock(state.sizeLock);
    state.circle = CircleSelection();
    if (std::isfinite(radius) && radius > 0.0) state.circle = {centre, radius};
}

bool copyLastShown(ViewState& state, cv::Mat& picture) {
    const zul::LockGuard lock(state.imageLock);
    if (state.lastShown.empty()) return false;
    picture = state.lastShown.clone();
    return true;
}

// Never the same twice: a box with a picture of its own is not counted.
std::string nameOfOwnWindow() {
    static std::atomic<unsigned> made{0};
    return "pictureBoxOwn" + std::to_string(++made);
}

}  // namespace

TPictureBox::TPictureBox() : TPictureBox(TPictureOf::kProcess) {}

TPictureBox::TPictureBox(TPictureOf whose) {
    winName = whose == TPictureOf::kProcess ? "pictrueBox1" + std::to_string(++mCount) : nameOfOwnWindow();
    view_ = std::make_unique<View>(*this, whose);
    setFunction(function);
}

TPictureBox::~TPictureBox() {
    const bool isShared = view_->isShared();
    if (isShared) --mCount;
    killThread();
    view_->join();
    view_->installHandler(FUNC_NONE);
    view_->forgetSelection();
    orx::outPutDebugString(zul::toAnsi("更改父窗体"));
    if (host != cvFrame) {
        host = cvFrame.load();
        view_->moveInto(host);
    }
    orx::outPutDebugString(zul::toAnsi("删除指定opencv 窗体"));
    view_->window().close();
    if (isShared) orx::platform::destroyAllNativeWindows();  // those of other boxes too, as intended
    orx::outPutDebugString(zul::toAnsi("删除所有opencv 窗体后"));
    cvWindow = nullptr;
    cvFrame = nullptr;
    orx::outPutDebugString(zul::toAnsi("删除所有opencv 窗体后2"));
}

void TPictureBox::setHandle(void* hwnd) {
    // A box that is not inside the window tries again: it may have come to be, or be a new one of that
    // number.
    const bool isNew = hwnd != host.exchange(hwnd);
    if (isNew || (hwnd != nullptr && !view_->isPlaced())) view_->moveInto(hwnd);
    if (hwnd != nullptr && !view_->isPlaced())
        orx::refuse(orx::rcNoDisplay, "setHandle",
                    "there is no display, it does not answer, or has no such window");
}

void TPictureBox::setHandle(void* hwnd, int w, int h) {
    setHandle(hwnd);
    setWindowSize(w, h);
}

void* TPictureBox::getParentHand() { return host; }

void TPictureBox::setWindowSize(int w, int h) {
    if (!isWindowSize(w, h)) {
        orx::refuse(orx::rcOption, "setWindowSize",
                    "%d x %d; sides of 5 to 32767 and up to 2^27 pixels are taken", w, h);
        return;
    }
    const zul::LockGuard lock(view_->state.sizeLock);
    try {
        const cv::Size size(w, h);
        if (canvas.empty())
            canvas = cv::Mat(size, CV_8UC3, cv::Scalar(128, 128, 128));
        else if (canvas.size() != size)
            cv::resize(canvas, canvas, size, 0, 0, cv::INTER_LINEAR);
    } catch (const std::exception& error) {
        orx::refuse(orx::rcMemory, "setWindowSize", "no memory for %d x %d pixels", w, h);
        orx::outPutDebugString("setWindowSize", error.what());
        return;
    }
    const bool isNew = w != windowWidth || h != windowHeight;
    windowWidth = w;
    windowHeight = h;
    if (!isNew) return;
    sizeChanged = true;
    view_->showSoon();  // a still picture, too, is fitted anew
}

void TPictureBox::setImage(cv::Mat& img, bool noRedraw) { setImage(std::as_const(img), noRedraw); }

void TPictureBox::setImage(const cv::Mat& img, bool noRedraw) {
    view_->takePicture(img, noRedraw, nullptr, "setImage");
}

bool TPictureBox::setPicture(const cv::Mat& image, TOverlay overlay) {
    return view_->takePicture(image, false, std::make_shared<const TOverlay>(std::move(overlay)),
                              "setPicture");
}

void TPictureBox::setOverlay(TOverlay overlay) {
    view_->setOverlay(std::make_shared<const TOverlay>(std::move(overlay)));
}

TOverlay TPictureBox::getOverlay() const { return *view_->overlay(); }

void TPictureBox::showGroup(const std::string& group, bool shown) { view_->showGroup(group, shown); }

bool TPictureBox::isGroupShown(const std::string& group) const { return view_->isGroupShown(group); }

void TPictureBox::start() { view_->start(); }

void TPictureBox::killThread() {
    killFlag = true;
    view_->wakeUp();
}

void TPictureBox::setShowFrame(int fps) { targetFps = fps > 0 ? fps : 1; }

int TPictureBox::getShowFrame() { return measuredFps; }

void TPictureBox::calShowFrame() { orx::display::keepPace(*this, targetFps); }

void TPictureBox::showImage() {
    view_->show(View::Occasion::kNewImage, "showImage");
    view_->waitUntilShown();
}

void TPictureBox::showImageLast() {
    view_->show(View::Occasion::kPlain, "showImageLast");
    view_->waitUntilShown();
}

cv::Point2d TPictureBox::orig2ShowPoint(cv::Point2d p) { return view_->toWindow(p); }

cv::Point2d TPictureBox::show2OrigPoint(cv::Point2d p) { return view_->toImage(p); }

void TPictureBox::getOrig2ShowImgScaleXY(double& sx, double& sy) {
    const zul::LockGuard lock(view_->state.sizeLock);
    sx = scaleX;
    sy = scaleY;
}

void TPictureBox::setDrawRect(TDrawRect rect) {
    const zul::LockGuard lock(view_->overlayLock);
    rects.push_back(rect);
}

void TPictureBox::setDrawCircle(TDrawCircle circle) {
    const zul::LockGuard lock(view_->overlayLock);
    circles.push_back(circle);
}

void TPictureBox::setDrawText(TDrawTexts& lines) { setDrawText(std::as_const(lines)); }

void TPictureBox::setDrawText(const TDrawTexts& lines) {
    const zul::LockGuard lock(view_->overlayLock);
    texts = lines;
}

void TPictureBox::clearDraw() {
    const zul::LockGuard lock(view_->overlayLock);
    rects.clear();
    circles.clear();
    texts.texts.clear();
}

void TPictureBox::setCursor(TCursorShape shape) {
    if (cvWindow != nullptr) view_->window().setCursor(shape);
}

void TPictureBox::setFunction(TFunction f) {
    function = f;
    if (f == FUNC_EDIT_RECT || f == FUNC_EDIT_CIRCLE || f == FUNC_ZOOM_PAN || f == FUNC_NONE)
        view_->installHandler(f);
}

void TPictureBox::mouseEvent(int event, int x, int y, int flags) { view_->onMouse({event, x, y, flags}); }

void TPictureBox::onSelectionChanged(std::function<void(const TSelectionChange&)> callback) {
    view_->changeCallbacks([&](Callbacks& all) { all.selection = std::move(callback); });
}

void TPictureBox::onCursor(std::function<void(const TPicturePlace&)> callback) {
    view_->changeCallbacks([&](Callbacks& all) { all.cursor = std::move(callback); });
}

void TPictureBox::onClick(std::function<void(const TPictureClick&)> callback) {
    view_->changeCallbacks([&](Callbacks& all) { all.click = std::move(callback); });
}

std::string TPictureBox::getCvWinName() { return winName; }

void TPictureBox::setSelectionRect(const cv::Rect2d& rect) { select(viewState, rect, "setSelectionRect"); }

bool TPictureBox::getSelectionRect(cv::Rect2d& rect) {
    const zul::LockGuard lock(viewState.sizeLock);
    if (!viewState.rect.exists() || viewState.rect.drawnIn != nullptr) return false;
    rect = viewState.rect.rect;
    return true;
}

void TPictureBox::setSelectionCircle(cv::Point center, double radius) {
    select(viewState, center, radius, "setSelectionCircle");
}

bool TPictureBox::getSelectionCircle(cv::Point& center, double& radius) {
    const zul::LockGuard lock(viewState.sizeLock);
    if (!viewState.circle.exists()) return false;
    center = viewState.circle.centre;
    radius = viewState.circle.radius;
    return true;
}

bool TPictureBox::getLastShownImage(cv::Mat& picture) { return copyLastShown(viewState, picture); }

void TPictureBox::setSelectedRect(const cv::Rect2d& rect) {
    select(view_->state, rect, "setSelectedRect");
    view_->showSoon();
}

bool TPictureBox::getSelectedRect(cv::Rect2d& rect) const { return view_->selectedRect(rect); }

void TPictureBox::setSelectedCircle(cv::Point center, double radius) {
    select(view_->state, center, radius, "setSelectedCircle");
    view_->showSoon();
}

bool TPictureBox::getSelectedCircle(cv::Point& center, double& radius) const {
    return view_->selectedCircle(center, radius);
}

bool TPictureBox::getShownImage(cv::Mat& picture) const { return copyLastShown(view_->state, picture); }
