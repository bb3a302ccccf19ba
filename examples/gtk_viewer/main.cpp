// orx_gtk_viewer: a picture box inside a window of GTK. Ends when the window is closed, or after --seconds N.
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

#include "orxFunctions/display/gtk_picture_widget.h"
#include "orxFunctions/orxfunctions.h"
#include "support/synthetic_scene.h"

namespace {

// Disks in circles, the middles of bars as crosses, handed in with the picture.
void showParts(TPictureBox& box) {
    const scenes::Scene scene = scenes::renderScene({});
    TOverlay marks;
    marks.setStyle({{0, 255, 255}, 2, 1.0});
    for (const scenes::Disk& disk : scene.disks) marks.circle(disk.center, disk.radius);
    for (const scenes::Bar& bar : scene.bars) marks.cross(bar.center, 8.0);
    box.setPicture(scene.image, marks);
}

gboolean endMain(gpointer) {
    gtk_main_quit();
    return G_SOURCE_REMOVE;
}

void run(double seconds) {
    GtkWidget* const window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(window), "orxFunctions in GTK");
    gtk_window_set_default_size(GTK_WINDOW(window), 640, 520);
    g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), nullptr);
    GtkWidget* const all = gtk_box_new(GTK_ORIENTATION_VERTICAL, 4);
    GtkWidget* const label = gtk_label_new("move over the picture");
    // [picture]
    TGtkPicture picture;
    picture.onCursor([label](const TPicturePlace& place) {
        if (!place.isInside) return;
        const std::string text = "(" + std::to_string(place.pixel.x) + ", " + std::to_string(place.pixel.y) +
                                 "): " + zul::doubleToStr(place.grey, 0);
        gtk_label_set_text(GTK_LABEL(label), text.c_str());
    });
    gtk_box_pack_start(GTK_BOX(all), picture.widget(), TRUE, TRUE, 0);
    gtk_box_pack_start(GTK_BOX(all), label, FALSE, FALSE, 4);
    gtk_container_add(GTK_CONTAINER(window), all);
    gtk_widget_show_all(window);
    showParts(picture.box());
    // [picture end]
    if (seconds > 0.0) g_timeout_add(static_cast<guint>(1000.0 * seconds), &endMain, nullptr);
    gtk_main();
}

}  // namespace

int main(int argc, char** argv) {
    gdk_set_allowed_backends("x11");
    if (gtk_init_check(&argc, &argv) == FALSE) {
        std::cerr << "orx_gtk_viewer: no display can be opened\n";
        return 1;
    }
    const bool hasTime = argc == 3 && std::strcmp(argv[1], "--seconds") == 0;
    if (argc != 1 && !hasTime) {
        std::cerr << "usage: orx_gtk_viewer [--seconds N]\n";
        return 2;
    }
    run(hasTime ? std::atof(argv[2]) : 0.0);
    return 0;
}
