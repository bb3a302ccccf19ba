// Drawing results on an image: points, crosses, lines, a caption.
//
// Colour, thickness, line type and shift are passed to OpenCV as they are. Nothing is drawn on an image that
// is empty (rcEmptyImage), of more than two dimensions (rcImageDimensions) or 4 channels (rcImageType), nor
// in a style that OpenCV does not draw (rcOption): a thickness outside 1 .. 32767 (drawContours: above it;
// negative ones fill), a line type other than 0, 1, 4, 8 or 16 and more at thickness 1 (not drawContours), a
// shift outside 0 .. 16. Reentrant.
#ifndef ORXFUNCTIONS_FITTING_DRAWING_H
#define ORXFUNCTIONS_FITTING_DRAWING_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/api.h"

namespace orx {

// A circle of the given radius at every point, 0 to 1,000,000 pixels (rcOption).
ORX_API void drawContours(cv::Mat& image, std::vector<cv::Point> points, int radius, cv::Scalar color,
                          int thickness, int lineType, int shift);

// A cross (the spelling is part of the interface) with arms of half length L: upright for slope 0, otherwise
// one arm along the line of slope k and one across it.
ORX_API void drawCorss(cv::Mat& image, cv::Point center, cv::Scalar color, int L, double k, int thickness,
                       int lineType, int shift);

// The line y = k x + b across the whole image.
ORX_API void drawLine(cv::Mat& image, double k, double b, cv::Scalar color, int thickness, int lineType,
                      int shift);

// The line x cos(theta) + y sin(theta) = rho (radians, pixels) across the whole image. Its far end lies at
// cols or rows, one pixel beyond the image, unlike drawLine's; this is intended.
ORX_API void drawLineHough(cv::Mat& image, double theta, double rho, cv::Scalar color, int thickness,
                           int lineType, int shift);

// A caption in a corner of a 3-channel image (others are left alone, rcImageType): 0 top right, 1 bottom
// right, 2 top left, 3 bottom left, any other value at (0, 0). `ratio` is the image width in pixels at which
// the font scale is 1; nothing is drawn for a ratio of 0 or one that asks for a scale below 0 or above 32,767
// (rcOption), nor where the text would be wider than 32 bits can say (rcTooMany). The text is always red;
// `color` is accepted and deliberately not used.
ORX_API void drawText(cv::Mat& image, std::string text, cv::Scalar color, int corner, double ratio);

}  // namespace orx

#endif
