// A picture on the X server, and its way there.
#ifndef ORXFUNCTIONS_PLATFORM_XCB_PICTURE_POSIX_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_XCB_PICTURE_POSIX_INTERNAL_H

#include <xcb/xcb.h>

#include <functional>
#include <opencv2/core.hpp>

#include "orxFunctions/platform/window/xcb_display_posix.h"

namespace orx::platform {

// The room on the server is kept for pictures of one size after another. One thread at a time.
class XcbPicture {
  public:
    // The picture (8 bits, 1, 3 or 4 channels) as the server takes it, no larger than X windows can be.
    static void convert(const cv::Mat& picture, cv::Mat& pixels);

    // Sends what convert made, in pieces, and calls `isTaken` when the server has taken one. False when it
    // has no room for the picture.
    bool upload(XcbDisplay& display, const cv::Mat& pixels, const std::function<void()>& isTaken);
    // Copies the part of the picture there into the window.
    void paint(XcbDisplay& display, xcb_window_t window, const cv::Rect& part) const;

    cv::Size size() const { return size_; }
    // The connection is gone, and the picture with it.
    void forget();

  private:
    bool makePixmap(XcbDisplay& display, cv::Size size);
    void send(XcbDisplay& display, const cv::Mat& pixels, const std::function<void()>& isTaken) const;

    cv::Size size_;  // of the picture on the server; 0 x 0: none
    xcb_pixmap_t pixmap_ = XCB_NONE;
    xcb_gcontext_t context_ = XCB_NONE;
};

}  // namespace orx::platform

#endif
