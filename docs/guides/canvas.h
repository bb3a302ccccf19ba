// What the guides draw with: pictures enlarged, captions, sheets of panels, plots.
#ifndef ORX_DOCS_GUIDES_CANVAS_H
#define ORX_DOCS_GUIDES_CANVAS_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "guide.h"

namespace guide {

const cv::Scalar kGreen(60, 190, 40);
const cv::Scalar kOrange(0, 110, 235);
const cv::Scalar kBlue(235, 150, 30);
const cv::Scalar kRed(50, 40, 220);
const cv::Scalar kInk(50, 40, 30);

// A figure that the page states: `value` is what came out here. Platforms round differently, so that a unit
// of the last digit stated is a good `within`.
void expectAbout(double value, double stated, double within, const std::string& what);

void write(cv::Mat& canvas, const std::string& text, cv::Point at, const cv::Scalar& colour = kInk,
           double size = 0.45);

// printf's format for one number.
std::string formatted(const char* format, double value);

// A copy in colour, to draw on.
cv::Mat inColour(const cv::Mat& picture);

// Part of a picture, each of its pixels `scale` wide, to draw on in the picture's coordinates.
class Enlarged {
  public:
    Enlarged(const cv::Mat& picture, cv::Rect area, int scale);
    Enlarged(const cv::Mat& picture, int scale) : Enlarged(picture, {{}, picture.size()}, scale) {}

    void line(cv::Point2d from, cv::Point2d to, const cv::Scalar& colour, int thickness = 2);
    void dot(cv::Point2d at, double radius, const cv::Scalar& colour);
    void arc(cv::Point2d center, double radius, double startAngle, double sweep, const cv::Scalar& colour,
             int thickness = 2);
    void circle(cv::Point2d center, double radius, const cv::Scalar& colour, int thickness = 2) {
        arc(center, radius, 0, 360, colour, thickness);
    }
    void text(const std::string& words, cv::Point2d at, const cv::Scalar& colour);
    const cv::Mat& canvas() const { return canvas_; }

  private:
    cv::Point fixed(cv::Point2d p) const;
    cv::Mat canvas_;
    cv::Point origin_;
    int scale_;
};

// The picture in colour, below a line of text.
cv::Mat captioned(const cv::Mat& picture, const std::string& caption, const cv::Scalar& colour = kInk);

// Panels row by row, white between them.
cv::Mat sheet(const std::vector<cv::Mat>& panels, int columns);

// A diagram with axes from `lowest` to `highest`; logarithmic ones where asked for.
class Plot {
  public:
    struct Axis {
        std::string name;
        double lowest = 0;
        double highest = 1;
        std::vector<double> ticks;
        bool logarithmic = false;
    };
    Plot(cv::Size size, Axis x, Axis y);

    void line(const std::vector<cv::Point2d>& points, const cv::Scalar& colour);
    void dots(const std::vector<cv::Point2d>& points, const cv::Scalar& colour);
    void bar(double x, double halfWidth, double y, const cv::Scalar& colour);
    void mark(double x, const cv::Scalar& colour);
    // Names for colours, one below the other from the top left corner of the diagram or its right half.
    void legend(const std::string& name, const cv::Scalar& colour, bool right = false);
    const cv::Mat& canvas() const { return canvas_; }
    cv::Point at(double x, double y) const;

  private:
    cv::Mat canvas_;
    cv::Rect frame_;
    Axis x_;
    Axis y_;
    int names_ = 0;
};

}  // namespace guide

#endif
