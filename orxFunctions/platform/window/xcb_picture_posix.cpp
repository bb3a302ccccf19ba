#include "orxFunctions/platform/window/xcb_picture_posix.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/imgproc.hpp>

namespace orx::platform {
namespace {

constexpr int kLargestSide = 32767;                   // of an X window
constexpr std::size_t kPiece = std::size_t{1} << 20;  // bytes sent at once

int conversionOf(int channels) { return channels == 1 ? cv::COLOR_GRAY2BGRA : cv::COLOR_BGR2BGRA; }

std::uint16_t length16(int value) { return static_cast<std::uint16_t>(value); }
std::int16_t place16(int value) { return static_cast<std::int16_t>(value); }

}  // namespace

void XcbPicture::convert(const cv::Mat& picture, cv::Mat& pixels) {
    const cv::Size size(std::min(picture.cols, kLargestSide), std::min(picture.rows, kLargestSide));
    const cv::Mat part = picture(cv::Rect({}, size));
    if (part.channels() == 4)
        part.copyTo(pixels);
    else
        cv::cvtColor(part, pixels, conversionOf(part.channels()));
}

bool XcbPicture::upload(XcbDisplay& display, const cv::Mat& pixels, const std::function<void()>& isTaken) {
    if (pixels.size() != size_ && !makePixmap(display, pixels.size())) return false;
    send(display, pixels, isTaken);
    return true;
}

bool XcbPicture::makePixmap(XcbDisplay& display, cv::Size size) {
    xcb_connection_t* const connection = display.connection();
    const xcb_screen_t& screen = display.screen();
    if (pixmap_ != XCB_NONE) xcb_free_pixmap(connection, pixmap_);
    size_ = {};
    pixmap_ = xcb_generate_id(connection);
    if (!display.succeeded(xcb_create_pixmap_checked(connection, screen.root_depth, pixmap_, screen.root,
                                                     length16(size.width), length16(size.height)))) {
        pixmap_ = XCB_NONE;
        return false;
    }
    size_ = size;
    if (context_ == XCB_NONE) {
        context_ = xcb_generate_id(connection);
        const std::uint32_t noExposures = 0;
        xcb_create_gc(connection, context_, pixmap_, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
    }
    return true;
}

void XcbPicture::send(XcbDisplay& display, const cv::Mat& pixels,
                      const std::function<void()>& isTaken) const {
    const std::size_t rowBytes = std::size_t{4} * static_cast<std::size_t>(pixels.cols);
    const std::size_t most = std::min(display.largestUpload(), kPiece);
    if (most == 0) return;
    const auto rows =
        static_cast<int>(std::clamp(most / rowBytes, std::size_t{1}, static_cast<std::size_t>(pixels.rows)));
    for (int first = 0; first < pixels.rows; first += rows) {
        const int count = std::min(rows, pixels.rows - first);
        xcb_put_image(
            display.connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap_, context_, length16(pixels.cols),
            length16(count), 0, place16(first), 0, display.screen().root_depth,
            static_cast<std::uint32_t>(rowBytes * static_cast<std::size_t>(count)), pixels.ptr(first));
        isTaken();
    }
}

void XcbPicture::paint(XcbDisplay& display, xcb_window_t window, const cv::Rect& part) const {
    const cv::Rect seen = part & cv::Rect({}, size_);
    if (seen.empty()) return;
    xcb_copy_area(display.connection(), pixmap_, window, context_, place16(seen.x), place16(seen.y),
                  place16(seen.x), place16(seen.y), length16(seen.width), length16(seen.height));
}

void XcbPicture::forget() {
    size_ = {};
    pixmap_ = XCB_NONE;
    context_ = XCB_NONE;
}

}  // namespace orx::platform
