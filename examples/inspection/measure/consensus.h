// The library's consensus searches, as this program uses them on the pixels of one contour. Reentrant.
#ifndef EXAMPLES_INSPECTION_CONSENSUS_H
#define EXAMPLES_INSPECTION_CONSENSUS_H

#include <opencv2/core.hpp>
#include <vector>

#include "inspection/run/settings.h"
#include "orxFunctions/fitting/consensus_fit.h"

namespace inspection {

// The circle that most points support, its radius from 3 to `largestRadius`. Of points that agree on none,
// the robust circle through all: what is reported as weak, or by its residual, must be measured.
orx::TMeasuredCircle searchCircle(const std::vector<cv::Point>& points, double largestRadius,
                                  const Settings& settings);
// The same for ellipses, both half axes in these limits.
orx::TMeasuredEllipse searchEllipse(const std::vector<cv::Point>& points, double largestAxis,
                                    const Settings& settings);

struct LineConsensus {
    orx::TMeasuredLine line;  // not valid where there is none
    std::vector<cv::Point> inliers;
    std::vector<cv::Point> others;
};

// The line that most points support; with `parallelTo` only among lines within a few degrees of it. Without
// it, and without consensus, the line along the outermost points of one side.
LineConsensus searchLine(const std::vector<cv::Point>& points, const orx::TMeasuredLine* parallelTo,
                         const Settings& settings);

}  // namespace inspection

#endif
