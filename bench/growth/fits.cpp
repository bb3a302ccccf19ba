// Fits, searches and zones over a thousand to a million points; searches of a fixed number of trials.
#include <cstdlib>
#include <memory>

#include "bench/form_parts.h"
#include "bench/growth/growth.h"
#include "bench/ransac_scene.h"
#include "orxFunctions/orxfunctions.h"

namespace growth {
namespace {

const std::vector<std::int64_t> kCounts = {1000, 10000, 100000, 1000000};

using form_parts::Points;
using form_parts::roundPart;
using form_parts::straightPart;

Points subPixel(const std::vector<cv::Point>& points) { return {points.begin(), points.end()}; }

Points wholeRound(std::int64_t count) { return roundPart(count); }

Points ovalPart(std::int64_t count) {
    Points points = roundPart(count);
    for (cv::Point2d& p : points) p.y = 800 + 0.6 * (p.y - 800);
    return points;
}

template <class Call>
void addOver(const std::string& name, Points (*make)(std::int64_t), Call call) {
    growth::add(name, kCounts,
                [make, call](std::int64_t n) { return [points = make(n), call] { call(points); }; });
}

void addMeasuredFits() {
    addOver("measured_line", straightPart,
            [](const Points& p) { benchmark::DoNotOptimize(orx::fitLineGeometric(p)); });
    addOver("measured_circle", wholeRound,
            [](const Points& p) { benchmark::DoNotOptimize(orx::fitCircleGeometric(p)); });
    addOver("measured_ellipse", ovalPart,
            [](const Points& p) { benchmark::DoNotOptimize(orx::fitEllipseGeometric(p)); });
    addOver("zone_circle", wholeRound,
            [](const Points& p) { benchmark::DoNotOptimize(orx::minimumZoneCircle(p)); });
    addOver("zone_line", straightPart,
            [](const Points& p) { benchmark::DoNotOptimize(orx::minimumZoneLine(p)); });
    addOver("circumscribed_circle", wholeRound,
            [](const Points& p) { benchmark::DoNotOptimize(orx::minimumCircumscribedCircle(p)); });
    addOver("inscribed_circle", wholeRound,
            [](const Points& p) { benchmark::DoNotOptimize(orx::maximumInscribedCircle(p)); });
}

orx::TConsensusOptions tolerant() {
    orx::TConsensusOptions options;
    options.tolerance = scene::kThreshold;
    return options;
}

void addSearches() {
    addOver(
        "find_line", [](std::int64_t n) { return subPixel(scene::line(n)); },
        [](const Points& p) { benchmark::DoNotOptimize(orx::findLine(p, tolerant())); });
    addOver(
        "find_circle", [](std::int64_t n) { return subPixel(scene::circle(n)); },
        [](const Points& p) { benchmark::DoNotOptimize(orx::findCircle(p, tolerant())); });
    growth::add("ransac_line", kCounts, [](std::int64_t n) {
        return [points = scene::line(n)] {
            std::srand(1);
            orx::TRansacLine search(points, scene::kTrials, scene::kTrials, scene::kThreshold);
            benchmark::DoNotOptimize(search.doRansac());
        };
    });
    growth::add("ransac_circle", kCounts, [](std::int64_t n) {
        return [points = scene::circle(n)] {
            std::srand(1);
            orx::TRansacCircle search(points, scene::kTrials, scene::kTrials, scene::kThreshold);
            benchmark::DoNotOptimize(search.doRansac());
        };
    });
    growth::add("wanted_line", kCounts, [](std::int64_t n) {
        return [points = scene::line(n)] {
            std::vector<cv::Point> found;
            std::vector<cv::Point> rest;
            orx::getWantedLine(points, found, rest, orx::wlTop, static_cast<int>(points.size() / 2), true);
        };
    });
}

std::vector<cv::Point> pixels(const Points& points) {
    std::vector<cv::Point> result;
    for (const cv::Point2d& p : points) result.emplace_back(cvRound(p.x), cvRound(p.y));
    return result;
}

void addClassicFits() {
    growth::add("circle_weighted", kCounts, [](std::int64_t n) {
        auto factory = std::make_shared<orxFit::TCircleFitFactory>();
        factory->createFitType_weightedLeastSquares(pixels(roundPart(n)), 4, 1.345);
        return [factory] { benchmark::DoNotOptimize(factory->fitter->fit()); };
    });
    growth::add("line_robust_huber", kCounts, [](std::int64_t n) {
        auto factory = std::make_shared<orxFit::TLineFitFactory>();
        factory->createFitType_robustLine(pixels(straightPart(n)), 4, 0);
        return [factory] { benchmark::DoNotOptimize(factory->fitter->fit()); };
    });
    growth::add("ellipse_norm", kCounts, [](std::int64_t n) {
        const Points points = ovalPart(n);
        return [floats = std::vector<cv::Point2f>(points.begin(), points.end())] {
            benchmark::DoNotOptimize(orxFit::fitEllipseNorm(floats, 1.5, 0.5, 0, 1e6, 0, 1e6));
        };
    });
}

}  // namespace

void addFits() {
    addMeasuredFits();
    addSearches();
    addClassicFits();
}

}  // namespace growth
