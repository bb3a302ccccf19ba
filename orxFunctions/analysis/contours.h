// Outlines of the objects in a binary image.
//
// Binary images are 8-bit, one channel; every pixel that is not 0 belongs to an object. Objects are
// 8-connected, the holes in them 4-connected. Anything else has no contours: no pixels (rcEmptyImage), colour
// or 16 bits (rcImageType), more dimensions (rcImageDimensions); binarise such images first
// (analysis/colour.h, analysis/threshold.h). Reentrant.
#ifndef ORXFUNCTIONS_ANALYSIS_CONTOURS_H
#define ORXFUNCTIONS_ANALYSIS_CONTOURS_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/foundation/enumerations.h"

namespace orx {

enum TContourPoints : int {
    cpAll = 0,     // every pixel of the outline: for fits and for splitting into lines and arcs
    cpCorners = 1  // only where the outline changes its direction: for areas, centres and drawing
};

struct TContourOptions {
    double minLength = 0.0;  // least length of the closed outline, pixels
    // Least and largest area that the outline encloses, square pixels. An outline runs through the centres of
    // pixels: a block of w x h pixels encloses (w - 1) x (h - 1), a single pixel or a line one pixel wide 0.
    double minArea = 0.0;
    double maxArea = 1e300;
    TContourPoints points = cpAll;  // not for ctConvexHull, which has corners only
};

// The outlines that `type` names, in the order in which they are found from the last row upwards.
//
//     ctExternal    outlines of objects that lie in no hole of another one
//     ctAll         outlines of all objects and of all holes
//     ctHoles       outlines of holes only; they run on the pixels of the object around the hole
//     ctLargest     of the ctExternal ones the one of largest area, the first found among equals
//     ctConvexHull  the convex hulls of the ctExternal ones
//
// Limits are applied to what is returned: to the hull, not to the outline below it. Outer outlines
// and hulls turn counter-clockwise on the screen, outlines of holes clockwise. Empty for limits that are not
// a number (rcNotFinite), for unknown types (rcOption) and where nothing is found (rcNoResult). The time
// grows with the pixels, whatever the number of outlines; per pixel, an image of 20 megapixels takes up to
// three times as long as one that the caches hold. On one thread. S. Suzuki, K. Abe, "Topological structural
// analysis of digitized binary images by border following", CVGIP 30 (1985).
ORX_API std::vector<std::vector<cv::Point>> getContours(const cv::Mat& binary, TContourType type,
                                                        const TContourOptions& options = {});

}  // namespace orx

#endif
