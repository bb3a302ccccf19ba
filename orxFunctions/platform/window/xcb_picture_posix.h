// A picture on the X server, and its way there.
#ifndef ORXFUNCTIONS_PLATFORM_XCB_PICTURE_POSIX_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_XCB_PICTURE_POSIX_INTERNAL_H

#include <xcb/xcb.h>

#include <opencv2/core.hpp>

#include "orxFunctions/platform/window/xcb_display_posix.h"

namespace orx::platform {

// The buffers are kept, so that pictures of one size after another cost no memory. One thread at a time.
class XcbPicture {
  public:
    // Sends the picture (8 bits, 1, 3 or 4 channels), of which no more than X windows can be large is kept.
    // False when the server has no room for it.
    bool upload(XcbDisplay& display, const cv::Mat& picture);
    // Copies the part of the picture there into the window.
    void paint(XcbDisplay& display, xcb_window_t window, const cv::Rect& part) const;

    cv::Size size() const { return size_; }
    // The connection is gone, and the picture with it.
    void forget();

  private:
    bool makePixmap(XcbDisplay& display, cv::Size size);
    void send(XcbDisplay& display) const;

    cv::Mat pixels_;  // as the server takes them
    cv::Size size_;   // of the picture on the server; 0 x 0: none
    xcb_pixmap_t pixmap_ = XCB_NONE;
    xcb_gcontext_t context_ = XCB_NONE;
};

}  // namespace orx::platform

#endif
