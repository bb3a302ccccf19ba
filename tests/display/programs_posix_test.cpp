// The host programs that show pictures, run as a user runs them.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <thread>

#include "tests/display/host_window_posix.h"
#include "tests/display/viewer_picture.h"
#include "tests/support/private_display_posix.h"
#include "tests/support/temporary_folder.h"

namespace {

class DisplayProgram : public ::testing::Test {
  protected:
    // The exit code; what it prints goes to the file "output".
    int run(const std::string& command) const {
        const int status = std::system((command + " >" + (folder / "output") + " 2>&1").c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    bool printed(const std::string& text) const {
        return test::bytesOf(folder / "output").find(text) != std::string::npos;
    }

    const test::TemporaryFolder folder;
};

TEST_F(DisplayProgram, WithoutADisplayTheyStaySane) {
    unsetenv("DISPLAY");
    EXPECT_EQ(run(ORX_VIEWER_PROGRAM), 1);
    EXPECT_TRUE(printed("no display"));
    EXPECT_EQ(run(std::string(ORX_INSPECTION_PROGRAM) + " --synthetic 1 --window -o " + (folder / "out")), 0);
    EXPECT_TRUE(printed("no display"));
    EXPECT_TRUE(printed("1 measured"));
    EXPECT_EQ(run(std::string(ORX_VIEWER_PROGRAM) + " --fps 0"), 2);
}

TEST_F(DisplayProgram, TheViewerShowsBothBoxes) {
    const test::PrivateDisplay display;
    if (!display.isRunning()) GTEST_SKIP() << "Xvfb can't be started: is the package xvfb installed?";
    ASSERT_EQ(run(std::string(ORX_VIEWER_PROGRAM) + " --seconds 4 --screenshot " + (folder / "seen.png")), 0);
    test::expectBothBoxes(cv::imread(folder / "seen.png"));
}

// The viewer's window, once it is there.
xcb_window_t windowOfTheViewer(xcb_connection_t* connection) {
    const std::string title = "orxFunctions viewer";
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    for (int attempt = 0; attempt < 600; ++attempt) {
        const test::Reply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(connection, xcb_query_tree(connection, root), nullptr));
        const int count = tree ? xcb_query_tree_children_length(tree.get()) : 0;
        for (int i = 0; i < count; ++i) {
            const xcb_window_t window = xcb_query_tree_children(tree.get())[i];
            const test::Reply<xcb_get_property_reply_t> name(xcb_get_property_reply(
                connection,
                xcb_get_property(connection, 0, window, XCB_ATOM_WM_NAME, XCB_GET_PROPERTY_TYPE_ANY, 0, 64),
                nullptr));
            if (!name) continue;
            const auto length = static_cast<std::size_t>(xcb_get_property_value_length(name.get()));
            const auto* const text = static_cast<const char*>(xcb_get_property_value(name.get()));
            if (std::string(text, length) == title) return window;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return XCB_NONE;
}

// Each way in which its window can go, without the message by which a window manager asks for it.
TEST_F(DisplayProgram, TheViewerEndsWithItsWindowAndSaysThatTheDisplayWent) {
    for (const bool isServerKilled : {false, true}) {
        SCOPED_TRACE(isServerKilled);
        test::PrivateDisplay display;
        if (!display.isRunning()) GTEST_SKIP() << "Xvfb can't be started: is the package xvfb installed?";
        auto exitCode = std::async(std::launch::async,
                                   [this] { return run(std::string(ORX_VIEWER_PROGRAM) + " --seconds 60"); });
        xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
        const xcb_window_t window = windowOfTheViewer(connection);
        ASSERT_NE(window, static_cast<xcb_window_t>(XCB_NONE));
        if (!isServerKilled) {
            xcb_destroy_window(connection, window);
            xcb_flush(connection);
        }
        if (isServerKilled) display.kill();
        EXPECT_EQ(exitCode.wait_for(std::chrono::seconds(30)), std::future_status::ready);
        EXPECT_EQ(exitCode.get(), isServerKilled ? 1 : 0);
        EXPECT_EQ(printed("the display was lost"), isServerKilled);
        xcb_disconnect(connection);
    }
}

TEST_F(DisplayProgram, TheInspectionShowsItsPictures) {
    const test::PrivateDisplay display;
    if (!display.isRunning()) GTEST_SKIP() << "Xvfb can't be started: is the package xvfb installed?";
    EXPECT_EQ(run(std::string(ORX_INSPECTION_PROGRAM) + " --synthetic 1 --window --window-seconds 0.5 -o " +
                  (folder / "out")),
              0);
    EXPECT_FALSE(printed("no display"));
    EXPECT_TRUE(printed("1 measured"));
}

}  // namespace
