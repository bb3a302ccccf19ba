// What sampling does to the facet of a sharp edge that runs nearly along a pixel axis.
#ifndef ORXFUNCTIONS_ANALYSIS_EDGE_ALIASING_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_EDGE_ALIASING_INTERNAL_H

#include <opencv2/core.hpp>

namespace orx::edges {

// The spectrum of an edge blurred by s repeats at multiples of the sampling frequency. Of the repetition next
// to the edge's own, the Gaussian gradient of sigma leaves a ripple on the logarithm of the magnitude,
//     -a cos(k d),  k = 2 pi c sigma^2 / T^2,  a = 2 s^2 / sigma^2 exp(-2 pi^2 sigma^2 (1 - c^2 sigma^2 /
//     T^2)),
// where d is the distance from the edge, c the cosine of its normal to the nearest axis and T^2 = s^2 +
// sigma^2: at s = 0.5 and sigma = 1 it moves edges along an axis by up to 0.013 pixels, as their phase to the
// pixels has it; from s = 0.75 on it can be neglected.
class AliasingCorrection {
  public:
    explicit AliasingCorrection(double sigma);

    // Whether an edge of this unit normal and this facet curvature (1 / T^2) is worth it.
    bool matters(cv::Point2d normal, double bend) const;
    // The offset from the pixel's centre along the normal, without the ripple.
    double corrected(cv::Point2d normal, double offset, double bend) const;

  private:
    double variance_;  // sigma squared
    double sharpest_;  // the bend from which on edges matter
};

}  // namespace orx::edges

#endif
