// Drawing of segmented contours.
#include "orxFunctions/segmentation/segment_contour.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <string>

#include "ZULLib/zullib.h"
#include "orxFunctions/fitting/drawing_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/pictures/picture_modules.h"
#include "orxFunctions/platform/window/native_window.h"

namespace orx {
namespace {

constexpr const char* kResultCaption = u8"圆、直线分割效果：";
constexpr const char* kPointsCaption = u8"圆、直线分割效果2：";

// The same colours at every call: three draws for an element, the lowest byte of each.
class ColourSequence {
  public:
    cv::Scalar next() {
        const unsigned red = rng_.next() & 0xFFU;
        const unsigned green = rng_.next() & 0xFFU;
        const unsigned blue = rng_.next() & 0xFFU;
        return {static_cast<double>(blue), static_cast<double>(green), static_cast<double>(red)};
    }

  private:
    cv::RNG rng_{10086};
};

const cv::Scalar kLineColour(0, 255, 0);
const cv::Scalar kArcColour(0, 0, 255);
const cv::Scalar kPointColour(255, 128, 0);
const cv::Scalar kTextColour(0, 255, 255);

// Makes three channels of one. False, and the refusal is kept, for an image that can't be drawn on: an empty
// one, more than two dimensions, a kind of pixel that OpenCV can't convert or draw.
bool prepare(cv::Mat& image, const char* function) {
    if (!takesDrawing(image, function)) return false;
    if (image.channels() > 1) return true;
    if (image.depth() != CV_8U && image.depth() != CV_16U && image.depth() != CV_32F)
        return refuse(rcImageType, function,
                      "one channel of OpenCV's depth %d; 8 or 16 bits without sign and floats are taken",
                      image.depth());
    cv::cvtColor(image, image, cv::COLOR_GRAY2BGR);
    return true;
}

void show(const char* utf8Caption, const cv::Mat& image, const char* function) {
    if (image.channels() < 3) {
        refuse(rcImageType, function, "the image has %d channels; 1, 3 or 4 are shown", image.channels());
    } else if (!platform::displayIsAvailable()) {
        refuse(rcNoDisplay, function, "there is no display to show a window on");
    } else {
        std::string reason;
        const platform::PictureWindows* const windows = platform::pictureModules.windows(&reason);
        if (windows == nullptr)
            refuse(rcFailed, function, "%s", reason.c_str());
        else
            windows->imshow(zul::toAnsi(utf8Caption), image);
    }
}

void drawPoints(cv::Mat& image, const std::vector<cv::Point>& points, const cv::Scalar& colour) {
    for (const cv::Point& p : points) cv::circle(image, p, 1, colour, 1, cv::LINE_8);
}

void drawText(cv::Mat& image, const std::string& text, cv::Point at) {
    cv::putText(image, text, at, cv::FONT_HERSHEY_PLAIN, 1.0, kTextColour, 1, cv::LINE_8);
}

// False for a degenerate or absurdly large circle: its outline can't be drawn.
bool drawArc(cv::Mat& image, const TSegemetCircle& circle, const cv::Scalar& colour, int thickness) {
    constexpr double kFarthest = 1e6;
    const auto drawable = [](double v) { return v > -kFarthest && v < kFarthest; };
    if (!(circle.radius >= 0) || !drawable(circle.radius) || !drawable(circle.center.x) ||
        !drawable(circle.center.y) || !drawable(circle.startAngle) || !drawable(circle.endAngle)) {
        return false;
    }
    cv::ellipse(image, cv::Point(cvRound(circle.center.x), cvRound(circle.center.y)),
                cv::Size(cvRound(circle.radius), cvRound(circle.radius)), 0, circle.startAngle,
                circle.endAngle, colour, thickness, cv::LINE_8);
    return true;
}

// What draws an arc says whether it could.
template <class Draw>
void drawArcs(const std::vector<TSegemetCircle>& circles, Draw draw, const char* function) {
    const auto left = std::count_if(circles.begin(), circles.end(),
                                    [&](const TSegemetCircle& circle) { return !draw(circle); });
    if (left > 0)
        refuse(rcDegenerate, function, "%d of %zu arcs have no outline that can be drawn",
               static_cast<int>(left), circles.size());
}

// The part of a line that can be seen: OpenCV takes very long for thick lines that go far outside, and fails
// where their length does not fit into 32 bits.
void drawLine(cv::Mat& image, cv::Point from, cv::Point to, const cv::Scalar& colour, int thickness) {
    constexpr int kMargin = 1000;  // where a line is cut is not seen
    cv::Point2l first(from.x + std::int64_t{kMargin}, from.y + std::int64_t{kMargin});
    cv::Point2l last(to.x + std::int64_t{kMargin}, to.y + std::int64_t{kMargin});
    const cv::Size2l size(image.cols + std::int64_t{2 * kMargin}, image.rows + std::int64_t{2 * kMargin});
    if (!cv::clipLine(size, first, last)) return;
    const auto toPixel = [](const cv::Point2l& p) {
        return cv::Point(static_cast<int>(p.x) - kMargin, static_cast<int>(p.y) - kMargin);
    };
    cv::line(image, toPixel(first), toPixel(last), colour, thickness, cv::LINE_8);
}

cv::Point middleOf(const TSegemetLine& line) {
    const auto middle = [](int a, int b) { return static_cast<int>((static_cast<long long>(a) + b) / 2); };
    return {middle(line.startPoint[0], line.endPoint[0]), middle(line.startPoint[1], line.endPoint[1])};
}

void drawIndicesAndAngles(cv::Mat& image, const std::vector<TSegemetLine>& lines,
                          const std::vector<TSegemetCircle>& circles) {
    for (std::size_t i = 0; i < lines.size(); ++i) drawText(image, std::to_string(i), middleOf(lines[i]));
    for (const TSegemetCircle& circle : circles) {
        if (circle.points.empty()) continue;
        drawText(image, zul::doubleToStr(circle.startAngle, 0), circle.points.front());
        drawText(image, zul::doubleToStr(circle.endAngle, 0), circle.points.back());
    }
}

void drawKeyPoints(cv::Mat& image, const cv::Mat& keyPoints, bool drawIndices, const char* function) {
    if (!prepare(image, function) || keyPoints.empty()) return;
    if (keyPoints.type() != CV_32SC2) {
        refuse(rcOption, function, "key points in %d channels of OpenCV's depth %d; 2 of depth %d are taken",
               keyPoints.channels(), keyPoints.depth(), CV_32S);
        return;
    }
    int index = 0;
    for (auto p = keyPoints.begin<cv::Point>(); p != keyPoints.end<cv::Point>(); ++p, ++index) {
        cv::circle(image, *p, 2, kArcColour, 1, cv::LINE_8);
        if (drawIndices) drawText(image, std::to_string(index), *p);
    }
}

void tellNothingSplit(const char* function) { refuse(rcNotReady, function, "no contour has been split"); }

}  // namespace

void TSegmentContour::disPlayCircleForTest(cv::Mat& image, std::vector<TSegemetCircle> circles) {
    constexpr const char* kName = "disPlayCircleForTest";
    if (!prepare(image, kName)) return;
    ColourSequence colours;
    const auto draw = [&](const TSegemetCircle& circle) {
        const cv::Scalar colour = colours.next();
        const bool drawn = drawArc(image, circle, colour, 1);
        drawPoints(image, circle.points, colour);
        return drawn;
    };
    drawArcs(circles, draw, kName);
}

void TSegmentContour::disPlayLinesForTest(cv::Mat& image, std::vector<TSegemetLine> lines) {
    if (!prepare(image, "disPlayLinesForTest")) return;
    ColourSequence colours;
    for (const TSegemetLine& line : lines) {
        if (line.usedByCircle) continue;
        drawLine(image, cv::Point(line.startPoint), cv::Point(line.endPoint), colours.next(), 1);
    }
}

void TSegmentContour::disPlayFitLinesForTest(cv::Mat& image, std::vector<TSegemetLine> lines) {
    if (!prepare(image, "disPlayFitLinesForTest")) return;
    ColourSequence colours;
    for (const TSegemetLine& line : lines) {
        if (line.usedByCircle) continue;
        drawLine(image, line.fitStartPoint, line.fitEndPoint, colours.next(), 2);
    }
}

void TSegmentContour::disPlayContoursForTest(cv::Mat& image, std::vector<std::vector<cv::Point>> contours) {
    if (!prepare(image, "disPlayContoursForTest")) return;
    ColourSequence colours;
    for (const std::vector<cv::Point>& contour : contours) drawPoints(image, contour, colours.next());
}

void TSegmentContour::disPlayContoursForTest(cv::Mat& image, std::vector<TSegemetCircle> circles,
                                             std::vector<TSegemetLine> lines, bool drawThePoints,
                                             bool showWindow) {
    constexpr const char* kName = "disPlayContoursForTest";
    if (!prepare(image, kName)) return;
    if (drawThePoints) {
        ColourSequence colours;
        for (const TSegemetCircle& circle : circles) drawPoints(image, circle.points, colours.next());
        for (const TSegemetLine& line : lines) drawPoints(image, line.points, colours.next());
    }
    if (showWindow) show(kPointsCaption, image, kName);
}

void TSegmentContour::disPlayKeyPointsForTest(cv::Mat& image, cv::Mat keyPoints, bool drawIndices) {
    drawKeyPoints(image, keyPoints, drawIndices, "disPlayKeyPointsForTest");
}

void TSegmentContour::disPlayKeyPoints(cv::Mat& image, bool drawIndices) {
    constexpr const char* kName = "disPlayKeyPoints";
    if (contourLines_.empty()) {
        if (prepare(image, kName)) tellNothingSplit(kName);
        return;
    }
    drawKeyPoints(image, lastKeyPoints_, drawIndices, kName);
}

void TSegmentContour::disPlayCirclesLines(cv::Mat& image, bool drawThePoints, bool drawTheLines,
                                          bool drawTheArcs, bool drawIndices, bool showWindow) {
    constexpr const char* kName = "disPlayCirclesLines";
    if (!prepare(image, kName)) return;
    if (contourLines_.empty()) {
        tellNothingSplit(kName);
    } else {
        const std::vector<TSegemetLine>& lines = contourLines_.back();
        const std::vector<TSegemetCircle>& circles = contourCircles_.back();
        if (drawTheLines) {
            for (const TSegemetLine& line : lines) {
                drawLine(image, cv::Point(line.startPoint), cv::Point(line.endPoint), kLineColour, 2);
            }
        }
        if (drawTheArcs) {
            drawArcs(
                circles, [&](const TSegemetCircle& circle) { return drawArc(image, circle, kArcColour, 2); },
                kName);
        }
        if (drawThePoints) {
            // Where the pieces begin and end.
            for (const TSegemetLine& line : lines) {
                cv::circle(image, cv::Point(line.startPoint), 3, kPointColour, 2, cv::LINE_8);
                cv::circle(image, cv::Point(line.endPoint), 3, kPointColour, 2, cv::LINE_8);
            }
            for (const TSegemetCircle& circle : circles) {
                if (circle.points.empty()) continue;
                cv::circle(image, circle.points.front(), 3, kPointColour, 2, cv::LINE_8);
                cv::circle(image, circle.points.back(), 3, kPointColour, 2, cv::LINE_8);
            }
        }
        if (drawIndices) drawIndicesAndAngles(image, lines, circles);
    }
    if (showWindow) show(kResultCaption, image, kName);
}

void TSegmentContour::disPlayContours(cv::Mat& image, bool drawThePoints, bool drawTheLines, bool drawTheArcs,
                                      bool drawIndices, bool showWindow) {
    constexpr const char* kName = "disPlayContours";
    if (!prepare(image, kName)) return;
    if (contourLines_.empty()) {
        tellNothingSplit(kName);
    } else {
        const std::vector<TSegemetLine>& lines = contourLines_.back();
        const std::vector<TSegemetCircle>& circles = contourCircles_.back();
        ColourSequence colours;
        if (drawThePoints && drawTheArcs) {
            for (const TSegemetCircle& circle : circles) drawPoints(image, circle.points, colours.next());
        }
        if (drawThePoints && drawTheLines) {
            for (const TSegemetLine& line : lines) drawPoints(image, line.points, colours.next());
        }
        if (drawIndices) drawIndicesAndAngles(image, lines, circles);
    }
    if (showWindow) show(kPointsCaption, image, kName);
}

void TSegmentContour::disPlayResultCirclesLines(cv::Mat& image, bool showWindow, bool /*unused*/,
                                                bool /*unused*/, bool /*unused*/) {
    constexpr const char* kName = "disPlayResultCirclesLines";
    if (prepare(image, kName) && showWindow) show(kResultCaption, image, kName);
}

}  // namespace orx
