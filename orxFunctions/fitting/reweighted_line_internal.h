// The iteratively reweighted line fit of OpenCV, open to other weight functions.
//
// The numbers are those of cv::fitLine (accuracies 0.01 and 0.01) to the last bit wherever the weights are
// the same, the choice of its random starts included; it is rewritten because cv::fitLine takes no weight
// function, repeats twenty equal restarts for up to ten points, and passes over all points for each random
// start.
#ifndef ORXFUNCTIONS_FITTING_REWEIGHTED_LINE_INTERNAL_H
#define ORXFUNCTIONS_FITTING_REWEIGHTED_LINE_INTERNAL_H

#include <cstddef>
#include <opencv2/core.hpp>

namespace orx {

// Direction (vx, vy) of length 1 and a point (x, y) of a line. No points give zeros.
struct DirectedLine {
    float vx = 0;
    float vy = 0;
    float x = 0;
    float y = 0;
};

// Weights from the table in fit_weights_internal.h.
DirectedLine fitLineByWeights(const cv::Point* points, std::size_t count, int weightType, float parameter);

// cv::DIST_L1; its smallest residual differs from the table's.
DirectedLine fitLineL1(const cv::Point* points, std::size_t count);

// cv::DIST_HUBER with its default constant.
DirectedLine fitLineHuber(const cv::Point* points, std::size_t count);

}  // namespace orx

#endif
