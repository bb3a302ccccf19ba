// Drawing on an enlarged copy of a picture, in the picture's own sub-pixel coordinates.
#ifndef EXAMPLES_INSPECTION_PEN_H
#define EXAMPLES_INSPECTION_PEN_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace inspection {

// A colour copy of a grey picture, enlarged by a whole factor when it is small, to draw on. Reentrant.
class Pen {
  public:
    explicit Pen(const cv::Mat& grey);

    void circle(cv::Point2d center, double radius, const cv::Scalar& color);
    void line(cv::Point2d from, cv::Point2d to, const cv::Scalar& color);
    void polyline(const std::vector<cv::Point2d>& points, bool closed, const cv::Scalar& color);
    // Degrees from the x axis towards the y axis.
    void arc(cv::Point2d center, double radius, double from, double to, const cv::Scalar& color);
    void dot(cv::Point2d at, const cv::Scalar& color);
    void cross(cv::Point2d at, double arm, const cv::Scalar& color);
    // Centred on `at` as far as it then lies in the picture, edged so that it can be read on any ground.
    void label(cv::Point2d at, const std::string& text, const cv::Scalar& color = {255, 255, 255});

    // Pixels of the canvas in pixels of the picture.
    double canvasPixels(double count) const { return count / scale_; }
    const cv::Mat& canvas() const { return canvas_; }

  private:
    double enlarged(double v) const;
    cv::Point fixed(cv::Point2d p) const;
    int thickness() const;

    cv::Mat canvas_;
    int scale_ = 1;
};

}  // namespace inspection

#endif
