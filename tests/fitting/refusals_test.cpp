// Every reason for which the fits, searches and curves refuse, as lastRefusal() tells it. Drawings:
// drawing_test.cpp.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/refusal_check.h"

namespace {

using orx::test::notRefused;
using orx::test::refusedWith;
using Pixels = std::vector<cv::Point>;
using Points = std::vector<cv::Point2d>;

struct Refused {
    orx::TRefusalCode code;
    const char* function;
    std::function<void()> call;
};

void expectRefused(const std::vector<Refused>& calls) {
    for (std::size_t i = 0; i < calls.size(); ++i)
        EXPECT_TRUE(refusedWith(calls[i].code, calls[i].function, calls[i].call)) << "call " << i;
}

const double kNan = std::nan("");
const Pixels kSquare{{0, 0}, {10, 0}, {10, 10}, {0, 10}};
const Pixels kRow{{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}, {6, 0}};

Points ring(int count, double radius, double turn = 360) {
    Points points;
    for (int i = 0; i < count; ++i) {
        const double angle = turn * CV_PI / 180 * i / count;
        points.emplace_back(50 + radius * std::cos(angle), 40 + 0.6 * radius * std::sin(angle));
    }
    return points;
}

std::vector<cv::Point2f> floats(const Points& points) { return {points.begin(), points.end()}; }

Points circle(int count) {
    Points points = ring(count, 20);
    for (cv::Point2d& p : points) p.y = 40 + (p.y - 40) / 0.6;
    return points;
}

Pixels pixels(const Points& points) { return {points.begin(), points.end()}; }

TEST(FittingRefusals, Geometry) {
    cv::Point3d out;
    Pixels none;
    expectRefused({
        {orx::rcDegenerate, "threePoints2circle2",
         [&] {
             orx::threePoints2circle2({0, 0}, {1, 1}, {5, 5}, out);
         }},
        {orx::rcTooFew, "fitCircle",
         [&] {
             orx::fitCircle({{0, 0}, {1, 2}}, out);
         }},
        {orx::rcTooFew, "sortPolygonVertexs", [&] { orx::sortPolygonVertexs(none); }},
        {orx::rcTooFew, "calcPolygonArea",
         [] {
             orx::calcPolygonArea({{0, 0}, {1, 2}});
         }},
    });
    EXPECT_EQ(orx::lastRefusal().text, "calcPolygonArea: 2 points; at least 3 are taken");
    EXPECT_TRUE(notRefused([&] {
        orx::threePoints2circle2({0, 0}, {10, 0}, {0, 10}, out);
        orx::fitCircle(kSquare, out);
        orx::calcPolygonArea(kSquare);
        orx::threePoints2circle({0, 0}, {1, 1}, {5, 5}, out);  // no guard there
    }));
}

TEST(FittingRefusals, PointLists) {
    Pixels points = kSquare;
    expectRefused({
        {orx::rcTooMany, "deletePointsInList",
         [&] {
             orx::deletePointsInList(points, {0, 1, 2, 3, 3});
         }},
        {orx::rcOption, "deletePartPoints", [&] { orx::deletePartPoints(points, 0); }},
        {orx::rcTooFew, "deletePartPoints", [&] { orx::deletePartPoints(points, 3); }},
    });
    EXPECT_EQ(points, kSquare);
    EXPECT_TRUE(notRefused([&] {
        orx::deletePointsInList(points, {});
        orx::deletePointsInList(points, {3, 99});
        orx::deleteImageSidePoints(points, {100, 100}, 0);
        orx::deletePartPoints(points, 1);
    }));
    EXPECT_EQ(points.size(), 2U);
}

TEST(FittingRefusals, ClassicSearches) {
    Pixels list;
    Pixels rest;
    std::vector<int> indices;
    orx::TRansacLine line({{1, 1}}, 100, 100, 1);
    orx::TRansacLine idle(kRow, 0, 100, 1);
    orx::TRansacLine steep(kRow, 100, 100, 1);
    steep.setAngleLimit(80, 90, orx::ANGLE_ABS);
    orx::TRansacCircle two({{0, 0}, {5, 5}}, 100, 100, 1);
    orx::TRansacCircle idleCircle(kSquare, 0, 100, 1);
    orx::TRansacCircle flat(kRow, 100, 100, 1);
    expectRefused({
        {orx::rcTooFew, "doRansac", [] { orx::TRansacLine({}, 100, 100, 1).doRansac(); }},
        {orx::rcTooFew, "doRansac", [&] { line.doRansac(); }},
        {orx::rcOption, "doRansac", [&] { idle.doRansac(); }},
        {orx::rcNoResult, "doRansac", [&] { steep.doRansac(); }},
        {orx::rcNotReady, "getResultLine", [&] { steep.getResultLine(); }},
        {orx::rcNotReady, "getLineList", [&] { steep.getLineList(list); }},
        {orx::rcNotReady, "getIdxList", [&] { steep.getIdxList(indices); }},
        {orx::rcTooFew, "doRansac", [&] { two.doRansac(); }},
        {orx::rcOption, "doRansac", [&] { idleCircle.doRansac(); }},
        {orx::rcNoResult, "doRansac", [&] { flat.doRansac(); }},
        {orx::rcNotReady, "getCircleIdxList", [&] { flat.getCircleIdxList(indices); }},
        {orx::rcTooFew, "getWantedLine",
         [&] {
             orx::getWantedLine({{0, 0}, {1, 1}}, list, rest, orx::wlTop, 2, true);
         }},
        {orx::rcOption, "getWantedLine",
         [&] { orx::getWantedLine(kRow, list, rest, static_cast<orx::TWantLineType>(7), 3, true); }},
        {orx::rcNoResult, "getWantedLine",
         [&] { orx::getWantedLine(kRow, list, rest, orx::wlLeft, 3, true); }},
    });
    EXPECT_EQ(rest, kRow);
    EXPECT_TRUE(notRefused([&] {
        orx::TRansacLine found(kRow, 100, 100, 1);
        EXPECT_TRUE(found.doRansac());
        EXPECT_TRUE(found.getResultLine().valid);
        found.getLineList(list);
        found.getIdxList(indices);
        orx::TRansacCircle round(kSquare, 100, 100, 1);
        EXPECT_TRUE(round.doRansac().valid);
        round.getCircleIdxList(indices);
        EXPECT_TRUE(orx::getWantedLine(kRow, list, rest, orx::wlTop, 3, true));
    }));
}

TEST(FittingRefusals, Estimators) {
    TCircleFit_Ransac ransac;
    TCircleFit_Robust robust;
    TCircleFit_WeightedLeastSquares weighted;
    TLineFit_Ransac line;
    TLineFit_Robust robustLine;
    const auto fitRobustLine = [&] { robustLine.fit(); };
    const auto ransacOf = [&](Pixels points, int trials) {
        return [&ransac, points, trials] {
            ransac.setPoints(points);
            ransac.setParams({100, 1, 1, static_cast<double>(trials), 10});
            EXPECT_FALSE(ransac.fit().valid);
        };
    };
    const auto lineOf = [&](Pixels points, int sample, int trials, double angle) {
        return [&line, points, sample, trials, angle] {
            line.setPoints(points);
            line.setParams({angle, 1, static_cast<double>(sample), 5});
            line.setSearchLimits(trials, 100);
            EXPECT_FALSE(line.fit().valid);
        };
    };
    expectRefused({
        {orx::rcSizesDiffer, "setParams",
         [&] {
             ransac.setParams({1, 2, 3, 4});
         }},
        {orx::rcSizesDiffer, "setParams",
         [&] {
             robust.setParams({1, 2});
         }},
        {orx::rcSizesDiffer, "setParams",
         [&] {
             weighted.setParams({1, 2, 3});
         }},
        {orx::rcSizesDiffer, "setParams", [&] { line.setParams({}); }},
        {orx::rcSizesDiffer, "setParams", [&] { robustLine.setParams({1}); }},
        {orx::rcTooFew, "fit", ransacOf({{0, 0}, {1, 1}}, 50)},
        {orx::rcOption, "fit", ransacOf(kSquare, 0)},
        {orx::rcNoResult, "fit", ransacOf(kRow, 50)},
        {orx::rcNoResult, "fit",
         [&] {
             robust.setPoints(pixels(circle(40)));
             robust.setParams({1, 1e6, 4});
             EXPECT_FALSE(robust.fit().valid);
         }},
        {orx::rcTooFew, "fit", lineOf({{0, 0}, {1, 0}, {2, 0}}, 2, 50, 0)},
        {orx::rcOption, "fit", lineOf(kRow, 4, 50, 0)},
        {orx::rcOption, "fit", lineOf(kRow, 2, 0, 0)},
        {orx::rcNoResult, "fit", lineOf(kRow, 2, 50, 45)},
        {orx::rcTooFew, "fit", fitRobustLine},
    });
    EXPECT_TRUE(notRefused([&] {
        orxFit::TCircleFitFactory circles;
        circles.createFitType_ransacCircle(kSquare, 100, 1, 2, 50, 20);
        EXPECT_TRUE(circles.fitter->fit().valid);
        orxFit::TLineFitFactory lines;
        lines.createFitType_ransacLine(kRow, 0, 1, 2, 5);
        EXPECT_TRUE(lines.fitter->fit().valid);
        robustLine.setPoints(kRow);
        EXPECT_TRUE(robustLine.fit().valid);
        weighted.setPoints(kSquare);
        EXPECT_TRUE(weighted.fit().valid);
    }));
}

TEST(FittingRefusals, Ellipses) {
    const auto good = floats(ring(60, 20));
    auto odd = good;
    odd[7].y = std::numeric_limits<float>::infinity();
    std::vector<cv::Point2f> row;
    for (int i = 0; i < 20; ++i) row.emplace_back(static_cast<float>(i), 3.0F);
    const auto norm = [](const std::vector<cv::Point2f>& points, double most, double ratio) {
        return [=] { EXPECT_EQ(orxFit::fitEllipseNorm(points, 1, ratio, 1, most, 1, most).valid, 0); };
    };
    const auto ransac = [](const std::vector<cv::Point2f>& points, double trials, double most) {
        return
            [=] { EXPECT_EQ(orxFit::fitEllipseRansac(points, 1, trials, 0.5, 1, most, 1, most).valid, 0); };
    };
    expectRefused({
        {orx::rcTooFew, "fitEllipseNorm", norm({good.begin(), good.begin() + 5}, 100, 0.5)},
        {orx::rcNotFinite, "fitEllipseNorm", norm(odd, 100, 0.5)},
        {orx::rcDegenerate, "fitEllipseNorm", norm(row, 100, 0.5)},
        {orx::rcNoResult, "fitEllipseNorm", norm(good, 30, 0.5)},
        {orx::rcNoResult, "fitEllipseNorm", norm(good, 100, 1)},
        {orx::rcTooFew, "fitEllipseRansac", ransac({good.begin(), good.begin() + 5}, 50, 100)},
        {orx::rcNotFinite, "fitEllipseRansac", ransac(odd, 50, 100)},
        {orx::rcOption, "fitEllipseRansac", ransac(good, 0, 100)},
        {orx::rcOption, "fitEllipseRansac", ransac(good, kNan, 100)},
        {orx::rcNoResult, "fitEllipseRansac", ransac(good, 50, 30)},
    });
    EXPECT_TRUE(notRefused([&] {
        EXPECT_EQ(orxFit::fitEllipseNorm(good, 1, 0.5, 1, 100, 1, 100).valid, 1);
        EXPECT_EQ(orxFit::fitEllipseRansac(good, 1, 50, 0.5, 1, 100, 1, 100).valid, 1);
    }));
}

// Calls of one measuring fit, and what each must say beside its status.
template <class Fit>
void expectStatusTold(const char* function, const Points& good, Fit fit) {
    Points odd = good;
    odd[3].x = kNan;
    Points huge = good;
    huge[2].y = 2e9;
    orx::TFitOptions badLoss;
    badLoss.loss = static_cast<orx::TFitLoss>(9);
    orx::TFitOptions badDeviations;
    badDeviations.deviations = {1};
    orx::TFitOptions impatient;
    const auto call = [&](const Points& points, const orx::TFitOptions& options) {
        return [&, points, options] {
            const orx::TFitStatus status = fit(points, options);
            EXPECT_EQ(orx::lastRefusal().text, std::string(function) + ": " + orx::fitStatusText(status));
        };
    };
    expectRefused({
        {orx::rcTooFew, function, call({good[0], good[1]}, {})},
        {orx::rcNotFinite, function, call(odd, {})},
        {orx::rcTooMany, function, call(huge, {})},
        {orx::rcOption, function, call(good, badLoss)},
        {orx::rcOption, function, call(good, badDeviations)},
        {orx::rcDegenerate, function, call(Points(20, {3, 4}), {})},
    });
    EXPECT_TRUE(notRefused([&] { EXPECT_EQ(fit(good, {}), orx::fsOk); })) << function;
}

Points row() {
    Points points;
    for (int i = 0; i < 20; ++i) points.emplace_back(i, 5 + (i % 2 == 0 ? 0.1 : -0.1));
    return points;
}

TEST(FittingRefusals, MeasuringFitsTellTheirStatus) {
    using Options = orx::TFitOptions;
    expectStatusTold("fitLineGeometric", row(), [](const Points& points, const Options& options) {
        return orx::fitLineGeometric(points, options).status;
    });
    expectStatusTold("fitCircleGeometric", circle(30), [](const Points& points, const Options& options) {
        return orx::fitCircleGeometric(points, options).status;
    });
    expectStatusTold("fitArcGeometric", circle(30), [](const Points& points, const Options& options) {
        return orx::fitArcGeometric(floats(points), options).status;
    });
    expectStatusTold("fitEllipseGeometric", ring(40, 20), [](const Points& points, const Options& options) {
        return orx::fitEllipseGeometric(points, options).status;
    });
    Points parabola;
    for (int i = -20; i <= 20; ++i) parabola.emplace_back(i, i * i / 10.0);
    const orx::TMeasuredEllipse none;
    expectRefused({
        {orx::rcDegenerate, "fitCircleGeometric", [] { orx::fitCircleGeometric(row()); }},
        {orx::rcNoResult, "fitEllipseGeometric",
         [&] { EXPECT_NE(orx::fitEllipseGeometric(parabola).status, orx::fsOk); }},
        {orx::rcNotReady, "slopeForm", [] { orx::TMeasuredLine().slopeForm(); }},
        {orx::rcNotReady, "signedDistance",
         [&] {
             none.signedDistance({1, 2});
         }},
        {orx::rcNotReady, "nearest",
         [&] {
             none.nearest({1, 2});
         }},
        {orx::rcOption, "coverageFactor", [] { orx::coverageFactor(1, 10); }},
        {orx::rcOption, "coverageFactor", [] { orx::coverageFactor(0.95, 0); }},
    });
    EXPECT_TRUE(notRefused([&] {
        orx::fitLineGeometric(row()).slopeForm();
        orx::fitEllipseGeometric(ring(40, 20)).signedDistance({1, 2});
        orx::coverageFactor(0.95, 10);
    }));
}

TEST(FittingRefusals, ConsensusSearchesTellTheirStatus) {
    const auto with = [](const orx::TFitOptions& fit) {
        orx::TConsensusOptions options;
        options.fit.deviations = fit.deviations;
        if (fit.loss != orx::flLeastSquares) options.confidence = 2;
        return options;
    };
    using Options = orx::TFitOptions;
    expectStatusTold("findLine", row(), [&](const Points& points, const Options& options) {
        return orx::findLine(points, with(options)).status;
    });
    expectStatusTold("findCircle", circle(60), [&](const Points& points, const Options& options) {
        return orx::findCircle(points, with(options)).status;
    });
    expectStatusTold("findEllipse", ring(60, 20), [&](const Points& points, const Options& options) {
        return orx::findEllipse(points, with(options)).status;
    });
    orx::TConsensusOptions demanding;
    demanding.minPoints = 1000;
    expectRefused({
        {orx::rcOption, "findLines", [] { orx::findLines(row(), {}, -1); }},
        {orx::rcOption, "findCircles", [] { orx::findCircles(floats(circle(60)), {}, -1); }},
        {orx::rcNoResult, "findLines", [&] { orx::findLines(row(), demanding); }},
        {orx::rcNoResult, "findCircles", [&] { orx::findCircles(circle(60), demanding); }},
        {orx::rcTooFew, "findCircles", [&] { orx::findCircles(Points{}, demanding); }},
    });
    EXPECT_TRUE(notRefused([] {
        EXPECT_EQ(orx::findLines(row()).size(), 1U);
        EXPECT_EQ(orx::findCircles(circle(60)).size(), 1U);
    }));
}

TEST(FittingRefusals, Curves) {
    orx::TPolynomial empty;
    orx::TPolynomial line({0, 1, 2}, {1, 3, 5}, 1);
    orx::TPolynomial nowhere = line;
    nowhere.points = {{kNan, 0}, {kNan, 1}};
    orx::TSplineCurve chain;
    const orx::TSplineCurve none;
    Points list;
    std::vector<double> parameters;
    cv::Mat matrix;
    double a = 0;
    double b = 0;
    double c = 0;
    expectRefused({
        {orx::rcDegenerate, "fit",
         [&] {
             empty.fit({2, 2}, {1, 5}, 1);
         }},
        {orx::rcOption, "fit",
         [&] {
             empty.fit({1, 2}, {1, 5}, 201);
         }},
        {orx::rcOption, "fit",
         [&] {
             empty.fit({1, 2}, {1, 5}, -1);
         }},
        {orx::rcSizesDiffer, "fit",
         [&] {
             line.fit({1, 2}, {1, 5, 6}, 1);
         }},
        {orx::rcNotReady, "getY", [] { orx::TPolynomial().getY(1); }},
        {orx::rcNotReady, "getSlope", [] { orx::TPolynomial().getSlope(1); }},
        {orx::rcNotReady, "getFitParas", [&] { orx::TPolynomial().getFitParas(parameters); }},
        {orx::rcNotReady, "getFitParas", [&] { orx::TPolynomial().getFitParas(matrix); }},
        {orx::rcNotReady, "getError", [&] { orx::TPolynomial().getError(a, b, c); }},
        {orx::rcOption, "getExtremeValue", [&] { line.getExtremeValue(3, 3, 1); }},
        {orx::rcTooFew, "getPloyList", [&] { orx::TPolynomial().getPloyList(list, 1); }},
        {orx::rcTooFew, "getPloySlopeList", [&] { orx::TPolynomial().getPloySlopeList(list, 1); }},
        {orx::rcTooMany, "getPloyList", [&] { line.getPloyList(list, 8); }},
        {orx::rcNotFinite, "getPloyList", [&] { nowhere.getPloyList(list, 0); }},
        {orx::rcOption, "fit",
         [&] {
             chain.fit({1, 2}, {1, 5}, 201);
         }},
        {orx::rcTooFew, "fit",
         [&] {
             chain.fit({1, 2}, {1, 5}, 2);
         }},
        {orx::rcSizesDiffer, "fit",
         [&] {
             chain.fit({1, 2}, {1, 5, 6}, 1);
         }},
        {orx::rcNotReady, "getY", [&] { none.getY(1); }},
        {orx::rcNotReady, "getExtremeValue", [&] { none.getExtremeValue(1); }},
        {orx::rcNotReady, "getSplineList", [&] { none.getSplineList(list, 1); }},
    });
    chain.fit({0, 1, 2, 3}, {0, 1, 4, 9}, 2);
    expectRefused({
        {orx::rcOutside, "getY", [&] { chain.getY(3.5); }},
        {orx::rcOption, "getExtremeValue", [&] { chain.getExtremeValue(2.0, 2.0, 1); }},
        {orx::rcNotFinite, "getExtremeValue", [&] { chain.getExtremeValue(0.0, kNan, 1); }},
        {orx::rcTooMany, "getSplineList", [&] { chain.getSplineList(list, 9); }},
    });
    chain.segments.front().startX = kNan;
    expectRefused({{orx::rcNotFinite, "getSplineList", [&] { chain.getSplineList(list, 1); }}});
    chain.segments.front().startX = 0;
    EXPECT_TRUE(notRefused([&] {
        EXPECT_TRUE(line.fit({0, 1, 2}, {1, 3, 5}, 0));
        line.getSlope(1);
        line.getError(a, b, c);
        line.getExtremeValue(0, 5, 1);
        line.getPloyList(list, 1);
        chain.getY(2.5);
        chain.getExtremeValue(1);
        chain.getSplineList(list, 1);
    }));
}

}  // namespace
