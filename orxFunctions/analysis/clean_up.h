// Removal of what is too small to matter: specks in binary images, short lines, small outlines.
//
// Images are 8-bit, one channel; every pixel that is not 0 belongs to an object, and objects are 8-connected.
// What stays keeps its value, what goes becomes 0. `dst` may be `src`. False, and `dst` untouched, for
// anything else: no pixels (rcEmptyImage), colour or 16 bits (rcImageType), more dimensions
// (rcImageDimensions), and for limits that are not a number (rcNotFinite). Limits of 0 and below keep
// everything. All functions are reentrant; those on images use several threads for large ones. Their time
// grows as the number of pixels and of the runs of objects in their rows; per pixel, an image of 20
// megapixels takes up to three times as long as one that the caches hold.
#ifndef ORXFUNCTIONS_ANALYSIS_CLEAN_UP_H
#define ORXFUNCTIONS_ANALYSIS_CLEAN_UP_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"

namespace orx {

// Removes objects of fewer than minArea pixels. Unlike an opening it leaves the shape of all others as it is.
// L. Vincent, "Morphological area openings and closings for grey-scale images", in: Shape in Picture (1994).
ORX_API bool removeSmallObjects(const cv::Mat& src, cv::Mat& dst, double minArea);

// Removes lines shorter than minLength pixels from an image of lines one pixel wide, such as edges
// (analysis/auto_canny.h) or a skeleton (analysis/thinning.h).
//
// The length of a line is that of the path through its pixels: 1 for each step along a row or column and
// sqrt(2) for each diagonal one; branches add up, and a single pixel has length 0. So a long line stays
// however it is curled. Of objects wider than a pixel all steps are counted, far more than their extent.
// H. Freeman, "Computer processing of line-drawing images", ACM Comput. Surv. 6 (1974).
ORX_API bool removeShortLines(const cv::Mat& src, cv::Mat& dst, double minLength);

// Removes segments (x1, y1, x2, y2) shorter than minLength pixels from end to end. The order stays.
ORX_API void removeShortLines(std::vector<cv::Vec4i>& segments, double minLength);

// Removes contours that enclose less than minArea square pixels or whose closed outline is shorter than
// minLength pixels; empty ones too. The order stays. Areas as in getContours (analysis/contours.h). Limits
// that are not a number remove nothing.
ORX_API void removeSmallContours(std::vector<std::vector<cv::Point>>& contours, double minArea,
                                 double minLength = 0.0);

}  // namespace orx

#endif
