// Contrast edges across boxes and around circles.
#ifndef EXAMPLES_INSPECTION_CALIPERS_H
#define EXAMPLES_INSPECTION_CALIPERS_H

#include <opencv2/core.hpp>
#include <vector>

#include "inspection/measure/shapes.h"
#include "orxFunctions/analysis/caliper.h"
#include "orxFunctions/fitting/geometric_fit.h"

namespace inspection {

struct BoxCaliper {
    cv::Rect box;
    bool downwards = false;       // searched from top to bottom, otherwise from left to right
    std::vector<double> profile;  // mean grey level at each pixel along the search
    std::vector<orx::TContrastEdge> edges;
};

// All edges, in their order along the longer side of the box (of a square from left to right). Outside of the
// picture its border pixels repeat. A box that lies wholly outside, or is far larger than the picture, gives
// no edge and no profile.
BoxCaliper searchBox(const cv::Mat& grey, const cv::Rect& box);

struct CircleCaliper {
    Circle nominal;
    std::vector<orx::TContrastEdge> edges;  // the strongest of each of the calipers around the circle
    int calipers = 0;
    orx::TMeasuredCircle fitted;  // robust, through the edges that most calipers agree on
    double meanResidual = 0.0;    // mean distance of all edges from it
};

// The calipers reach 30 % of the radius to either side, 3 to 20 pixels.
CircleCaliper searchCircleEdges(const cv::Mat& grey, const Circle& nominal);

}  // namespace inspection

#endif
