// What is seen: an image, the zoom and the selections. Picture boxes share the process's, which is intended:
// a system shows one interactive view at a time, and a second box shows the same image. A box with a picture
// of its own has one to itself.
#ifndef ORXFUNCTIONS_DISPLAY_VIEW_STATE_INTERNAL_H
#define ORXFUNCTIONS_DISPLAY_VIEW_STATE_INTERNAL_H

#include <atomic>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "ZULLib/sync_internal.h"
#include "orxFunctions/display/fit_geometry_internal.h"
#include "orxFunctions/display/overlay_internal.h"

class TPictureBox;

namespace orx::display {

// In image coordinates, except while it is drawn: until the box in which the mouse drew it shows it for the
// first time it is in that box's window coordinates.
struct RectSelection {
    cv::Rect2d rect;
    const TPictureBox* drawnIn = nullptr;  // nullptr: in image coordinates
    Handles handles{};                     // in the window that showed it last
    bool handlesValid = false;

    bool exists() const { return rect.width > 0.0 && rect.height > 0.0; }
};

struct CircleSelection {
    cv::Point centre;  // image coordinates
    double radius = 0.0;

    bool exists() const { return radius > 0.0; }
};

// Where both locks are needed the image lock is taken first.
class ViewState {
  public:
    ViewState() = default;
    ~ViewState() { releaseImages(); }
    ViewState(const ViewState&) = delete;
    ViewState& operator=(const ViewState&) = delete;

    // A host may leave without having destroyed its boxes. Their threads then find no image, instead of one
    // that goes while they read it.
    void releaseImages();

    zul::Mutex imageLock;  // held while a box makes a picture of the image
    cv::Mat image ZUL_GUARDED_BY(imageLock);
    cv::Mat lastShown ZUL_GUARDED_BY(imageLock);

    zul::Mutex sizeLock;  // of the sizes and the fit of all boxes, too
    Zoom zoom ZUL_GUARDED_BY(sizeLock);
    RectSelection rect ZUL_GUARDED_BY(sizeLock);
    CircleSelection circle ZUL_GUARDED_BY(sizeLock);

    std::atomic<bool> refreshAllowed{true};  // false while the left mouse button drags
};

extern ViewState viewState;  // of the process; defined in orxfunctions.cpp

// Those of single boxes. Thread-safe.
class OwnViewStates {
  public:
    OwnViewStates() = default;
    ~OwnViewStates();
    OwnViewStates(const OwnViewStates&) = delete;
    OwnViewStates& operator=(const OwnViewStates&) = delete;

    void add(ViewState* state);
    void remove(ViewState* state);

  private:
    zul::Mutex mutex_;
    std::vector<ViewState*> states_ ZUL_GUARDED_BY(mutex_);
};

extern OwnViewStates ownViewStates;  // defined in orxfunctions.cpp

}  // namespace orx::display

#endif
