// A plain X window as a host has it, and what a user does and sees there.
#ifndef ORX_TESTS_DISPLAY_HOST_WINDOW_POSIX_H
#define ORX_TESTS_DISPLAY_HOST_WINDOW_POSIX_H

#include <xcb/xcb.h>
#include <xcb/xfixes.h>
#include <xcb/xtest.h>

#include <cstdlib>
#include <memory>
#include <opencv2/core.hpp>
#include <vector>

namespace test {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};
template <class T>
using Reply = std::unique_ptr<T, FreeReply>;

class HostWindow {
  public:
    explicit HostWindow(cv::Rect place) : connection_(xcb_connect(nullptr, nullptr)) {
        screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        window_ = xcb_generate_id(connection_);
        const std::uint32_t values[] = {0x00AA5500U, 1,
                                        XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE};
        xcb_create_window(connection_, screen_->root_depth, window_, screen_->root,
                          static_cast<std::int16_t>(place.x), static_cast<std::int16_t>(place.y),
                          static_cast<std::uint16_t>(place.width), static_cast<std::uint16_t>(place.height),
                          0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen_->root_visual,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        xcb_map_window(connection_, window_);
        synchronise();
        place_ = place;
    }
    ~HostWindow() { xcb_disconnect(connection_); }
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    void* handle() const { return reinterpret_cast<void*>(std::uintptr_t{window_}); }
    xcb_connection_t* connection() const { return connection_; }

    void destroy() {
        xcb_destroy_window(connection_, window_);
        synchronise();
    }
    void synchronise() {
        const Reply<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    }

    std::vector<xcb_window_t> children() {
        const Reply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window_), nullptr));
        if (!tree) return {};
        const xcb_window_t* const first = xcb_query_tree_children(tree.get());
        return {first, first + xcb_query_tree_children_length(tree.get())};
    }

    // What the screen shows at a place of this window, as BGR.
    cv::Vec3b pixel(int x, int y) {
        const Reply<xcb_get_image_reply_t> image(
            xcb_get_image_reply(connection_,
                                xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root,
                                              static_cast<std::int16_t>(place_.x + x),
                                              static_cast<std::int16_t>(place_.y + y), 1, 1, ~0U),
                                nullptr));
        if (!image) return {};
        const std::uint8_t* const data = xcb_get_image_data(image.get());
        return {data[0], data[1], data[2]};
    }

    // The mouse, at a place of this window.
    void moveMouse(int x, int y) { fake(XCB_MOTION_NOTIFY, 0, place_.x + x, place_.y + y); }
    void press(int button) { fake(XCB_BUTTON_PRESS, button, 0, 0); }
    void release(int button) { fake(XCB_BUTTON_RELEASE, button, 0, 0); }
    void click(int button) {
        press(button);
        release(button);
    }

    // How many events of that type came to this window itself since the last call.
    int received(int type) {
        synchronise();
        int count = 0;
        while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)})
            count += (event->response_type & 0x7F) == type;
        return count;
    }

    // The pixels of the cursor that is seen now.
    std::vector<std::uint32_t> cursorPixels() {
        const Reply<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
            connection_, xcb_xfixes_query_version(connection_, 2, 0), nullptr));
        const Reply<xcb_xfixes_get_cursor_image_reply_t> image(xcb_xfixes_get_cursor_image_reply(
            connection_, xcb_xfixes_get_cursor_image(connection_), nullptr));
        if (!version || !image) return {};
        const std::uint32_t* const first = xcb_xfixes_get_cursor_image_cursor_image(image.get());
        return {first, first + xcb_xfixes_get_cursor_image_cursor_image_length(image.get())};
    }
    // Sets this window's own cursor to a glyph of the standard cursor font.
    void setCursor(std::uint16_t glyph) {
        const xcb_font_t font = xcb_generate_id(connection_);
        xcb_open_font(connection_, font, 6, "cursor");
        const xcb_cursor_t cursor = xcb_generate_id(connection_);
        xcb_create_glyph_cursor(connection_, cursor, font, font, glyph, static_cast<std::uint16_t>(glyph + 1),
                                0, 0, 0, 0xFFFF, 0xFFFF, 0xFFFF);
        const std::uint32_t value = cursor;
        xcb_change_window_attributes(connection_, window_, XCB_CW_CURSOR, &value);
        synchronise();
    }

  private:
    void fake(int event, int detail, int x, int y) {
        xcb_test_fake_input(connection_, static_cast<std::uint8_t>(event), static_cast<std::uint8_t>(detail),
                            XCB_CURRENT_TIME, screen_->root, static_cast<std::int16_t>(x),
                            static_cast<std::int16_t>(y), 0);
        synchronise();
    }

    xcb_connection_t* connection_;
    xcb_screen_t* screen_ = nullptr;
    xcb_window_t window_ = XCB_NONE;
    cv::Rect place_;
};

}  // namespace test

#endif
