#include "orxFunctions/calibration/plane/target_layout.h"

#include <cstdio>

#include "orxFunctions/calibration/plane/target_check.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx::plane {
namespace {

constexpr double kLine = 0.25;  // millimetres: of the scale bar
constexpr double kTick = 3.0;
constexpr double kBarRoom = 8.0;  // below the target, with the text
constexpr double kTextHeight = 3.0;
constexpr double kPageMargin = 5.0;  // that printers leave white

bool isPage(const TTargetPage& page, const char* function) {
    return takesOptions(function,
                        {{"page.width", page.width, 10, 10000}, {"page.height", page.height, 10, 10000}});
}

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

std::string describe(const TTarget& target, double bar) {
    const bool isBoard = target.kind == tkChessboard;
    return std::to_string(target.columns) + " x " + std::to_string(target.rows) +
           (isBoard ? " inner corners, squares of " : " dots, pitch ") + number(target.pitch) + " mm" +
           (isBoard ? "" : ", diameter " + number(target.diameter) + " mm") + ". This line is " +
           number(bar) + " mm long.";
}

void addSquares(const TTarget& target, cv::Point2d corner, Layout& layout) {
    for (int row = -1; row < target.rows; ++row) {
        for (int column = -1; column < target.columns; ++column) {
            if ((row + column) % 2 != 0) continue;
            layout.squares.emplace_back(corner.x + column * target.pitch, corner.y + row * target.pitch,
                                        target.pitch, target.pitch);
        }
    }
}

void addScaleBar(const TTarget& target, const TTargetPage& page, double bottom, Layout& layout) {
    const double length = page.width >= 100.0 + 2.0 * kPageMargin ? 100.0 : 10.0;
    const double left = (page.width - length) / 2.0;
    if (left < 0.0 || bottom + kBarRoom > page.height - kPageMargin) return;
    const double y = bottom + kTick;
    // The ticks' outer edges are what is to be measured.
    layout.scaleBar = {{left, y - kLine / 2.0, length, kLine},
                       {left, y - kTick / 2.0, kLine, kTick},
                       {left + length - kLine, y - kTick / 2.0, kLine, kTick}};
    layout.text = describe(target, length);
    layout.textHeight = kTextHeight;
    layout.textPlace = cv::Point2d(left, y + kTick + kTextHeight / 2.0);
}

}  // namespace

bool layOut(const TTarget& target, const TTargetPage& page, Layout& layout, const char* function) {
    if (!isTarget(target, function) || !isPage(page, function)) return false;
    const bool isBoard = target.kind == tkChessboard;
    const double margin = isBoard ? target.pitch : 0.25 * target.pitch;
    const double beyond = isBoard ? target.pitch : target.diameter / 2.0;  // of the outermost points
    const cv::Point2d span((target.columns - 1) * target.pitch, (target.rows - 1) * target.pitch);
    const cv::Point2d room(span.x + 2.0 * (beyond + margin), span.y + 2.0 * (beyond + margin));
    if (room.x > page.width || room.y > page.height)
        return refuse(rcOption, function, "the target takes %g x %g mm with its margin; the page has %g x %g",
                      room.x, room.y, page.width, page.height);
    const cv::Point2d first((page.width - span.x) / 2.0, (page.height - span.y) / 2.0);
    if (isBoard) {
        addSquares(target, first, layout);
    } else {
        layout.dotRadius = target.diameter / 2.0;
        for (int row = 0; row < target.rows; ++row) {
            for (int column = 0; column < target.columns; ++column)
                layout.dots.emplace_back(first.x + column * target.pitch, first.y + row * target.pitch);
        }
    }
    // The white margin stays white.
    if (page.scaleBar) addScaleBar(target, page, first.y + span.y + beyond + margin, layout);
    return true;
}

}  // namespace orx::plane
