// The code of docs/picture-box.md, and its picture of an overlay.
//
//   picture_box_guide FILE.png
//
// Shows a tray of parts with marks in two boxes that need no window, the second one zoomed with a group
// hidden, and draws a rectangle in it as a user would. Ends with 1 when the box does not tell of it.
//
// What the page shows stands here to the letter; a test compares.
#include <cmath>
#include <cstdio>
#include <opencv2/core.hpp>
#include <opencv2/highgui.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "support/synthetic_scene.h"

namespace {

std::vector<cv::Point2d> cornersOf(const scenes::Bar& bar) {
    const double angle = bar.angle * CV_PI / 180.0;
    const cv::Point2d along(0.5 * bar.length * std::cos(angle), 0.5 * bar.length * std::sin(angle));
    const cv::Point2d across = cv::Point2d(-along.y, along.x) * (bar.width / bar.length);
    return {bar.center - along - across, bar.center + along - across, bar.center + along + across,
            bar.center - along + across};
}

TOverlay marksOf(const scenes::Scene& scene) {
    TOverlay marks;
    marks.setGroup("outlines").setStyle({{0, 220, 255}, 1, 1.0});
    for (const scenes::Disk& disk : scene.disks) marks.circle(disk.center, disk.radius);
    marks.setGroup("bars").setStyle({{80, 80, 255}, 1, 0.45});
    for (const scenes::Bar& bar : scene.bars) marks.area(cornersOf(bar));
    marks.setGroup("centres").setStyle({{110, 235, 90}, 1, 1.0});
    for (const scenes::Disk& disk : scene.disks) marks.cross(disk.center, 7.0);
    marks.setGroup("sizes").setStyle({{255, 255, 255}, 1, 1.0});
    for (const scenes::Disk& disk : scene.disks) {
        const cv::Point2d edge(disk.center.x + disk.radius, disk.center.y);
        marks.arrow(disk.center, edge);
        marks.text(edge + cv::Point2d(3, 0), zul::doubleToStr(2.0 * disk.radius, 1), 9.0);
    }
    return marks;
}

struct Told {
    cv::Rect2d selection;
    cv::Point clicked;
    double grey = 0.0;
};

void listen(TPictureBox& box, Told& told) {
    box.setFunction(FUNC_EDIT_RECT);
    box.selectRect = true;
    box.onSelectionChanged([&told](const TSelectionChange& change) {
        if (change.hasRect && !change.isDragging) told.selection = change.rect;
    });
    box.onCursor([&told](const TPicturePlace& place) { told.grey = place.grey; });
    box.onClick([&told](const TPictureClick& click) { told.clicked = click.place.pixel; });
}

void drag(TPictureBox& box, cv::Point from, cv::Point to) {
    box.mouseEvent(cv::EVENT_LBUTTONDOWN, from.x, from.y, cv::EVENT_FLAG_LBUTTON);
    box.mouseEvent(cv::EVENT_MOUSEMOVE, to.x, to.y, cv::EVENT_FLAG_LBUTTON);
    box.mouseEvent(cv::EVENT_LBUTTONUP, to.x, to.y, 0);
}

cv::Mat shownBy(TPictureBox& box) {
    box.showImage();
    cv::Mat seen;
    box.getShownImage(seen);
    return seen;
}

bool isAsDrawn(const Told& told, const cv::Rect2d& expected) {
    return cv::norm(told.selection.tl() - expected.tl()) < 1e-6 &&
           cv::norm(told.selection.br() - expected.br()) < 1e-6 && told.grey > 0.0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "picture_box_guide: give the name of the picture to write\n");
        return 2;
    }
    scenes::SceneSettings settings;
    settings.size = {480, 360};
    settings.seed = 4;
    settings.noiseSigma = 0.0;
    const scenes::Scene scene = scenes::renderScene(settings);

    TPictureBox whole(TPictureOf::kBox);
    TPictureBox part(TPictureOf::kBox);
    whole.setWindowSize(480, 360);
    part.setWindowSize(480, 360);
    whole.setPicture(scene.image, marksOf(scene));
    part.setPicture(scene.image, marksOf(scene));
    part.showGroup("bars", false);

    const cv::Mat left = shownBy(whole);
    shownBy(part);
    const cv::Point2d centre = scene.disks.front().center;
    part.mouseEvent(cv::EVENT_MOUSEWHEEL, cvRound(centre.x), cvRound(centre.y), (8 * 120) << 16);
    Told told;
    listen(part, told);
    const cv::Point from(60, 60);
    const cv::Point to(180, 140);
    const cv::Point2d first = part.show2OrigPoint(from);
    const cv::Point2d last = part.show2OrigPoint(to);
    drag(part, from, to);
    const cv::Mat right = shownBy(part);
    if (!isAsDrawn(told, {first, last})) {
        std::fprintf(stderr, "picture_box_guide: the selection was not told\n");
        return 1;
    }
    cv::Mat gap(left.rows, 8, CV_8UC3, cv::Scalar::all(255));
    cv::Mat both;
    cv::hconcat(std::vector<cv::Mat>{left, gap, right}, both);
    if (!cv::imwrite(argv[1], both, {cv::IMWRITE_PNG_COMPRESSION, 9})) {
        std::fprintf(stderr, "picture_box_guide: can't write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
