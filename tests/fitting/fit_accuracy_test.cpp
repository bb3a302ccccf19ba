// Holds the estimators to what docs/accuracy-fits.md shows. The bounds may be lowered, never raised.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "docs/tools/fit_accuracy.h"

namespace {

// Bounds of |bias| and of spread, for shares of outliers up to `outliers`, at a noise of 0.5 pixels.
struct Bounds {
    const char* estimator;
    double outliers;
    double firstBias, firstSpread;    // circle: centre column; line: angle in degrees
    double secondBias, secondSpread;  // circle: radius; line: distance at the middle
};

constexpr double kNoise = 0.5;

template <class Estimators>
auto find(const Estimators& estimators, const std::string& name) {
    return *std::find_if(estimators.begin(), estimators.end(), [&](const auto& e) { return e.name == name; });
}

// The bounds were found with the random samples of one C runtime. Another one's draw others, and the mean of
// so few scenes may then lie a standard error further off.
double allowance(const fit_accuracy::Accuracy& accuracy) {
    constexpr bool kSameSamples = RAND_MAX == 2147483647;
    return kSameSamples ? 0.0 : accuracy.spread / std::sqrt(fit_accuracy::kScenes);
}

void expectWithin(const fit_accuracy::Row& row, const Bounds& bounds) {
    for (std::size_t i = 0; i < row.first.size() && fit_accuracy::kOutliers[i] <= bounds.outliers; ++i) {
        SCOPED_TRACE(fit_accuracy::kOutliers[i]);
        EXPECT_EQ(row.first[i].invalid, 0);
        EXPECT_LE(std::abs(row.first[i].bias), bounds.firstBias + allowance(row.first[i]));
        EXPECT_LE(row.first[i].spread, bounds.firstSpread);
        EXPECT_LE(std::abs(row.second[i].bias), bounds.secondBias + allowance(row.second[i]));
        EXPECT_LE(row.second[i].spread, bounds.secondSpread);
    }
}

TEST(FitAccuracy, CirclesStayWithinTheirBounds) {
    const Bounds kBounds[] = {
        {"ransac, 2 px, 500 trials", 0.6, 0.025, 0.11, 0.02, 0.075},
        {"robust, type 4, c 5", 0.0, 0.01, 0.06, 0.01, 0.04},
        {"robust, Tukey, c 40", 0.0, 0.01, 0.06, 0.01, 0.04},
        {"weighted, biweight, 40 px", 0.2, 0.02, 0.18, 0.12, 0.12},
        {"weighted, L1", 0.0, 0.01, 0.06, 0.01, 0.04},
    };
    for (const Bounds& bounds : kBounds) {
        SCOPED_TRACE(bounds.estimator);
        expectWithin(circleRow(find(fit_accuracy::kCircleEstimators, bounds.estimator), kNoise), bounds);
    }
}

TEST(FitAccuracy, LinesStayWithinTheirBounds) {
    const Bounds kBounds[] = {
        {"ransac, 2 px", 0.6, 0.005, 0.025, 0.02, 0.07},
        {"robust, L1", 0.6, 0.004, 0.045, 0.015, 0.16},
        {"robust, Huber", 0.6, 0.008, 0.06, 0.015, 0.22},
        {"robust, Welsch", 0.5, 0.006, 0.025, 0.015, 0.08},
        {"robust, biweight, 5 px", 0.5, 0.005, 0.03, 0.015, 0.09},
    };
    for (const Bounds& bounds : kBounds) {
        SCOPED_TRACE(bounds.estimator);
        expectWithin(lineRow(find(fit_accuracy::kLineEstimators, bounds.estimator), kNoise), bounds);
    }
}

}  // namespace
