// What a robust loss makes of distances: its constants, and the scale to judge distances by.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_ROBUST_LOSS_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_ROBUST_LOSS_H

#include <cstddef>
#include <limits>
#include <vector>

#include "orxFunctions/fitting/fit_report.h"
#include "orxFunctions/fitting/geometric/fit_points.h"
#include "orxFunctions/fitting/kernels/distance.h"

namespace orx::geometric {

using namespace distance_kernels;

// The constant of 95 % efficiency under Gaussian noise; 0 for least squares.
double defaultTuning(TFitLoss loss);

Loss leastSquares();
// The loss of these options for inliers of standard deviation `scale`, in columns.
Loss lossAt(const TFitOptions& options, double scale);
// Points whose weight times squared distance is beyond this are outliers to every loss.
double outlierReach2(double scale);
// Tukey's loss, by which the scale is found whatever the loss asked for.
Loss searchLoss(double scale);

// omega(q / bend2) of one distance with q = weight d^2.
double omega(const Loss& loss, double q);

// The noise of inliers that the sums of a pass with searchLoss tell; `parameters` of the shape.
double noiseOf(const DistanceSums& sums, int parameters);

// The median of absolute distances; reorders them.
double medianDistance(double* distances, std::size_t count);

// The noise that a median distance tells, half of the points bearing outliers.
double noiseOfMedian(double median, std::size_t count, int parameters);

// Half of the points, and so many more that not the shape through a few of them alone is near them all.
std::size_t quorumOf(std::size_t count, int parameters);

// The absolute distance within which a quorum lies, about the median; reorders the distances.
double quorumDistance(double* distances, std::size_t count, int parameters);

// The noise that it tells, the other points bearing outliers.
double noiseOfQuorum(double distance, std::size_t count, int parameters);

// The noise of inliers in columns where the options tell it; 0 where they leave it to the points.
double toldScale(const FitPoints& points, const TFitOptions& options);

// For each point 1 where it has a say under `loss`; empty where all have. `fillDistances(to)` writes the
// signed distance of each where that matters.
template <class FillDistances>
std::vector<unsigned char> usedPoints(const FitPoints& points, const Loss& loss,
                                      FillDistances fillDistances) {
    const double* weights = points.columns().weights;
    const std::size_t count = points.size();
    std::vector<unsigned char> used;
    if (loss.reach2 < std::numeric_limits<double>::infinity()) {
        std::vector<double> distances(count);
        fillDistances(distances.data());
        used.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            const double weight = weights == nullptr ? 1.0 : weights[i];
            used[i] = weight > 0.0 && weight * distances[i] * distances[i] <= loss.reach2 ? 1 : 0;
        }
    } else if (weights != nullptr) {
        used.resize(count);
        for (std::size_t i = 0; i < count; ++i) used[i] = weights[i] > 0.0 ? 1 : 0;
    }
    return used;
}

}  // namespace orx::geometric

#endif
