// A picture box as a widget of GTK 3, on X. Header only: the library does not depend on GTK, a
// host that includes this does. Not part of orxfunctions.h.
#ifndef ORXFUNCTIONS_DISPLAY_GTK_PICTURE_WIDGET_H
#define ORXFUNCTIONS_DISPLAY_GTK_PICTURE_WIDGET_H

#include <gtk/gtk.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "orxFunctions/display/picture_box.h"

// As gdk/gdkx.h declares them, which defines None, Bool and Status as macros and breaks other headers.
extern "C" {
unsigned long gdk_x11_window_get_xid(GdkWindow* window);
GType gdk_x11_window_get_type(void);
}

// Shows a picture of its own (TPictureOf::kBox) or the one that the boxes of the process share, in a drawing
// area with a native window, whose size it follows.
//
//     TGtkPicture picture;
//     gtk_box_pack_start(GTK_BOX(vertical), picture.widget(), TRUE, TRUE, 0);
//     picture.box().setPicture(image, overlay);  // from any thread
//
// On the thread that runs GTK; box() may be used as its header says. The object and the widget may go in any
// order. The functions given here are called on GTK's thread, too, later than it happened, and not after the
// object's end. They take the place of those that box() was given. Under another window system than X
// (Wayland) it stays empty: call gdk_set_allowed_backends("x11") before gtk_init.
class TGtkPicture {
  public:
    explicit TGtkPicture(TPictureOf whose = TPictureOf::kBox)
        : box_(whose), widget_(gtk_drawing_area_new()), queue_(std::make_shared<Queue>()) {
        g_object_ref_sink(widget_);
        gtk_widget_set_has_window(widget_, TRUE);
        g_signal_connect(widget_, "size-allocate", G_CALLBACK(&TGtkPicture::sizeAllocated), this);
        g_signal_connect(widget_, "map", G_CALLBACK(&TGtkPicture::mapped), this);
        g_signal_connect(widget_, "unrealize", G_CALLBACK(&TGtkPicture::unrealized), this);
        box_.start();
    }
    ~TGtkPicture() {
        box_.onSelectionChanged({});
        box_.onCursor({});
        box_.onClick({});
        box_.setFunction(FUNC_NONE);  // waits for one that runs
        queue_->close();
        box_.setHandle(nullptr);
        g_signal_handlers_disconnect_by_data(widget_, this);
        g_object_unref(widget_);
    }
    TGtkPicture(const TGtkPicture&) = delete;
    TGtkPicture& operator=(const TGtkPicture&) = delete;

    GtkWidget* widget() { return widget_; }
    TPictureBox& box() { return box_; }

    void onSelectionChanged(std::function<void(const TSelectionChange&)> callback) {
        box_.onSelectionChanged(here(std::move(callback)));
    }
    void onCursor(std::function<void(const TPicturePlace&)> callback) {
        box_.onCursor(here(std::move(callback)));
    }
    void onClick(std::function<void(const TPictureClick&)> callback) {
        box_.onClick(here(std::move(callback)));
    }

  private:
    // What waits to be called on GTK's thread.
    class Queue : public std::enable_shared_from_this<Queue> {
      public:
        void add(std::function<void()> call) {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (isClosed_) return;
            calls_.push_back(std::move(call));
            if (calls_.size() == 1) g_idle_add(&Queue::run, new std::shared_ptr<Queue>(shared_from_this()));
        }
        void close() {
            const std::lock_guard<std::mutex> lock(mutex_);
            isClosed_ = true;
            calls_.clear();
        }

      private:
        static gboolean run(gpointer data) {
            const std::unique_ptr<std::shared_ptr<Queue>> self(static_cast<std::shared_ptr<Queue>*>(data));
            std::vector<std::function<void()>> calls;
            {
                const std::lock_guard<std::mutex> lock((*self)->mutex_);
                calls.swap((*self)->calls_);
            }
            for (const std::function<void()>& call : calls)
                if (!(*self)->isClosed()) call();
            return G_SOURCE_REMOVE;
        }
        bool isClosed() {
            const std::lock_guard<std::mutex> lock(mutex_);
            return isClosed_;
        }

        std::mutex mutex_;
        std::vector<std::function<void()>> calls_;
        bool isClosed_ = false;
    };

    template <typename Told>
    std::function<void(const Told&)> here(std::function<void(const Told&)> callback) {
        if (!callback) return {};
        return [queue = queue_, callback = std::move(callback)](const Told& told) {
            queue->add([callback, told] { callback(told); });
        };
    }

    static void sizeAllocated(GtkWidget*, GdkRectangle*, gpointer self) {
        static_cast<TGtkPicture*>(self)->attach();
    }
    static void mapped(GtkWidget*, gpointer self) { static_cast<TGtkPicture*>(self)->attach(); }
    // Before GTK takes the window away.
    static void unrealized(GtkWidget*, gpointer self) {
        static_cast<TGtkPicture*>(self)->box_.setHandle(nullptr);
    }

    void attach() {
        GdkWindow* const window = gtk_widget_get_window(widget_);
        if (window == nullptr || gdk_window_ensure_native(window) == FALSE) return;
        if (!G_TYPE_CHECK_INSTANCE_TYPE(window, gdk_x11_window_get_type())) return;
        const std::uintptr_t number = gdk_x11_window_get_xid(window);
        gdk_display_sync(gdk_window_get_display(window));
        const int scale = gtk_widget_get_scale_factor(widget_);
        box_.setHandle(reinterpret_cast<void*>(number), scale * gtk_widget_get_allocated_width(widget_),
                       scale * gtk_widget_get_allocated_height(widget_));
    }

    TPictureBox box_;
    GtkWidget* widget_;
    std::shared_ptr<Queue> queue_;
};

#endif
