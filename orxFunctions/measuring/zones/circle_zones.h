// The ring of least width, the smallest circle around and the largest within, of scaled points.
#ifndef ORXFUNCTIONS_MEASURING_ZONES_CIRCLE_ZONES_H
#define ORXFUNCTIONS_MEASURING_ZONES_CIRCLE_ZONES_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/measuring/zones/zone_points.h"

namespace orx::zones {

struct Ring {
    cv::Point2d center;
    double inner = 0.0;
    double outer = 0.0;
    double width = 0.0;         // outer - inner, without its cancellation
    std::vector<int> contacts;  // the outer ones first
};

// Of the points beyond this many extents a ring is a strip.
constexpr double kFarthestCenter = 1e5;

TFitStatus narrowestRing(const Points& points, Ring& ring);
TFitStatus smallestAround(const Points& points, Ring& ring);
TFitStatus largestWithin(const Points& points, Ring& ring);

}  // namespace orx::zones

#endif
