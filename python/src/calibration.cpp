// Poses, motions between points, calibration files and targets: calibration/*.h but for the plane.
#include <pybind11/pybind11.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/core.hpp>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/calibration/calibration_file.h"
#include "orxFunctions/calibration/calibration_image.h"
#include "orxFunctions/calibration/point_transform.h"
#include "orxFunctions/calibration/pose.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

// Points that lie on a line within this share of their spread leave the turn about it open.
constexpr double kThinnest = 1e-6;

AnyArray numbersFrom(cv::Mat mat) {
    if (mat.empty()) return AnyArray(py::array_t<double>(std::vector<py::ssize_t>{0, 0}));
    if (mat.dims > 2) throw py::value_error("the file holds a matrix of more than two dimensions");
    if (mat.depth() != CV_32F && mat.depth() != CV_64F) mat.convertTo(mat, CV_64F);
    return arrayFrom(std::move(mat));
}

ArrayOf<double> poseMatrix(const Argument& pose) {
    const std::vector<double> numbers = numbersOf(pose, "pose");
    if (numbers.size() != 6) {
        throw py::type_error("pose: expected six numbers (x, y, z, rx, ry, rz), got " +
                             std::to_string(numbers.size()));
    }
    // The library ends the process for angles that are not finite.
    for (const double number : numbers) {
        if (!std::isfinite(number)) throw py::value_error("pose: expected finite numbers");
    }
    zul::TPoint6D point;
    point.x = numbers[0];
    point.y = numbers[1];
    point.z = numbers[2];
    point.rx = numbers[3];
    point.ry = numbers[4];
    point.rz = numbers[5];
    return arrayFrom(cv::Matx44d(orx::TPoint6DToMatrix().Point6D2Matrix44(point)));
}

template <typename Point>
void requireFinite(const std::vector<Point>& points, const char* name) {
    for (const Point& p : points) {
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
            throw py::value_error(std::string(name) + ": expected finite coordinates");
    }
}

// Whether points are spread over more than a line, beyond the rounding of their coordinates.
template <typename T>
bool spreadOut(const std::vector<cv::Point3_<T>>& points) {
    const auto count = static_cast<double>(points.size());
    cv::Vec3d middle;
    double largest = 0.0;
    for (const cv::Point3_<T>& p : points) {
        middle += cv::Vec3d(p.x, p.y, p.z) * (1.0 / count);
        largest = std::max(largest, cv::norm(cv::Vec3d(p.x, p.y, p.z), cv::NORM_INF));
    }
    cv::Matx33d moments = cv::Matx33d::zeros();
    for (const cv::Point3_<T>& p : points) {
        const cv::Vec3d from = cv::Vec3d(p.x, p.y, p.z) - middle;
        moments += from * from.t();
    }
    cv::Matx31d axes;
    cv::SVD::compute(moments, axes);
    const double rounding = 4.0 * std::numeric_limits<T>::epsilon() * largest * std::sqrt(count);
    return std::sqrt(axes(1)) > std::max(kThinnest * std::sqrt(axes(0)), rounding);
}

[[noreturn]] void refuseLine() {
    throw py::value_error(
        "source, target: the points of one lie on a line, or all in one place, which leaves a turn open");
}

ArrayOf<double> rigidTransform(const Argument& source, const Argument& target) {
    const std::vector<cv::Point3d> from = spacePointsOf(source, "source");
    const std::vector<cv::Point3d> to = spacePointsOf(target, "target");
    requireFinite(from, "source");
    requireFinite(to, "target");
    cv::Mat transform;
    bool told = false;
    const bool done = unlocked([&] {
        if (!orx::calcAXequalsB(from, to, transform)) return false;
        told = spreadOut(from) && spreadOut(to);
        return true;
    });
    if (!done) raiseRefusal();
    if (!told || !cv::checkRange(transform)) refuseLine();
    return arrayFrom(cv::Matx44d(transform));
}

std::vector<cv::Point3f> single(const std::vector<cv::Point3d>& points, const char* name) {
    std::vector<cv::Point3f> rounded(points.begin(), points.end());
    requireFinite(rounded, name);
    return rounded;
}

ArrayOf<double> rotationBetween(const Argument& source, const Argument& target) {
    const std::vector<cv::Point3f> from = single(spacePointsOf(source, "source"), "source");
    const std::vector<cv::Point3f> to = single(spacePointsOf(target, "target"), "target");
    bool told = false;
    const cv::Mat rotation = unlocked([&] {
        cv::Mat found = orx::cpuTrsfMat(from, to);
        told = !found.empty() && spreadOut(from) && spreadOut(to);
        return found;
    });
    if (rotation.empty()) raiseRefusal();
    if (!told || !cv::checkRange(rotation)) refuseLine();
    return arrayFrom(cv::Matx33d(rotation));
}

bool isFileRefusal() {
    const orx::TRefusalCode code = orx::lastRefusal().code;
    return code == orx::rcFileName || code == orx::rcFileUnwritable;
}

void saveCalibration(const py::bytes& path, const Argument& intrinsic, const Argument& distortion,
                     const std::pair<int, int>& imageSize, const py::bytes& description) {
    const cv::Mat camera = matrixOf(intrinsic, "intrinsic"), lens = matrixOf(distortion, "distortion");
    const std::string name = path, text = description;
    try {
        unlocked([&] {
            orx::calibrateData2File(camera, lens, {imageSize.first, imageSize.second}, text, name);
        });
    } catch (const cv::Exception&) {
        // What OpenCV says of a storage that is closed tells nobody anything.
        if (isFileRefusal()) raiseRefusal();
        throw;
    }
    if (isFileRefusal()) raiseRefusal();
}

std::tuple<AnyArray, AnyArray, std::pair<int, int>, py::bytes> loadCalibration(const py::bytes& path) {
    const std::string name = path;
    cv::Mat intrinsic, distortion;
    cv::Size imageSize;
    std::string description;
    const bool done = unlocked(
        [&] { return orx::calibrateDataFromFile(name, intrinsic, distortion, imageSize, description); });
    if (!done) raiseRefusal();
    return {numbersFrom(std::move(intrinsic)), numbersFrom(std::move(distortion)),
            std::make_pair(imageSize.width, imageSize.height), py::bytes(description)};
}

ArrayOf<unsigned char> checkerboard(int width, int height, int channels, int cellSize, int first,
                                    int second) {
    cv::Mat picture =
        unlocked([&] { return orx::createBackgroundImg(width, height, channels, cellSize, first, second); });
    if (picture.empty()) raiseRefusal();
    return bytesFrom(std::move(picture));
}

ArrayOf<unsigned char> chessboard(int width, int height, int squareSize, int margin) {
    cv::Mat picture =
        unlocked([&] { return orx::createCalibrateImage(cv::Size(width, height), squareSize, margin); });
    if (picture.empty()) raiseRefusal();
    return bytesFrom(std::move(picture));
}

}  // namespace

void bindCalibration(py::module_& core) {
    core.def("pose_matrix", &poseMatrix, py::arg("pose"));
    core.def("rigid_transform", &rigidTransform, py::arg("source"), py::arg("target"));
    core.def("rotation_between", &rotationBetween, py::arg("source"), py::arg("target"));
    core.def("save_calibration", &saveCalibration, py::arg("path"), py::arg("intrinsic"),
             py::arg("distortion"), py::arg("image_size"), py::arg("description"));
    core.def("load_calibration", &loadCalibration, py::arg("path"));
    core.def("checkerboard", &checkerboard, py::arg("width"), py::arg("height"), py::arg("channels"),
             py::arg("cell_size"), py::arg("first"), py::arg("second"));
    core.def("chessboard", &chessboard, py::arg("width"), py::arg("height"), py::arg("square_size"),
             py::arg("margin"));
}

}  // namespace orxpy
