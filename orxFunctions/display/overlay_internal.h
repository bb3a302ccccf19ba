// What is drawn over a shown picture. Pictures are 8-bit BGR; positions that lie far outside are left out.
// Reentrant.
#ifndef ORXFUNCTIONS_DISPLAY_OVERLAY_INTERNAL_H
#define ORXFUNCTIONS_DISPLAY_OVERLAY_INTERNAL_H

#include <array>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/display/fit_geometry_internal.h"
#include "orxFunctions/foundation/records.h"

namespace orx::display {

// Records of the host, in image coordinates.
void drawCircles(cv::Mat& picture, const std::vector<TDrawCircle>& circles, const ViewMapping& mapping);
void drawRects(cv::Mat& picture, const std::vector<TDrawRect>& rects, const ViewMapping& mapping);
// The first line at (50, 50) of the window; all of it smaller where the picture has not enough room.
void drawTexts(cv::Mat& picture, const TDrawTexts& texts);

// By which a rectangle is changed: rows from the top, each from the left.
using Handles = std::array<cv::Point, 9>;
Handles handlesOf(const cv::Rect& rect);

// A rectangle in image coordinates as it stands in the window, rounded.
cv::Rect rectInWindow(const cv::Rect2d& rect, const ViewMapping& mapping);
// A rectangle in window coordinates as it stands in the image.
cv::Rect2d rectInImage(const cv::Rect2d& rect, const ViewMapping& mapping);

void drawSelection(cv::Mat& picture, const cv::Rect& windowRect, const cv::Scalar& colour, int thickness);
// A circle in image coordinates, with a dot at its centre.
void drawSelection(cv::Mat& picture, cv::Point2d centre, double radius, const ViewMapping& mapping,
                   const cv::Scalar& colour, int thickness);

}  // namespace orx::display

#endif
