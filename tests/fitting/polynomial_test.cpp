#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/refusal_check.h"
#include "tests/support/trace_log.h"

namespace {

using orx::test::refusedWith;
using Samples = std::vector<cv::Point2d>;
using Lines = test::TraceLog::Lines;

const char* const kSwapped = "getExtremeValue minX>maxX 已经交换数据";
const char* const kEqualBounds = "getExtremeValue minX==maxX 输入参数有误";

Samples parabola() {
    Samples samples;
    for (int x = 0; x <= 5; ++x) samples.emplace_back(x, 1 - (x - 2.345) * (x - 2.345));
    return samples;
}

orx::TPolynomial withCoefficients(std::vector<double> list) {
    orx::TPolynomial model;
    model.getY(0, std::move(list));
    return model;
}

TEST(TPolynomial, EmptyModelAnswersZero) {
    orx::TPolynomial model;
    std::vector<double> list{7};
    cv::Mat matrix(2, 2, CV_8U);
    EXPECT_EQ(model.getY(3), 0);
    EXPECT_EQ(model.getSlope(3), 0);
    EXPECT_FALSE(model.getFitParas(list));
    EXPECT_FALSE(model.getFitParas(matrix));
    EXPECT_EQ(list, std::vector<double>{7});
    EXPECT_EQ(matrix.rows, 2);
}

TEST(TPolynomial, FitsWhatItsOrderCanFollow) {
    Samples samples = parabola();
    orx::TPolynomial model(samples, 2);
    EXPECT_EQ(model.coefficients.rows, 3);
    EXPECT_EQ(model.coefficients.cols, 1);
    EXPECT_NEAR(model.getY(1.5), 1 - 0.845 * 0.845, 1e-9);
    EXPECT_NEAR(model.getSlope(1.5), 2 * 0.845, 1e-9);
    double sse = 0;
    double rmse = 0;
    double r2 = 0;
    // A constant through 1, 2, 6: mean 3, squares 4 + 1 + 9.
    EXPECT_TRUE(model.fit({0, 1, 2}, {1, 2, 6}, 0));
    EXPECT_NEAR(model.getY(77), 3, 1e-12);
    EXPECT_EQ(model.getSlope(77), 0);
    model.getError(sse, rmse, r2);
    EXPECT_NEAR(sse, 14, 1e-9);
    EXPECT_NEAR(rmse, std::sqrt(14.0 / 3), 1e-9);
    EXPECT_NEAR(r2, 0, 1e-9);
}

TEST(TPolynomial, TakesConstListsAndTemporaries) {
    const Samples samples = parabola();
    orx::TPolynomial model(samples, 2);
    EXPECT_NEAR(model.getY(1.5), 1 - 0.845 * 0.845, 1e-9);
    EXPECT_TRUE(model.fit(Samples{{0, 1}, {1, 3}}, 1));
    EXPECT_NEAR(model.getY(10), 21, 1e-9);
    EXPECT_EQ(model.points.size(), 2U);
    bool (orx::TPolynomial::*const stated)(Samples&, int) = &orx::TPolynomial::fit;
    Samples list = parabola();
    EXPECT_TRUE((model.*stated)(list, 2));
    EXPECT_EQ(model.points, samples);
    bool (orx::TPolynomial::*const constant)(const Samples&, int) = &orx::TPolynomial::fit;
    orx::TPolynomial same;
    EXPECT_TRUE((same.*constant)(samples, 2));
    EXPECT_EQ(same.points, model.points);
    EXPECT_EQ(same.getY(1.5), model.getY(1.5));
}

TEST(TPolynomial, ListsOfDifferentLengthKeepTheModel) {
    orx::TPolynomial model({0, 1, 2}, {1, 3, 5}, 1);
    EXPECT_FALSE(model.fit({0, 1, 2}, {1, 3}, 2));
    EXPECT_EQ(model.order, 1);
    EXPECT_EQ(model.points.size(), 3U);
    EXPECT_NEAR(model.getY(10), 21, 1e-9);
}

TEST(TPolynomial, SingularSystemsGiveZeros) {
    for (const int order : {1, 2, 3, 5}) {
        orx::TPolynomial model;
        EXPECT_FALSE(model.fit({2, 2}, {1, 5}, order)) << order;
        ASSERT_EQ(model.coefficients.rows, order + 1);
        EXPECT_EQ(cv::countNonZero(model.coefficients), 0) << order;
        EXPECT_FALSE(model.fit(std::vector<double>{}, {}, order)) << order;
    }
    for (const int order : {-1, 201, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        orx::TPolynomial model({0, 1, 2}, {1, 3, 5}, 1);
        EXPECT_FALSE(model.fit({0, 1, 2}, {1, 3, 5}, order)) << order;
        EXPECT_TRUE(model.coefficients.empty());
    }
}

// Every power by pow(), every sum by itself.
void plainFit(const Samples& samples, int order, cv::Mat& coefficients) {
    cv::Mat A(order + 1, order + 1, CV_64F, cv::Scalar(0));
    cv::Mat b(order + 1, 1, CV_64F, cv::Scalar(0));
    for (int i = 0; i <= order; ++i) {
        for (int j = 0; j <= order; ++j) {
            for (const cv::Point2d& p : samples) A.at<double>(i, j) += std::pow(p.x, i + j);
        }
        for (const cv::Point2d& p : samples) b.at<double>(i) += std::pow(p.x, i) * p.y;
    }
    coefficients = cv::Mat::zeros(order + 1, 1, CV_64F);
    cv::solve(A, b, coefficients, cv::DECOMP_LU);
}

TEST(TPolynomial, EqualsThePlainSumsOfPowers) {
    std::mt19937 random(1);
    std::uniform_int_distribution<int> whole(-40, 40);
    std::uniform_real_distribution<double> real(-2, 2);
    for (const int order : {0, 1, 2, 3, 4, 7}) {
        for (const int count : {9, 31, 32, 33, 100}) {
            SCOPED_TRACE(testing::Message() << "order " << order << ", " << count << " samples");
            Samples integers;
            Samples reals;
            for (int i = 0; i < count; ++i) {
                integers.emplace_back(whole(random), real(random));
                reals.emplace_back(real(random), real(random));
            }
            cv::Mat expected;
            orx::TPolynomial model;
            if (order <= 4) {
                // Powers that doubles hold exactly: not a bit may differ.
                model.fit(integers, order);
                plainFit(integers, order, expected);
                EXPECT_EQ(cv::norm(model.coefficients, expected, cv::NORM_INF), 0);
            }
            model.fit(reals, order);
            plainFit(reals, order, expected);
            EXPECT_LE(cv::norm(model.coefficients, expected, cv::NORM_INF),
                      1e-8 * (1 + cv::norm(expected, cv::NORM_INF)));
            cv::setUseOptimized(false);
            orx::TPolynomial baseline;
            baseline.fit(reals, order);
            cv::setUseOptimized(true);
            EXPECT_EQ(cv::norm(model.coefficients, baseline.coefficients, cv::NORM_INF), 0);
        }
    }
}

TEST(TPolynomial, UnusualSamplesGiveThePlainAnswer) {
    const double inf = std::numeric_limits<double>::infinity();
    for (const double odd : {1e160, 1e-200, inf, std::nan("")}) {
        Samples samples{{odd, 2}, {1, 3}, {2, 5}, {3, 4}};
        cv::Mat expected;
        plainFit(samples, 1, expected);
        const orx::TPolynomial model(samples, 1);
        for (int i = 0; i < 2; ++i) {
            const double ours = model.coefficients.at<double>(i);
            const double plain = expected.at<double>(i);
            EXPECT_TRUE(ours == plain || (std::isnan(ours) && std::isnan(plain))) << odd;
        }
    }
}

TEST(TPolynomial, ItsOwnSamplesMayBeFittedAgain) {
    Samples samples;
    for (int i = 0; i < 150; ++i) samples.emplace_back(i, i * i);
    orx::TPolynomial model(samples, 1);
    EXPECT_TRUE(model.fit(model.points, 2));
    EXPECT_EQ(model.points, samples);
    EXPECT_NEAR(model.getY(20), 400, 1e-6);
}

TEST(TPolynomial, CopiesSurviveALaterFit) {
    orx::TPolynomial model({0, 1}, {0, 1}, 1);
    const orx::TPolynomial copy = model;
    const cv::Mat header = model.coefficients;
    model.fit({0, 1}, {5, 9}, 1);
    model.getY(0, std::vector<double>{7, 7});
    model.getY(0, cv::Mat(2, 1, CV_64F, cv::Scalar(8)));
    EXPECT_NEAR(copy.getY(3), 3, 1e-12);
    EXPECT_NEAR(header.at<double>(1), 1, 1e-12);
}

TEST(TPolynomial, GivenCoefficientsStayAndDecideTheDegree) {
    orx::TPolynomial model({0, 1, 2}, {1, 3, 5}, 1);
    EXPECT_EQ(model.getY(2, std::vector<double>{1, 0, 3, 1}), 21);
    EXPECT_EQ(model.order, 3);
    EXPECT_EQ(model.getY(1), 5);
    EXPECT_EQ(model.getSlope(2), 24);
    cv::Mat matrix = (cv::Mat_<double>(3, 1) << 1, 2, 3);
    EXPECT_EQ(model.getY(2, matrix), 17);
    matrix.setTo(0);
    EXPECT_EQ(model.getY(2), 17);
    // Other depths convert, a column of a wider matrix has gaps, other types hold no coefficients.
    EXPECT_EQ(model.getY(2, cv::Mat(cv::Vec2f(4, 5))), 14);
    const cv::Mat wide = (cv::Mat_<double>(2, 3) << 1, 99, 99, 2, 99, 99);
    model.coefficients = wide.col(0);
    EXPECT_EQ(model.getY(10), 21);
    std::vector<double> list;
    EXPECT_TRUE(model.getFitParas(list));
    EXPECT_EQ(list, (std::vector<double>{1, 2}));
    EXPECT_EQ(model.getY(2, cv::Mat(2, 1, CV_8UC3, cv::Scalar::all(1))), 0);
    EXPECT_EQ(model.getY(2, cv::Mat()), 0);
    EXPECT_EQ(model.getY(2, std::vector<double>{}), 0);
}

TEST(TPolynomial, FindsExtremesToAThousandth) {
    Samples samples = parabola();
    const orx::TPolynomial model(samples, 2);
    const test::TraceLog trace;
    const cv::Point2d top = model.getExtremeValue(0, 5, 1);
    EXPECT_NEAR(top.x, 2.345, 6e-4);
    EXPECT_NEAR(top.y, 1, 1e-6);
    EXPECT_NEAR(model.getExtremeValue(0, 5, 0).x, 5, 0.0011) << "the running sum may just miss the bound";
    EXPECT_TRUE(trace.lines().empty());
    EXPECT_EQ(model.getExtremeValue(5, 0, 1), top);
    EXPECT_EQ(trace.lines(), (Lines{kSwapped}));
    EXPECT_EQ(model.getExtremeValue(3, 3, 0), cv::Point2d(0, 0));
    EXPECT_EQ(trace.lines(), (Lines{kSwapped, kEqualBounds}));
}

// A literal scan that orders all samples, level by level.
cv::Point2d plainExtreme(const orx::TPolynomial& model, int minX, int maxX, int mode) {
    double low = minX;
    double high = maxX;
    cv::Point2d best;
    for (int k = 0; k <= 3; ++k) {
        const double step = 1 / std::pow(10, k);
        Samples all;
        for (double x = low; x <= high; x += step) all.emplace_back(x, model.getY(x));
        std::stable_sort(all.begin(), all.end(), [&](const cv::Point2d& l, const cv::Point2d& r) {
            if (std::isnan(l.y) || std::isnan(r.y)) return !std::isnan(l.y) && std::isnan(r.y);
            return mode == 1 ? l.y > r.y : l.y < r.y;
        });
        best = all.front();
        low = std::max<double>(minX, best.x - 10 * step);
        high = std::min<double>(maxX, best.x + 10 * step);
    }
    return best;
}

TEST(TPolynomial, ExtremeIsTheFirstOfTheOrderedLastLevel) {
    std::mt19937 random(4);
    std::uniform_real_distribution<double> coefficient(-1, 1);
    std::uniform_int_distribution<int> bound(-20, 20);
    for (int round = 0; round < 40; ++round) {
        auto model = withCoefficients({coefficient(random), coefficient(random), coefficient(random),
                                       coefficient(random), coefficient(random)});
        if (round % 5 == 0) model = withCoefficients({2});  // all equal: the first of the last level
        const int minX = bound(random);
        const int maxX = minX + 1 + std::abs(bound(random));
        EXPECT_EQ(model.getExtremeValue(minX, maxX, round % 2), plainExtreme(model, minX, maxX, round % 2));
    }
}

// Level 0 alone, to the last bit, over ranges that are searched in stretches.
TEST(TPolynomial, LongSearchesFindWhatAScanOfAllNumbersFinds) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> coefficient(-1, 1);
    std::uniform_int_distribution<int> bound(-30'000, 30'000);
    const double inf = std::numeric_limits<double>::infinity();
    for (int round = 0; round < 60; ++round) {
        std::vector<double> list;
        for (int i = 0; i <= round % 6; ++i) list.push_back(coefficient(random) * std::pow(1e-4, i - 1));
        if (round % 10 == 6) list[0] = 1e18;  // nearly all values are equal after rounding
        if (round % 10 == 7) list = {1, 2e307, -1e304, 1e300, 1e296};
        if (round % 10 == 8) list[list.size() - 1] = inf;
        if (round % 10 == 9) list.insert(list.end(), 80, round % 20 == 9 ? 0.0 : -0.5);  // powers overflow
        const auto model = withCoefficients(list);
        const int minX = bound(random);
        const int maxX = minX + 200 + std::abs(bound(random));
        for (const int mode : {0, 1}) {
            const cv::Point2d expected = plainExtreme(model, minX, maxX, mode);
            const cv::Point2d found = model.getExtremeValue(minX, maxX, mode);
            EXPECT_EQ(found.x, expected.x) << "round " << round << ", mode " << mode;
            EXPECT_TRUE(found.y == expected.y || (std::isnan(found.y) && std::isnan(expected.y))) << round;
        }
    }
}

TEST(TPolynomial, SearchesTheWholeRangeOfInts) {
    const int low = std::numeric_limits<int>::min();
    const int high = std::numeric_limits<int>::max();
    // -(x - 12345)^2, whose terms are exact there.
    const auto parabola = withCoefficients({-12345.0 * 12345.0, 2 * 12345.0, -1});
    EXPECT_NEAR(parabola.getExtremeValue(low, high, 1).x, 12345, 0.0011);
    EXPECT_EQ(parabola.getExtremeValue(low, high, 0).x, low);
    // x^3 - 3e12 x: a hill at -1e6 of 2e18, lower than the far right.
    const auto cubic = withCoefficients({0, -3e12, 0, 1});
    EXPECT_NEAR(cubic.getExtremeValue(low, high, 1).x, high, 0.0011);
    EXPECT_NEAR(cubic.getExtremeValue(low, 0, 1).x, -1e6, 1);
    EXPECT_NEAR(cubic.getExtremeValue(0, high, 0).x, 1e6, 1);
    EXPECT_EQ(withCoefficients({7}).getExtremeValue(low, high, 1), cv::Point2d(low, 7));
    EXPECT_EQ(withCoefficients({std::nan("")}).getExtremeValue(low, high, 1).x, low);
}

// (x - 1e9)^10 in plain powers: rounding alone makes hundreds of millions of values as small as the least.
TEST(TPolynomial, SearchesThatWouldTakeMinutesAreRefused) {
    std::vector<double> list{1};
    for (int power = 0; power < 10; ++power) {
        list.insert(list.begin(), 0);
        for (std::size_t i = 0; i + 1 < list.size(); ++i) list[i] -= 1e9 * list[i + 1];
    }
    const auto flat = withCoefficients(list);
    EXPECT_TRUE(refusedWith(orx::rcTooMany, "getExtremeValue", [&] {
        EXPECT_EQ(flat.getExtremeValue(0, std::numeric_limits<int>::max(), 0), cv::Point2d(0, 0));
    }));
    const auto long_ = withCoefficients(std::vector<double>(2'000'000, 1.0));
    EXPECT_TRUE(refusedWith(orx::rcTooMany, "getExtremeValue",
                            [&] { EXPECT_EQ(long_.getExtremeValue(0, 1, 0), cv::Point2d(0, 0)); }));
}

TEST(TPolynomial, ExtremeSearchStaysDefined) {
    const int low = std::numeric_limits<int>::min();
    const int high = std::numeric_limits<int>::max();
    const auto line = withCoefficients({0, 1});
    EXPECT_NEAR(line.getExtremeValue(0, 12'000'000, 1).y, 12e6, 0.0011) << "a long range";
    EXPECT_NEAR(line.getExtremeValue(high - 3, high, 1).x, high, 0.0011);
    EXPECT_EQ(line.getExtremeValue(low, low + 3, 0).x, static_cast<double>(low));
    const auto nothing = withCoefficients({std::nan(""), 1});
    EXPECT_EQ(nothing.getExtremeValue(2, 4, 1).x, 2);
    EXPECT_TRUE(std::isnan(nothing.getExtremeValue(2, 4, 0).y));
    // 0 * infinity at 0 and beyond 1: the numbers come before what is none.
    const auto partly = withCoefficients({0, -1e308, 1e308, 1e308});
    EXPECT_FALSE(std::isnan(partly.getExtremeValue(-30, 30, 1).y));
}

TEST(TPolynomial, ListsValuesAndSlopesOverTheSamples) {
    const orx::TPolynomial model({3, 1, 2}, {9, 1, 4}, 2);
    Samples list{{5, 5}};
    test::TraceLog trace;
    model.getPloyList(list, 1);
    ASSERT_EQ(list.size(), 20U) << "the running sum passes 3 by a rounding error";
    EXPECT_EQ(list[0].x, 1);
    EXPECT_EQ(list[2].x, 1 + 0.1 + 0.1);
    EXPECT_NEAR(list[2].y, 1.44, 1e-9);
    model.getPloySlopeList(list, 0);
    ASSERT_EQ(list.size(), 3U);
    EXPECT_NEAR(list[2].y, 6, 1e-9);
    EXPECT_EQ(trace.lines(), (Lines{"getPloyList step:0.1", "getPloyList step:1"}));

    trace.clear();
    orx::TPolynomial({3}, {9}, 0).getPloyList(list, 1);
    orx::TPolynomial().getPloySlopeList(list, 1);
    EXPECT_EQ(list.size(), 3U);
    EXPECT_EQ(trace.lines(), (Lines(2, "Points.size() < 2，强制返回")));
}

TEST(TPolynomial, ListsNeverOutgrowMemoryOrTime) {
    orx::TPolynomial model({0, 1}, {0, 1}, 1);
    for (const int digits : {8, 400, std::numeric_limits<int>::max()}) {
        Samples list{{5, 5}};
        model.getPloyList(list, digits);
        EXPECT_TRUE(list.empty()) << digits;
    }
    Samples list;
    orx::TPolynomial heavy = withCoefficients(std::vector<double>(2000, 1.0));
    heavy.points = {{0, 0}, {1000, 0}};
    EXPECT_TRUE(refusedWith(orx::rcTooMany, "getPloySlopeList", [&] { heavy.getPloySlopeList(list, 3); }));
    EXPECT_TRUE(list.empty());
    model.getPloyList(list, std::numeric_limits<int>::min());
    EXPECT_EQ(list.size(), 1U);
    // A step that no longer changes x.
    model.points = {{1e17, 0}, {1e17 + 64, 0}};
    model.getPloyList(list, 3);
    EXPECT_EQ(list.size(), 1U);
    model.points = {{0, 0}, {std::numeric_limits<double>::infinity(), 0}};
    model.getPloyList(list, 0);
    EXPECT_TRUE(list.empty());
    model.points = {{std::nan(""), 0}, {1, 0}, {2, 0}};
    model.getPloyList(list, 0);
    EXPECT_EQ(list.size(), 2U);
    model.getPloyList(model.points, 1);
    EXPECT_EQ(model.points.size(), 10U) << "the samples themselves as list";
}

TEST(TPolynomial, DrawsAcrossTheColumns) {
    cv::Mat image(20, 30, CV_8UC1, cv::Scalar(0));
    withCoefficients({2.5, 0}).draw(image, cv::Scalar(200), 1, cv::LINE_8, 0);
    EXPECT_EQ(cv::countNonZero(image.row(3)), 30) << "half a row rounds away from zero";
    EXPECT_EQ(cv::countNonZero(image), 30);
    for (const double wild : {1e300, -1e300, std::nan("")}) {
        withCoefficients({0, wild}).draw(image, cv::Scalar(1), 1, cv::LINE_8, 0);
    }
    EXPECT_NO_THROW(withCoefficients({-24.5e300, 1e300}).draw(image, cv::Scalar(1), 2, cv::LINE_8, 0));
    cv::Mat empty;
    withCoefficients({1}).draw(empty, cv::Scalar(1), 1, cv::LINE_8, 0);
    EXPECT_TRUE(empty.empty());
    cv::Mat volume(std::vector<int>{3, 4, 5}, CV_8UC1, cv::Scalar(0));
    withCoefficients({1}).draw(volume, cv::Scalar(1), 1, cv::LINE_8, 0);
    EXPECT_EQ(cv::countNonZero(volume), 0);
}

}  // namespace
