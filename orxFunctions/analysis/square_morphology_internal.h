// Morphology of binary images by squares of any size.
#ifndef ORXFUNCTIONS_ANALYSIS_SQUARE_MORPHOLOGY_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_SQUARE_MORPHOLOGY_INTERNAL_H

#include <opencv2/core.hpp>

namespace orx {

// What cv::morphologyEx gives for an image of 0 and 255 and a square of `size` pixels, its exceptions
// included. The time and the memory do not grow with the square: those of OpenCV's do, with the side and with
// the area. In place; small squares on several threads, with `spare` for their memory, whose pixels are lost.
// Reentrant.
void squareMorphology(cv::Mat& binary, cv::Mat& spare, int operation, int size);

}  // namespace orx

#endif
