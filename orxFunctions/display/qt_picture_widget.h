// A picture box as a widget of Qt. Header only: the library does not depend on Qt, a host that includes this
// does (Qt 5 or 6, the module Widgets). Not part of orxfunctions.h.
#ifndef ORXFUNCTIONS_DISPLAY_QT_PICTURE_WIDGET_H
#define ORXFUNCTIONS_DISPLAY_QT_PICTURE_WIDGET_H

#include <QGuiApplication>
#include <QMetaObject>
#include <QResizeEvent>
#include <QShowEvent>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <opencv2/core.hpp>
#include <utility>

#include "orxFunctions/display/picture_box.h"

// Shows a picture of its own (TPictureOf::kBox) or the one that the boxes of the process share. The widget
// gives its box a native window, follows the widget's size, and takes the box away before Qt takes the
// window.
//
//     auto* const picture = new TQtPictureWidget(parent);
//     picture->box().setPicture(image, overlay);  // from any thread
//     picture->onSelectionChanged([label](const TSelectionChange& change) { ... });
//
// On the thread of the user interface, as every widget; box() may be used as its header says. The functions
// given here are called on that thread, too, later than it happened, and not after the widget's end. They
// take the place of those that box() was given.
class TQtPictureWidget : public QWidget {
  public:
    explicit TQtPictureWidget(QWidget* parent = nullptr, TPictureOf whose = TPictureOf::kBox)
        : QWidget(parent), box_(whose) {
        setAttribute(Qt::WA_NativeWindow);
        setAttribute(Qt::WA_DontCreateNativeAncestors);
        setAttribute(Qt::WA_OpaquePaintEvent);  // the box paints all of it
        box_.start();
    }
    ~TQtPictureWidget() override {
        box_.onSelectionChanged({});
        box_.onCursor({});
        box_.onClick({});
        box_.setFunction(FUNC_NONE);  // waits for one that runs
        box_.setHandle(nullptr);
    }

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

  protected:
    void showEvent(QShowEvent* event) override {
        QWidget::showEvent(event);
        attachSoon();
    }
    void resizeEvent(QResizeEvent* event) override {
        QWidget::resizeEvent(event);
        attachSoon();
    }

  private:
    // Calls the function on the widget's thread. What waits when the widget goes is dropped by Qt.
    template <typename Told>
    std::function<void(const Told&)> here(std::function<void(const Told&)> callback) {
        if (!callback) return {};
        return [this, callback = std::move(callback)](const Told& told) {
            QMetaObject::invokeMethod(
                this, [callback, told] { callback(told); }, Qt::QueuedConnection);
        };
    }

    // Not inside an event: the window is made known to the window system first, which handles events.
    void attachSoon() {
        QTimer::singleShot(0, this, [this] { attach(); });
    }

    void attach() {
        const QSize pixels = size() * devicePixelRatioF();
        auto* const handle = reinterpret_cast<void*>(winId());
        QGuiApplication::sync();
        box_.setHandle(handle, pixels.width(), pixels.height());
    }

    TPictureBox box_;
};

#endif
