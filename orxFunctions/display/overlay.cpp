#include "orxFunctions/display/overlay_internal.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/foundation/rounding_internal.h"

namespace orx::display {
namespace {

constexpr double kFarthest = 1e6;  // window pixels: OpenCV draws no larger things in a bearable time
constexpr int kThickest = 255;
constexpr int kLargestFont = 100;
const cv::Point kFirstLine(50, 50);
constexpr double kSmallestText = 0.25;  // of the size asked for

bool isNear(double value) { return std::abs(value) < kFarthest; }
bool isNear(cv::Point2d p) { return isNear(p.x) && isNear(p.y); }
cv::Point rounded(cv::Point2d p) { return {roundedInt(p.x), roundedInt(p.y)}; }

// Negative ones fill.
int drawableThickness(int thickness) {
    return thickness < 0 ? cv::FILLED : std::clamp(thickness, 1, kThickest);
}

// Beyond the picture a side of a rectangle can't be seen, wherever it is.
cv::Point2d clampedTo(const cv::Mat& picture, cv::Point2d p, int thickness) {
    const double margin = 2.0 * kThickest + std::abs(thickness);
    return {std::clamp(p.x, -margin, picture.cols + margin), std::clamp(p.y, -margin, picture.rows + margin)};
}

// An ellipse where the window stretches the image.
void drawRound(cv::Mat& picture, cv::Point2d centre, double radius, const ViewMapping& mapping,
               const cv::Scalar& colour, int thickness) {
    const cv::Point2d at = mapping.toWindow(centre);
    const cv::Point2d scale = mapping.scale();
    const cv::Point2d axes = radius * scale;
    if (!isNear(at) || !isNear(axes) || axes.x < 0.0 || axes.y < 0.0) return;
    if (roundedInt(axes.x) == roundedInt(axes.y))
        cv::circle(picture, rounded(at), roundedInt(axes.x), colour, thickness);
    else
        cv::ellipse(picture, rounded(at), cv::Size(rounded(axes)), 0.0, 0.0, 360.0, colour, thickness);
}

bool isFont(int face) {
    const int plain = face & ~cv::FONT_ITALIC;
    return plain >= cv::FONT_HERSHEY_SIMPLEX && plain <= cv::FONT_HERSHEY_SCRIPT_COMPLEX;
}

struct LineHeight {
    LineHeight(int face, double scale, int stroke)
        : above(cv::getTextSize("Ag", face, scale, stroke, &below).height), thickness(stroke) {}
    int all() const { return above + below + thickness; }

    int below = 0;
    int above;
    int thickness;
};

// How much smaller the lines must be written to be seen whole: 1 where there is room enough, and never so
// small that nobody can read them.
double roomFor(const TDrawTexts& texts, int face, double scale, int thickness, cv::Size room) {
    if (texts.texts.empty()) return 1.0;
    double widest = 0.0;
    int ignored = 0;
    for (const std::string& text : texts.texts)
        widest = std::max<double>(widest, cv::getTextSize(text, face, scale, thickness, &ignored).width);
    const LineHeight line(face, scale, thickness);
    const double last = static_cast<double>(texts.texts.size() - 1);
    const double right = kFirstLine.x + widest;
    const double bottom = kFirstLine.y + last * line.all() + line.below;
    return std::clamp(std::min(room.width / right, room.height / bottom), kSmallestText, 1.0);
}

}  // namespace

void drawCircles(cv::Mat& picture, const std::vector<TDrawCircle>& circles, const ViewMapping& mapping) {
    for (const TDrawCircle& circle : circles)
        drawRound(picture, cv::Point2d(circle.x, circle.y), circle.radius, mapping, circle.color,
                  drawableThickness(circle.thickness));
}

void drawRects(cv::Mat& picture, const std::vector<TDrawRect>& rects, const ViewMapping& mapping) {
    for (const TDrawRect& rect : rects) {
        if (rect.width <= 0 || rect.height <= 0) continue;
        const cv::Point2d first(rect.x, rect.y);
        const cv::Point2d from = mapping.toWindow(first);
        const cv::Point2d to = mapping.toWindow(first + cv::Point2d(rect.width, rect.height));
        if (std::isnan(from.x + from.y + to.x + to.y)) continue;
        const int thickness = drawableThickness(rect.thickness);
        cv::rectangle(picture,
                      cv::Rect(rounded(clampedTo(picture, from, thickness)),
                               rounded(clampedTo(picture, to, thickness))),
                      rect.color, thickness);
    }
}

void drawTexts(cv::Mat& picture, const TDrawTexts& texts) {
    const int face = isFont(texts.fontFace) ? texts.fontFace : static_cast<int>(cv::FONT_HERSHEY_SIMPLEX);
    const double wanted = std::clamp(texts.fontScale, 1, kLargestFont);
    const int wantedThickness = std::clamp(texts.thickness, 1, kThickest);
    const double ratio = roomFor(texts, face, wanted, wantedThickness, picture.size());
    const double scale = wanted * ratio;
    const int thickness = std::max(1, roundedInt(wantedThickness * ratio));
    const LineHeight line(face, scale, thickness);
    cv::Point at(roundedInt(kFirstLine.x * ratio), roundedInt(kFirstLine.y * ratio));
    for (const std::string& text : texts.texts) {
        if (at.y - line.above > picture.rows) break;
        cv::putText(picture, text, at, face, scale, texts.color, thickness);
        at.y += line.all();
    }
}

Handles handlesOf(const cv::Rect& rect) {
    Handles handles;
    for (std::size_t i = 0; i < handles.size(); ++i) {
        const int column = static_cast<int>(i % 3);
        const int row = static_cast<int>(i / 3);
        handles[i] = {rect.x + (column == 1   ? rect.width / 2
                                : column == 2 ? rect.width
                                              : 0),
                      rect.y + (row == 1   ? rect.height / 2
                                : row == 2 ? rect.height
                                           : 0)};
    }
    return handles;
}

cv::Rect rectInWindow(const cv::Rect2d& rect, const ViewMapping& mapping) {
    // Half the range of int: the corner and the size may then be added.
    const auto bounded = [](double v) { return std::isnan(v) ? 0 : roundedInt(std::clamp(v, -1e9, 1e9)); };
    const cv::Point2d corner = mapping.toWindow(rect.tl());
    const cv::Point2d scale = mapping.scale();
    return {bounded(corner.x), bounded(corner.y), bounded(rect.width * scale.x),
            bounded(rect.height * scale.y)};
}

cv::Rect2d rectInImage(const cv::Rect2d& rect, const ViewMapping& mapping) {
    const cv::Point2d corner = mapping.toImage(rect.tl());
    return {corner.x, corner.y, rect.width / mapping.scale().x, rect.height / mapping.scale().y};
}

void drawSelection(cv::Mat& picture, const cv::Rect& windowRect, const cv::Scalar& colour, int thickness) {
    const int width = drawableThickness(thickness);
    cv::rectangle(picture,
                  cv::Rect(rounded(clampedTo(picture, windowRect.tl(), width)),
                           rounded(clampedTo(picture, windowRect.br(), width))),
                  colour, width);
}

void drawSelection(cv::Mat& picture, cv::Point2d centre, double radius, const ViewMapping& mapping,
                   const cv::Scalar& colour, int thickness) {
    drawRound(picture, centre, radius, mapping, colour, drawableThickness(thickness));
    const cv::Point2d at = mapping.toWindow(centre);
    if (isNear(at)) cv::circle(picture, rounded(at), 2, colour, cv::FILLED);
}

}  // namespace orx::display
