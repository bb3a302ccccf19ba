// Ownership of GLib's objects and errors.
#ifndef DRIVERS_TQVISIONDRIVER_GLIB_OBJECT_H
#define DRIVERS_TQVISIONDRIVER_GLIB_OBJECT_H

#include <glib-object.h>

#include <memory>
#include <string>

namespace vision {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};

// Owns one reference.
template <typename Object>
using Ref = std::unique_ptr<Object, Unref>;

// Receives the error of one call after another: `Error error; call(error.receive()); if (error.failed()) ...`
class Error {
  public:
    Error() = default;
    ~Error() { g_clear_error(&error_); }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;

    GError** receive() {
        g_clear_error(&error_);
        return &error_;
    }
    bool failed() const { return error_ != nullptr; }
    std::string text() const { return failed() && error_->message != nullptr ? error_->message : ""; }

  private:
    GError* error_ = nullptr;
};

}  // namespace vision

#endif
