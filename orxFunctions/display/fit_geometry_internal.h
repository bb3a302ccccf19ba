// Where an image lands in a window, and the way between the two. Pure functions; reentrant.
#ifndef ORXFUNCTIONS_DISPLAY_FIT_GEOMETRY_INTERNAL_H
#define ORXFUNCTIONS_DISPLAY_FIT_GEOMETRY_INTERNAL_H

#include <opencv2/core.hpp>

namespace orx::display {

// The part of the window that an image covers, in window pixels.
struct FitGeometry {
    double shownWidth = 0.0;
    double shownHeight = 0.0;
    double offsetX = 0.0;
    double offsetY = 0.0;
};

// False where an image is shown as it is: in a window with a side of 5 pixels or less, and where it has the
// window's size already.
bool needsFit(cv::Size window, cv::Size image);

// The place of an image in the window. The image is not empty.
FitGeometry fitIntoWindow(cv::Size window, cv::Size image, bool keepAspect);

// The zoomed window: the whole of it enlarged to width x height, of which the part at (panX, panY) is seen.
struct Zoom {
    double width = 0.0;  // 0: no zoom
    double height = 0.0;
    double panX = 0.0;
    double panY = 0.0;
    double factor = 1.0;

    bool active() const { return width > 0.0; }
};

// From image to window coordinates and back.
class ViewMapping {
  public:
    ViewMapping(const FitGeometry& fit, cv::Size2d original, const Zoom& zoom, cv::Size window);

    cv::Point2d toWindow(cv::Point2d image) const;
    cv::Point2d toImage(cv::Point2d window) const;
    // The same for points counted from the centre of the top-left pixel, exactly where the picture is
    // painted: the middle of an image pixel is the middle of the square that shows it.
    cv::Point2d placeInWindow(cv::Point2d image) const;
    cv::Point2d placeInImage(cv::Point2d window) const;
    // Window pixels to an image pixel.
    cv::Point2d scale() const;

  private:
    // From where the fit says to where the pixels are: unzoomed they begin at a whole one.
    cv::Point2d painted() const;

    FitGeometry fit_;
    cv::Point2d fitScale_;
    bool zoomed_;
    cv::Point2d zoomScale_;
    cv::Point2d pan_;
};

}  // namespace orx::display

#endif
