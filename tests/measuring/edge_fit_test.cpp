#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "orxFunctions/orxfunctions.h"
#include "support/plane_scene.h"
#include "tests/support/edge_scene.h"
#include "tests/support/fit_scenes.h"

namespace {

using edge_scene::Look;
using fit_scenes::kPi;
using fit_scenes::Random;
using ORXEdge::TMetricContour;

const cv::Size kSize(64, 64);

TMetricContour longestEdge(const cv::Mat& img, double sigma = 1.0) {
    std::vector<TMetricContour> edges;
    ORXEdge::TMetricOptions options;
    options.sigma = sigma;
    ORXEdge::edgesSubPixMetric(img, edges, options);
    const auto shorter = [](const TMetricContour& a, const TMetricContour& b) {
        return a.points.size() < b.points.size();
    };
    return edges.empty() ? TMetricContour() : *std::max_element(edges.begin(), edges.end(), shorter);
}

// Root mean squares of what the fits state and of how far they are off.
struct Spread {
    double stated = 0;
    double error = 0;
    void add(double deviation, double off) {
        stated += deviation * deviation;
        error += off * off;
    }
    double ratio() const { return std::sqrt(stated / error); }
};

// The whole edge, or its part in the middle of the picture with all that describes it.
TMetricContour middlePart(const TMetricContour& edge, double reach) {
    TMetricContour part;
    for (std::size_t i = 0; i < edge.points.size(); ++i) {
        if (cv::norm(edge.points[i] - cv::Point2f(32, 32)) > reach) continue;
        part.points.push_back(edge.points[i]);
        part.deviation.push_back(edge.deviation[i]);
    }
    return part;
}

TEST(EdgeFit, UncertaintiesOfWholeEdgesAreTheTrueOnes) {
    Random random(3);
    for (const double sigma : {1.0, 1.5}) {
        for (const double blur : {0.5, 1.5}) {
            Spread center;
            Spread radius;
            Spread offset;
            Spread angle;
            Spread absolute;
            constexpr int kScenes = 300;
            for (int i = 0; i < kScenes; ++i) {
                const Look look{40, 200, blur, i % 2 == 0 ? 2.0 : 6.0, i + 1};
                const cv::Point2d c(32 + random.uniform(-.5, .5), 32 + random.uniform(-.5, .5));
                const double r = random.uniform(17, 22);
                const TMetricContour disk = longestEdge(edge_scene::sharpDisk(kSize, c, r, look), sigma);
                ASSERT_TRUE(disk.closed);
                const orx::TMeasuredCircle circle = orx::fitCircleGeometric(disk, sigma);
                ASSERT_TRUE(circle.valid());
                center.add(circle.xDeviation, circle.center.x - c.x);
                center.add(circle.yDeviation, circle.center.y - c.y);
                // The optics' blur does not shrink this disk as it does a real one; the finder takes it back.
                const double taken = (blur * blur + 1.0 / 12) / (2 * r);
                radius.add(circle.radiusDeviation, circle.radius - r - taken);
                orx::TFitOptions options;
                options.absoluteDeviations = true;
                absolute.add(orx::fitCircleGeometric(disk, sigma, options).xDeviation, circle.center.x - c.x);

                const double turn = random.uniform(0, 2 * kPi);
                const cv::Point2d normal(std::cos(turn), std::sin(turn));
                const TMetricContour straight =
                    middlePart(longestEdge(edge_scene::halfPlane(kSize, c, turn, look), sigma), 25);
                const orx::TMeasuredLine line = orx::fitLineGeometric(straight, sigma);
                ASSERT_TRUE(line.valid());
                offset.add(line.offsetDeviation, (line.point - c).dot(normal));
                const cv::Point2d found = line.normal();
                angle.add(line.angleDeviation,
                          std::asin(normal.x * found.y - normal.y * found.x) * 180 / kPi);
            }
            SCOPED_TRACE(testing::Message() << "sigma " << sigma << ", blur " << blur);
            for (const Spread& spread : {center, radius, offset, angle, absolute}) {
                EXPECT_GT(spread.ratio(), 0.85);
                EXPECT_LT(spread.ratio(), 1.2);
            }
        }
    }
}

TEST(EdgeFit, EllipsesKnowTheirUncertaintyToo) {
    Random random(4);
    Spread center;
    Spread axes;
    for (int i = 0; i < 150; ++i) {
        const cv::Point2d c(32 + random.uniform(-.5, .5), 32 + random.uniform(-.5, .5));
        const double a = 24;
        const double b = 16;
        // The distance from an ellipse to second order near it, which is all that has grey levels of its own.
        const auto inside = [&](double x, double y) {
            const double u = (x - c.x) / a;
            const double v = (y - c.y) / b;
            const double f = 1 - u * u - v * v;
            const double slope = 2 * std::hypot(u / a, v / b);
            return slope > 0 ? f / slope : a;
        };
        const TMetricContour edge = longestEdge(edge_scene::draw(kSize, {40, 200, 0.7, 4, i + 1}, inside));
        ASSERT_TRUE(edge.closed);
        const orx::TMeasuredEllipse ellipse = orx::fitEllipseGeometric(edge, 1.0);
        ASSERT_TRUE(ellipse.valid());
        EXPECT_EQ(ellipse.sweep, 360);
        const orx::TMeasuredPoint middle = orx::centerOf(ellipse);
        center.add(std::sqrt(middle.covariance(0, 0)), middle.position.x - c.x);
        center.add(std::sqrt(middle.covariance(1, 1)), middle.position.y - c.y);
        EXPECT_NEAR(ellipse.semiMajor, a, 0.1);
        EXPECT_NEAR(ellipse.semiMinor, b, 0.1);
        axes.add(ellipse.angleDeviation, std::remainder(ellipse.angle, 180));
    }
    for (const Spread& spread : {center, axes}) {
        EXPECT_GT(spread.ratio(), 0.85);
        EXPECT_LT(spread.ratio(), 1.2);
    }
}

TEST(EdgeFit, ArcsAndShapesOfCalipersAreThoseOfTheScene) {
    const Look look{40, 200, 0.8, 2};
    const cv::Point2d c(31.6, 32.3);
    const cv::Mat img = edge_scene::disk(kSize, c, 20, look);
    const orx::TMeasuredArc whole = orx::fitArcGeometric(longestEdge(img), 1.0);
    ASSERT_TRUE(whole.valid());
    EXPECT_NEAR(whole.radius, 20, 0.02);
    EXPECT_EQ(whole.sweep, 360);

    orx::TCircleCaliperOptions calipers;
    calipers.count = 24;
    calipers.sweep = 90;
    const auto edges = orx::getCircleEdges(img, {32, 32}, 20, calipers);
    const orx::TMeasuredArc arc = orx::fitArcGeometric(edges);
    ASSERT_TRUE(arc.valid());
    EXPECT_NEAR(arc.radius, 20, 4 * arc.radiusDeviation);
    EXPECT_NEAR(arc.sweep, 90, 2);
    const orx::TMeasuredEllipse ellipse = orx::fitEllipseGeometric(edges);
    ASSERT_TRUE(ellipse.valid());
    EXPECT_NEAR(ellipse.center.x, c.x, 4 * ellipse.xDeviation);
    EXPECT_GT(ellipse.xDeviation, arc.xDeviation);  // a quarter tells the axes less well than the radius
    // Noise across the edge is not taken for noise in x and y, which would make the circle smaller.
    std::vector<cv::Point2d> points;
    for (const orx::TContrastEdge& edge : edges) points.push_back(edge.position);
    orx::TFitOptions normal;
    normal.noise = orx::pnNormal;
    EXPECT_EQ(orx::fitCircleGeometric(edges).radius, orx::fitCircleGeometric(points, normal).radius);

    std::vector<orx::TContrastEdge> straight;
    const cv::Mat half = edge_scene::halfPlane(kSize, c, 0.2, look);
    for (int y = 12; y < 53; y += 4) {
        for (const orx::TContrastEdge& edge : orx::getContrastEdges(half, {12, y + 0.0}, {52, y + 0.0}, 3)) {
            straight.push_back(edge);
        }
    }
    const orx::TMeasuredLine line = orx::fitLineGeometric(straight);
    ASSERT_TRUE(line.valid());
    EXPECT_EQ(line.points, 11);
    EXPECT_NEAR(line.signedDistance(c), 0, 0.05);
    EXPECT_NEAR(line.angle, 90 + 0.2 * 180 / kPi, 0.2);
}

TEST(EdgeFit, DeviationsCountAsTheyCan) {
    const TMetricContour clean = longestEdge(edge_scene::disk(kSize, {32, 32}, 20, {40, 200, 0.8, 0}));
    ASSERT_FALSE(clean.points.empty());
    TMetricContour edge = clean;
    edge.deviation.assign(edge.points.size(), 0.0F);  // a picture without noise
    orx::TFitOptions options;
    EXPECT_NEAR(orx::fitCircleGeometric(edge, 1.0).radius, 20, 0.002);
    options.absoluteDeviations = true;
    EXPECT_EQ(orx::fitCircleGeometric(edge, 1.0, options).status, orx::fsBadOptions);
    edge.deviation.assign(edge.points.size(), 0.1F);
    const double known = orx::fitCircleGeometric(edge, 1.0, options).radiusDeviation;
    // 0.1 pixel a point; a point for 2 sqrt(pi) smoothings of the outline.
    const double independent = 2 * kPi * 20 / (2 * std::sqrt(kPi) * orx::chainSmoothing(1.0));
    EXPECT_NEAR(known, 0.1 / std::sqrt(independent), 0.05 * known);
    options.deviations.assign(edge.points.size(), 0.2);  // the caller's go first
    EXPECT_NEAR(orx::fitCircleGeometric(edge, 1.0, options).radiusDeviation, 2 * known, 1e-6);
}

// Weights are the root mean squares of the deviations of up to thirty points to both sides: here one point of
// squared deviation 62 among others of 1, so that its share in a mean tells how many points the mean is of.
TEST(EdgeFit, WeightsAreMeansOverThirtyPointsToBothSides) {
    constexpr std::size_t kCount = 100;
    constexpr std::size_t kOdd = 40;
    TMetricContour edge;
    for (std::size_t i = 0; i < kCount; ++i) {
        edge.points.emplace_back(static_cast<float>(i), 0.0F);
        edge.deviation.push_back(i == kOdd ? std::sqrt(62.0F) : 1.0F);
    }
    for (const bool closed : {false, true}) {
        edge.closed = closed;
        const std::vector<double> weights = orx::edgeFitOptions(edge, 1.0).deviations;
        ASSERT_EQ(weights.size(), kCount);
        for (std::size_t i = 0; i < kCount; ++i) {
            SCOPED_TRACE(testing::Message() << (closed ? "closed, " : "open, ") << i);
            const std::size_t apart = i > kOdd ? i - kOdd : kOdd - i;
            const bool isNear = std::min(apart, closed ? kCount - apart : apart) <= 30;
            const std::size_t before = closed ? 30 : std::min<std::size_t>(30, i);
            const std::size_t after = closed ? 30 : std::min<std::size_t>(30, kCount - 1 - i);
            const double points = static_cast<double>(before + after + 1);
            EXPECT_NEAR(weights[i], isNear ? std::sqrt(1 + 61 / points) : 1.0, 1e-6);
        }
    }
}

// The mean error of the radius over places of a disk between the pixels, whose areas under it are added up.
template <class Measure>
double meanRadiusError(double radius, double blur, const Measure& measure) {
    constexpr int kPlaces = 8;
    double sum = 0;
    for (int i = 0; i < kPlaces; ++i) {
        const cv::Point2d center(32 + 0.13 * i, 32 - 0.21 * i);
        scenes::PlaneCamera camera;  // right above the plane, a pixel a millimetre
        camera.size = kSize;
        camera.fx = camera.fy = 1000;
        camera.cx = camera.cy = 0;
        camera.translation = {center.x, center.y, 1000};
        scenes::PlaneExposure exposure;
        exposure.blurSigma = blur;
        const cv::Mat levels =
            scenes::renderPlaneLevels(camera, scenes::dotGridShape(1, 1, 9, 2 * radius), exposure);
        sum += measure(scenes::withNoise(levels, 0, 1), center) - radius;
    }
    return sum / kPlaces;
}

TEST(EdgeFit, SmallDisksKeepTheirRadius) {
    for (const double blur : {0.5, 0.7}) {
        for (const double radius : {6.0, 8.0, 12.0}) {
            SCOPED_TRACE(testing::Message() << "radius " << radius << ", blur " << blur);
            const double chain =
                meanRadiusError(radius, blur, [](const cv::Mat& img, cv::Point2d /*center*/) {
                    return orx::fitCircleGeometric(longestEdge(img), 1.0).radius;
                });
            EXPECT_NEAR(chain, 0, 0.0012);
            const double across = meanRadiusError(radius, blur, [&](const cv::Mat& img, cv::Point2d center) {
                orx::TContourEdgeOptions options;
                options.noise = 1;
                const auto edges = orx::edgesAcross(img, orx::probesAlongCircle(center, radius), options);
                return orx::fitCircleGeometric(orx::pointsOf(edges)).radius;
            });
            EXPECT_NEAR(across, 0, 0.0012);
        }
    }
}

TEST(EdgeFit, WhatIsRefusedSaysWhy) {
    const TMetricContour edge = longestEdge(edge_scene::disk(kSize, {32, 32}, 20, {40, 200, 0.8, 1}));
    for (const double sigma : {0.4, 20.5, -1.0, std::nan("")}) {
        EXPECT_EQ(orx::fitCircleGeometric(edge, sigma).status, orx::fsBadOptions);
        EXPECT_EQ(orx::fitLineGeometric(edge, sigma).status, orx::fsBadOptions);
    }
    EXPECT_EQ(orx::fitArcGeometric(TMetricContour(), 1.0).status, orx::fsTooFewPoints);
    EXPECT_EQ(orx::fitCircleGeometric(std::vector<orx::TContrastEdge>()).status, orx::fsTooFewPoints);
    orx::TFitOptions options;
    options.deviations = {1, 2};
    EXPECT_EQ(orx::fitCircleGeometric(edge, 1.0, options).status, orx::fsBadDeviations);
}

}  // namespace
