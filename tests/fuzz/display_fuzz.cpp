// Picture boxes without a display: calls and mouse in any order, drawings of any values. Two boxes that are
// told the same show the same; the way from image to window and back agrees; selections lie in the image.
#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/highgui.hpp>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/display_input.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/environment.h"

namespace {

using fuzz::require;

TDrawTexts lines(fuzz::Input& input) {
    TDrawTexts texts;
    for (int i = input.between(0, 3); i > 0; --i) texts.texts.push_back(input.text(10));
    texts.thickness = input.integer();
    texts.fontScale = input.integer();
    texts.fontFace = input.between(-1, 24);
    texts.color = fuzz::colour(input);
    return texts;
}

// The mouse over a small window; now and then anywhere, or no event that there is.
struct Mouse {
    int event, x, y, flags;
};

Mouse mouse(fuzz::Input& input) {
    static const std::array<int, 8> kEvents = {
        cv::EVENT_MOUSEMOVE,  cv::EVENT_MOUSEMOVE,  cv::EVENT_LBUTTONDOWN,   cv::EVENT_LBUTTONUP,
        cv::EVENT_MOUSEWHEEL, cv::EVENT_MOUSEWHEEL, cv::EVENT_LBUTTONDBLCLK, cv::EVENT_RBUTTONDOWN};
    const unsigned kind = input.byte();
    Mouse told{kEvents[kind % kEvents.size()], input.between(0, 99), input.between(0, 99), 0};
    if (told.event == cv::EVENT_MOUSEMOVE && kind % 32U < 24) told.flags = cv::EVENT_FLAG_LBUTTON;
    if (told.event == cv::EVENT_MOUSEWHEEL)
        told.flags = static_cast<int>(static_cast<unsigned>(input.between(-960, 960)) << 16U);
    if (kind >= 224) return {input.between(-1, 12), input.integer(), input.integer(), input.integer()};
    return told;
}

void setOption(fuzz::Input& input, fuzz::Twins& boxes) {
    const unsigned kind = input.byte() % 9U;
    const bool flag = input.flag();
    const int value = input.integer();
    const double green = input.number();
    boxes.both([&](TPictureBox& box) {
        if (kind == 0) box.keepAspect = flag;
        if (kind == 1) box.selectRect = flag;
        if (kind == 2) box.selectCircle = flag;
        if (kind == 3) box.frozen = flag;
        if (kind == 4) box.panGain = value;
        if (kind == 5) box.smallestSelection = value;
        if (kind == 6) box.selectionThickness = value;
        if (kind == 7) box.handleRadius = value;
        if (kind == 8) box.selectionGreen = green;
    });
}

void draw(fuzz::Input& input, fuzz::Twins& boxes) {
    const unsigned kind = input.byte() % 8U;
    if (kind < 3) {
        const TOverlay overlay = fuzz::drawings(input);
        boxes.both([&](TPictureBox& box) { box.setOverlay(overlay); });
        require(boxes.first.getOverlay().shapes().size() == overlay.shapes().size(), "shapes are kept");
    } else if (kind == 3) {
        const std::string name = fuzz::group(input);
        const bool shown = input.flag();
        boxes.both([&](TPictureBox& box) { box.showGroup(name, shown); });
        require(boxes.first.isGroupShown(name) == shown, "groups are hidden, or shown");
    } else if (kind == 4) {
        TDrawRect rect{input.integer(), input.integer(), input.integer(),
                       input.integer(), input.integer(), fuzz::colour(input)};
        boxes.both([&](TPictureBox& box) { box.setDrawRect(rect); });
    } else if (kind == 5) {
        TDrawCircle circle{input.integer(), input.integer(), input.number(), input.integer(),
                           fuzz::colour(input)};
        boxes.both([&](TPictureBox& box) { box.setDrawCircle(circle); });
    } else if (kind == 6) {
        const TDrawTexts texts = lines(input);
        boxes.both([&](TPictureBox& box) { box.setDrawText(texts); });
    } else {
        boxes.both([](TPictureBox& box) { box.clearDraw(); });
    }
}

void select(fuzz::Input& input, fuzz::Twins& boxes) {
    cv::Rect2d rect;
    cv::Point centre;
    double radius = 0;
    if (input.flag()) {
        const cv::Rect2d wanted{fuzz::place(input), cv::Size2d(fuzz::place(input))};
        boxes.both([&](TPictureBox& box) { box.setSelectedRect(wanted); });
        if (boxes.first.getSelectedRect(rect)) require(rect == wanted, "the rectangle that was set");
    } else {
        const cv::Point at{input.integer(), input.integer()};
        const double wanted = input.number();
        boxes.both([&](TPictureBox& box) { box.setSelectedCircle(at, wanted); });
        const bool isSelected = boxes.first.getSelectedCircle(centre, radius);
        require(isSelected == (std::isfinite(wanted) && wanted > 0), "a circle, or none");
        require(!isSelected || (centre == at && radius == wanted), "the circle that was set");
    }
}

void move(fuzz::Input& input, fuzz::Twins& boxes) {
    const Mouse told = mouse(input);
    boxes.both([&](TPictureBox& box) { box.mouseEvent(told.event, told.x, told.y, told.flags); });
}

void resize(fuzz::Input& input, fuzz::Twins& boxes) {
    const bool isHostile = input.byte() % 8U == 7;
    const int width = isHostile ? std::min(input.integer(), 4) : input.between(4, 99);
    const int height = input.between(4, 99);
    const cv::Size before(boxes.first.windowWidth, boxes.first.windowHeight);
    boxes.both([&](TPictureBox& box) { box.setWindowSize(width, height); });
    const cv::Size after(boxes.first.windowWidth, boxes.first.windowHeight);
    require(after == (std::min(width, height) < 5 ? before : cv::Size(width, height)), "sizes from 5 on");
}

void takeImage(fuzz::Input& input, fuzz::Twins& boxes, cv::Mat& image) {
    const cv::Mat next = input.matrix();
    const bool withShapes = input.flag();
    const TOverlay overlay = withShapes ? fuzz::drawings(input) : TOverlay();
    boxes.both([&](TPictureBox& box) {
        if (!withShapes) return box.setImage(next, false);
        require(box.setPicture(next, overlay) == (!next.empty() && next.dims == 2), "plain images");
    });
    if (next.empty() || next.dims != 2) return;
    image = next;
    if (image.type() == CV_8UC4) cv::cvtColor(next, image, cv::COLOR_BGRA2BGR);
}

void checkPlace(const TPicturePlace& told, const cv::Mat& image) {
    require(told.isInside == cv::Rect({}, image.size()).contains(told.pixel), "inside, or not");
    if (!told.isInside) return;
    require(std::abs(told.point.x - told.pixel.x) <= 0.5 && std::abs(told.point.y - told.pixel.y) <= 0.5,
            "the pixel that the point lies in");
    if (image.depth() != CV_8U) return;
    const uchar* const values = image.ptr(told.pixel.y) + told.pixel.x * image.channels();
    for (int c = 0; c < std::min(4, image.channels()); ++c)
        require(told.value[c] == values[c], "the pixel's values");
}

void listen(TPictureBox& box, const cv::Mat& image) {
    box.onCursor([&image](const TPicturePlace& told) { checkPlace(told, image); });
    box.onClick([&image](const TPictureClick& told) {
        checkPlace(told.place, image);
        require(told.button == cv::EVENT_FLAG_LBUTTON || told.button == cv::EVENT_FLAG_RBUTTON ||
                    told.button == cv::EVENT_FLAG_MBUTTON,
                "the button of a click");
    });
    box.onSelectionChanged([&box](const TSelectionChange& told) {
        cv::Rect2d rect;
        cv::Point centre;
        double radius = 0;
        require(box.getSelectedRect(rect) == told.hasRect, "the rectangle is told");
        require(box.getSelectedCircle(centre, radius) == told.hasCircle && radius == told.radius,
                "the circle is told");
    });
}

void checkMapping(TPictureBox& box, cv::Point2d p) {
    const cv::Point2d shown = box.orig2ShowPoint(p);
    double x = 0;
    double y = 0;
    box.getOrig2ShowImgScaleXY(x, y);
    if (!(std::abs(p.x) < 1e12 && std::abs(p.y) < 1e12 && x > 0 && y > 0 && std::isfinite(x + y))) return;
    const cv::Point2d back = box.show2OrigPoint(shown);
    require(fuzz::nearly(back.x, p.x, 1e-6) && fuzz::nearly(back.y, p.y, 1e-6), "there and back");
}

// A picture that can be shown is, once the button is up and the box not frozen; again, it is the same.
void checkShown(TPictureBox& box, const cv::Mat& image) {
    box.frozen = false;
    box.mouseEvent(cv::EVENT_LBUTTONUP, 0, 0, 0);
    orx::clearLastRefusal();
    box.display = cv::Mat();
    box.showImage();
    // The depths that OpenCV resizes.
    const bool canBeShown = !image.empty() && (image.channels() == 1 || image.channels() >= 3) &&
                            image.channels() <= 4 && image.depth() != CV_8S && image.depth() != CV_32S;
    if (!canBeShown) return;
    require(orx::lastRefusal().code == orx::rcNone, "a picture is shown");
    const cv::Size window(box.windowWidth, box.windowHeight);
    const bool isFitted = window.width > 5 && window.height > 5;
    require(box.display.size() == (isFitted ? window : image.size()), "it fills the window");
    const cv::Mat before = box.display.clone();
    box.showImage();
    require(fuzz::haveEqualBits(before, box.display), "shown again, it is the same");
}

void checkCalls(fuzz::Input& input) {
    static const std::array<int, 8> kFunctions = {
        FUNC_ZOOM_PAN,    FUNC_ZOOM_PAN,    FUNC_EDIT_RECT, FUNC_EDIT_RECT,
        FUNC_EDIT_CIRCLE, FUNC_EDIT_CIRCLE, FUNC_NONE,      99};
    fuzz::Twins boxes;
    cv::Mat image;
    listen(boxes.first, image);
    resize(input, boxes);
    takeImage(input, boxes, image);
    for (int i = 0; i < 40 && !input.atEnd(); ++i) {
        const unsigned kind = input.byte() % 16U;
        if (kind == 0) takeImage(input, boxes, image);
        if (kind == 1) resize(input, boxes);
        if (kind >= 2 && kind < 4) boxes.both([](TPictureBox& box) { box.showImage(); });
        if (kind == 4) boxes.both([](TPictureBox& box) { box.showImageLast(); });
        if (kind == 5 || kind == 6) draw(input, boxes);
        if (kind == 7) select(input, boxes);
        if (kind == 8) setOption(input, boxes);
        if (kind == 9) {
            const auto wanted = static_cast<TFunction>(kFunctions[input.byte() % kFunctions.size()]);
            boxes.both([&](TPictureBox& box) { box.setFunction(wanted); });
        }
        if (kind == 10) {
            const int rate = input.integer();
            boxes.both([&](TPictureBox& box) {
                box.setShowFrame(rate);
                box.calShowFrame();
                require(box.getShowFrame() == std::max(1, rate) && box.sleepMs >= 0, "the rate, from 1 on");
            });
        }
        if (kind >= 11) move(input, boxes);
        require(fuzz::haveEqualBits(boxes.first.display, boxes.second.display),
                "told the same, shown the same");
        checkMapping(boxes.first, fuzz::place(input));
    }
    checkShown(boxes.first, image);
}

// Until the host sets one, what the mouse selects lies in the image.
void checkSelecting(fuzz::Input& input) {
    TPictureBox box(TPictureOf::kBox);
    const cv::Mat image = input.picture();
    const double width = image.cols;
    const double height = image.rows;
    box.setWindowSize(input.between(6, 99), 60);
    box.setImage(image, false);
    box.selectRect = box.selectCircle = true;
    box.smallestSelection = input.between(0, 3);
    box.handleRadius = input.between(0, 9);
    box.showImage();
    box.setFunction(input.flag() ? FUNC_EDIT_RECT : FUNC_EDIT_CIRCLE);
    for (int i = 0; i < 30 && !input.atEnd(); ++i) {
        const Mouse told = mouse(input);
        box.mouseEvent(told.event, told.x, told.y, told.flags);
        cv::Rect2d rect;
        if (box.getSelectedRect(rect))
            require(rect.x >= -1e-9 && rect.y >= -1e-9 && rect.br().x <= width + 1e-9 &&
                        rect.br().y <= height + 1e-9,
                    "rectangles of the mouse lie in the image");
        cv::Point centre;
        double radius = 0;
        if (box.getSelectedCircle(centre, radius))
            require(centre.x - radius >= 0 && centre.y - radius >= 0 && centre.x + radius <= width &&
                        centre.y + radius <= height,
                    "circles of the mouse lie in the image");
    }
}

// Boxes that share the process's picture: both show it, with the selections, each with its own drawings.
void checkShared(fuzz::Input& input) {
    TPictureBox first;
    TPictureBox second;
    const cv::Mat image = input.grey();
    first.setWindowSize(40, 30);
    second.setWindowSize(40, 30);
    first.setImage(image, false);
    first.showImageLast();  // and no zoom
    second.showImageLast();
    const cv::Rect2d wanted{fuzz::place(input), cv::Size2d(fuzz::place(input))};
    TPictureBox::setSelectionRect(wanted);
    cv::Rect2d rect;
    if (TPictureBox::getSelectionRect(rect)) require(rect == wanted, "the rectangle of the process");
    const cv::Point centre{input.integer(), input.integer()};
    TPictureBox::setSelectionCircle(centre, input.number());
    first.selectRect = second.selectRect = true;
    first.selectCircle = second.selectCircle = true;
    for (int i = 0; i < 20 && !input.atEnd(); ++i) {
        const Mouse told = mouse(input);
        (input.flag() ? first : second).mouseEvent(told.event, told.x, told.y, told.flags);
    }
    first.setFunction(FUNC_NONE);  // ends a drag
    second.setFunction(FUNC_NONE);
    first.showImage();
    second.showImage();  // a rectangle that the mouse drew in the second is the first's from now on
    first.showImage();
    require(fuzz::haveEqualBits(first.display, second.display), "the same picture in both");
    cv::Mat last;
    require(TPictureBox::getLastShownImage(last) && fuzz::haveEqualBits(last, first.display), "shown last");
    TPictureBox::setSelectionRect({});
    TPictureBox::setSelectionCircle({}, 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    test::setEnvironment("DISPLAY", "");
    fuzz::runOneOf({checkCalls, checkCalls, checkCalls, checkSelecting, checkShared}, bytes, size);
    return 0;
}
