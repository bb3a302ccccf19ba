// An axis-aligned integer rectangle.
#ifndef ORXFUNCTIONS_FOUNDATION_RECT_H
#define ORXFUNCTIONS_FOUNDATION_RECT_H

#include <cstdint>
#include <opencv2/core.hpp>

#include "orxFunctions/api.h"

namespace orx {

// Laid out as cv::Rect. Nothing is enforced at construction: negative and zero sizes can be held, and only
// checkROI judges them. A plain value; one thread at a time.
class ORX_API TORXRect {
  public:
    TORXRect() = default;
    TORXRect(int left, int top, int columns, int rows);

    // True when the rectangle is not empty and lies inside the image. The sums x + width and y + height are
    // 32-bit and wrap; only the header of `img` is read.
    bool checkROI(cv::Mat img);

    // True when every corner of `other`, (x, y) to (x + width, y + height), lies strictly inside this
    // rectangle. Strict on purpose: a rectangle contains neither itself nor any that touches its border.
    bool isContainRect(TORXRect other);

    cv::Rect toCVRect();

    std::int32_t x = 0;       // left column
    std::int32_t y = 0;       // top row
    std::int32_t width = 0;   // columns
    std::int32_t height = 0;  // rows
};

}  // namespace orx

#endif
