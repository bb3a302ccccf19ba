// What is behind a picture box: its window, its thread, and the way from the shared image to the window.
#ifndef ORXFUNCTIONS_DISPLAY_PICTURE_VIEW_INTERNAL_H
#define ORXFUNCTIONS_DISPLAY_PICTURE_VIEW_INTERNAL_H

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <thread>

#include "ZULLib/sync_internal.h"
#include "orxFunctions/display/click_finder_internal.h"
#include "orxFunctions/display/fit_picture_internal.h"
#include "orxFunctions/display/interaction_internal.h"
#include "orxFunctions/display/overlay_painter_internal.h"
#include "orxFunctions/display/picture_box.h"
#include "orxFunctions/display/view_state_internal.h"
#include "orxFunctions/platform/window/native_window.h"

namespace orx::display {

struct Callbacks {
    std::function<void(const TSelectionChange&)> selection;
    std::function<void(const TPicturePlace&)> cursor;
    std::function<void(const TPictureClick&)> click;
};

}  // namespace orx::display

// Locks, in the order in which they are taken: mouse, image, size, overlay. That of the callbacks is taken
// alone.
class TPictureBox::View final : public orx::platform::MouseListener {
  public:
    // What a picture is shown for: an image that came in, a drag of the mouse, or to be seen as it is, with
    // neither zoom nor drawings.
    enum class Occasion { kNewImage, kDrag, kPlain };

    View(TPictureBox& box, TPictureOf whose);
    ~View();

    bool isShared() const { return own_ == nullptr; }

    // The display thread.
    void start();
    void wakeUp();
    void join();

    // The window.
    void moveInto(void* newHost);
    void takeHandles();
    bool isHeadless() const { return window_->handle() == nullptr; }
    // Inside the host's window.
    bool isPlaced() const { return isPlaced_ && !isHeadless(); }
    orx::platform::NativeWindow& window() { return *window_; }

    // Makes the picture ready now, on the calling thread, and hands it to the window; `caller` is who
    // refuses. Nobody waits for the window system under the image lock.
    void show(Occasion occasion, const char* caller);
    // Not under a lock.
    void waitUntilShown();
    // At the display thread's next turn, if anything was shown yet.
    void showSoon();

    // Takes an image and, unless it is nullptr, what is drawn over it, at once. False when it can't be shown.
    bool takePicture(const cv::Mat& picture, bool noRedraw, std::shared_ptr<const TOverlay> overlay,
                     const char* caller);
    void setOverlay(std::shared_ptr<const TOverlay> overlay);
    std::shared_ptr<const TOverlay> overlay();
    void showGroup(const std::string& group, bool shown);
    bool isGroupShown(const std::string& group);

    // The way between image and window; both keep the scale that they used.
    cv::Point2d toWindow(cv::Point2d p);
    cv::Point2d toImage(cv::Point2d p);

    // The selections in image coordinates, false without one.
    bool selectedRect(cv::Rect2d& rect) const;
    bool selectedCircle(cv::Point& centre, double& radius) const;

    // The mouse. FUNC_NONE: no handler.
    void installHandler(TFunction mode);
    void onMouse(const orx::platform::MouseEvent& event) override;
    void forgetSelection();
    void changeCallbacks(const std::function<void(orx::display::Callbacks&)>& change);

  private:
    const std::unique_ptr<orx::display::ViewState> own_;  // nullptr: the process's is shown

  public:
    orx::display::ViewState& state;  // image, zoom and selections, of the process or of this box
    zul::Mutex overlayLock;          // the box's rects, circles and texts

  private:
    void run();

    orx::display::ViewMapping mapping() const ZUL_REQUIRES(state.sizeLock);
    void keepScale(const orx::display::ViewMapping& mapping);

    bool mayShow(Occasion occasion, const char* caller) ZUL_REQUIRES(state.imageLock);
    cv::Mat fittedPicture(bool endZoom) ZUL_REQUIRES(state.imageLock);
    const cv::Mat& background() ZUL_REQUIRES(state.sizeLock);
    void makeDisplay(bool endZoom, bool drawable) ZUL_REQUIRES(state.imageLock);
    bool hasDrawings();
    void drawOverlay() ZUL_REQUIRES(state.imageLock);
    void draw(Occasion occasion) ZUL_REQUIRES(state.imageLock);
    void drawSelectedRect(Occasion occasion);
    void drawSelectedCircle();
    void sendToWindow(const char* caller) ZUL_REQUIRES(state.imageLock);

    bool handleMouse(const orx::platform::MouseEvent& event) ZUL_REQUIRES(mouseLock_);
    bool applyMouse(TFunction mode, const orx::platform::MouseEvent& event)
        ZUL_REQUIRES(mouseLock_, state.sizeLock);

    TSelectionChange selections(bool isDragging) const;
    void tell(const orx::platform::MouseEvent& event, const TSelectionChange* change);
    TPicturePlace placeAt(cv::Point window);

    TPictureBox& box_;
    std::unique_ptr<orx::platform::NativeWindow> window_;
    std::atomic<bool> isPlaced_{false};
    // What is seen has changed. Unlike `redraw`, a picture that is on its way already does not take it back.
    std::atomic<bool> hasChanged_{false};
    orx::display::PictureFitter fitter_ ZUL_GUARDED_BY(state.imageLock);
    orx::display::OverlayPainter painter_ ZUL_GUARDED_BY(state.imageLock);
    std::shared_ptr<const TOverlay> overlay_ ZUL_GUARDED_BY(overlayLock) = std::make_shared<TOverlay>();
    orx::display::Groups hiddenGroups_ ZUL_GUARDED_BY(overlayLock);
    cv::Mat plainBackground_ ZUL_GUARDED_BY(state.sizeLock);

    zul::Mutex mouseLock_;
    orx::display::Interaction interaction_ ZUL_GUARDED_BY(mouseLock_);
    std::atomic<TFunction> handler_{FUNC_NONE};

    bool hasDragChanged_ ZUL_GUARDED_BY(mouseLock_) = false;  // the selection, since the button went down

    zul::Mutex callbackLock_;
    std::shared_ptr<const orx::display::Callbacks> callbacks_ ZUL_GUARDED_BY(callbackLock_) =
        std::make_shared<orx::display::Callbacks>();
    orx::display::ClickFinder clicks_ ZUL_GUARDED_BY(callbackLock_);

    zul::Mutex sleepLock_;
    std::condition_variable_any wake_;
    std::thread thread_;
};

#endif
