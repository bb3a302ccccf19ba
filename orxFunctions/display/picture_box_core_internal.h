// The inside of a picture box: its window, its thread, and the way from the shared image to the window.
#ifndef ORXFUNCTIONS_DISPLAY_PICTURE_BOX_CORE_INTERNAL_H
#define ORXFUNCTIONS_DISPLAY_PICTURE_BOX_CORE_INTERNAL_H

#include <atomic>
#include <condition_variable>
#include <memory>
#include <thread>

#include "ZULLib/sync_internal.h"
#include "orxFunctions/display/fit_picture_internal.h"
#include "orxFunctions/display/interaction_internal.h"
#include "orxFunctions/display/picture_box.h"
#include "orxFunctions/display/view_state_internal.h"
#include "orxFunctions/platform/window/native_window.h"

// Locks, in the order in which they are taken: mouse, image, size, overlay.
class TPictureBox::Core final : public orx::platform::MouseListener {
  public:
    explicit Core(TPictureBox& box);

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

    // Showing.
    void showImage();
    void showImageLast();
    orx::display::ViewMapping mapping() const ZUL_REQUIRES(orx::display::viewState.sizeLock);
    void keepScale(const orx::display::ViewMapping& mapping);

    // The mouse. FUNC_NONE: no handler.
    void installHandler(TFunction mode);
    void onMouse(const orx::platform::MouseEvent& event) override;
    void forgetSelection();

    zul::Mutex overlayLock;  // the box's rects, circles and texts

  private:
    enum class Occasion { kNewImage, kDrag };

    void run();

    bool mayShow(Occasion occasion) ZUL_REQUIRES(orx::display::viewState.imageLock);
    void showPicture(Occasion occasion);
    void showPlain();
    void present(Occasion occasion) ZUL_REQUIRES(orx::display::viewState.imageLock);
    cv::Mat fittedPicture(bool endZoom) ZUL_REQUIRES(orx::display::viewState.imageLock);
    const cv::Mat& background() ZUL_REQUIRES(orx::display::viewState.sizeLock);
    void makeDisplay(bool endZoom, bool drawable) ZUL_REQUIRES(orx::display::viewState.imageLock);
    bool hasDrawings();
    void draw(Occasion occasion);
    void drawSelectedRect(Occasion occasion);
    void drawSelectedCircle();
    void sendToWindow() ZUL_REQUIRES(orx::display::viewState.imageLock);

    bool handleMouse(const orx::platform::MouseEvent& event) ZUL_REQUIRES(mouseLock_);
    bool applyMouse(TFunction mode, const orx::platform::MouseEvent& event)
        ZUL_REQUIRES(mouseLock_, orx::display::viewState.sizeLock);

    TPictureBox& box_;
    std::unique_ptr<orx::platform::NativeWindow> window_;
    std::atomic<bool> isPlaced_{false};
    orx::display::PictureFitter fitter_ ZUL_GUARDED_BY(orx::display::viewState.imageLock);
    cv::Mat plainBackground_ ZUL_GUARDED_BY(orx::display::viewState.sizeLock);

    zul::Mutex mouseLock_;
    orx::display::Interaction interaction_ ZUL_GUARDED_BY(mouseLock_);
    std::atomic<TFunction> handler_{FUNC_NONE};

    zul::Mutex sleepLock_;
    std::condition_variable_any wake_;
    std::thread thread_;
};

#endif
