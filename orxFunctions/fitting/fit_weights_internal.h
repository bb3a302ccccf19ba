// Weights of points by their residuals, for iteratively reweighted fits. P. J. Huber, "Robust Statistics",
// 1981; P. W. Holland, R. E. Welsch, "Robust regression using iteratively reweighted least-squares",
// Communications in Statistics 6 (1977).
#ifndef ORXFUNCTIONS_FITTING_FIT_WEIGHTS_INTERNAL_H
#define ORXFUNCTIONS_FITTING_FIT_WEIGHTS_INTERNAL_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace orx {

// The weight functions by their numbers in the interface; every other number weighs all points 1.
enum WeightType {
    kWeightL12 = 0,
    kWeightL1 = 1,
    kWeightFair = 2,
    kWeightWelsch = 3,
    kWeightHuber = 4,
    kWeightBiweight = 5,
};

inline bool weighsAllAlike(int type) { return type < kWeightL12 || type > kWeightBiweight; }

// One row of the table: residuals d >= 0 to weights, calculated in `Real` with constants of single
// precision. A parameter of 0 (for Huber and the biweight: not positive) selects the default constant.
template <class Real>
class WeightFunction {
  public:
    WeightFunction(int type, float parameter) : type_(type), constant_(constantOf(type, parameter)) {}

    // weights[i] = weight of residuals[i], i < count.
    void operator()(const Real* residuals, std::size_t count, Real* weights) const {
        const Real c = constant_;
        switch (type_) {
            case kWeightL12:
                return fill(residuals, count, weights,
                            [](Real d) { return 1 / static_cast<Real>(std::sqrt(1 + d * d * 0.5)); });
            case kWeightL1:
                return fill(residuals, count, weights, [](Real d) {
                    return static_cast<Real>(1.0 / std::max(static_cast<double>(d), 0.0001));
                });
            case kWeightFair:
                return fill(residuals, count, weights, [c](Real d) { return 1 / (1 + d * c); });
            case kWeightWelsch:
                return fill(residuals, count, weights, [c](Real d) { return std::exp(-d * d * c * c); });
            case kWeightHuber:
                return fill(residuals, count, weights, [c](Real d) { return d < c ? Real{1} : c / d; });
            case kWeightBiweight:
                return fill(residuals, count, weights, [c](Real d) {
                    const Real u = 1 - (d / c) * (d / c);
                    return d < c ? u * u : Real{0};
                });
            default:
                std::fill_n(weights, count, Real{1});
        }
    }

  private:
    template <class Weigh>
    static void fill(const Real* residuals, std::size_t count, Real* weights, Weigh weigh) {
        for (std::size_t i = 0; i < count; ++i) weights[i] = weigh(residuals[i]);
    }

    // For Fair and Welsch the reciprocal of the constant.
    static float constantOf(int type, float parameter) {
        switch (type) {
            case kWeightFair:
                return parameter == 0 ? 1 / 1.3998F : 1 / parameter;
            case kWeightWelsch:
                return parameter == 0 ? 1 / 2.9846F : 1 / parameter;
            default:
                // The biweight shares Huber's constant, intended.
                return parameter <= 0 ? 1.345F : parameter;
        }
    }

    int type_;
    float constant_;
};

}  // namespace orx

#endif
