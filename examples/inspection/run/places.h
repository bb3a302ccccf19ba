// Places in a picture as they are typed on the command line.
#ifndef EXAMPLES_INSPECTION_PLACES_H
#define EXAMPLES_INSPECTION_PLACES_H

#include <opencv2/core.hpp>
#include <string>

#include "inspection/measure/shapes.h"

namespace inspection {

// What is wrong with "x,y,w,h" (whole numbers, the sides above 0) or "cx,cy,r" (the radius above 0); "" when
// nothing is. Coordinates reach a million pixels in either direction.
std::string problemOfBox(const std::string& text);
std::string problemOfCircle(const std::string& text);

// Of texts that have no problem.
cv::Rect boxFrom(const std::string& text);
Circle circleFrom(const std::string& text);

}  // namespace inspection

#endif
