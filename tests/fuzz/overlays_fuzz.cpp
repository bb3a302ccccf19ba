// What is drawn over a picture: shapes stay at their place and mix towards their colour, hidden groups leave
// no trace.
#include <algorithm>
#include <opencv2/highgui.hpp>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/display_input.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/environment.h"

namespace {

using fuzz::require;

// Hidden groups leave no trace.
void checkHidden(fuzz::Input& input) {
    fuzz::Twins boxes;
    const cv::Mat image = input.matrix();
    const int width = input.between(5, 99);
    const int height = input.between(5, 99);
    const TOverlay overlay = fuzz::drawings(input);
    boxes.both([&](TPictureBox& box) {
        box.setWindowSize(width, height);
        box.setImage(image, false);
        box.selectRect = true;  // there is none, but the picture is made to be drawn on
    });
    boxes.first.setOverlay(overlay);
    for (const char* const name : {"a", "b", "c"}) boxes.first.showGroup(name, false);
    boxes.both([](TPictureBox& box) { box.showImage(); });
    require(fuzz::haveEqualBits(boxes.first.display, boxes.second.display), "what is hidden leaves no trace");
}

struct Bounds {
    double left = 1e9, right = -1e9, top = 1e9, bottom = -1e9;

    void take(cv::Point2d p, cv::Point2d reach) {
        left = std::min(left, p.x - reach.x);
        right = std::max(right, p.x + reach.x);
        top = std::min(top, p.y - reach.y);
        bottom = std::max(bottom, p.y + reach.y);
    }
    bool contain(int x, int y) const { return x >= left && x <= right && y >= top && y <= bottom; }
};

// A sound shape of a sound style; how far it may be seen around its points is told.
TOverlay soundShape(fuzz::Input& input, TShapeStyle& style, double& around, double& radius) {
    const double blue = input.byte();
    const double green = input.byte();
    style.color = {blue, green, double(input.byte())};
    style.thickness = input.between(1, 9);
    style.opacity = input.between(1, 8) / 8.0;
    around = 3 + 0.5 * style.thickness;
    const unsigned kind = input.byte() % 7U;
    const cv::Point2d from{input.between(-40, 400) / 8.0, input.between(-40, 400) / 8.0};
    const cv::Point2d to{input.between(-40, 400) / 8.0, input.between(-40, 400) / 8.0};
    const double size = input.byte() / 8.0;
    TOverlay overlay;
    overlay.setStyle(style);
    if (kind == 0) overlay.line(from, to);
    if (kind == 1) overlay.rectangle({from, to});
    if (kind == 2) overlay.area({from, to, {from.x, to.y}});
    if (kind == 3) overlay.arrow(from, to);
    if (kind == 4) overlay.cross(from, size);
    if (kind == 5) overlay.circle(from, size);
    if (kind == 6) overlay.disc(from, size);
    if (kind == 3) around += 8 + 2 * style.thickness;
    if (kind == 4) around += size;
    radius = kind >= 5 ? size : 0;
    return overlay;
}

// It changes pixels near its points alone, each towards its colour.
void checkShape(fuzz::Input& input) {
    fuzz::Twins boxes;
    const cv::Mat image = input.grey();
    const int width = input.between(6, 99);
    const int height = input.between(6, 99);
    const int wheel = static_cast<int>(static_cast<unsigned>(120 * input.between(0, 12)) << 16U);
    const int x = input.between(0, 99);
    boxes.both([&](TPictureBox& box) {
        box.setWindowSize(width, height);
        box.setImage(image, false);
        box.selectRect = true;
        box.showImage();
        box.mouseEvent(cv::EVENT_MOUSEWHEEL, x, 20, wheel);
    });
    TShapeStyle style;
    double around = 0;
    double radius = 0;
    const TOverlay overlay = soundShape(input, style, around, radius);
    boxes.first.setOverlay(overlay);
    boxes.both([](TPictureBox& box) { box.showImage(); });
    Bounds bounds;
    for (const cv::Point2d& p : overlay.shapes()[0].points) {
        const cv::Point2d half(0.5, 0.5);
        const cv::Point2d at = boxes.first.orig2ShowPoint(p + half) - half;
        bounds.take(at, {around + radius * boxes.first.scaleX, around + radius * boxes.first.scaleY});
    }
    const cv::Mat drawn = boxes.first.display;
    const cv::Mat bare = boxes.second.display;
    require(drawn.type() == CV_8UC3 && drawn.size() == bare.size(), "drawn on colour");
    for (int row = 0; row < drawn.rows; ++row) {
        for (int column = 0; column < drawn.cols; ++column) {
            const auto after = drawn.at<cv::Vec3b>(row, column);
            const auto before = bare.at<cv::Vec3b>(row, column);
            if (after == before) continue;
            require(bounds.contain(column, row), "shapes stay at their place");
            for (int c = 0; c < 3; ++c)
                require(after[c] >= std::min<double>(before[c], style.color[c]) - 1 &&
                            after[c] <= std::max<double>(before[c], style.color[c]) + 1,
                        "between the picture and the colour");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    test::setEnvironment("DISPLAY", "");
    fuzz::runOneOf({checkHidden, checkShape}, bytes, size);
    return 0;
}
