// Finds the clicks among the events of a mouse.
#ifndef ORXFUNCTIONS_DISPLAY_CLICK_FINDER_INTERNAL_H
#define ORXFUNCTIONS_DISPLAY_CLICK_FINDER_INTERNAL_H

#include <cstdint>
#include <cstdlib>
#include <opencv2/highgui.hpp>
#include <optional>

#include "orxFunctions/platform/window/native_window.h"

namespace orx::display {

struct Click {
    cv::Point at;  // where the button was pressed, window pixels
    int button;    // cv::EVENT_FLAG_LBUTTON or another one
    bool isDouble;
};

// One thread at a time.
class ClickFinder {
  public:
    // The click that this event ends.
    std::optional<Click> take(const platform::MouseEvent& event) {
        switch (event.event) {
            case cv::EVENT_LBUTTONDOWN:
            case cv::EVENT_LBUTTONDBLCLK:
                return press(event, cv::EVENT_FLAG_LBUTTON, event.event == cv::EVENT_LBUTTONDBLCLK);
            case cv::EVENT_RBUTTONDOWN:
            case cv::EVENT_RBUTTONDBLCLK:
                return press(event, cv::EVENT_FLAG_RBUTTON, event.event == cv::EVENT_RBUTTONDBLCLK);
            case cv::EVENT_MBUTTONDOWN:
            case cv::EVENT_MBUTTONDBLCLK:
                return press(event, cv::EVENT_FLAG_MBUTTON, event.event == cv::EVENT_MBUTTONDBLCLK);
            case cv::EVENT_LBUTTONUP:
                return release(event, cv::EVENT_FLAG_LBUTTON);
            case cv::EVENT_RBUTTONUP:
                return release(event, cv::EVENT_FLAG_RBUTTON);
            case cv::EVENT_MBUTTONUP:
                return release(event, cv::EVENT_FLAG_MBUTTON);
            case cv::EVENT_MOUSEMOVE:
                if (pressed_ && isAway(event)) pressed_.reset();
                return std::nullopt;
            default:
                return std::nullopt;
        }
    }

  private:
    static constexpr int kReach = 4;  // window pixels

    std::optional<Click> press(const platform::MouseEvent& event, int button, bool isDouble) {
        pressed_ = Click{{event.x, event.y}, button, isDouble};
        return std::nullopt;
    }
    std::optional<Click> release(const platform::MouseEvent& event, int button) {
        std::optional<Click> click;
        if (pressed_ && pressed_->button == button && !isAway(event)) click = pressed_;
        pressed_.reset();
        return click;
    }
    bool isAway(const platform::MouseEvent& event) const {
        return std::abs(std::int64_t{event.x} - pressed_->at.x) > kReach ||
               std::abs(std::int64_t{event.y} - pressed_->at.y) > kReach;
    }

    std::optional<Click> pressed_;
};

}  // namespace orx::display

#endif
