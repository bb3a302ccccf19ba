// A connection to an X server, and what is asked of it. XCB and not Xlib, whose error handlers end the
// process.
#ifndef ORXFUNCTIONS_PLATFORM_XCB_DISPLAY_POSIX_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_XCB_DISPLAY_POSIX_INTERNAL_H

#include <signal.h>
#include <xcb/xcb.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>

#include "orxFunctions/foundation/enumerations.h"

namespace orx::platform {

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
template <class Reply>
using XcbReply = std::unique_ptr<Reply, FreeDeleter>;

// XCB writes to its socket with plain calls: when the server is gone, that raises SIGPIPE, which would end
// the process. Held around each use of a connection; keeps the signal from the calling thread.
class NoPipeSignal {
  public:
    NoPipeSignal();
    ~NoPipeSignal();
    NoPipeSignal(const NoPipeSignal&) = delete;
    NoPipeSignal& operator=(const NoPipeSignal&) = delete;

  private:
    sigset_t before_{};
    bool wasPending_ = false;
};

// Thread-safe, as XCB is. Whoever uses it holds a NoPipeSignal.
class XcbDisplay {
  public:
    // Tries to connect to the server that the environment names.
    XcbDisplay();
    ~XcbDisplay();
    XcbDisplay(const XcbDisplay&) = delete;
    XcbDisplay& operator=(const XcbDisplay&) = delete;

    // nullptr when it is usable; otherwise why not, as UTF-8 text.
    const char* problem() const { return problem_; }
    bool isAlive() const { return xcb_connection_has_error(connection_) == 0; }

    xcb_connection_t* connection() const { return connection_; }
    const xcb_screen_t& screen() const { return *screen_; }
    // How many bytes of pixels a request can carry.
    std::size_t largestUpload() const;

    // True when the server took the request.
    bool succeeded(xcb_void_cookie_t request) const;
    // Returns when the server has done all that was asked before.
    void synchronise() const;

    // Ends the connection: who waits for the server returns, and the display is not alive any more.
    void hangUp() const;

    // The cursor of that shape; made when first asked. One thread at a time.
    xcb_cursor_t cursor(TCursorShape shape);

  private:
    const char* findProblem();

    xcb_connection_t* connection_;
    int screenNumber_ = 0;
    const xcb_screen_t* screen_ = nullptr;
    const char* problem_;
    std::array<xcb_cursor_t, 4> cursors_{};
};

}  // namespace orx::platform

#endif
