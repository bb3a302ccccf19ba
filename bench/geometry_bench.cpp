// Geometry on integer points and choosing from lists, beside OpenCV's calls or the plain loop that a host
// would write itself. The argument is the number of points.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "bench/steady.h"
#include "orxFunctions/orxfunctions.h"

namespace {

using Points = std::vector<cv::Point>;

const cv::Size kImage(2592, 1944);

std::size_t countOf(const benchmark::State& state) { return static_cast<std::size_t>(state.range(0)); }

Points scattered(std::size_t count) {
    std::mt19937 random(3);
    std::uniform_int_distribution<int> x(0, kImage.width - 1);
    std::uniform_int_distribution<int> y(0, kImage.height - 1);
    Points points(count);
    for (cv::Point& p : points) p = {x(random), y(random)};
    return points;
}

// On a circle, so that all are vertices, in no order.
Points vertices(std::size_t count) {
    Points points(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double angle = 2 * CV_PI * static_cast<double>(i) / static_cast<double>(count);
        points[i] = {cvRound(1000000 + 900000 * std::cos(angle)),
                     cvRound(1000000 + 900000 * std::sin(angle))};
    }
    std::shuffle(points.begin(), points.end(), std::mt19937(4));
    return points;
}

template <class Value>
void sumOver(benchmark::State& state, Value value) {
    const Points points = scattered(countOf(state));
    bench::steady(state, [&] {
        double sum = 0;
        for (const cv::Point& p : points) sum += value(p);
        benchmark::DoNotOptimize(sum);
    });
}

#define ORX_COUNTS Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond)

const cv::Point kFrom(200, 300);
const cv::Point kTo(2100, 1400);

double plainDistance(cv::Point p) {
    const double dx = kTo.x - kFrom.x;
    const double dy = kTo.y - kFrom.y;
    return std::abs(dy * (p.x - kFrom.x) - dx * (p.y - kFrom.y)) / std::sqrt(dx * dx + dy * dy);
}
void distance(benchmark::State& state) {
    sumOver(state, [](cv::Point p) { return orx::pointDistance2Line(p, kFrom, kTo); });
}
void distancePlain(benchmark::State& state) { sumOver(state, plainDistance); }
BENCHMARK(distance)->ORX_COUNTS;
BENCHMARK(distancePlain)->Name("plain/distance")->ORX_COUNTS;

void direction(benchmark::State& state) {
    sumOver(state, [](cv::Point p) { return orx::angleToX(kFrom, p); });
}
void directionPlain(benchmark::State& state) {
    sumOver(state, [](cv::Point p) {
        const double angle = std::atan2(p.y - kFrom.y, p.x - kFrom.x) * (180 / CV_PI);
        return angle < 0 ? angle + 360 : angle;
    });
}
// The arc tangent that the direction is stated by, alone.
void directionTangent(benchmark::State& state) {
    sumOver(state, [](cv::Point p) {
        return std::atan(static_cast<double>(p.y - kFrom.y) / static_cast<double>(p.x - kFrom.x));
    });
}
BENCHMARK(direction)->ORX_COUNTS;
BENCHMARK(directionTangent)->Name("limit/direction")->ORX_COUNTS;
BENCHMARK(directionPlain)->Name("plain/direction")->ORX_COUNTS;

const std::vector<cv::Point> kQuadrilateral = {{300, 200}, {2200, 350}, {2400, 1700}, {250, 1500}};

void inQuadrilateral(benchmark::State& state) {
    const auto& q = kQuadrilateral;
    sumOver(state, [&](cv::Point p) { return orx::isPointInRect(p, q[0], q[1], q[2], q[3]) ? 1 : 0; });
}
void inPolygon(benchmark::State& state) {
    sumOver(state, [](cv::Point p) { return cv::pointPolygonTest(kQuadrilateral, p, false) > 0 ? 1 : 0; });
}
BENCHMARK(inQuadrilateral)->Name("in_quadrilateral")->ORX_COUNTS;
BENCHMARK(inPolygon)->Name("opencv/in_quadrilateral")->ORX_COUNTS;

void circleThroughThree(benchmark::State& state) {
    sumOver(state, [](cv::Point p) {
        cv::Point3d circle;
        orx::threePoints2circle2(kFrom, kTo, p, circle);
        return circle.z;
    });
}
void circleThroughThreeSolved(benchmark::State& state) {
    sumOver(state, [](cv::Point p) {
        cv::Matx33d rows;
        cv::Vec3d squares;
        const cv::Point corners[] = {kFrom, kTo, p};
        for (int i = 0; i < 3; ++i) {
            const cv::Point2d at = corners[i];
            rows(i, 0) = at.x;
            rows(i, 1) = at.y;
            rows(i, 2) = 1;
            squares[i] = -at.dot(at);
        }
        const cv::Vec3d s = rows.solve(squares, cv::DECOMP_LU);
        return std::sqrt((s[0] * s[0] + s[1] * s[1]) / 4 - s[2]);
    });
}
// The same closed form, with its std::hypot.
bool plainThroughThree(cv::Point2d a, cv::Point2d b, cv::Point2d c, cv::Point3d& out) {
    const double overThird = ((a.y * a.y - c.y * c.y) + (a.x * a.x - c.x * c.x)) / 2;
    const double overSecond = ((a.y * a.y - b.y * b.y) + (a.x * a.x - b.x * b.x)) / 2;
    const double det = (a.x - c.x) * (a.y - b.y) - (a.y - c.y) * (a.x - b.x);
    if (std::abs(det) < 1e-5) return false;
    const double x = (overThird * (a.y - b.y) - overSecond * (a.y - c.y)) / det;
    const double y = (overSecond * (a.x - c.x) - overThird * (a.x - b.x)) / det;
    out = {x, y, std::hypot(a.x - x, a.y - y)};
    return true;
}
void circleThroughThreePlain(benchmark::State& state) {
    sumOver(state, [](cv::Point p) {
        cv::Point3d circle;
        plainThroughThree(kFrom, kTo, p, circle);
        return circle.z;
    });
}
BENCHMARK(circleThroughThree)->Name("circle_through_three")->ORX_COUNTS;
BENCHMARK(circleThroughThreePlain)->Name("plain/circle_through_three")->ORX_COUNTS;
BENCHMARK(circleThroughThreeSolved)->Name("opencv/circle_through_three")->ORX_COUNTS;

void circleFit(benchmark::State& state) {
    const Points points = scattered(countOf(state));
    cv::Point3d circle;
    bench::steady(state, [&] { benchmark::DoNotOptimize(orx::fitCircle(points, circle)); });
}
// The same least squares by OpenCV, over the normal equations as ours.
void circleFitSolved(benchmark::State& state) {
    const Points points = scattered(countOf(state));
    bench::steady(state, [&] {
        cv::Mat rows(static_cast<int>(points.size()), 3, CV_64F);
        cv::Mat squares(static_cast<int>(points.size()), 1, CV_64F);
        for (int i = 0; i < rows.rows; ++i) {
            const cv::Point2d p = points[static_cast<std::size_t>(i)];
            double* row = rows.ptr<double>(i);
            row[0] = p.x;
            row[1] = p.y;
            row[2] = 1;
            squares.at<double>(i) = -p.dot(p);
        }
        cv::Mat solution;
        cv::solve(rows, squares, solution, cv::DECOMP_CHOLESKY | cv::DECOMP_NORMAL);
        benchmark::DoNotOptimize(solution.data);
    });
}
BENCHMARK(circleFit)->Name("algebraic_circle")->ORX_COUNTS;
BENCHMARK(circleFitSolved)->Name("opencv/algebraic_circle")->ORX_COUNTS;

void polygonArea(benchmark::State& state) {
    const Points points = vertices(countOf(state));
    bench::steady(state, [&] { benchmark::DoNotOptimize(orx::calcPolygonArea(points)); });
}
void hullArea(benchmark::State& state) {
    const Points points = vertices(countOf(state));
    Points hull;
    bench::steady(state, [&] {
        cv::convexHull(points, hull);
        benchmark::DoNotOptimize(cv::contourArea(hull));
    });
}
BENCHMARK(polygonArea)->Name("polygon_area")->ORX_COUNTS;
BENCHMARK(hullArea)->Name("opencv/hull_area")->ORX_COUNTS;

const orx::TCircle kCircle = [] {
    orx::TCircle circle;
    circle.x = 1300;
    circle.y = 970;
    circle.r = 800;
    return circle;
}();

void onCircle(benchmark::State& state) {
    const Points points = scattered(countOf(state));
    Points out;
    bench::steady(state, [&] { orx::getPointOnCircle(points, kCircle, out, 50); });
    state.counters["points"] = static_cast<double>(out.size());
}
void onCirclePlain(benchmark::State& state) {
    const Points points = scattered(countOf(state));
    Points out;
    bench::steady(state, [&] {
        out.clear();
        for (const cv::Point& p : points) {
            const double dx = p.x - kCircle.x;
            const double dy = p.y - kCircle.y;
            if (std::abs(std::sqrt(dx * dx + dy * dy) - kCircle.r) < 50) out.push_back(p);
        }
    });
    state.counters["points"] = static_cast<double>(out.size());
}
BENCHMARK(onCircle)->Name("points_on_circle")->ORX_COUNTS;
BENCHMARK(onCirclePlain)->Name("plain/points_on_circle")->ORX_COUNTS;

// A tenth of the indices, in no order.
std::vector<int> someIndices(std::size_t count) {
    std::vector<int> all(count);
    std::iota(all.begin(), all.end(), 0);
    std::shuffle(all.begin(), all.end(), std::mt19937(5));
    all.resize(count / 10);
    return all;
}

void chosen(benchmark::State& state) {
    const Points points = scattered(countOf(state));
    const std::vector<int> indices = someIndices(points.size());
    Points out;
    bench::steady(state, [&] { orx::getPointListFromIdxList(points, indices, out); });
}
void chosenPlain(benchmark::State& state) {
    const Points points = scattered(countOf(state));
    const std::vector<int> indices = someIndices(points.size());
    Points out;
    bench::steady(state, [&] {
        out.clear();
        for (const int i : indices) out.push_back(points[static_cast<std::size_t>(i)]);
    });
}
// What every function that takes both lists by value costs its caller before it does anything.
void chosenCopies(benchmark::State& state) {
    const Points points = scattered(countOf(state));
    const std::vector<int> indices = someIndices(points.size());
    bench::steady(state, [&] {
        Points copy = points;
        benchmark::DoNotOptimize(copy.data());
        std::vector<int> copiedIndices = indices;
        benchmark::DoNotOptimize(copiedIndices.data());
        benchmark::ClobberMemory();
    });
}
BENCHMARK(chosen)->Name("points_by_index")->ORX_COUNTS;
BENCHMARK(chosenCopies)->Name("copies/points_by_index")->ORX_COUNTS;
BENCHMARK(chosenPlain)->Name("plain/points_by_index")->ORX_COUNTS;

// Both begin with a copy of the list.
void removed(benchmark::State& state) {
    const Points points = scattered(countOf(state));
    const std::vector<int> indices = someIndices(points.size());
    Points left;
    bench::steady(state, [&] {
        left = points;
        orx::deletePointsInList(left, indices);
    });
}
void removedPlain(benchmark::State& state) {
    const Points points = scattered(countOf(state));
    const std::vector<int> indices = someIndices(points.size());
    Points left;
    bench::steady(state, [&] {
        std::vector<bool> goes(points.size());
        for (const int i : indices) goes[static_cast<std::size_t>(i)] = true;
        left.clear();
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (!goes[i]) left.push_back(points[i]);
        }
    });
}
BENCHMARK(removed)->Name("points_removed")->ORX_COUNTS;
BENCHMARK(removedPlain)->Name("plain/points_removed")->ORX_COUNTS;

void sides(benchmark::State& state) {
    const Points points = scattered(countOf(state));
    Points left;
    bench::steady(state, [&] {
        left = points;
        orx::deleteImageSidePoints(left, kImage, 50);
    });
    state.counters["points"] = static_cast<double>(left.size());
}
void sidesPlain(benchmark::State& state) {
    const Points points = scattered(countOf(state));
    const cv::Rect inner(50, 50, kImage.width - 100, kImage.height - 100);
    Points left;
    bench::steady(state, [&] {
        left = points;
        left.erase(std::remove_if(left.begin(), left.end(), [&](cv::Point p) { return !inner.contains(p); }),
                   left.end());
    });
    state.counters["points"] = static_cast<double>(left.size());
}
BENCHMARK(sides)->Name("side_points_removed")->ORX_COUNTS;
BENCHMARK(sidesPlain)->Name("plain/side_points_removed")->ORX_COUNTS;

}  // namespace
