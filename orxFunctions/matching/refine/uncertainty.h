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

// `trimmed` points next to several that have no say get none either: what covers a part bends its edges where
// they end. Distances up to about half of the tolerance (pixels) count in full, whatever the variances.
Weights weightsOf(const ReadyOutline& outline, const std::vector<Match>& matches, std::size_t trimmed,
                  double tolerance);

PoseProblem problemOf(const ReadyOutline& outline, const CentredPose& pose, const std::vector<Match>& matches,
                      const Weights& weights, const Freedom& freedom);

// So many points of the outline lie next to an edge's end that a smoothing of `sigma` pixels bends.
std::size_t trimmedPoints(double sigma, double scale);

// Sets the covariance, the deviations and the free directions of a part whose pose is set; `sigma` is that of
// the edge finder in the picture.
void tellUncertainty(const ReadyOutline& outline, const CentredPose& pose, const std::vector<Match>& matches,
                     const Freedom& freedom, double sigma, double reportedRadius, TFoundPart& part);

}  // namespace orx::matching

#endif
