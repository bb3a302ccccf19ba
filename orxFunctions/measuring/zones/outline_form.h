// What of an outline's departures stands out of the noise: its form, as far as it can be told.
#ifndef ORXFUNCTIONS_MEASURING_ZONES_OUTLINE_FORM_H
#define ORXFUNCTIONS_MEASURING_ZONES_OUTLINE_FORM_H

#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/measuring/zones/noise_share.h"

namespace orx::zones {

// An outline point with what is told of its form. The shifts are made uncorrelated over the outline, with
// mean 0 and variance 1 (or 0 where there is none).
struct FormPoint {
    double form = 0.0;
    cv::Point2d shift;
    bool alone = false;  // stands out of the noise by itself
};

// The points in order along the outline.
std::vector<FormPoint> formOf(const Outline& outline, const TFormOptions& options);

// The correlation of the noise of two points of a chain `steps` mean spacings apart is
// exp(-(steps * spacing / (2 smoothing))^2); without a chain 0.
class Correlation {
  public:
    Correlation(const Outline& outline, const TFormOptions& options);

    // By how much it raises the variance of the mean of many points.
    double gain() const;
    // Factors of neighbouring independent numbers, the middle one last, whose sums are so correlated.
    std::vector<double> taps() const;

  private:
    double rate_ = 0.0;  // spacing / (2 smoothing); 0 without a chain
};

}  // namespace orx::zones

#endif
