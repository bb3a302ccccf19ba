// orx_viewer: live pictures in two picture boxes inside a plain window. See --help.
#include <chrono>
#include <exception>
#include <filesystem>
#include <iostream>
#include <opencv2/imgcodecs.hpp>

#include "orxFunctions/orxfunctions.h"
#include "support/command_line.h"
#include "support/host_window.h"
#include "support/picture_file.h"
#include "viewer/belt.h"
#include "viewer/feeds.h"
#include "viewer/options.h"

namespace {

const cv::Size kPaneSize(480, 380);

bool isOver(const viewer::Options& options, std::chrono::steady_clock::time_point start) {
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    return options.seconds > 0.0 && time.count() > options.seconds;
}

// [prepare]
void prepare(TPictureBox& box, const host::HostWindow& window, int pane, int framesPerSecond) {
    box.setHandle(window.pane(pane), window.paneSize().width, window.paneSize().height);
    box.setShowFrame(framesPerSecond);
    box.start();
}
// [prepare end]

int run(const viewer::Options& options) {
    const auto window = host::openHostWindow("orxFunctions viewer", 2, kPaneSize);
    if (!window) {
        std::cerr << "orx_viewer: no display can be opened (on X, DISPLAY names it)\n";
        return 1;
    }
    viewer::Belt belt(options.seed);
    // The parts are marked in pictures of the left box's own: a newer one that the right box is given must
    // not be seen there under the older marks.
    TPictureBox left(TPictureOf::kBox);
    TPictureBox right;
    prepare(left, *window, 0, options.framesPerSecond);
    prepare(right, *window, 1, options.framesPerSecond);
    right.setFunction(FUNC_EDIT_RECT);
    right.setCursor(CURSOR_HAND);
    right.selectRect = true;
    TPictureBox::setSelectionRect({300, 200, 200, 150});

    const viewer::Feed leftFeed(belt, left, viewer::showParts);
    const viewer::Feed rightFeed(belt, right, viewer::showLevel);
    const auto start = std::chrono::steady_clock::now();
    // [loop]
    while (window->handleEvents(20) && !isOver(options, start)) {
        left.setWindowSize(window->paneSize().width, window->paneSize().height);
        right.setWindowSize(window->paneSize().width, window->paneSize().height);
    }
    // [loop end]
    if (window->isDisplayLost()) {
        std::cerr << "orx_viewer: the display was lost\n";
        return 1;
    }
    if (options.screenshot.empty()) return 0;
    const cv::Mat picture = window->capture();
    if (!picture.empty() && host::writePicture(std::filesystem::u8path(options.screenshot), picture,
                                               {cv::IMWRITE_PNG_COMPRESSION, 9}))
        return 0;
    std::cerr << "orx_viewer: the screenshot can't be written to " << options.screenshot << "\n";
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const host::CommandLine arguments(argc, argv);
        int exitCode = 0;
        const auto options = viewer::parseOptions(arguments.count(), arguments.texts(), exitCode);
        return options ? run(*options) : exitCode;
    } catch (const std::exception& error) {
        std::cerr << "orx_viewer: " << error.what() << "\n";
        return 1;
    }
}
