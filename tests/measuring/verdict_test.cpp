#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>

#include "orxFunctions/orxfunctions.h"

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// How often each verdict is given to values measured of one true value.
struct Shares {
    std::array<double, 5> of{};
    double operator[](orx::TVerdict verdict) const { return of[static_cast<std::size_t>(verdict)]; }
};

// Normal noise of deviation 1, which is told (no degrees of freedom) or estimated from so many and one.
Shares measuredShares(double truth, const orx::TTolerance& tolerance, int degreesOfFreedom, int count,
                      std::mt19937& random) {
    std::normal_distribution<double> noise;
    std::chi_squared_distribution<double> squares(std::max(1, degreesOfFreedom));
    Shares shares;
    for (int i = 0; i < count; ++i) {
        const double deviation = degreesOfFreedom > 0 ? std::sqrt(squares(random) / degreesOfFreedom) : 1.0;
        const double freedom = degreesOfFreedom > 0 ? degreesOfFreedom : kInfinite;
        const auto verdict = orx::judge(truth + noise(random), deviation, freedom, tolerance).verdict;
        shares.of[static_cast<std::size_t>(verdict)] += 1.0 / count;
    }
    return shares;
}

TEST(Verdict, GuardBandsAreThoseOfTheTables) {
    const orx::TTolerance tolerance{9.9, 10.1};
    // One-sided quantiles of Student's t at 0.95: 1.6449 for the normal distribution, 2.0150 for 5 degrees of
    // freedom, 6.3138 for one.
    EXPECT_NEAR(orx::judge(10, 0.01, kInfinite, tolerance).guard, 0.016449, 1e-6);
    EXPECT_NEAR(orx::judge(10, 0.01, 5, tolerance).guard, 0.020150, 1e-6);
    EXPECT_NEAR(orx::judge(10, 0.01, 1, tolerance).guard, 0.063138, 1e-6);
    EXPECT_NEAR(orx::judge(10, 0.01, kInfinite, tolerance, 0.99).guard, 0.023263, 1e-6);
    const auto verdict = [&](double value) { return orx::judge(value, 0.01, kInfinite, tolerance).verdict; };
    EXPECT_EQ(verdict(10.0835), orx::vdPass);
    EXPECT_EQ(verdict(10.0837), orx::vdUndecided);
    EXPECT_EQ(verdict(10.1164), orx::vdUndecided);
    EXPECT_EQ(verdict(10.1165), orx::vdFail);
    EXPECT_EQ(verdict(9.9165), orx::vdPass);
    EXPECT_EQ(verdict(9.8835), orx::vdFail);
    // Without uncertainty the limits themselves belong to the tolerance.
    EXPECT_EQ(orx::judge(10.1, 0, kInfinite, tolerance).verdict, orx::vdPass);
    EXPECT_EQ(orx::judge(std::nextafter(10.1, 11), 0, kInfinite, tolerance).verdict, orx::vdFail);
    // Of one limit alone.
    EXPECT_EQ(orx::judge(0.05, 0.01, kInfinite, {-kInfinite, 0.07}).verdict, orx::vdPass);
    EXPECT_EQ(orx::judge(0.06, 0.01, kInfinite, {-kInfinite, 0.07}).verdict, orx::vdUndecided);
    EXPECT_EQ(orx::judge(-1e300, 1e-300, kInfinite, {0.0, kInfinite}).verdict, orx::vdFail);
}

TEST(Verdict, ConformityIsTheShareOfTheDistributionWithinTheLimits) {
    const auto conformity = [](double value, double freedom, orx::TTolerance tolerance) {
        return orx::judge(value, 2.0, freedom, tolerance).conformity;
    };
    EXPECT_NEAR(conformity(7, kInfinite, {-kInfinite, 7}), 0.5, 1e-12);
    EXPECT_NEAR(conformity(7, kInfinite, {5, 9}), 0.682689, 1e-6);   // one deviation to either side
    EXPECT_NEAR(conformity(7, kInfinite, {9, 11}), 0.135905, 1e-6);  // from the first to the second
    EXPECT_NEAR(conformity(7, kInfinite, {3, 5}), 0.135905, 1e-6);
    EXPECT_NEAR(conformity(0, 1, {-2, 2}), 0.5, 1e-9);  // Cauchy's quartiles
    EXPECT_NEAR(conformity(0, 1, {2, kInfinite}), 0.25, 1e-9);
    EXPECT_EQ(conformity(0, 4, {}), 1);
    EXPECT_TRUE(std::isnan(conformity(kNone, 4, {0, 1})));
}

TEST(Verdict, WrongOnesKeepToTheStatedRiskAndUndecidedOnesToTheUnavoidableShare) {
    std::mt19937 random(7);
    const orx::TTolerance wide{-6, 6};
    for (const int freedom : {0, 3, 8}) {
        SCOPED_TRACE(freedom);
        const int count = freedom == 0 ? 40000 : 2500;
        const double spread = 4 * std::sqrt(0.05 * 0.95 / count);
        for (const double limit : {-6.0, 6.0}) {
            // A part right at the limit is good and bad at once: neither verdict more often than its risk,
            // and, since any rule that decides more would break it, neither much less.
            const Shares shares = measuredShares(limit, wide, freedom, count, random);
            EXPECT_NEAR(shares[orx::vdPass], 0.05, spread);
            EXPECT_LT(shares[orx::vdPass], 0.05 + spread);
            EXPECT_NEAR(shares[orx::vdFail], 0.05, spread);
        }
        EXPECT_LT(measuredShares(5, wide, freedom, count, random)[orx::vdFail], 0.05);
        EXPECT_LT(measuredShares(7.5, wide, freedom, count, random)[orx::vdPass], 0.05);
    }
    // True values spread evenly over twice the tolerance: undecided is what lies within 1.645 deviations of a
    // limit, four times that of the 24.
    double undecided = 0;
    constexpr int kPlaces = 2400;
    for (int i = 0; i < kPlaces; ++i) {
        const double truth = -12 + 24 * (i + 0.5) / kPlaces;
        undecided += measuredShares(truth, wide, 0, 20, random)[orx::vdUndecided] / kPlaces;
    }
    EXPECT_NEAR(undecided, 4 * 1.6449 / 24, 0.01);
}

TEST(Verdict, TolerancesNarrowerThanTheUncertaintyDecideNothingTheyCannot) {
    std::mt19937 random(11);
    for (const double width : {0.0, 0.3, 1.0, 3.0, 3.5}) {
        SCOPED_TRACE(width);
        const orx::TTolerance narrow{0, width};
        const Shares good = measuredShares(0, narrow, 0, 20000, random);
        EXPECT_LT(good[orx::vdFail], 0.05 + 0.0062);
        EXPECT_GT(good[orx::vdFail], 0.05 - 0.0062);
        const Shares bad = measuredShares(-1e-9, narrow, 0, 20000, random);
        EXPECT_LT(bad[orx::vdPass], 0.05 + 0.0062);
        // A pass promises its confidence; the middle of three deviations holds 87 %, that of 3.5 92 %.
        EXPECT_EQ(orx::judge(width / 2, 1, kInfinite, narrow).verdict, orx::vdUndecided);
    }
    EXPECT_EQ(orx::judge(2, 1, kInfinite, {0, 4}).verdict, orx::vdPass);
}

TEST(Verdict, WhatIsNotMeasuredNeverPasses) {
    const orx::TTolerance tolerance{-1, 1};
    for (const double bad : {kNone, kInfinite, -kInfinite}) {
        EXPECT_EQ(orx::judge(bad, 0.1, 5, tolerance).verdict, orx::vdNotMeasured);
        EXPECT_EQ(orx::judge(0, bad, 5, tolerance).verdict, orx::vdNotMeasured);
    }
    EXPECT_EQ(orx::judge(0, -0.1, 5, tolerance).verdict, orx::vdNotMeasured);
    EXPECT_EQ(orx::judge(0, 0.1, 0, tolerance).verdict, orx::vdNotMeasured);
    EXPECT_EQ(orx::judge(0, 0.1, kNone, tolerance).verdict, orx::vdNotMeasured);
    for (const orx::TTolerance bad : {orx::TTolerance{1, -1}, orx::TTolerance{kNone, 1},
                                      orx::TTolerance{0, kNone}, orx::TTolerance{kInfinite, kInfinite}}) {
        EXPECT_EQ(orx::judge(0, 0.1, 5, bad).verdict, orx::vdNotMeasured);
    }
    for (const double confidence : {0.49, 1.0, kNone}) {
        EXPECT_EQ(orx::judge(0, 0.1, 5, tolerance, confidence).verdict, orx::vdNotMeasured);
    }
    EXPECT_EQ(orx::judge(0, 0.1, 5, {}).verdict, orx::vdNoLimits);

    using orx::worseVerdict;
    const std::array<orx::TVerdict, 5> kWorstFirst{orx::vdFail, orx::vdNotMeasured, orx::vdUndecided,
                                                   orx::vdPass, orx::vdNoLimits};
    for (std::size_t i = 0; i < kWorstFirst.size(); ++i) {
        for (std::size_t j = i; j < kWorstFirst.size(); ++j) {
            EXPECT_EQ(worseVerdict(kWorstFirst[i], kWorstFirst[j]), kWorstFirst[i]);
            EXPECT_EQ(worseVerdict(kWorstFirst[j], kWorstFirst[i]), kWorstFirst[i]);
        }
    }
    EXPECT_STREQ(orx::verdictText(orx::vdNotMeasured), "not measured");
    EXPECT_STREQ(orx::verdictText(static_cast<orx::TVerdict>(9)), "unknown verdict");
}

}  // namespace
