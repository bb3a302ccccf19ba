// Targets in pictures, and from pixels to millimetres: calibration/plane_target.h, plane_calibration.h.
#include <pybind11/pybind11.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/calibration/plane_calibration.h"
#include "orxFunctions/calibration/plane_target.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using orx::TPlaneCalibration;

// plane, pixels, deviations, (width, height), dotDiameter
using ViewFields = std::tuple<ArrayOf<double>, ArrayOf<double>, ArrayOf<double>, std::pair<int, int>, double>;

orx::TTarget targetOf(int kind, int columns, int rows, double pitch, double diameter) {
    orx::TTarget target;
    target.kind = static_cast<orx::TTargetKind>(kind);
    target.columns = columns;
    target.rows = rows;
    target.pitch = pitch;
    target.diameter = diameter;
    return target;
}

std::optional<ViewFields> findTarget(const Argument& image, int kind, int columns, int rows, double pitch,
                                     double diameter) {
    const Image picture = imageOf(image, "image", ikAny);
    const orx::TTarget target = targetOf(kind, columns, rows, pitch, diameter);
    orx::TTargetView view = unlocked([&] { return orx::findTarget(picture.mat, target); });
    if (!view.found) return nothingFound();
    return ViewFields(arrayFrom(std::move(view.plane)), arrayFrom(std::move(view.pixels)),
                      arrayFrom(std::move(view.deviations)),
                      std::make_pair(view.imageSize.width, view.imageSize.height), view.dotDiameter);
}

template <typename Page>
std::string pageOf(const Page& page, const orx::TTarget& target, double width, double height, bool scaleBar) {
    orx::TTargetPage paper;
    paper.width = width;
    paper.height = height;
    paper.scaleBar = scaleBar;
    std::string text = unlocked([&] { return page(target, paper); });
    if (text.empty()) raiseRefusal();
    return text;
}

std::string targetSvg(int kind, int columns, int rows, double pitch, double diameter, double width,
                      double height, bool scaleBar) {
    return pageOf(orx::targetToSvg, targetOf(kind, columns, rows, pitch, diameter), width, height, scaleBar);
}

py::bytes targetPdf(int kind, int columns, int rows, double pitch, double diameter, double width,
                    double height, bool scaleBar) {
    return pageOf(orx::targetToPdf, targetOf(kind, columns, rows, pitch, diameter), width, height, scaleBar);
}

// What a TargetView of Python holds; None is a view that is not found.
orx::TTargetView viewOf(const Argument& argument, const std::string& name) {
    orx::TTargetView view;
    if (argument.is_none()) return view;
    if (!py::isinstance<py::tuple>(argument) || py::len(argument) != 5)
        refuseType(name, "a TargetView or None", argument);
    const auto fields = py::reinterpret_borrow<py::tuple>(argument);
    view.found = true;
    view.plane = precisePointsOf(fields[0], (name + ".plane").c_str());
    view.pixels = precisePointsOf(fields[1], (name + ".pixels").c_str());
    view.deviations = numbersOf(fields[2], (name + ".deviations").c_str());
    try {
        const auto size = fields[3].cast<std::pair<int, int>>();
        view.imageSize = {size.first, size.second};
        view.dotDiameter = fields[4].cast<double>();
    } catch (const py::cast_error&) {
        throw py::type_error(name + ": expected (width, height) as image_size and a number as dot_diameter");
    }
    return view;
}

std::vector<orx::TTargetView> viewsOf(const Argument& argument) {
    const py::sequence sequence = sequenceOf(argument, "views", "a sequence of TargetView or None");
    std::vector<orx::TTargetView> views;
    for (std::size_t i = 0; i < sequence.size(); ++i)
        views.push_back(viewOf(sequence[i], "views[" + std::to_string(i) + "]"));
    return views;
}

// A calibration that was not found has a reason, which a None would lose.
TPlaneCalibration validOf(TPlaneCalibration calibration) {
    if (!calibration.valid()) {
        if (orx::lastRefusal().code == orx::rcNoResult)
            throw py::value_error(orx::planeStatusText(calibration.status) +
                                  (calibration.problem.empty() ? "" : ": " + calibration.problem));
        raiseRefusal();
    }
    return calibration;
}

TPlaneCalibration calibratePlane(const Argument& views, bool lens, int radial, bool tangential, int planeView,
                                 double height, double heightDeviation, double scaleDeviation, double mostRms,
                                 const py::bytes& description) {
    orx::TPlaneOptions options;
    options.lens = lens;
    options.radial = radial;
    options.tangential = tangential;
    options.planeView = planeView;
    options.height = height;
    options.heightDeviation = heightDeviation;
    options.scaleDeviation = scaleDeviation;
    options.mostRms = mostRms;
    const std::vector<orx::TTargetView> seen = viewsOf(views);
    TPlaneCalibration calibration = validOf(unlocked([&] { return orx::calibratePlane(seen, options); }));
    calibration.description = description;
    return calibration;
}

TPlaneCalibration relocatePlane(const TPlaneCalibration& calibration, const Argument& view, double height,
                                double heightDeviation, double scaleDeviation, double mostRms) {
    orx::TPlaneOptions options;
    options.height = height;
    options.heightDeviation = heightDeviation;
    options.scaleDeviation = scaleDeviation;
    options.mostRms = mostRms;
    const orx::TTargetView seen = viewOf(view, "view");
    return validOf(unlocked([&] { return orx::relocatePlane(calibration, seen, options); }));
}

ArrayOf<double> residuals(const TPlaneCalibration& calibration, const Argument& view) {
    const orx::TTargetView seen = viewOf(view, "view");
    std::vector<cv::Point2d> found = unlocked([&] { return orx::planeResiduals(calibration, seen); });
    if (found.empty()) raiseUnlessNothingFound();
    return arrayFrom(std::move(found));
}

std::vector<std::string> warnings(const TPlaneCalibration& calibration, const Argument& views) {
    const std::vector<orx::TTargetView> seen = viewsOf(views);
    return unlocked([&] { return orx::planeWarnings(calibration, seen); });
}

ArrayOf<double> toPlane(const TPlaneCalibration& calibration, const Argument& pixels) {
    const std::vector<cv::Point2d> places = precisePointsOf(pixels, "pixels");
    return arrayFrom(unlocked([&] { return orx::imageToPlane(calibration, places); }));
}

ArrayOf<double> toImage(const TPlaneCalibration& calibration, const Argument& points) {
    const std::vector<cv::Point2d> places = precisePointsOf(points, "points");
    return arrayFrom(unlocked([&] { return orx::planeToImage(calibration, places); }));
}

std::optional<ArrayOf<double>> jacobian(const TPlaneCalibration& calibration, const Argument& pixel) {
    const cv::Point2d place = placeOf(pixel, "pixel");
    const cv::Matx22d derivative = unlocked([&] { return orx::planeJacobian(calibration, place); });
    if (std::isnan(derivative(0, 0))) return std::nullopt;
    return arrayFrom(derivative);
}

std::optional<double> pixelSize(const TPlaneCalibration& calibration, const Argument& pixel) {
    const cv::Point2d place = placeOf(pixel, "pixel");
    const double size = unlocked([&] { return orx::pixelSize(calibration, place); });
    if (std::isnan(size)) return std::nullopt;
    return size;
}

// Matrices that are empty where a point has no place, which is None in Python.
std::optional<AnyArray> matrixOrNone(cv::Mat matrix) {
    if (!matrix.empty()) return arrayFrom(std::move(matrix));
    return nothingFound();
}

std::optional<AnyArray> sensitivity(const TPlaneCalibration& calibration, const Argument& pixels) {
    const std::vector<cv::Point2d> places = precisePointsOf(pixels, "pixels");
    return matrixOrNone(unlocked([&] { return orx::planeSensitivity(calibration, places); }));
}

std::optional<AnyArray> covarianceOf(const TPlaneCalibration& calibration, const Argument& pixels,
                                     const Argument& pixelCovariance) {
    const std::vector<cv::Point2d> places = precisePointsOf(pixels, "pixels");
    cv::Mat share;
    if (!pixelCovariance.is_none()) {
        matrixOf(pixelCovariance, "pixel_covariance").convertTo(share, CV_64F);
        if (share.empty()) throw py::value_error("pixel_covariance: expected a matrix that is not empty");
        if (!cv::checkRange(share)) throw py::value_error("pixel_covariance: expected finite numbers");
    }
    return matrixOrNone(unlocked([&] { return orx::planeCovariance(calibration, places, share); }));
}

void writePlane(const TPlaneCalibration& calibration, const py::bytes& path) {
    const std::string name = path;
    if (unlocked([&] { return orx::writePlaneCalibration(name, calibration); }) != orx::plOk) raiseRefusal();
}

TPlaneCalibration readPlane(const py::bytes& path) {
    const std::string name = path;
    return validOf(unlocked([&] { return orx::readPlaneCalibration(name); }));
}

// All numbers of a valid calibration, the whole ones apart, and its text.
using State = std::tuple<std::vector<int>, std::vector<double>, py::bytes>;

// Calls `visit` with the first of each run of numbers and how many they are.
template <typename Calibration, typename Visit>
void eachNumber(Calibration& c, const Visit& visit) {
    visit(c.camera.val, 9);
    visit(c.distortion.val, 5);
    visit(c.rotation.val, 3);
    visit(c.translation.val, 3);
    visit(c.homography.val, 9);
    visit(c.covariance.val, orx::kPlaneParameters * orx::kPlaneParameters);
    visit(&c.degreesOfFreedom, 1);
    visit(&c.noise, 1);
    visit(&c.rms, 1);
    visit(&c.coverage, 1);
}

State stateOf(const TPlaneCalibration& calibration) {
    std::vector<double> numbers;
    eachNumber(calibration,
               [&](const double* first, int count) { numbers.insert(numbers.end(), first, first + count); });
    return {{calibration.imageSize.width, calibration.imageSize.height, calibration.lens ? 1 : 0,
             calibration.views},
            numbers,
            py::bytes(calibration.description)};
}

TPlaneCalibration fromState(const State& state) {
    TPlaneCalibration calibration;
    const auto& [whole, numbers, description] = state;
    std::size_t expected = 0;
    eachNumber(calibration, [&](const double*, int count) { expected += static_cast<std::size_t>(count); });
    if (whole.size() != 4 || numbers.size() != expected)
        throw py::value_error("this is no state of a plane calibration");
    calibration.status = orx::plOk;
    calibration.imageSize = {whole[0], whole[1]};
    calibration.lens = whole[2] != 0;
    calibration.views = whole[3];
    const double* from = numbers.data();
    eachNumber(calibration, [&](double* first, int count) {
        std::copy(from, from + count, first);
        from += count;
    });
    calibration.description = description;
    return calibration;
}

template <typename T, int Size>
ArrayOf<double> rowFrom(const cv::Vec<T, Size>& numbers) {
    return arrayFrom(std::vector<double>(numbers.val, numbers.val + Size));
}

void bindFields(py::class_<TPlaneCalibration>& type) {
    using Plane = TPlaneCalibration;
    type.def_property_readonly(
            "image_size",
            [](const Plane& p) { return std::make_pair(p.imageSize.width, p.imageSize.height); })
        .def_readonly("lens", &Plane::lens)
        .def_property_readonly("camera", [](const Plane& p) { return arrayFrom(p.camera); })
        .def_property_readonly("distortion", [](const Plane& p) { return rowFrom(p.distortion); })
        .def_property_readonly("rotation", [](const Plane& p) { return rowFrom(p.rotation); })
        .def_property_readonly("translation", [](const Plane& p) { return rowFrom(p.translation); })
        .def_property_readonly("homography", [](const Plane& p) { return arrayFrom(p.homography); })
        .def_property_readonly("covariance", [](const Plane& p) { return arrayFrom(p.covariance); })
        .def_readonly("degrees_of_freedom", &Plane::degreesOfFreedom)
        .def_readonly("noise", &Plane::noise)
        .def_readonly("rms", &Plane::rms)
        .def_readonly("coverage", &Plane::coverage)
        .def_readonly("views", &Plane::views)
        .def_property_readonly("description", [](const Plane& p) { return py::bytes(p.description); });
}

}  // namespace

void bindPlanes(py::module_& core) {
    core.def("find_target", &findTarget, py::arg("image"), py::arg("kind"), py::arg("columns"),
             py::arg("rows"), py::arg("pitch"), py::arg("diameter"));
    core.def("target_svg", &targetSvg, py::arg("kind"), py::arg("columns"), py::arg("rows"), py::arg("pitch"),
             py::arg("diameter"), py::arg("width"), py::arg("height"), py::arg("scale_bar"));
    core.def("target_pdf", &targetPdf, py::arg("kind"), py::arg("columns"), py::arg("rows"), py::arg("pitch"),
             py::arg("diameter"), py::arg("width"), py::arg("height"), py::arg("scale_bar"));

    py::class_<TPlaneCalibration> type(core, "PlaneCalibration");
    bindFields(type);
    type.def("relocate", &relocatePlane, py::arg("view"), py::arg("height"), py::arg("height_deviation"),
             py::arg("scale_deviation"), py::arg("most_rms"))
        .def("residuals", &residuals, py::arg("view"))
        .def("warnings", &warnings, py::arg("views"))
        .def("to_plane", &toPlane, py::arg("pixels"))
        .def("to_image", &toImage, py::arg("points"))
        .def("jacobian", &jacobian, py::arg("pixel"))
        .def("pixel_size", &pixelSize, py::arg("pixel"))
        .def("sensitivity", &sensitivity, py::arg("pixels"))
        .def("covariance_of", &covarianceOf, py::arg("pixels"), py::arg("pixel_covariance"))
        .def("save", &writePlane, py::arg("path"))
        .def(py::pickle(&stateOf, &fromState));
    core.def("calibrate_plane", &calibratePlane, py::arg("views"), py::arg("lens"), py::arg("radial"),
             py::arg("tangential"), py::arg("plane_view"), py::arg("height"), py::arg("height_deviation"),
             py::arg("scale_deviation"), py::arg("most_rms"), py::arg("description"));
    core.def("read_plane_calibration", &readPlane, py::arg("path"));
}

}  // namespace orxpy
