#include "orxFunctions/platform/window/xcb_display_posix.h"

#include <sys/socket.h>

#include <cstdint>
#include <cstring>
#include <ctime>

namespace orx::platform {
namespace {

constexpr std::size_t kRequestHead = 32;  // bytes, at most

// Numbers in the standard cursor font; the mask of a cursor follows it.
constexpr std::array<std::uint16_t, 4> kGlyphs = {68, 60, 52, 150};  // left_ptr, hand2, fleur, watch

bool storesLittleEndian() {
    const std::uint32_t one = 1;
    unsigned char first = 0;
    std::memcpy(&first, &one, 1);
    return first == 1;
}

const xcb_screen_t* screenOf(const xcb_setup_t* setup, int number) {
    xcb_screen_iterator_t screen = xcb_setup_roots_iterator(setup);
    for (; screen.rem > 0; xcb_screen_next(&screen))
        if (number-- == 0) return screen.data;
    return nullptr;
}

// Pixels as they are sent: 32 bits, blue in the lowest byte.
bool takesOurPixels(const xcb_setup_t* setup, const xcb_screen_t& screen) {
    bool has32Bits = false;
    xcb_format_iterator_t format = xcb_setup_pixmap_formats_iterator(setup);
    for (; format.rem > 0; xcb_format_next(&format))
        if (format.data->depth == screen.root_depth) has32Bits = format.data->bits_per_pixel == 32;
    if (!has32Bits || !storesLittleEndian() || setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST)
        return false;

    xcb_depth_iterator_t depth = xcb_screen_allowed_depths_iterator(&screen);
    for (; depth.rem > 0; xcb_depth_next(&depth)) {
        xcb_visualtype_iterator_t visual = xcb_depth_visuals_iterator(depth.data);
        for (; visual.rem > 0; xcb_visualtype_next(&visual))
            if (visual.data->visual_id == screen.root_visual)
                return visual.data->red_mask == 0xFF0000U && visual.data->green_mask == 0xFF00U &&
                       visual.data->blue_mask == 0xFFU;
    }
    return false;
}

}  // namespace

NoPipeSignal::NoPipeSignal() {
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, &before_);
}

NoPipeSignal::~NoPipeSignal() {
    if (!wasPending_) {
        sigset_t pipe;
        sigemptyset(&pipe);
        sigaddset(&pipe, SIGPIPE);
        const timespec now{};
        sigtimedwait(&pipe, nullptr, &now);
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

XcbDisplay::XcbDisplay() : connection_(xcb_connect(nullptr, &screenNumber_)), problem_(findProblem()) {}

XcbDisplay::~XcbDisplay() { xcb_disconnect(connection_); }

const char* XcbDisplay::findProblem() {
    if (!isAlive()) return "没有可用的显示器";
    const xcb_setup_t* const setup = xcb_get_setup(connection_);
    screen_ = screenOf(setup, screenNumber_);
    if (screen_ == nullptr) return "没有可用的显示器";
    return takesOurPixels(setup, *screen_) ? nullptr : "显示器不支持32位像素";
}

std::size_t XcbDisplay::largestUpload() const {
    const std::size_t bytes = std::size_t{4} * xcb_get_maximum_request_length(connection_);
    return bytes > kRequestHead ? bytes - kRequestHead : 0;
}

bool XcbDisplay::succeeded(xcb_void_cookie_t request) const {
    const XcbReply<xcb_generic_error_t> error(xcb_request_check(connection_, request));
    return error == nullptr && isAlive();
}

void XcbDisplay::synchronise() const {
    const XcbReply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

void XcbDisplay::hangUp() const { shutdown(xcb_get_file_descriptor(connection_), SHUT_RDWR); }

xcb_cursor_t XcbDisplay::cursor(TCursorShape shape) {
    const auto known = static_cast<std::size_t>(shape) < kGlyphs.size() ? static_cast<std::size_t>(shape) : 0;
    if (cursors_[known] != XCB_NONE) return cursors_[known];
    const xcb_font_t font = xcb_generate_id(connection_);
    constexpr const char* kName = "cursor";
    xcb_open_font(connection_, font, static_cast<std::uint16_t>(std::strlen(kName)), kName);
    cursors_[known] = xcb_generate_id(connection_);
    const std::uint16_t glyph = kGlyphs[known];
    xcb_create_glyph_cursor(connection_, cursors_[known], font, font, glyph,
                            static_cast<std::uint16_t>(glyph + 1), 0, 0, 0, 0xFFFF, 0xFFFF, 0xFFFF);
    xcb_close_font(connection_, font);
    return cursors_[known];
}

}  // namespace orx::platform
