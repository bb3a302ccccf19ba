#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/refusal_check.h"
#include "tests/support/trace_log.h"

namespace {

using orx::test::notRefused;
using orx::test::refusedWith;
using Samples = std::vector<cv::Point2d>;
using Lines = test::TraceLog::Lines;

double wave(double x) { return 3 * std::sin(x / 2) + x; }

orx::TSplineCurve waveCurve(int count, int n) {
    Samples samples;
    for (int x = 0; x < count; ++x) samples.emplace_back(x, wave(x));
    orx::TSplineCurve curve;
    curve.fit(samples, n);
    return curve;
}

double valueOf(const orx::TSplineSegment& s, double x) {
    double sum = 0;
    double power = 1;
    for (const double c : s.paraList) {
        sum += c * power;
        power *= x;
    }
    return sum;
}

// A scan of all segments.
double plainValue(const orx::TSplineCurve& curve, double x) {
    double sum = 0;
    double covering = 0;
    for (const orx::TSplineSegment& s : curve.segments) {
        if (s.startX <= x && x <= s.endX) {
            sum += valueOf(s, x);
            covering += 1;
        }
    }
    return sum / covering;
}

// Equal, or neither a number.
void expectSame(double a, double b, double x) {
    EXPECT_TRUE(a == b || (std::isnan(a) && std::isnan(b))) << x;
}

TEST(TSplineCurve, ChainsOverlappingRuns) {
    const orx::TSplineCurve curve = waveCurve(10, 3);
    ASSERT_EQ(curve.segments.size(), 7U);
    for (std::size_t i = 0; i < 7; ++i) {
        const orx::TSplineSegment& s = curve.segments[i];
        EXPECT_EQ(s.startX, static_cast<double>(i));
        EXPECT_EQ(s.endX, static_cast<double>(i + 3));
        ASSERT_EQ(s.paraList.size(), 4U);
        ASSERT_EQ(s.paraMat.rows, 4);
        EXPECT_EQ(s.paraMat.at<double>(2), s.paraList[2]);
        for (double x = s.startX; x <= s.endX; x += 1) EXPECT_NEAR(valueOf(s, x), wave(x), 1e-7);
    }
    const double three =
        valueOf(curve.segments[2], 4.5) + valueOf(curve.segments[3], 4.5) + valueOf(curve.segments[4], 4.5);
    EXPECT_EQ(curve.getY(4.5), three / 3);
    EXPECT_NEAR(curve.getY(4.5), wave(4.5), 0.01);
    EXPECT_NEAR(curve.getY(9), wave(9), 1e-7);
    for (const double outside : {-0.001, 9.001, 10.0, std::nan("")})
        EXPECT_TRUE(std::isnan(curve.getY(outside)));
}

TEST(TSplineCurve, NeedsMoreSamplesThanItsOrder) {
    for (const int n : {-1, 3, 4, 201, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        orx::TSplineCurve curve = waveCurve(10, 3);
        curve.fit({0, 1, 2}, {5, 6, 7}, n);
        EXPECT_TRUE(curve.segments.empty()) << n;
        EXPECT_TRUE(std::isnan(curve.getY(1)));
        EXPECT_EQ(curve.getExtremeValue(1), cv::Point2d(0, 0));
        Samples list{{1, 1}};
        const test::TraceLog trace;
        curve.getSplineList(list, 1);
        EXPECT_EQ(list.size(), 1U);
        EXPECT_EQ(trace.lines(), (Lines{"paraList.size() == 0，强制返回"}));
    }
    orx::TSplineCurve steps;
    steps.fit({0, 1, 2}, {5, 6, 7}, 0);
    EXPECT_EQ(steps.segments.size(), 3U);
    EXPECT_EQ(steps.getY(1), 6);
    EXPECT_TRUE(std::isnan(steps.getY(1.5)));
    steps.fit({0, 1, 2}, {5, 6}, 1);
    EXPECT_EQ(steps.segments.size(), 3U) << "lists of different length change nothing";
}

TEST(TSplineCurve, CopiesSurviveALaterFit) {
    orx::TSplineCurve curve = waveCurve(10, 3);
    const orx::TSplineCurve copy = curve;
    const cv::Mat before = copy.segments[0].paraMat.clone();
    curve.fit({0, 1, 2, 3, 4}, {9, 9, 1, 9, 9}, 3);
    EXPECT_EQ(cv::norm(copy.segments[0].paraMat, before, cv::NORM_INF), 0);
}

// Unsorted samples, the same x twice and more, and what is no number.
TEST(TSplineCurve, LooksUpWhatAScanOfAllSegmentsFinds) {
    std::mt19937 random(2);
    std::uniform_int_distribution<int> quarter(0, 120);
    std::uniform_real_distribution<double> y(-1, 1);
    for (int round = 0; round < 30; ++round) {
        Samples samples;
        for (int i = 0; i < 60; ++i) samples.emplace_back(quarter(random) / 4.0, y(random));
        if (round % 3 == 0) samples[7].x = samples[31].x = std::nan("");
        if (round % 3 == 1) samples[9].x = std::numeric_limits<double>::infinity();
        orx::TSplineCurve curve;
        curve.fit(samples, 1 + round % 4);
        for (double x = -0.5; x < 31; x += 0.125) expectSame(curve.getY(x), plainValue(curve, x), x);
        Samples list;
        curve.segments.back().endX = 30;
        if (round % 5 == 0) curve.segments[20].paraList.push_back(0.5);
        for (const int digits : {1, 2}) {
            curve.getSplineList(list, digits);
            double x = curve.segments.front().startX;
            cv::Point2d lowest(x, std::numeric_limits<double>::infinity());
            for (const cv::Point2d& p : list) {
                EXPECT_EQ(p.x, x);
                expectSame(p.y, plainValue(curve, p.x), p.x);
                if (p.y < lowest.y) lowest = p;
                x += 1 / std::pow(10.0, digits);
            }
            EXPECT_FALSE(x <= 30);
            if (digits == 2) {
                EXPECT_EQ(curve.getExtremeValue(0), lowest);
            }
        }
    }
    // Segments in any order are a caller's own; nothing is read outside them.
    orx::TSplineCurve shuffled = waveCurve(30, 2);
    std::shuffle(shuffled.segments.begin(), shuffled.segments.end(), random);
    shuffled.segments[4].paraList.clear();
    Samples list;
    shuffled.getSplineList(list, 1);
    for (double x = 0; x < 30; x += 0.5) shuffled.getY(x);
}

TEST(TSplineCurve, FindsExtremesInHundredths) {
    const orx::TSplineCurve curve = waveCurve(14, 4);
    // 3 cos(x / 2) / 2 + 1 = 0 first where cos(x / 2) = -2 / 3.
    const double peak = 2 * std::acos(-2.0 / 3);
    const test::TraceLog trace;
    const cv::Point2d top = curve.getExtremeValue(2.0, 7.0, 1);
    EXPECT_NEAR(top.x, peak, 0.05);
    EXPECT_NEAR(top.y, wave(peak), 0.01);
    EXPECT_EQ(curve.getExtremeValue(0), cv::Point2d(0, curve.getY(0)));
    EXPECT_NEAR(curve.getExtremeValue(1).x, 13, 0.011);
    EXPECT_TRUE(trace.lines().empty());
    EXPECT_EQ(curve.getExtremeValue(7.0, 2.0, 1), top);
    EXPECT_EQ(curve.getExtremeValue(3.0, 3.0, 1), cv::Point2d(0, 0));
    EXPECT_EQ(trace.lines(),
              (Lines{"getExtremeValue minX>maxX 已经交换数据", "getExtremeValue minX==maxX 输入参数有误"}));
    // Values that are not numbers, outside the chain, never win.
    EXPECT_EQ(curve.getExtremeValue(-5.0, 7.0, 0).x, curve.getExtremeValue(-5.0, 7.0, 0).x);
    EXPECT_NEAR(curve.getExtremeValue(-5.0, 7.0, 0).x, 0, 0.011);
    EXPECT_TRUE(std::isnan(curve.getExtremeValue(20.0, 21.0, 1).y));
    EXPECT_EQ(curve.getExtremeValue(20.0, 21.0, 1).x, 20);
}

TEST(TSplineCurve, LongChainsAreSearchedWhole) {
    orx::TSplineCurve curve;
    curve.fit({0, 40000, 80000, 110000}, {0, 0, 1, 0}, 1);
    const cv::Point2d top = curve.getExtremeValue(1);
    EXPECT_NEAR(top.x, 80000, 0.011);
    EXPECT_NEAR(top.y, 1, 1e-6);
}

TEST(TSplineCurve, ChainsThatWouldTakeHoursAreRefused) {
    const auto samples = [](int count) {
        Samples list;
        for (int i = 0; i < count; ++i) list.emplace_back(i / 100.0, i % 7);
        return list;
    };
    orx::TSplineCurve curve;
    EXPECT_TRUE(notRefused([&] { curve.fit(samples(203), 200); }));
    EXPECT_EQ(curve.segments.size(), 3U);
    EXPECT_TRUE(refusedWith(orx::rcTooMany, "fit", [&] { curve.fit(samples(500), 200); }));
    EXPECT_TRUE(curve.segments.empty());
    // 200 segments of 201 coefficients cover each of a hundred thousand steps.
    for (int i = 0; i < 200; ++i) curve.segments.push_back({0, 1000, std::vector<double>(201, 1.0), {}});
    Samples list{{1, 1}};
    EXPECT_TRUE(refusedWith(orx::rcTooMany, "getSplineList", [&] { curve.getSplineList(list, 2); }));
    EXPECT_TRUE(list.empty());
    EXPECT_TRUE(refusedWith(orx::rcTooMany, "getExtremeValue", [&] { curve.getExtremeValue(1); }));
}

TEST(TSplineCurve, HugeRangesEnd) {
    const double inf = std::numeric_limits<double>::infinity();
    orx::TSplineCurve curve = waveCurve(5, 1);
    EXPECT_EQ(curve.getExtremeValue(-1e300, 1e300, 1), cv::Point2d(0, 0));
    EXPECT_EQ(curve.getExtremeValue(-inf, inf, 1), cv::Point2d(0, 0));
    EXPECT_EQ(curve.getExtremeValue(std::nan(""), 1.0, 1), cv::Point2d(0, 0));
    EXPECT_TRUE(notRefused([&] { EXPECT_NEAR(curve.getExtremeValue(-1e4, 1e4, 0).x, 0, 0.011); }));
    EXPECT_TRUE(refusedWith(orx::rcTooMany, "getExtremeValue",
                            [&] { EXPECT_EQ(curve.getExtremeValue(-1e7, 1e7, 1), cv::Point2d(0, 0)); }));
    EXPECT_EQ(curve.getExtremeValue(1e17, 1e17 + 32, 1).x, 1e17) << "no step changes x";
    Samples list{{1, 1}};
    curve.getSplineList(list, 300);
    EXPECT_TRUE(list.empty());
    curve.fit({1e17, 1e17 + 64}, {1, 2}, 1);
    curve.getSplineList(list, 2);
    EXPECT_EQ(list.size(), 1U);
}

TEST(TSplineCurve, ListsTheWholeChain) {
    const orx::TSplineCurve curve = waveCurve(6, 2);
    Samples list;
    const test::TraceLog trace;
    curve.getSplineList(list, 0);
    ASSERT_EQ(list.size(), 6U);
    for (const cv::Point2d& p : list) EXPECT_NEAR(p.y, wave(p.x), 1e-9);
    EXPECT_EQ(trace.lines(), (Lines{"getPloyList step:1"}));
}

}  // namespace
