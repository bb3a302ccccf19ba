#include "orxFunctions/fitting/drawing.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/fitting/drawing_internal.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

// To the nearest integer, ties to even.
int nearest(double v) { return static_cast<int>(std::lrint(limitedCoordinate(v))); }

struct Stroke {
    cv::Scalar color;
    DrawingStyle style;

    void line(cv::Mat& image, cv::Point from, cv::Point to) const {
        drawLineIn(image, from, to, color, style);
    }
};

bool takesStroke(const cv::Mat& image, const Stroke& stroke, const char* function) {
    constexpr int kThinnest = 1;
    return takesDrawing(image, function) && takesLines(stroke.style, kThinnest, function);
}

// The bottom-left corner of a text of size `text` in a corner of the image.
cv::Point textOrigin(cv::Size image, cv::Size text, int corner) {
    const int marginX = nearest(image.width * 0.05);
    const int marginY = nearest(image.height * 0.05);
    switch (corner) {
        case 0:
            return {image.width - text.width - marginX, text.height + marginY};
        case 1:
            return {image.width - text.width - marginX, image.height - text.height - marginY};
        case 2:
            return {marginX, text.height + marginY};
        case 3:
            return {marginX, image.height - text.height - marginY};
        default:
            return {0, 0};
    }
}

}  // namespace

void drawContours(cv::Mat& image, std::vector<cv::Point> points, int radius, cv::Scalar color, int thickness,
                  int lineType, int shift) {
    constexpr const char* kName = "drawContours";
    if (!takesDrawing(image, kName) || !takesCircles({thickness, lineType, shift}, radius, kName)) return;
    for (const cv::Point& p : points) cv::circle(image, p, radius, color, thickness, lineType, shift);
}

void drawCorss(cv::Mat& image, cv::Point center, cv::Scalar color, int L, double k, int thickness,
               int lineType, int shift) {
    const Stroke stroke{color, {thickness, lineType, shift}};
    if (!takesStroke(image, stroke, "drawCorss")) return;
    const double x = center.x;
    const double y = center.y;
    const double length = L;
    // The flatter of the two arms spans the columns, the steeper one the rows.
    if (std::abs(k) >= 1) k = -1 / k;
    const double lean = k * length;
    stroke.line(image, {nearest(x + lean), nearest(y - length)}, {nearest(x - lean), nearest(y + length)});
    stroke.line(image, {nearest(x - length), nearest(y - lean)}, {nearest(x + length), nearest(y + lean)});
}

void drawLine(cv::Mat& image, double k, double b, cv::Scalar color, int thickness, int lineType, int shift) {
    const Stroke stroke{color, {thickness, lineType, shift}};
    if (!takesStroke(image, stroke, "drawLine")) return;
    if (std::abs(k) < 1) {
        const int right = image.cols - 1;
        stroke.line(image, {0, nearest(b)}, {right, nearest(right * k + b)});
    } else {
        const int bottom = image.rows - 1;
        stroke.line(image, {nearest(-b / k), 0}, {nearest((bottom - b) / k), bottom});
    }
}

void drawLineHough(cv::Mat& image, double theta, double rho, cv::Scalar color, int thickness, int lineType,
                   int shift) {
    const Stroke stroke{color, {thickness, lineType, shift}};
    if (!takesStroke(image, stroke, "drawLineHough")) return;
    const double sine = std::sin(theta);
    const double cosine = std::cos(theta);
    // The far end lies at cols or rows, intended.
    if (theta >= kPi / 4 && theta <= 3 * kPi / 4) {
        stroke.line(image, {0, nearest(rho / sine)},
                    {image.cols, nearest((rho - image.cols * cosine) / sine)});
    } else {
        stroke.line(image, {nearest(rho / cosine), 0},
                    {nearest((rho - image.rows * sine) / cosine), image.rows});
    }
}

void drawText(cv::Mat& image, std::string text, cv::Scalar /*color: always red, intended*/, int corner,
              double ratio) {
    constexpr const char* kName = "drawText";
    if (!takesImage(image, kName)) return;
    if (image.channels() != 3) {
        refuse(rcImageType, kName, "the image has %d channels; 3 are taken", image.channels());
        return;
    }
    constexpr int kFace = cv::FONT_HERSHEY_PLAIN;
    double scale = image.cols / ratio;
    constexpr double kLargestScale = 32767;  // OpenCV's limit of thickness
    if (!(std::abs(scale) <= kLargestScale) || nearest(scale) < 0) {
        refuse(rcOption, kName, "the ratio %g makes a scale of %g for %d columns; 0 to 32767 are taken",
               ratio, scale, image.cols);
        return;
    }
    const int thickness = nearest(scale);
    scale = thickness < 1 ? 1.0 : std::max(scale, 1.0);
    int baseline = 0;
    const cv::Size size = cv::getTextSize(text, kFace, scale, thickness, &baseline);
    const bool overflowed = size.width < 0 || size.height < 0;
    if (overflowed) {
        refuse(rcTooMany, kName, "a text of %zu bytes is too wide at a scale of %g", text.size(), scale);
        return;
    }
    cv::putText(image, text, textOrigin(image.size(), size, corner), kFace, scale, cv::Scalar(0, 0, 255),
                thickness, cv::LINE_8, false);
}

}  // namespace orx
