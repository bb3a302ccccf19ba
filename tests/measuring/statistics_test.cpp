#include "orxFunctions/measuring/statistics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

orx::TRunStatistics statisticsOf(const std::vector<double>& values, const orx::TTolerance& tolerance = {}) {
    orx::TRunStatistics statistics(tolerance);
    for (const double value : values) statistics.add(value, orx::vdPass);
    return statistics;
}

std::int64_t totalOf(const orx::TRunHistogram& histogram) {
    return std::accumulate(histogram.counts.begin(), histogram.counts.end(),
                           histogram.below + histogram.above);
}

TEST(RunStatistics, MeanDeviationAndIndicesAreThoseWorkedOutByHand) {
    // Mean 10.02, squared deviations 0.0036 + 0.0004 + 0 + 0.0004 + 0.0036 = 0.008, s^2 = 0.002.
    const std::vector<double> values{9.96, 10.0, 10.02, 10.04, 10.08};
    const auto both = statisticsOf(values, {9.8, 10.2});
    const double s = std::sqrt(0.002);
    EXPECT_EQ(both.count(), 5);
    EXPECT_NEAR(both.mean(), 10.02, 1e-14);
    EXPECT_NEAR(both.deviation(), s, 1e-14);
    EXPECT_EQ(both.least(), 9.96);
    EXPECT_EQ(both.largest(), 10.08);
    EXPECT_NEAR(both.range(), 0.12, 1e-14);
    EXPECT_NEAR(both.cp(), 0.4 / (6 * s), 1e-10);
    EXPECT_NEAR(both.cpk(), 0.18 / (3 * s), 1e-10);
    const auto upper = statisticsOf(values, {-kInfinite, 10.2});
    EXPECT_TRUE(std::isnan(upper.cp()));
    EXPECT_NEAR(upper.cpk(), 0.18 / (3 * s), 1e-10);
    EXPECT_NEAR(statisticsOf(values, {9.8, kInfinite}).cpk(), 0.22 / (3 * s), 1e-10);
    EXPECT_NEAR(statisticsOf(values, {10.1, 10.2}).cpk(), -0.08 / (3 * s), 1e-10);
    for (const orx::TTolerance& none : {orx::TTolerance(), orx::TTolerance{2.0, 1.0}}) {
        EXPECT_TRUE(std::isnan(statisticsOf(values, none).cp()));
        EXPECT_TRUE(std::isnan(statisticsOf(values, none).cpk()));
    }
}

TEST(RunStatistics, FewOrEqualValuesHaveTheirOwnAnswers) {
    const auto none = statisticsOf({}, {1, 2});
    for (const double answer :
         {none.mean(), none.deviation(), none.least(), none.range(), none.cp(), none.cpk()})
        EXPECT_TRUE(std::isnan(answer));
    EXPECT_TRUE(none.histogram().counts.empty());
    EXPECT_TRUE(none.chart().empty());
    const auto one = statisticsOf({1.5}, {1, 2});
    EXPECT_EQ(one.mean(), 1.5);
    EXPECT_EQ(one.range(), 0.0);
    EXPECT_TRUE(std::isnan(one.deviation()) && std::isnan(one.cp()) && std::isnan(one.cpk()));
    EXPECT_EQ(statisticsOf({1.5, 1.5}, {1, 2}).cpk(), kInfinite);
    EXPECT_EQ(statisticsOf({2.5, 2.5}, {1, 2}).cpk(), -kInfinite);
    EXPECT_EQ(statisticsOf({2.0, 2.0}, {1, 2}).cpk(), 0.0);
    EXPECT_EQ(statisticsOf({2.0, 2.0}, {1, 2}).cp(), kInfinite);
}

TEST(RunStatistics, SmallSpreadOfLargeValuesKeepsItsDigits) {
    // 1e9 + {4, 7, 13, 16}: variance 30; sums of squares would leave nothing of it.
    const auto statistics = statisticsOf({1e9 + 4, 1e9 + 7, 1e9 + 13, 1e9 + 16});
    EXPECT_NEAR(statistics.deviation(), std::sqrt(30.0), 1e-9);
}

TEST(RunStatistics, WhatIsNotMeasuredCountsAmongVerdictsAlone) {
    orx::TRunStatistics statistics({0, 10});
    statistics.add(5, orx::vdPass);
    statistics.add(12, orx::vdFail);
    statistics.add(9.9, orx::vdUndecided);
    statistics.add(0, orx::vdNotMeasured);
    statistics.add(kNone, orx::vdPass);
    statistics.add(kInfinite, orx::vdFail);
    statistics.add(7, static_cast<orx::TVerdict>(9));
    EXPECT_EQ(statistics.parts(), 7);
    EXPECT_EQ(statistics.count(), 3);
    EXPECT_EQ(statistics.countOf(orx::vdPass), 1);
    EXPECT_EQ(statistics.countOf(orx::vdFail), 1);
    EXPECT_EQ(statistics.countOf(orx::vdUndecided), 1);
    EXPECT_EQ(statistics.countOf(orx::vdNotMeasured), 4);
    EXPECT_EQ(statistics.countOf(static_cast<orx::TVerdict>(-1)), 0);
    EXPECT_EQ(statistics.largest(), 12);
    EXPECT_EQ(totalOf(statistics.histogram()), 3);
    EXPECT_EQ(statistics.chart().size(), 3U);
}

TEST(RunHistogram, CountsValuesWhereTheyAreWhateverTheirOrder) {
    std::vector<double> values;
    for (int i = 0; i < 5000; ++i) values.push_back(9.9 + 0.2 * ((i * 733) % 5000) / 5000.0);
    for (const orx::TTolerance& tolerance :
         {orx::TTolerance{9.95, 10.05}, orx::TTolerance{-kInfinite, 10.05}, orx::TTolerance{}}) {
        const orx::TRunHistogram histogram = statisticsOf(values, tolerance).histogram();
        EXPECT_LE(histogram.counts.size(), 64U);
        EXPECT_GT(histogram.counts.size(), 16U);
        EXPECT_EQ(totalOf(histogram), 5000);
        for (std::size_t i = 0; i < histogram.counts.size(); ++i) {
            const double from = histogram.start + static_cast<double>(i) * histogram.width;
            const auto inside = std::count_if(values.begin(), values.end(), [&](double value) {
                return value >= from && value < from + histogram.width;
            });
            EXPECT_NEAR(static_cast<double>(histogram.counts[i]), static_cast<double>(inside), 1.0) << i;
        }
        std::vector<double> sorted = values;
        std::sort(sorted.rbegin(), sorted.rend());
        EXPECT_EQ(statisticsOf(sorted, tolerance).histogram().counts, histogram.counts);
    }
    // A limit is the edge of a bin.
    const orx::TRunHistogram histogram = statisticsOf(values, {9.95, 10.05}).histogram();
    const double bins = (9.95 - histogram.start) / histogram.width;
    EXPECT_NEAR(bins, std::round(bins), 1e-6);
}

TEST(RunHistogram, ValuesAreCountedWhoseDistanceFromTheLimitExceedsADouble) {
    for (const double limit : {1.7e308, -1.7e308}) {
        SCOPED_TRACE(limit);
        orx::TTolerance oneLimit;
        oneLimit.lower = limit;
        const std::vector<double> values = {-limit, 0, limit, -limit / 2};
        const orx::TRunHistogram histogram = statisticsOf(values, oneLimit).histogram();
        EXPECT_EQ(totalOf(histogram), 4);
        EXPECT_TRUE(std::isfinite(histogram.width));
        for (const double value : values) {
            const double bin = std::floor(value / histogram.width - histogram.start / histogram.width);
            ASSERT_GE(bin, 0.0) << value;
            ASSERT_LT(bin, static_cast<double>(histogram.counts.size())) << value;
            EXPECT_EQ(histogram.counts[static_cast<std::size_t>(bin)], 1) << value;
        }
    }
}

TEST(RunHistogram, WildValuesLeaveTheOthersApart) {
    orx::TRunStatistics statistics({9.9, 10.1});
    for (int i = 0; i < 100; ++i) statistics.add(9.95 + 0.001 * i, orx::vdPass);
    statistics.add(1e300, orx::vdFail);
    statistics.add(-1e300, orx::vdFail);
    // The bins end as far behind each limit as the limits are apart.
    for (const double value : {9.7001, 10.2999, 9.6999, 10.3001}) statistics.add(value, orx::vdFail);
    const orx::TRunHistogram histogram = statistics.histogram();
    EXPECT_EQ(histogram.below, 2);
    EXPECT_EQ(histogram.above, 2);
    EXPECT_EQ(totalOf(histogram), 106);
    EXPECT_LT(histogram.width, 0.02);
    // Without two limits they are in the bins, however far.
    const std::vector<std::vector<double>> wild{
        {1e-300, 1e300, -1e300}, {0, 0, 0}, {-1, 1}, {1e-320, 5}, {1e308, -1e308}};
    for (const auto& values : wild) {
        const orx::TRunHistogram counted = statisticsOf(values, {0, kInfinite}).histogram();
        EXPECT_EQ(totalOf(counted), static_cast<std::int64_t>(values.size()));
        EXPECT_LE(counted.counts.size(), 64U);
    }
}

TEST(RunChart, IsBoundedAndLosesNoExtreme) {
    orx::TRunStatistics statistics;
    double sum = 0;
    for (int i = 0; i < 100000; ++i) {
        const double value = i == 54321 ? 99.0 : std::sin(0.001 * i);
        statistics.add(value, i % 10 == 3 ? orx::vdNotMeasured : orx::vdNoLimits);
        if (i % 10 != 3) sum += value;
    }
    const auto chart = statistics.chart();
    EXPECT_LE(chart.size(), 400U);
    EXPECT_GT(chart.size(), 199U);
    std::int64_t count = 0;
    double summed = 0;
    for (std::size_t i = 0; i < chart.size(); ++i) {
        EXPECT_EQ(chart[i].first, static_cast<std::int64_t>(i) * chart[1].first);
        EXPECT_LE(chart[i].least, chart[i].mean);
        EXPECT_LE(chart[i].mean, chart[i].largest);
        count += chart[i].count;
        summed += chart[i].mean * static_cast<double>(chart[i].count);
        const bool holdsPeak = chart[i].first <= 54321 && 54321 < chart[i].first + chart[1].first;
        EXPECT_EQ(chart[i].largest == 99.0, holdsPeak);
    }
    EXPECT_EQ(count, 90000);
    EXPECT_NEAR(summed, sum, 1e-6);
}

TEST(GaugeStudy, TellsTheFiguresWorkedOutByHand) {
    orx::TGaugeStudy study({9.0, 11.0});
    // Squares within the parts: 0.02, 0.08 and 0.02, of 2 + 2 + 2 = 6 degrees of freedom: s^2 = 0.02.
    const double values[3][3] = {{9.9, 10.0, 10.1}, {10.3, 10.5, 10.7}, {9.4, 9.5, 9.6}};
    for (int k = 0; k < 3; ++k)
        for (int part = 0; part < 3; ++part) EXPECT_TRUE(study.add(part, values[part][k]));
    const orx::TGaugeResult result = study.result();
    EXPECT_EQ(result.parts, 3);
    EXPECT_EQ(result.values, 9);
    EXPECT_EQ(result.degreesOfFreedom, 6);
    EXPECT_NEAR(result.repeatability, std::sqrt(0.02), 1e-12);
    EXPECT_NEAR(result.toleranceShare, 100 * 6 * std::sqrt(0.02) / 2, 1e-9);
    // Means 10, 10.5 and 9.5: variance 0.25, less a third of 0.02.
    const double parts = 0.25 - 0.02 / 3;
    EXPECT_NEAR(result.partDeviation, std::sqrt(parts), 1e-12);
    EXPECT_NEAR(result.variationShare, 100 * std::sqrt(0.02 / (0.02 + parts)), 1e-9);
    EXPECT_NEAR(study.parts()[1].deviation(), 0.2, 1e-12);
    EXPECT_EQ(study.parts()[1].least, 10.3);
}

TEST(GaugeStudy, TooLittleTellsNothing) {
    orx::TGaugeStudy study;
    EXPECT_FALSE(study.add(-1, 1.0));
    EXPECT_FALSE(study.add(orx::TGaugeStudy::kMostParts, 1.0));
    EXPECT_FALSE(study.add(0, kNone));
    EXPECT_TRUE(study.add(0, 1.0));
    EXPECT_TRUE(study.add(2, 2.0));
    EXPECT_EQ(study.result().parts, 2);
    EXPECT_TRUE(std::isnan(study.result().repeatability));
    EXPECT_TRUE(study.add(2, 2.0));
    EXPECT_EQ(study.result().repeatability, 0.0);
    EXPECT_TRUE(std::isnan(study.result().toleranceShare));
    EXPECT_TRUE(std::isnan(study.parts()[1].deviation()));
}

}  // namespace
