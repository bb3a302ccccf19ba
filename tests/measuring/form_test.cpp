#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/measuring/form_scenes.h"

namespace {

using namespace form_scenes;
using testing::SizeIs;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Range {
    double least = std::numeric_limits<double>::infinity();
    double most = 0;
    double width() const { return most - least; }
};

Range distancesFrom(cv::Point2d center, const Points& points) {
    Range range;
    for (const cv::Point2d& p : points) {
        range.least = std::min(range.least, cv::norm(p - center));
        range.most = std::max(range.most, cv::norm(p - center));
    }
    return range;
}

// Every centre that is as far from a pair as it is from another pair or from a third point.
template <class Visit>
void visitCenters(const Points& points, Visit visit) {
    const std::size_t n = points.size();
    struct Line {
        cv::Point2d normal;
        double at;
    };
    std::vector<Line> bisectors;
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = i + 1; j < n; ++j) {
            const cv::Point2d side = points[j] - points[i];
            bisectors.push_back({side, side.dot(points[i] + points[j]) / 2});
        }
    }
    for (std::size_t i = 0; i < bisectors.size(); ++i) {
        for (std::size_t j = i + 1; j < bisectors.size(); ++j) {
            const double det = bisectors[i].normal.cross(bisectors[j].normal);
            if (std::abs(det) < 1e-9) continue;
            const cv::Point2d u = bisectors[i].normal;
            const cv::Point2d v = bisectors[j].normal;
            visit(cv::Point2d(bisectors[i].at * v.y - bisectors[j].at * u.y,
                              bisectors[j].at * u.x - bisectors[i].at * v.x) /
                  det);
        }
    }
}

// Sets of many kinds: clouds, rings, arcs, grids with ties.
Points smallSet(int kind, Random& random) {
    Points points;
    const int count = random.integer(5, 12);
    for (int i = 0; i < count; ++i) {
        const double angle = random.uniform(0, kind == 2 ? 1.5 : 2 * kPi);
        const double r = 50 + random.normal(kind == 1 ? 0.5 : 0.1);
        if (kind == 0) points.emplace_back(random.uniform(0, 100), random.uniform(0, 100));
        if (kind == 1 || kind == 2) points.emplace_back(r * std::cos(angle), r * std::sin(angle));
        if (kind == 3) points.emplace_back(random.integer(0, 4), random.integer(0, 3));
    }
    return points;
}

TEST(MinimumZoneCircle, NoOtherRingOfASmallSetIsNarrower) {
    Random random(1);
    int answers = 0;
    for (int i = 0; i < 120; ++i) {
        const Points points = smallSet(i % 4, random);
        const orx::TRoundness ring = orx::minimumZoneCircle(points);
        double least = std::numeric_limits<double>::infinity();
        visitCenters(points,
                     [&](cv::Point2d c) { least = std::min(least, distancesFrom(c, points).width()); });
        const orx::TStraightness strip = orx::minimumZoneLine(points);
        SCOPED_TRACE(testing::Message() << "set " << i << ", brute force " << least);
        if (!ring.valid()) {
            // A strip, or what is nearly one, is narrower.
            EXPECT_TRUE(ring.status == orx::fsArcTooShort || ring.status == orx::fsCollinear) << ring.status;
            EXPECT_LE(strip.value, least + 1e-3);
            continue;
        }
        ++answers;
        EXPECT_NEAR(ring.value, least, 1e-9);
        const Range range = distancesFrom(ring.center, points);
        EXPECT_NEAR(range.least, ring.innerRadius, 1e-9);
        EXPECT_NEAR(range.most, ring.outerRadius, 1e-9);
    }
    EXPECT_GT(answers, 60);
}

TEST(BoundingCircles, NoOtherOfASmallSetIsBetter) {
    Random random(2);
    int inscribed = 0;
    for (int i = 0; i < 120; ++i) {
        SCOPED_TRACE(i);
        const Points points = smallSet(i % 4, random);
        double smallest = std::numeric_limits<double>::infinity();
        double largest = 0;
        std::vector<cv::Point2f> hull;
        cv::convexHull(std::vector<cv::Point2f>(points.begin(), points.end()), hull);
        const auto visit = [&](cv::Point2d c) {
            const Range range = distancesFrom(c, points);
            smallest = std::min(smallest, range.most);
            if (cv::pointPolygonTest(hull, c, false) >= 0) largest = std::max(largest, range.least);
        };
        visitCenters(points, visit);
        for (const cv::Point2d& p : points) {
            for (const cv::Point2d& q : points) visit((p + q) / 2.0);
        }
        const orx::TRoundness around = orx::minimumCircumscribedCircle(points);
        ASSERT_TRUE(around.valid());
        EXPECT_NEAR(around.outerRadius, smallest, 1e-9);
        const orx::TRoundness within = orx::maximumInscribedCircle(points);
        if (within.valid()) {
            ++inscribed;
            EXPECT_NEAR(within.innerRadius, largest, 1e-9);
            EXPECT_NEAR(distancesFrom(within.center, points).least, within.innerRadius, 1e-9);
        }
    }
    EXPECT_GT(inscribed, 20);
}

TEST(MinimumZoneLine, NoOtherStripOfASmallSetIsNarrower) {
    Random random(3);
    for (int i = 0; i < 200; ++i) {
        const Points points = smallSet(i % 4, random);
        double least = std::numeric_limits<double>::infinity();
        for (const cv::Point2d& p : points) {
            for (const cv::Point2d& q : points) {
                if (p == q) continue;
                const cv::Point2d normal = cv::Point2d(p.y - q.y, q.x - p.x) / cv::norm(p - q);
                double low = 0;
                double high = 0;
                for (const cv::Point2d& r : points) {
                    low = std::min(low, (r - p).dot(normal));
                    high = std::max(high, (r - p).dot(normal));
                }
                least = std::min(least, high - low);
            }
        }
        const orx::TStraightness strip = orx::minimumZoneLine(points);
        ASSERT_TRUE(strip.valid());
        EXPECT_NEAR(strip.value, least, 1e-9);
        const cv::Point2d normal(-strip.direction.y, strip.direction.x);
        for (const cv::Point2d& p : points) {
            EXPECT_LE(std::abs((p - strip.point).dot(normal)), strip.value / 2 + 1e-9);
            const double along = (p - strip.point).dot(strip.direction);
            EXPECT_TRUE(along >= strip.from - 1e-9 && along <= strip.to + 1e-9);
        }
    }
}

double angleAround(cv::Point2d center, cv::Point2d p) { return std::atan2(p.y - center.y, p.x - center.x); }

TEST(Roundness, ZonesOfManyPointsTouchThemAsTheTheorySays) {
    Random random(4);
    for (const int count : {500, 20000}) {
        Lobed part;
        part.count = count;
        part.lobes = 5;
        part.height = 0.4;
        Points points = lobed(part, whiteNoise(count, 0.1, random));
        points.insert(points.end(), points.begin(), points.begin() + 100);  // repeated ones change nothing
        const orx::TRoundness ring = orx::minimumZoneCircle(points);
        ASSERT_TRUE(ring.valid());
        ASSERT_THAT(ring.contacts, SizeIs(4));
        const auto at = [&](int i) { return points[static_cast<std::size_t>(ring.contacts[i])]; };
        for (const int i : {0, 1}) EXPECT_NEAR(cv::norm(at(i) - ring.center), ring.outerRadius, 1e-9);
        for (const int i : {2, 3}) EXPECT_NEAR(cv::norm(at(i) - ring.center), ring.innerRadius, 1e-9);
        // Two outside and two inside in turn: the chords cross.
        const auto side = [&](int a, int b, int c) { return (at(b) - at(a)).cross(at(c) - at(a)); };
        EXPECT_LT(side(0, 1, 2) * side(0, 1, 3), 0);
        const Range range = distancesFrom(ring.center, points);
        EXPECT_NEAR(range.width(), ring.value, 1e-9);

        const orx::TRoundness around = orx::minimumCircumscribedCircle(points);
        const orx::TRoundness within = orx::maximumInscribedCircle(points);
        for (const orx::TRoundness& circle : {around, within}) {
            const bool out = &circle == &around || circle.outerRadius == around.outerRadius;
            ASSERT_TRUE(circle.valid());
            ASSERT_THAT(circle.contacts, SizeIs(3));
            std::vector<double> angles;
            for (const int i : circle.contacts) {
                const cv::Point2d p = points[static_cast<std::size_t>(i)];
                angles.push_back(angleAround(circle.center, p));
                EXPECT_NEAR(cv::norm(p - circle.center), out ? circle.outerRadius : circle.innerRadius, 1e-9);
            }
            std::sort(angles.begin(), angles.end());  // no gap of half a turn: they hold it
            EXPECT_LT(angles[1] - angles[0], kPi);
            EXPECT_LT(angles[2] - angles[1], kPi);
            EXPECT_LT(angles[0] + 2 * kPi - angles[2], kPi);
            EXPECT_GE(circle.value, ring.value);
        }
        EXPECT_NEAR(distancesFrom(around.center, points).most, around.outerRadius, 1e-9);
        EXPECT_NEAR(distancesFrom(within.center, points).least, within.innerRadius, 1e-9);
    }
}

TEST(Roundness, KnownFiguresGiveWhatGeometrySays) {
    // A square's corners and the middles of its sides.
    const Points square = {{1, 1}, {-1, 1}, {-1, -1}, {1, -1}, {1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    const orx::TRoundness ring = orx::minimumZoneCircle(square);
    EXPECT_NEAR(ring.value, std::sqrt(2.0) - 1, 1e-14);
    EXPECT_NEAR(cv::norm(ring.center), 0, 1e-14);
    EXPECT_NEAR(orx::minimumCircumscribedCircle(square).outerRadius, std::sqrt(2.0), 1e-14);
    EXPECT_NEAR(orx::maximumInscribedCircle(square).innerRadius, 1, 1e-14);
    EXPECT_NEAR(orx::minimumZoneLine(square).value, 2, 1e-14);
    // A perfect circle, a perfect arc far away, a perfect line.
    Lobed circle;
    circle.count = 2000;
    EXPECT_NEAR(orx::minimumZoneCircle(lobed(circle, {})).value, 0, 1e-12);
    circle.center = {8e5, -3e5};
    circle.sweep = 0.1;
    const orx::TRoundness arc = orx::minimumZoneCircle(lobed(circle, {}));
    ASSERT_TRUE(arc.valid());
    EXPECT_NEAR(arc.value, 0, 1e-9);
    EXPECT_NEAR(arc.outerRadius, 80, 1e-3);
    Points line;
    for (int i = 0; i < 50; ++i) line.emplace_back(1e6 + 3 * i, 1e6 + 4 * i);
    const orx::TStraightness strip = orx::minimumZoneLine(line);
    EXPECT_NEAR(strip.value, 0, 1e-9);
    EXPECT_NEAR(strip.angle, 53.13010235415598, 1e-9);
    EXPECT_NEAR(strip.to - strip.from, 245, 1e-8);
    EXPECT_EQ(orx::minimumZoneLine(std::vector<cv::Point2f>{{0, 0}, {4, 0}, {2, 1}}).value, 1);
}

TEST(Form, WhatIsRefusedSaysWhy) {
    using namespace orx;
    const Points square = {{0, 0}, {9, 0}, {9, 9}, {0, 9}};
    const auto statuses = [](const Points& points, const TFormOptions& options = {}) {
        return std::vector<int>{
            minimumZoneCircle(points, options).status, minimumCircumscribedCircle(points, options).status,
            maximumInscribedCircle(points, options).status, minimumZoneLine(points, options).status};
    };
    const auto all = [](int status) { return std::vector<int>(4, status); };
    EXPECT_EQ(statuses(square), all(fsOk));
    EXPECT_EQ(statuses({}), all(fsTooFewPoints));
    EXPECT_EQ(statuses({{1, 1}}), all(fsTooFewPoints));
    EXPECT_EQ(statuses({{0, 0}, {9, 0}, {kNan, 9}, {0, 9}}), all(fsNotFinite));
    EXPECT_EQ(statuses({{0, 0}, {9, 0}, {9, INFINITY}, {0, 9}}), all(fsNotFinite));
    EXPECT_EQ(statuses({{0, 0}, {9, 0}, {2e9, 9}, {0, 9}}), all(fsTooLarge));
    EXPECT_EQ(statuses(Points(10, {3, 4})), all(fsCoincident));
    Points line;
    for (int i = 0; i < 30; ++i) line.emplace_back(0.1 * i, 0.3 * i);
    EXPECT_EQ(statuses(line), (std::vector<int>{fsCollinear, fsOk, fsCollinear, fsOk}));
    Lobed arc;
    arc.sweep = 3;
    EXPECT_EQ(maximumInscribedCircle(lobed(arc, {})).status, fsArcTooShort);
    for (const double bad : {-1.0, kNan, 1.0 / 0.0}) {
        EXPECT_EQ(statuses(square, {bad}), all(fsBadOptions));
    }
    EXPECT_EQ(statuses(square, {1, pnEdgeChain, 0.1}), all(fsBadOptions));
    EXPECT_EQ(statuses(square, {1, TPointNoise(7)}), all(fsBadOptions));
}

TEST(FreedForm, ADentOfAFewPointsIsNotTakenForNoise) {
    Random random(31);
    for (const int count : {300, 9000}) {
        double freed = 0;
        for (int i = 0; i < 10; ++i) {
            Lobed part;
            part.count = count;
            std::vector<double> noise = whiteNoise(count, 0.02, random);
            for (std::size_t k = 70; k < 73; ++k) noise[k] -= 0.5;
            freed += orx::minimumZoneCircle(lobed(part, noise), {0.02}).freed / 10;
        }
        // The deepest of three points of the dent is 0.85 noises deeper than it.
        EXPECT_NEAR(freed, 0.5 + 0.85 * 0.02, 0.02) << count;
    }
}

TEST(FreedForm, TheSameSeedGivesTheSameAnswer) {
    Random random(37);
    const Points points = lobed({}, whiteNoise(400, 0.1, random));
    orx::TFormOptions options;
    options.noise = 0.1;
    const orx::TRoundness first = orx::minimumZoneCircle(points, options);
    EXPECT_EQ(first.deviation, orx::minimumZoneCircle(points, options).deviation);
    options.seed = 2;
    EXPECT_NE(first.deviation, orx::minimumZoneCircle(points, options).deviation);
    options.noise = 0;
    const orx::TRoundness plain = orx::minimumZoneCircle(points, options);
    EXPECT_EQ(plain.freed, plain.value);
    EXPECT_EQ(plain.deviation, 0);
}

}  // namespace
