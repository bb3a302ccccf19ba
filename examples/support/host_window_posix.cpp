// X, without a toolkit.
#include "support/host_window.h"

#include <poll.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace host {
namespace {

constexpr int kGap = 4;  // between panes, pixels
constexpr int kSmallestPane = 60;
constexpr std::uint32_t kGapColour = 0x303030;
constexpr std::uint32_t kPaneColour = 0x101010;

struct FreeReply {
    void operator()(void* memory) const { std::free(memory); }
};
template <class T>
using Reply = std::unique_ptr<T, FreeReply>;

std::uint16_t length(int value) { return static_cast<std::uint16_t>(value); }

class XHostWindow final : public HostWindow {
  public:
    XHostWindow() : connection_(xcb_connect(nullptr, nullptr)) {}
    ~XHostWindow() override { xcb_disconnect(connection_); }

    bool open(const std::string& title, int panes, cv::Size paneSize) {
        if (xcb_connection_has_error(connection_) != 0) return false;
        screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        paneSize_ = paneSize;
        const cv::Size size(panes * paneSize.width + (panes - 1) * kGap, paneSize.height);
        window_ = makeWindow(screen_->root, size, kGapColour, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
        for (int i = 0; i < panes; ++i)
            panes_.push_back(makeWindow(window_, paneSize, kPaneColour, XCB_EVENT_MASK_NO_EVENT));
        placePanes();
        xcb_map_subwindows(connection_, window_);
        setText(XCB_ATOM_WM_NAME, atom("UTF8_STRING"), title);
        deleteWindow_ = atom("WM_DELETE_WINDOW");
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, atom("WM_PROTOCOLS"), XCB_ATOM_ATOM,
                            32, 1, &deleteWindow_);
        xcb_map_window(connection_, window_);
        synchronise();  // the panes are known to the server before anybody uses them
        return xcb_connection_has_error(connection_) == 0;
    }

    void* pane(int index) const override {
        return reinterpret_cast<void*>(std::uintptr_t{panes_.at(static_cast<std::size_t>(index))});
    }
    cv::Size paneSize() const override { return paneSize_; }

    bool handleEvents(int milliseconds) override {
        pollfd socket{xcb_get_file_descriptor(connection_), POLLIN, 0};
        Reply<xcb_generic_event_t> event(xcb_poll_for_event(connection_));
        if (!event) {
            poll(&socket, 1, milliseconds);
            event.reset(xcb_poll_for_event(connection_));
        }
        for (; event; event.reset(xcb_poll_for_event(connection_))) handle(*event);
        return !isClosed_ && !isDisplayLost();
    }

    bool isDisplayLost() const override { return xcb_connection_has_error(connection_) != 0; }

    cv::Mat capture() const override {
        const cv::Size size = windowSize();
        const Reply<xcb_get_image_reply_t> image(
            xcb_get_image_reply(connection_,
                                xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window_, 0, 0,
                                              length(size.width), length(size.height), ~0U),
                                nullptr));
        const auto wanted = static_cast<int>(size.area() * 4);
        if (!image || xcb_get_image_data_length(image.get()) < wanted) return {};
        const cv::Mat pixels(size, CV_8UC4, xcb_get_image_data(image.get()));
        cv::Mat picture(size, CV_8UC3);
        const int pairs[] = {0, 0, 1, 1, 2, 2};
        cv::mixChannels(&pixels, 1, &picture, 1, pairs, 3);
        return picture;
    }

  private:
    xcb_window_t makeWindow(xcb_window_t parent, cv::Size size, std::uint32_t colour, std::uint32_t events) {
        const xcb_window_t window = xcb_generate_id(connection_);
        const std::uint32_t values[] = {colour, events};
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, parent, 0, 0, length(size.width),
                          length(size.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
        return window;
    }

    cv::Size windowSize() const {
        const auto panes = static_cast<int>(panes_.size());
        return {panes * paneSize_.width + (panes - 1) * kGap, paneSize_.height};
    }

    void placePanes() {
        int x = 0;
        for (const xcb_window_t pane : panes_) {
            const std::uint32_t place[] = {static_cast<std::uint32_t>(x), 0,
                                           static_cast<std::uint32_t>(paneSize_.width),
                                           static_cast<std::uint32_t>(paneSize_.height)};
            xcb_configure_window(connection_, pane,
                                 XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                                     XCB_CONFIG_WINDOW_HEIGHT,
                                 place);
            x += paneSize_.width + kGap;
        }
        xcb_flush(connection_);
    }

    void handle(const xcb_generic_event_t& event) {
        const int type = event.response_type & 0x7F;
        if (type == XCB_CONFIGURE_NOTIFY) {
            const auto& change = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
            const auto panes = static_cast<int>(panes_.size());
            paneSize_.width = std::max(kSmallestPane, (change.width - (panes - 1) * kGap) / panes);
            paneSize_.height = std::max<int>(kSmallestPane, change.height);
            placePanes();
        } else if (type == XCB_DESTROY_NOTIFY) {
            if (reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window == window_)
                isClosed_ = true;
        } else if (type == XCB_CLIENT_MESSAGE) {
            const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
            if (message.data.data32[0] == deleteWindow_) isClosed_ = true;
        }
    }

    xcb_atom_t atom(const char* name) {
        const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
            connection_, xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name),
            nullptr));
        return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    }

    void setText(xcb_atom_t property, xcb_atom_t type, const std::string& text) {
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, property, type, 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
    }

    void synchronise() {
        const Reply<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    }

    xcb_connection_t* connection_;
    xcb_screen_t* screen_ = nullptr;
    xcb_window_t window_ = XCB_NONE;
    std::vector<xcb_window_t> panes_;
    cv::Size paneSize_;
    xcb_atom_t deleteWindow_ = XCB_ATOM_NONE;
    bool isClosed_ = false;
};

}  // namespace

std::unique_ptr<HostWindow> openHostWindow(const std::string& title, int panes, cv::Size paneSize) {
    auto window = std::make_unique<XHostWindow>();
    if (!window->open(title, panes, paneSize)) return nullptr;
    return window;
}

}  // namespace host
