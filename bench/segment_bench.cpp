// Splitting contours into lines and arcs, beside the work that can't be saved: the polygon approximation of
// both passes and OpenCV's robust line for every chord.
//
//     build/bench/bin/segment_bench --benchmark_filter=serpentine
//
// The serpentine runs to and fro: straight rows of 400 pixels joined by half circles of radius 100. The
// outline is a closed wavy ring, nearly all arcs. The thin comb is a stroke one pixel wide that the contour
// follows there and back, so that it visits every pixel twice.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "bench/steady.h"
#include "orxFunctions/segmentation/segment_contour.h"

namespace {

using Points = std::vector<cv::Point>;

void addPixel(Points& points, double x, double y) {
    const cv::Point p(cvRound(x), cvRound(y));
    if (points.empty() || points.back() != p) points.push_back(p);
}

Points serpentine(std::size_t count) {
    constexpr int kRow = 400;
    constexpr int kRadius = 100;
    Points points;
    for (int row = 0; points.size() < count; ++row) {
        const double way = row % 2 == 0 ? 1 : -1;
        const double left = 1000;
        const double y = 2.0 * kRadius * row;
        const double from = row % 2 == 0 ? left : left + kRow;
        for (int i = 0; i < kRow; ++i) addPixel(points, from + way * i, y);
        const int steps = static_cast<int>(CV_PI * kRadius);
        for (int i = 0; i < steps; ++i) {
            const double a = CV_PI * i / steps - CV_PI / 2;
            addPixel(points, from + way * (kRow + kRadius * std::cos(a)),
                     y + kRadius + kRadius * std::sin(a));
        }
    }
    points.resize(count);
    return points;
}

Points wavyRing(std::size_t count) {
    // Its radius grows with the number of points; each wave is about 600 pixels long.
    Points points;
    const double radius = static_cast<double>(count) / (2 * CV_PI);
    const double waves = std::max(3.0, std::floor(2 * CV_PI * radius / 600));
    const std::size_t steps = count + count / 2;
    for (std::size_t i = 0; i < steps; ++i) {
        const double a = 2 * CV_PI * static_cast<double>(i) / static_cast<double>(steps);
        const double r = radius + 60 * std::cos(waves * a);
        addPixel(points, r * std::cos(a), r * std::sin(a));
    }
    return points;
}

Points thinComb(std::size_t count) {
    // Teeth 100 pixels high and 10 apart, and the same way back.
    Points points;
    while (points.size() < count / 2) {
        const int x = 10 * static_cast<int>(points.size() / 220);
        for (int y = 0; y < 100; ++y) points.emplace_back(x, -y);
        for (int i = 0; i < 10; ++i) points.emplace_back(x + i, -100);
        for (int y = 100; y > 0; --y) points.emplace_back(x + 10, -y);
        for (int i = 0; i < 10; ++i) points.emplace_back(x + 10 + i, 0);
    }
    points.resize(count / 2);
    const Points back(points.rbegin(), points.rend());
    points.insert(points.end(), back.begin(), back.end());
    return points;
}

void split(benchmark::State& state, Points (*make)(std::size_t)) {
    const Points contour = make(static_cast<std::size_t>(state.range(0)));
    orx::TSegemetParams params;
    std::size_t lines = 0;
    std::size_t arcs = 0;
    for (auto _ : state) {
        orx::TSegmentContour splitter;
        const auto result = splitter.segmentContour(contour, params);
        lines = result.first.size();
        arcs = result.second.size();
    }
    state.counters["lines"] = static_cast<double>(lines);
    state.counters["arcs"] = static_cast<double>(arcs);
    state.counters["points"] = static_cast<double>(contour.size());
}

// The chords' points as slices of the contour: nothing is searched and nothing is tested.
void polygonAndLines(const Points& contour, double epsilon, bool fitLines) {
    Points keys;
    cv::approxPolyDP(contour, keys, epsilon, false);
    if (!fitLines) return;
    auto from = contour.begin();
    for (std::size_t i = 1; i < keys.size(); ++i) {
        const auto to = std::find(from, contour.end(), keys[i]);
        const Points slice(from, to);
        cv::Vec4f line;
        if (slice.size() >= 3) cv::fitLine(slice, line, cv::DIST_HUBER, 0, 0.01, 0.01);
        benchmark::DoNotOptimize(line);
        from = to;
    }
}

void floors(benchmark::State& state, Points (*make)(std::size_t), bool fitLines) {
    const Points contour = make(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        polygonAndLines(contour, 8.0, fitLines);
        polygonAndLines(contour, 2.0, fitLines);
    }
}

// The results drawn onto a colour picture: pieces, arcs and where they begin and end.
struct Drawing {
    explicit Drawing(const benchmark::State& state)
        : contour(wavyRing(static_cast<std::size_t>(state.range(0)))), picture(2000, 2000, CV_8UC3) {
        // Into the picture.
        for (cv::Point& p : contour) p += cv::Point(1000, 1000);
    }
    Points contour;
    cv::Mat picture;
};

void display(benchmark::State& state) {
    Drawing drawing(state);
    orx::TSegmentContour splitter;
    splitter.segmentContour(drawing.contour, {});
    bench::steady(state,
                  [&] { splitter.disPlayCirclesLines(drawing.picture, true, true, true, false, false); });
}

void displayByOpenCv(benchmark::State& state) {
    Drawing drawing(state);
    orx::TSegmentContour splitter;
    const auto [lines, arcs] = splitter.segmentContour(drawing.contour, {});
    cv::Mat& picture = drawing.picture;
    bench::steady(state, [&, &pieces = lines, &circles = arcs] {
        const cv::Scalar colour(255, 128, 0);
        for (const orx::TSegemetLine& line : pieces) {
            cv::line(picture, cv::Point(line.startPoint), cv::Point(line.endPoint), {0, 255, 0}, 2);
            cv::circle(picture, cv::Point(line.startPoint), 3, colour, 2);
            cv::circle(picture, cv::Point(line.endPoint), 3, colour, 2);
        }
        for (const orx::TSegemetCircle& circle : circles) {
            const int radius = cvRound(circle.radius);
            cv::ellipse(picture, cv::Point(circle.center), {radius, radius}, 0, circle.startAngle,
                        circle.endAngle, {0, 0, 255}, 2);
            cv::circle(picture, circle.points.front(), 3, colour, 2);
            cv::circle(picture, circle.points.back(), 3, colour, 2);
        }
    });
    state.counters["lines"] = static_cast<double>(lines.size());
    state.counters["arcs"] = static_cast<double>(arcs.size());
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(split, serpentine, serpentine)->Apply(sizes);
BENCHMARK_CAPTURE(floors, serpentine_polygons_and_lines, serpentine, true)->Apply(sizes);
BENCHMARK_CAPTURE(floors, serpentine_polygons, serpentine, false)->Apply(sizes);
BENCHMARK_CAPTURE(split, ring, wavyRing)->Apply(sizes);
BENCHMARK_CAPTURE(floors, ring_polygons_and_lines, wavyRing, true)->Apply(sizes);
BENCHMARK_CAPTURE(floors, ring_polygons, wavyRing, false)->Apply(sizes);
BENCHMARK(display)->Name("display/ring")->Arg(5000)->Unit(benchmark::kMicrosecond);
BENCHMARK(displayByOpenCv)->Name("opencv_display/ring")->Arg(5000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(split, comb, thinComb)->Apply(sizes);
BENCHMARK_CAPTURE(floors, comb_polygons, thinComb, false)->Apply(sizes);

}  // namespace
