// What the circle estimators have in common.
#ifndef ORXFUNCTIONS_FITTING_CIRCLE_BLOCKS_INTERNAL_H
#define ORXFUNCTIONS_FITTING_CIRCLE_BLOCKS_INTERNAL_H

#include <array>
#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/foundation/records.h"
#include "orxFunctions/platform/runtime_random_internal.h"

namespace orx::circle_blocks {

// The weighted algebraic circle (Kasa 1976), in doubles and without centring; no weights mean 1 for each
// point. Centre and radius only: the flag is false. Points that determine no circle give not-a-number.
TCircle algebraicCircle(const std::vector<cv::Point>& points, const std::vector<double>& weights = {});

// The sum of the points' distances from the circle's outline.
double residualSum(const std::vector<cv::Point>& points, const TCircle& circle);

// residuals = those distances; returns their sum.
double residualList(const std::vector<cv::Point>& points, const TCircle& circle,
                    std::vector<double>& residuals);

// The part of the residuals that is below the threshold (strictly); 0 for none.
double inlierRatio(const std::vector<double>& residuals, double threshold);

// sum(w e) / N, no weights meaning 1 each; 9999.0 when there are no residuals or the lists differ in length.
double weightedMeanResidual(const std::vector<double>& residuals, const std::vector<double>& weights);

// Three points that do not lie on one line, drawn from `random` after seeding it. False when ten draws fail;
// with fewer than 3 points nothing is seeded or drawn.
bool sampleThree(const std::vector<cv::Point>& points, int seed, platform::RuntimeRandom& random,
                 std::array<cv::Point, 3>& sample);

}  // namespace orx::circle_blocks

#endif
