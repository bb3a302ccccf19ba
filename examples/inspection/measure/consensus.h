// The library's RANSAC searches, as this program uses them on the pixels of one contour.
#ifndef EXAMPLES_INSPECTION_CONSENSUS_H
#define EXAMPLES_INSPECTION_CONSENSUS_H

#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "inspection/measure/shapes.h"

namespace inspection {

struct SearchSettings {
    int trials = 200;
    double tolerance = 2.0;  // pixels
    std::uint32_t seed = 1;
};

struct CircleConsensus {
    Circle circle;
    std::vector<cv::Point> inliers;
};

// The circle that most points support, its radius at most `largestRadius`. Draws from rand(), which it
// reseeds: one thread at a time.
std::optional<CircleConsensus> searchCircle(const std::vector<cv::Point>& points, int largestRadius,
                                            const SearchSettings& settings);

struct LineConsensus {
    Line line;
    std::vector<cv::Point> inliers;
    std::vector<cv::Point> others;
};

// The line that most points support; with `parallelTo` only among lines within a few degrees of it. One
// thread at a time, as above.
std::optional<LineConsensus> searchLine(const std::vector<cv::Point>& points, const Line* parallelTo,
                                        const SearchSettings& settings);

}  // namespace inspection

#endif
