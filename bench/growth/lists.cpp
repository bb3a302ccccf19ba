// Operators on lists of a thousand to a million points.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <random>
#include <string>

#include "bench/curve_scene.h"
#include "bench/growth/growth.h"
#include "bench/point_pairs.h"
#include "orxFunctions/orxfunctions.h"

namespace growth {
namespace {

const std::vector<std::int64_t> kCounts = {1000, 10000, 100000, 1000000};
const cv::Size kImage(2592, 1944);

using Points = std::vector<cv::Point>;

Points scattered(std::int64_t count) {
    std::mt19937 random(3);
    std::uniform_int_distribution<int> x(0, kImage.width - 1);
    std::uniform_int_distribution<int> y(0, kImage.height - 1);
    Points points(static_cast<std::size_t>(count));
    for (cv::Point& p : points) p = {x(random), y(random)};
    return points;
}

std::vector<int> tenthOf(std::int64_t count) {
    std::vector<int> all(static_cast<std::size_t>(count));
    std::iota(all.begin(), all.end(), 0);
    std::shuffle(all.begin(), all.end(), std::mt19937(5));
    all.resize(all.size() / 10);
    return all;
}

// `call` takes a list, which it may change: each call has a copy, whose time is that of a memcpy.
template <class Call>
void addPoints(const std::string& name, Call call) {
    growth::add(name, kCounts, [call](std::int64_t n) {
        return [points = scattered(n), list = Points(), indices = tenthOf(n), call]() mutable {
            list = points;
            call(list, indices);
        };
    });
}

void addGeometry() {
    addPoints("polygon_area", [](Points& list, const auto&) { orx::calcPolygonArea(list); });
    addPoints("sort_polygon", [](Points& list, const auto&) { orx::sortPolygonVertexs(list); });
    addPoints("algebraic_circle", [](Points& list, const auto&) {
        cv::Point3d circle;
        orx::fitCircle(list, circle);
    });
    addPoints("points_on_circle", [out = Points()](Points& list, const auto&) mutable {
        orx::TCircle circle;
        circle.x = 1300;
        circle.y = 970;
        circle.r = 800;
        orx::getPointOnCircle(list, circle, out, 50);
    });
    addPoints("points_by_index", [out = Points()](Points& list, const auto& indices) mutable {
        orx::getPointListFromIdxList(list, indices, out);
    });
    addPoints("points_removed",
              [](Points& list, const auto& indices) { orx::deletePointsInList(list, indices); });
    addPoints("side_points_removed",
              [](Points& list, const auto&) { orx::deleteImageSidePoints(list, kImage, 50); });
    addPoints("random_points_removed", [](Points& list, const auto&) {
        std::srand(1);
        orx::deletePartPoints(list, static_cast<int>(list.size() / 10));
    });
    addPoints("contour_center", [](Points& list, const auto&) { orx::getContourCenterSubPix(list, 0); });
}

void addCurves() {
    growth::add("cubic_fit", kCounts, [](std::int64_t n) {
        return [samples = scene::curveProfile(n), model = orx::TPolynomial()]() mutable {
            model.fit(samples, 3);
        };
    });
    growth::add("spline_build", kCounts, [](std::int64_t n) {
        return [samples = scene::curveProfile(n), curve = orx::TSplineCurve()]() mutable {
            curve.fit(samples, 3);
        };
    });
    growth::add("spline_list", kCounts, [](std::int64_t n) {
        orx::TSplineCurve curve;
        curve.fit(scene::curveProfile(n), 3);
        return [curve, list = std::vector<cv::Point2d>()]() mutable { curve.getSplineList(list, 2); };
    });
}

void addTransforms() {
    growth::add("rigid_motion", kCounts, [](std::int64_t n) {
        return [pairs = bench::PointPairs(n), result = cv::Mat()]() mutable {
            orx::calcAXequalsB(pairs.a, pairs.b, result);
        };
    });
    growth::add("rotation_only", kCounts, [](std::int64_t n) {
        return [pairs = bench::PointPairs(n)] { orx::cpuTrsfMat(pairs.floatA, pairs.floatB); };
    });
}

// Straight rows of 400 pixels joined by half circles.
Points serpentine(std::int64_t count) {
    Points points;
    for (int row = 0; static_cast<std::int64_t>(points.size()) < count; ++row) {
        const int way = row % 2 == 0 ? 1 : -1;
        const int from = row % 2 == 0 ? 1000 : 1400;
        for (int i = 0; i < 400; ++i) points.emplace_back(from + way * i, 200 * row);
        for (int i = 0; i < 314; ++i) {
            const double a = i / 100.0 - CV_PI / 2;
            points.emplace_back(cvRound(from + way * (400 + 100 * std::cos(a))),
                                cvRound(200 * row + 100 + 100 * std::sin(a)));
        }
    }
    points.resize(static_cast<std::size_t>(count));
    return points;
}

void addContours() {
    growth::add("segment_contour", kCounts, [](std::int64_t n) {
        return [contour = serpentine(n)] {
            orx::TSegmentContour splitter;
            benchmark::DoNotOptimize(splitter.segmentContour(contour, {}));
        };
    });
}

// What is written stays until the program ends.
struct ScratchFile {
    std::string name = (std::filesystem::temp_directory_path() / "orx-growth-bench.bin").string();
    ~ScratchFile() {
        std::error_code ignored;
        std::filesystem::remove(name, ignored);
    }
};

void addFiles() {
    static const ScratchFile file;
    const auto matrix = [](std::int64_t n) { return cv::Mat(1000, static_cast<int>(n / 1000), CV_64F, 1.5); };
    growth::add("stream_write", kCounts, [matrix](std::int64_t n) {
        return [written = matrix(n)] { orx::image2StreamFile(written, {1, 1}, file.name, "text"); };
    });
    growth::add("stream_read", kCounts, [matrix](std::int64_t n) {
        orx::image2StreamFile(matrix(n), {1, 1}, file.name, "text");
        return [image = cv::Mat(), size = cv::Size(), text = std::string()]() mutable {
            orx::streamFile2Image(file.name, image, size, text);
        };
    });
}

}  // namespace

void addListOperators() {
    addGeometry();
    addCurves();
    addTransforms();
    addContours();
    addFiles();
}

}  // namespace growth
