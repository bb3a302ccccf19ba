// The widget for GTK in a real program of GTK.
#include <memory>

#include "orxFunctions/display/gtk_picture_widget.h"
#include "tests/display/toolkit_host.h"
#include "tests/support/private_display_posix.h"

namespace {

using test::kWidgetPlace;

GtkWidget* openWindow(cv::Rect place) {
    GtkWidget* const window = gtk_window_new(GTK_WINDOW_POPUP);
    gtk_window_move(GTK_WINDOW(window), place.x, place.y);
    gtk_window_resize(GTK_WINDOW(window), place.width, place.height);
    return window;
}

TEST(GtkPictureWidget, ShowsItsPictureAndTellsOfTheMouse) {
    const test::PrivateDisplay display;
    if (!display.isRunning()) GTEST_SKIP() << "Xvfb can't be started: is the package xvfb installed?";
    gdk_set_allowed_backends("x11");
    ASSERT_NE(gtk_init_check(nullptr, nullptr), FALSE);
    const auto work = [] {
        while (gtk_events_pending() != FALSE) gtk_main_iteration();
    };

    GtkWidget* const window = openWindow({kWidgetPlace.x - 20, kWidgetPlace.y - 30, 420, 330});
    GtkWidget* const fixed = gtk_fixed_new();
    auto picture = std::make_unique<TGtkPicture>();
    gtk_widget_set_size_request(picture->widget(), kWidgetPlace.width, kWidgetPlace.height);
    gtk_fixed_put(GTK_FIXED(fixed), picture->widget(), 20, 30);
    gtk_container_add(GTK_CONTAINER(window), fixed);
    gtk_widget_show_all(window);
    test::expectAPictureThatTellsOfTheMouse(*picture, work);

    // It follows the widget's size.
    gtk_widget_set_size_request(picture->widget(), 200, 200);
    EXPECT_TRUE(test::becomesTrue(work, [&] { return picture->box().shownWidth == 200.0; }));
    EXPECT_EQ(picture->box().shownHeight, 100.0);

    // The object goes before its widget.
    bool wasTold = false;
    test::leaveSomethingUntold(*picture, wasTold);
    picture.reset();
    work();
    EXPECT_FALSE(wasTold);
    gtk_widget_destroy(window);

    // And the widget before its object, which lives on and comes back in another window.
    TGtkPicture second;
    const cv::Mat green(50, 50, CV_8UC3, cv::Scalar(0, 200, 0));
    second.box().setPicture(green, {});
    test::HostWindow screen({0, 0, 1, 1});
    for (const int x : {100, 600}) {
        GtkWidget* const next = openWindow({x, 300, 200, 200});
        gtk_container_add(GTK_CONTAINER(next), second.widget());
        gtk_widget_show_all(next);
        EXPECT_TRUE(test::becomesTrue(work, [&] {
            return screen.pixel(x + 100, 400) == cv::Vec3b(0, 200, 0);
        })) << x;
        gtk_container_remove(GTK_CONTAINER(next), second.widget());
        gtk_widget_destroy(next);
        work();
    }
}

}  // namespace
