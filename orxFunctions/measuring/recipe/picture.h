// A picture made ready for the edge finders, once for all features.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_PICTURE_H
#define ORXFUNCTIONS_MEASURING_RECIPE_PICTURE_H

#include <opencv2/core.hpp>

namespace orx::recipes {

struct Picture {
    cv::Mat grey;        // 8 or 16 bits
    cv::Mat bytes;       // 8 bits
    double noise = 0.0;  // of a pixel, levels of 8-bit pictures

    bool holds(cv::Point2d p) const {
        return p.x >= 0.0 && p.y >= 0.0 && p.x <= grey.cols - 1.0 && p.y <= grey.rows - 1.0;
    }
};

}  // namespace orx::recipes

#endif
