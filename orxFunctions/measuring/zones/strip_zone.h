// The strip of least width of scaled points.
#ifndef ORXFUNCTIONS_MEASURING_ZONES_STRIP_ZONE_H
#define ORXFUNCTIONS_MEASURING_ZONES_STRIP_ZONE_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/measuring/zones/zone_points.h"

namespace orx::zones {

struct Strip {
    cv::Point2d point;  // on the middle line
    cv::Point2d direction{1, 0};
    double width = 0.0;
    std::vector<int> contacts;  // two on one side, then the one on the other
};

Strip narrowestStrip(const Points& points);

}  // namespace orx::zones

#endif
