// How much say each point of the outline has, and what the points leave open of the pose.
#ifndef ORXFUNCTIONS_MATCHING_REFINE_UNCERTAINTY_H
#define ORXFUNCTIONS_MATCHING_REFINE_UNCERTAINTY_H

#include <vector>

#include "orxFunctions/matching/part_finder.h"
#include "orxFunctions/matching/refine/outline_match.h"
#include "orxFunctions/matching/refine/pose_problem.h"

namespace orx::matching {

// What of a pose is asked for, and can be told.
struct Freedom {
    bool turns = true;
    bool grows = false;
    double leastShare = 0.0;  // as PoseProblem::solve has it
};

// The share that the noise of the model's normals alone may feign.
double leastShare(const ReadyOutline& outline, const ModelData& model);

// Of a match's distance, with what remains of errors that follow the pixel grid.
double varianceOf(const Match& match);

struct Weights {
    // For each match its reciprocal variance, times the length its point stands for and less the more it is
    // an outlier. Empty where too few are found.
    std::vector<double> values;
    // How far inliers are, in the standard deviations that they should have, as the median has it; 1 at the
    // least.
    double scale = 1.0;
};

// `stride` is that of matchOutline(). Distances up to about half of the tolerance (pixels) count in full,
// whatever the variances.
Weights weightsOf(const ReadyOutline& outline, const std::vector<Match>& matches, int stride,
                  double tolerance);

PoseProblem problemOf(const ReadyOutline& outline, const CentredPose& pose, const std::vector<Match>& matches,
                      const Weights& weights, const Freedom& freedom);

// Points of an edge found with `sigma` tell as much as independent ones so far apart, pixels.
double independentDistance(double sigma);

// Sets the covariance, the deviations and the free directions of a part whose pose is set; `apart` is
// independentDistance() in the picture.
void tellUncertainty(const ReadyOutline& outline, const CentredPose& pose, const std::vector<Match>& matches,
                     const Freedom& freedom, double apart, double reportedRadius, TFoundPart& part);

}  // namespace orx::matching

#endif
