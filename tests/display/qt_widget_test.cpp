// The widget for Qt in a real program of Qt.
#include <QApplication>
#include <QWidget>
#include <cstdlib>
#include <memory>

#include "orxFunctions/display/qt_picture_widget.h"
#include "tests/display/toolkit_host.h"
#include "tests/support/private_display_posix.h"

namespace {

using test::kWidgetPlace;

TEST(QtPictureWidget, ShowsItsPictureAndTellsOfTheMouse) {
    const test::PrivateDisplay display;
    if (!display.isRunning()) GTEST_SKIP() << "Xvfb can't be started: is the package xvfb installed?";
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    int argc = 1;
    char name[] = "test";
    char* argv[] = {name, nullptr};
    const QApplication application(argc, argv);
    const auto work = [] { QApplication::processEvents(); };

    QWidget window(nullptr, Qt::X11BypassWindowManagerHint);
    window.setGeometry(kWidgetPlace.x - 20, kWidgetPlace.y - 30, 500, 400);
    auto widget = std::make_unique<TQtPictureWidget>(&window);
    widget->setGeometry(20, 30, kWidgetPlace.width, kWidgetPlace.height);
    window.show();
    test::expectAPictureThatTellsOfTheMouse(*widget, work);

    // It follows the widget's size.
    widget->resize(200, 200);
    EXPECT_TRUE(test::becomesTrue(work, [&] { return widget->box().shownWidth == 200.0; }));
    EXPECT_EQ(widget->box().shownHeight, 100.0);

    // A second one has a picture of its own, and stays when the first goes.
    TQtPictureWidget other(&window);
    other.setGeometry(250, 30, 100, 100);
    other.show();
    const cv::Mat green(50, 50, CV_8UC3, cv::Scalar(0, 200, 0));
    other.box().setPicture(green, {});
    bool wasTold = false;
    test::leaveSomethingUntold(*widget, wasTold);
    widget.reset();
    test::HostWindow screen({0, 0, 1, 1});
    EXPECT_TRUE(test::becomesTrue(work, [&] {
        return screen.pixel(kWidgetPlace.x + 280, kWidgetPlace.y + 50) == cv::Vec3b(0, 200, 0);
    }));
    EXPECT_FALSE(wasTold);
}

}  // namespace
