// Lines, dots and captions on a picture: what fitting/drawing.h draws on whole pixels, between them.
#include <pybind11/pybind11.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <tuple>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/fitting/drawing.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using Colour = std::tuple<double, double, double, double>;

constexpr int kShift = 4;           // sixteenths of a pixel
constexpr double kFarthest = 1e12;  // where coordinates are cut, so that they can be subtracted
constexpr int kThickest = 255;

cv::Scalar scalarOf(const Colour& colour) { return std::make_from_tuple<cv::Scalar>(colour); }

cv::Point2d bounded(cv::Point2d point) {
    return {std::clamp(point.x, -kFarthest, kFarthest), std::clamp(point.y, -kFarthest, kFarthest)};
}

cv::Point fixedPoint(cv::Point2d point) {
    constexpr double kOne = 1 << kShift;
    return {static_cast<int>(std::lrint(point.x * kOne)), static_cast<int>(std::lrint(point.y * kOne))};
}

std::vector<cv::Point2d> finitePointsOf(const Argument& argument, const char* name) {
    std::vector<cv::Point2d> points = precisePointsOf(argument, name);
    for (cv::Point2d& point : points) {
        if (!std::isfinite(point.x) || !std::isfinite(point.y))
            throw py::value_error(std::string(name) + ": expected finite coordinates");
        point = bounded(point);
    }
    return points;
}

void checkThickness(int thickness) {
    if (thickness < 1 || thickness > kThickest)
        throw py::value_error("thickness is " + std::to_string(thickness) + "; 1 to 255 is expected");
}

// What of a stroke lies in or near the picture, since OpenCV's coordinates are short of bits: the method of
// Y. Liang and B. Barsky, ACM Trans. Graphics 3 (1984). False where nothing does.
bool cut(cv::Point2d& from, cv::Point2d& to, const cv::Rect2d& frame) {
    const cv::Point2d step = to - from;
    const std::array<double, 4> along = {-step.x, step.x, -step.y, step.y};
    const std::array<double, 4> room = {from.x - frame.x, frame.x + frame.width - from.x, from.y - frame.y,
                                        frame.y + frame.height - from.y};
    double begin = 0.0, end = 1.0;
    for (std::size_t i = 0; i < 4; ++i) {
        if (along[i] == 0.0) {
            if (room[i] < 0.0) return false;
        } else if (along[i] < 0.0) {
            begin = std::max(begin, room[i] / along[i]);
        } else {
            end = std::min(end, room[i] / along[i]);
        }
    }
    if (begin > end) return false;
    to = from + step * end;
    from += step * begin;
    return true;
}

cv::Rect2d frameOf(const cv::Mat& image, int margin) {
    const double width = margin + 2.0;
    return {-width, -width, image.cols + 2.0 * width, image.rows + 2.0 * width};
}

// Chain i has the points from offsets[i] to offsets[i + 1].
void drawChains(const Argument& image, const Argument& points, const std::vector<int>& offsets,
                const std::vector<bool>& closed, const Colour& colour, int thickness) {
    const Image target = imageToWrite(image, "image", ikDrawable);
    const std::vector<cv::Point2d> places = finitePointsOf(points, "points");
    checkThickness(thickness);
    const auto count = static_cast<int>(places.size());
    for (std::size_t i = 1; i < offsets.size(); ++i) {
        if (offsets[i - 1] < 0 || offsets[i] < offsets[i - 1] || offsets[i] > count)
            throw py::value_error("offsets: expected rising numbers of points");
    }
    if (offsets.size() != closed.size() + 1) throw py::value_error("closed: expected one for each chain");
    unlocked([&] {
        cv::Mat pixels = target.mat;
        const cv::Rect2d frame = frameOf(pixels, thickness);
        const auto stroke = [&](int first, int second) {
            cv::Point2d from = places[static_cast<std::size_t>(first)];
            cv::Point2d to = places[static_cast<std::size_t>(second)];
            if (cut(from, to, frame)) {
                cv::line(pixels, fixedPoint(from), fixedPoint(to), scalarOf(colour), thickness, cv::LINE_AA,
                         kShift);
            }
        };
        for (std::size_t chain = 0; chain < closed.size(); ++chain) {
            const int begin = offsets[chain], end = offsets[chain + 1];
            for (int i = begin; i + 1 < end; ++i) stroke(i, i + 1);
            if (end > begin && (closed[chain] || end == begin + 1)) stroke(end - 1, begin);
        }
    });
}

void drawDots(const Argument& image, const Argument& points, double radius, const Colour& colour) {
    const Image target = imageToWrite(image, "image", ikDrawable);
    const std::vector<cv::Point2d> places = finitePointsOf(points, "points");
    if (!(radius >= 0.0 && radius <= 1000.0))
        throw py::value_error("radius is " + std::string(py::str(py::float_(radius))) +
                              "; 0 to 1000 pixels is expected");
    unlocked([&] {
        cv::Mat pixels = target.mat;
        const cv::Rect2d frame = frameOf(pixels, static_cast<int>(std::ceil(radius)));
        const int size = fixedPoint({radius, 0.0}).x;
        for (const cv::Point2d& place : places) {
            if (frame.contains(place))
                cv::circle(pixels, fixedPoint(place), size, scalarOf(colour), cv::FILLED, cv::LINE_AA,
                           kShift);
        }
    });
}

void drawCaption(const Argument& image, const std::string& text, int corner, double ratio) {
    const Image target = imageToWrite(image, "image", ikDrawable);
    unlocked([&] {
        cv::Mat pixels = target.mat;
        orx::drawText(pixels, text, {}, corner, ratio);
    });
    if (orx::lastRefusal().code != orx::rcNone) raiseRefusal();
}

}  // namespace

void bindDrawing(py::module_& core) {
    core.def("draw_chains", &drawChains, py::arg("image"), py::arg("points"), py::arg("offsets"),
             py::arg("closed"), py::arg("colour"), py::arg("thickness"));
    core.def("draw_dots", &drawDots, py::arg("image"), py::arg("points"), py::arg("radius"),
             py::arg("colour"));
    core.def("draw_caption", &drawCaption, py::arg("image"), py::arg("text"), py::arg("corner"),
             py::arg("ratio"));
}

}  // namespace orxpy
