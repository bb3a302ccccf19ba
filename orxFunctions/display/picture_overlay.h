// What a host draws over the picture of a box, together with the picture and to fractions of a pixel.
#ifndef ORXFUNCTIONS_DISPLAY_PICTURE_OVERLAY_H
#define ORXFUNCTIONS_DISPLAY_PICTURE_OVERLAY_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/api.h"

struct TShapeStyle {
    cv::Scalar color{0.0, 255.0, 0.0};  // blue, green, red, each 0 to 255
    int thickness = 1;                  // of strokes, window pixels, 1 to 255
    double opacity = 1.0;               // 0 (unseen) to 1 (hides what is below)
};

enum class TShapeKind { kPath, kArea, kCircle, kDisc, kArrow, kCross, kText };

// Made by TOverlay. Points are image coordinates: (0, 0) is the centre of the top-left pixel.
struct TShape {
    TShapeKind kind = TShapeKind::kPath;
    std::vector<cv::Point2d> points;  // a circle's centre, a cross's middle, the start of a text's base line
    double size = 0.0;                // of a circle and a disc the radius, image pixels; of a cross half its
                                      // width, of a text the height of its capitals: window pixels
    std::string text;
    TShapeStyle style;
    std::string group;
};

// Shapes in the order in which they are drawn, each with the style and in the group that were set last:
//
//     TOverlay overlay;
//     overlay.setGroup("edges").setStyle({{0, 255, 255}, 1, 1.0}).polyline(edge);
//     overlay.setGroup("result").setStyle({{0, 0, 255}, 2, 0.3}).area(corners);
//     box.setPicture(image, overlay);
//
// Strokes, crosses' arms and letters keep their width and size in the window when it is zoomed. Shapes are
// drawn smoothed, and placed to a sixth of a window pixel; texts to a whole one. What can't be drawn (no
// number, a radius below 0 or far beyond the window) is left out. A plain value: one thread at a time.
class ORX_API TOverlay {
  public:
    // Of the shapes that follow. At first the default style and the group "".
    TOverlay& setStyle(const TShapeStyle& style);
    TOverlay& setGroup(const std::string& group);

    TOverlay& line(cv::Point2d from, cv::Point2d to);
    TOverlay& polyline(std::vector<cv::Point2d> points, bool closed = false);
    TOverlay& rectangle(const cv::Rect2d& rect);
    TOverlay& circle(cv::Point2d centre, double radius);
    // The tip is at `to`.
    TOverlay& arrow(cv::Point2d from, cv::Point2d to);
    // Upright; `armLength` in window pixels.
    TOverlay& cross(cv::Point2d at, double armLength = 6.0);
    // ASCII letters, in one line that starts at `at`; `height` of the capitals in window pixels.
    TOverlay& text(cv::Point2d at, const std::string& letters, double height = 12.0);
    // Filled: inside a closed polyline, where it crosses itself by the even-odd rule, and inside a circle.
    TOverlay& area(std::vector<cv::Point2d> corners);
    TOverlay& disc(cv::Point2d centre, double radius);

    const std::vector<TShape>& shapes() const { return shapes_; }
    bool empty() const { return shapes_.empty(); }

  private:
    TOverlay& add(TShapeKind kind, std::vector<cv::Point2d> points, double size = 0.0,
                  const std::string& letters = "");

    TShapeStyle style_;
    std::string group_;
    std::vector<TShape> shapes_;
};

#endif
