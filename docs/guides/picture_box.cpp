// The program of docs/guides/picture-box.md: a picture box without a window, which does all but show.
#include <cmath>
#include <cstdio>
#include <opencv2/highgui.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

#include "guide.h"
#include "orxFunctions/orxfunctions.h"
#include "support/synthetic_scene.h"

namespace {

// [marks]
TOverlay marksOf(const scenes::Scene& scene) {
    TOverlay marks;
    marks.setGroup("outlines").setStyle({{0, 220, 255}, 2, 1.0});  // colour, thickness, opacity
    for (const scenes::Disk& disk : scene.disks) marks.circle(disk.center, disk.radius);
    marks.setGroup("sizes").setStyle({{255, 255, 255}, 1, 1.0});
    for (const scenes::Disk& disk : scene.disks)
        marks.text(disk.center, zul::doubleToStr(2.0 * disk.radius, 1), 12.0);
    return marks;
}
// [marks end]

cv::Mat shownBy(TPictureBox& box) {
    box.showImage();
    cv::Mat seen;
    guide::expect(box.getShownImage(seen), "the box has something to show");
    return seen;
}

// What a user does with the mouse, on Windows and X by their events.
void drag(TPictureBox& box, cv::Point from, cv::Point to) {
    box.mouseEvent(cv::EVENT_LBUTTONDOWN, from.x, from.y, cv::EVENT_FLAG_LBUTTON);
    box.mouseEvent(cv::EVENT_MOUSEMOVE, to.x, to.y, cv::EVENT_FLAG_LBUTTON);
    box.mouseEvent(cv::EVENT_LBUTTONUP, to.x, to.y, 0);
}

void show() {
    scenes::SceneSettings settings;
    settings.size = {480, 360};
    settings.seed = 4;
    const scenes::Scene scene = scenes::renderScene(settings);

    // [box]
    TPictureBox box(TPictureOf::kBox);  // a picture, a zoom and selections of its own
    box.setWindowSize(480, 360);        // with a window: box.setHandle(window, 480, 360); box.start();
    box.setPicture(scene.image, marksOf(scene));
    // [box end]
    const cv::Mat whole = shownBy(box);
    const TOverlay marks = marksOf(scene);
    guide::expect(marks.shapes().size() == 2 * scene.disks.size() &&
                      marks.shapes().back().kind == TShapeKind::kText &&
                      marks.shapes().back().group == "sizes",
                  "an overlay lists its shapes");

    const cv::Point2d centre = scene.disks.front().center;
    box.mouseEvent(cv::EVENT_MOUSEWHEEL, cvRound(centre.x), cvRound(centre.y), (8 * 120) << 16);
    box.showGroup("sizes", false);
    // [select]
    cv::Rect2d selected;
    box.setFunction(FUNC_EDIT_RECT);
    box.selectRect = true;
    box.onSelectionChanged([&selected](const TSelectionChange& change) {
        if (change.hasRect && !change.isDragging) selected = change.rect;  // image coordinates
    });
    // [select end]
    const cv::Point2d corner = box.show2OrigPoint({140, 90});
    drag(box, {140, 90}, {330, 250});
    const cv::Mat zoomed = shownBy(box);
    guide::expect(cv::norm(selected.tl() - corner) < 1e-6, "what is selected is told in image coordinates");
    guide::expect(cv::norm(box.orig2ShowPoint(corner) - cv::Point2d(140, 90)) < 1e-6,
                  "the way to the window leads back");

    cv::Mat both;
    cv::hconcat(std::vector<cv::Mat>{whole, cv::Mat(360, 8, CV_8UC3, cv::Scalar::all(255)), zoomed}, both);
    guide::save("picture-box-zoom", both);

    const cv::Point at = corner;
    // [simple]
    box.setDrawRect({at.x, at.y, 30, 20, 2, {0, 0, 255}});  // x, y, width, height, thickness, colour
    box.setDrawCircle({at.x + 15, at.y + 10, 4.0, -1, {0, 255, 0}});  // centre, radius; below 0: filled
    box.setCursor(CURSOR_HAND);
    // [simple end]
    guide::expect(cv::norm(shownBy(box), zoomed, cv::NORM_INF) > 0, "rectangles and circles are seen");
    box.clearDraw();
    guide::expect(cv::norm(shownBy(box), zoomed, cv::NORM_INF) == 0, "and removed again");

    // [refused]
    if (!box.setPicture(cv::Mat(), {})) std::printf("%s\n", orx::lastRefusal().text.c_str());
    // [refused end]
    guide::expect(orx::lastRefusal().text == "setPicture: the image is empty", "an empty picture is refused");
    guide::expect(cv::norm(shownBy(box), zoomed, cv::NORM_INF) == 0, "and the one before stays");
}

}  // namespace

int main(int argc, char** argv) { return guide::run(argc, argv, show); }
