// Operators, fits, parts and recipes whose memory runs out at each of their allocations in turn.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "orxFunctions/orxfunctions.h"
#include "tests/faults/memory_sweep_posix.h"
#include "tests/support/edge_scene.h"

namespace {

using test::bytes;
using test::Given;
using test::sweepMemory;

// A disk of the radius 20 with a hole.
cv::Mat plate() {
    static const cv::Mat kImage = [] {
        edge_scene::Look look;
        look.noise = 1;
        return edge_scene::draw({96, 80}, look, [](double x, double y) {
            const double fromCentre = std::hypot(x - 47.3, y - 39.6);
            return std::min(20 - fromCentre, fromCentre - 6);
        });
    }();
    return kImage;
}

cv::Mat binaryPlate() {
    cv::Mat binary;
    cv::threshold(plate(), binary, 120, 255, cv::THRESH_BINARY);
    return binary;
}

std::vector<cv::Point2d> circlePoints() {
    cv::RNG random(7);
    std::vector<cv::Point2d> points;
    for (int i = 0; i < 40; ++i) {
        const double angle = 2 * CV_PI * i / 40;
        points.emplace_back(50 + 30 * std::cos(angle) + random.gaussian(0.1),
                            60 + 20 * std::sin(angle) + random.gaussian(0.1));
    }
    return points;
}

// From a picture to a picture.
void sweepOperator(const cv::Mat& in, const std::function<bool(const cv::Mat&, cv::Mat&)>& run) {
    sweepMemory([&](const auto& arm) -> Given {
        cv::Mat out;
        bool isDone = false;
        {
            const auto armed = arm();
            isDone = run(in, out);
        }
        EXPECT_EQ(in.total(), out.total() * (isDone ? 1 : 0) + (isDone ? 0 : in.total()));
        if (!isDone) return std::nullopt;
        return bytes(out);
    });
}

// From anything to plain values, or none.
template <class Value>
void sweepValues(const std::function<std::vector<Value>()>& run) {
    sweepMemory([&](const auto& arm) -> Given {
        std::vector<Value> values;
        {
            const auto armed = arm();
            values = run();
        }
        if (values.empty()) return std::nullopt;
        return bytes(values);
    });
}

class MemoryFaults : public testing::Test {
  protected:
    // Pools of threads take memory of their own whenever it pleases them.
    MemoryFaults() { cv::setNumThreads(1); }
    ~MemoryFaults() override { cv::setNumThreads(-1); }
};

TEST_F(MemoryFaults, OperatorsGiveTheWholePictureOrNone) {
    const cv::Mat colour = [] {
        cv::Mat image;
        cv::cvtColor(plate(), image, cv::COLOR_GRAY2BGR);
        return image;
    }();
    sweepOperator(binaryPlate(), [](const cv::Mat& in, cv::Mat& out) { return orx::thinning(in, out); });
    sweepOperator(binaryPlate(), [](const cv::Mat& in, cv::Mat& out) { return orx::fillHoles(in, out); });
    sweepOperator(binaryPlate(),
                  [](const cv::Mat& in, cv::Mat& out) { return orx::removeSmallObjects(in, out, 9); });
    sweepOperator(plate(), [](const cv::Mat& in, cv::Mat& out) { return orx::flattenLight(in, out); });
    sweepOperator(plate(), [](const cv::Mat& in, cv::Mat& out) { return orx::correctGamma(in, out, 0.5); });
    sweepOperator(colour, [](const cv::Mat& in, cv::Mat& out) { return orx::whiteBalance(in, out); });
    sweepOperator(plate(), [](const cv::Mat& in, cv::Mat& out) {
        out = orx::autoCanny(in);
        return !out.empty();
    });
}

TEST_F(MemoryFaults, EdgesAndContoursAreWholeOrNone) {
    sweepValues<cv::Point2d>([] {
        std::vector<ORXEdge::TMetricContour> contours;
        std::vector<cv::Point2d> points;
        if (!ORXEdge::edgesSubPixMetric(plate(), contours)) return points;
        for (const ORXEdge::TMetricContour& contour : contours) {
            for (const auto& point : contour.points) points.emplace_back(point);
        }
        return points;
    });
    sweepValues<cv::Point2f>([] {
        std::vector<std::vector<cv::Point2f>> contours;
        std::vector<cv::Point2f> points;
        cv::Mat image = plate();
        if (!ORXEdge::EdgesSubPix(image, contours, 20, 60, 1.0)) return points;
        for (const auto& contour : contours) points.insert(points.end(), contour.begin(), contour.end());
        return points;
    });
    sweepValues<cv::Point2d>([] {
        return orx::pointsOf(orx::edgesAcross(plate(), orx::probesAlongCircle({47.3, 39.6}, 20, 4)));
    });
    sweepValues<cv::Point>([] {
        std::vector<cv::Point> points;
        for (const auto& contour : orx::getContours(binaryPlate(), orx::ctAll))
            points.insert(points.end(), contour.begin(), contour.end());
        return points;
    });
}

TEST_F(MemoryFaults, FitsAndFormAreThoseOfAllPointsOrNone) {
    const std::vector<cv::Point2d> points = circlePoints();
    sweepValues<double>([&] {
        const orx::TMeasuredEllipse fit = orx::fitEllipseGeometric(points);
        return fit.valid() ? std::vector<double>{fit.center.x, fit.rms} : std::vector<double>{};
    });
    sweepValues<double>([&] {
        orx::TConsensusOptions options;
        options.maxTrials = 100;
        const orx::TMeasuredEllipse found = orx::findEllipse(points, options);
        return found.valid() ? std::vector<double>{found.center.x, found.rms} : std::vector<double>{};
    });
    sweepValues<double>([&] {
        const orx::TRoundness ring = orx::minimumZoneCircle(points);
        return ring.valid() ? std::vector<double>{ring.value} : std::vector<double>{};
    });
    sweepValues<double>([&] {
        std::vector<cv::Point2f> floats(points.begin(), points.end());
        std::srand(1);
        const orx::TEllipse fit = orxFit::fitEllipseRansac(std::move(floats), 1, 50, 0.5, 1, 100, 1, 100);
        return fit.valid ? std::vector<double>{fit.x, fit.width} : std::vector<double>{};
    });
    sweepValues<int>([] {
        orx::TSegmentContour splitter;
        const auto pieces = splitter.segmentContour(orx::getContours(binaryPlate(), orx::ctAll)[0], {});
        std::vector<int> ends;
        for (const orx::TSegemetLine& line : pieces.first)
            ends.push_back(static_cast<int>(line.points.size()));
        ends.push_back(static_cast<int>(pieces.second.size()));
        return ends;
    });
}

}  // namespace
