#include "orxFunctions/fitting/geometric/uncertainty.h"

namespace orx::geometric {

NoiseFigures independentNoise(const DistanceSums& sums, const Loss& loss, double scale, int parameters) {
    NoiseFigures figures;
    const double n = sums.used;
    figures.degreesOfFreedom = std::max(1.0, n - parameters);
    if (loss.kind == lkLeastSquares) {
        figures.variance = sums.dd / figures.degreesOfFreedom;
        figures.noise = std::sqrt(figures.variance);
        figures.effectivePoints = n;
        return figures;
    }
    // The normal matrix has weights omega; the means of psi^2 and psi' over the points stand for the
    // integrals.
    const double unevenness = std::max(0.0, n * sums.slope2 / (sums.slope * sums.slope) - 1.0);
    const double correction = 1.0 + parameters / n * unevenness;
    const double spread = sums.influence2 / (sums.slope * sums.slope);
    figures.variance = correction * correction * n / figures.degreesOfFreedom * spread * sums.omega;
    figures.noise = scale;
    figures.effectivePoints = scale * scale / spread;
    return figures;
}

void fillReport(const FitPoints& points, const DistanceSums& sums, const NoiseFigures& figures,
                TFitReport& report) {
    report.effectivePoints = figures.effectivePoints;
    report.degreesOfFreedom = figures.degreesOfFreedom;
    report.noise = figures.noise * points.scale();
    report.rms = std::sqrt(sums.usedSquares / sums.used) * points.scale();
    report.peakToValley = (sums.largest - sums.least) * points.scale();
}

ChainCorrelation::ChainCorrelation(double smoothing) : factor_(1.0 / (4.0 * smoothing * smoothing)) {
    const double ratio = std::exp(-1.0 / kPerUnit);
    double value = std::sqrt(ratio);
    for (double& entry : table_) {
        entry = value;
        value *= ratio;
    }
}

}  // namespace orx::geometric
