// What the mouse does in a picture box: zooms, pans, draws and edits the selections. Knows no window: events
// go in, the shared state is changed.
#ifndef ORXFUNCTIONS_DISPLAY_INTERACTION_INTERNAL_H
#define ORXFUNCTIONS_DISPLAY_INTERACTION_INTERNAL_H

#include <opencv2/core.hpp>

#include "orxFunctions/display/view_state_internal.h"
#include "orxFunctions/platform/window/native_window.h"

namespace orx::display {

// What a handler sees of its box when an event comes.
struct InteractionView {
    ViewMapping mapping;
    cv::Size2d image;
    cv::Size window;
    int panGain;            // 1/256
    int smallestSelection;  // image pixels
    double reach;           // how far from a handle it is caught, window pixels
};

// One for each box. Each handler answers whether what is seen has changed. One thread at a time.
class Interaction {
  public:
    bool zoomAndPan(const platform::MouseEvent& event, const InteractionView& view, Zoom& zoom);
    // A rectangle that is being drawn is left in window coordinates, marked with `box`.
    bool editRect(const platform::MouseEvent& event, const InteractionView& view, const TPictureBox* box,
                  RectSelection& selection);
    bool editCircle(const platform::MouseEvent& event, const InteractionView& view,
                    CircleSelection& selection);

    // The left button is down.
    bool dragging() const { return drag_ != Drag::kNone; }
    void endDrag() { drag_ = Drag::kNone; }

  private:
    enum class Drag { kNone, kPan, kDraw, kHandle, kMove, kResize };

    void grabRect(cv::Point2d at, const InteractionView& view, const RectSelection& selection);
    void dragRect(cv::Point2d at, const InteractionView& view, const TPictureBox* box,
                  RectSelection& selection);
    void grabCircle(cv::Point2d at, const InteractionView& view, const CircleSelection& selection);
    void dragCircle(cv::Point2d at, const InteractionView& view, CircleSelection& selection);

    Drag drag_ = Drag::kNone;
    cv::Point2d from_;        // where the button went down, window coordinates
    cv::Point2d panFrom_;     // the pan at that time
    std::size_t handle_ = 0;  // that is dragged
    cv::Rect2d rectFrom_;     // the selections at that time, image coordinates
    cv::Point2d circleFrom_;
};

}  // namespace orx::display

#endif
