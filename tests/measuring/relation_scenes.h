// Lines and circles fitted to noisy points whose true relations are known.
#ifndef TESTS_MEASURING_RELATION_SCENES_H
#define TESTS_MEASURING_RELATION_SCENES_H

#include <cmath>
#include <functional>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/fit_scenes.h"

namespace relation_scenes {

using fit_scenes::kPi;
using fit_scenes::Random;
using orx::TMeasuredCircle;
using orx::TMeasuredLine;
using orx::TMeasuredPoint;
using orx::TMeasuredValue;

constexpr double kNoise = 0.1;

inline TMeasuredLine lineThrough(cv::Point2d from, cv::Point2d to, Random& random, double noise = kNoise) {
    std::vector<cv::Point2d> points;
    const int count = 40;
    for (int i = 0; i < count; ++i) {
        points.push_back(from + (to - from) * (i / (count - 1.0)) +
                         cv::Point2d(random.normal(noise), random.normal(noise)));
    }
    return orx::fitLineGeometric(points);
}

inline TMeasuredCircle circleAround(cv::Point2d center, double radius, double sweep, Random& random,
                                    double noise = kNoise) {
    std::vector<cv::Point2d> points;
    const int count = 60;
    for (int i = 0; i < count; ++i) {
        const double angle = 1 + sweep * i / count;
        points.push_back(center + radius * cv::Point2d(std::cos(angle), std::sin(angle)) +
                         cv::Point2d(random.normal(noise), random.normal(noise)));
    }
    return orx::fitCircleGeometric(points);
}

// Two nearly parallel edges 2 degrees apart, a third across; two circles apart, one within the first and one
// that crosses it.
struct Scene {
    TMeasuredLine left;
    TMeasuredLine right;
    TMeasuredLine across;
    TMeasuredCircle big;
    TMeasuredCircle small;
    TMeasuredCircle inner;
    TMeasuredCircle crossing;

    explicit Scene(Random& random, double noise = kNoise)
        : left(lineThrough({10, 0}, {10, 100}, random, noise)),
          right(lineThrough({40, 120}, {40 + 100 * std::tan(2 * kPi / 180), 20}, random, noise)),
          across(lineThrough({0, 50}, {100, 60}, random, noise)),
          big(circleAround({50, 50}, 30, 4, random, noise)),
          small(circleAround({95, 70}, 15, 5, random, noise)),
          inner(circleAround({53, 46}, 12, 6, random, noise)),
          crossing(circleAround({80, 50}, 25, 5, random, noise)) {}
};

inline std::vector<Scene> scenesOf(int count, double noise, unsigned seed) {
    Random random(seed);
    std::vector<Scene> scenes;
    for (int i = 0; i < count; ++i) scenes.emplace_back(random, noise);
    return scenes;
}

struct ValueRelation {
    const char* name;
    double truth;
    std::function<TMeasuredValue(const Scene&)> of;
};

inline std::vector<ValueRelation> valueRelations() {
    // Left and right seen along the line midway, one degree off either: at a place along it left's height is
    // (10 + place * sine) / cosine, that of right, whose lower end is at (40, 120), as below. The common
    // stretch reaches from right's upper end to left's lower one.
    const double tilt = 2 * kPi / 180;
    const double sine = std::sin(tilt / 2);
    const double cosine = std::cos(tilt / 2);
    const auto width = [=](double place) {
        const double fromEnd = (place + 40 * sine - 120 * cosine) / cosine;
        return 40 * cosine + 120 * sine - fromEnd * sine - (10 + place * sine) / cosine;
    };
    const double upper = 20 * cosine - (40 + 100 * std::tan(tilt)) * sine;
    const double lower = 100 * cosine - 10 * sine;
    const double rise = std::atan2(10.0, 100.0);
    return {
        {"points", std::hypot(45, 20), [](const Scene& s) { return orx::distance(s.big, s.small); }},
        {"point to line", 40, [](const Scene& s) { return orx::distance(orx::centerOf(s.big), s.left); }},
        {"gap apart", std::hypot(45, 20) - 45, [](const Scene& s) { return orx::gap(s.big, s.small); }},
        {"gap within", 30 - 12 - 5, [](const Scene& s) { return orx::gap(s.big, s.inner); }},
        {"gap within, turned", 30 - 12 - 5, [](const Scene& s) { return orx::gap(s.inner, s.big); }},
        {"angle", 2, [](const Scene& s) { return orx::angle(s.left, s.right); }},
        {"signed angle", 90 - rise * 180 / kPi,
         [](const Scene& s) { return orx::signedAngle(s.across, s.left); }},
        {"parallelism", 100 * std::tan(tilt),
         [](const Scene& s) { return orx::parallelism(s.right, s.left); }},
        {"perpendicularity", 100 * std::sin(rise),
         [](const Scene& s) { return orx::perpendicularity(s.left, s.across); }},
        {"concentricity", 10, [](const Scene& s) { return orx::concentricity(s.inner, s.big); }},
        {"lines, middle", width((upper + lower) / 2),
         [](const Scene& s) { return orx::distance(s.left, s.right).middle; }},
        {"lines, least", width(lower), [](const Scene& s) { return orx::distance(s.right, s.left).least; }},
        {"lines, largest", width(upper),
         [](const Scene& s) { return orx::distance(s.left, s.right).largest; }},
    };
}

struct PointRelation {
    const char* name;
    cv::Point2d truth;
    std::function<TMeasuredPoint(const Scene&)> of;
};

inline std::vector<PointRelation> pointRelations() {
    // The line across meets the first circle where (x - 50)^2 + (x / 10)^2 = 900.
    const double farX = (50 + std::sqrt(2500 - 1.01 * 1600)) / 1.01;
    // Circles of radius 30 around (50, 50) and 25 around (80, 50).
    const double x = (30 * 30 + 30 * 30 - 25 * 25) / 60.0;
    const auto last = [](const orx::TIntersections& found) {
        return found.valid() ? found.points.back() : TMeasuredPoint();
    };
    const auto first = [](const orx::TIntersections& found) {
        return found.valid() ? found.points.front() : TMeasuredPoint();
    };
    return {
        {"lines", {10, 51}, [](const Scene& s) { return orx::intersection(s.left, s.across); }},
        {"line and circle",
         {farX, 50 + farX / 10},
         [=](const Scene& s) { return last(orx::intersections(s.across, s.big)); }},
        {"circles",
         {50 + x, 50 + std::sqrt(900 - x * x)},
         [=](const Scene& s) { return first(orx::intersections(s.big, s.crossing)); }},
        {"on a line", {10, 50}, [](const Scene& s) { return orx::pointOn(s.left, 50 - s.left.point.y); }}};
}

}  // namespace relation_scenes

#endif
