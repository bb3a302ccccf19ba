// Where parts lie: matching/part_pose.h.
#include "part_poses.h"

#include <pybind11/pybind11.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using Box = std::tuple<Pair, Pair, double>;  // as cv2 has it: centre, size, angle

ArrayOf<double> posePoints(const PoseNumbers& pose, const Argument& points) {
    const std::vector<cv::Point2d> places = precisePointsOf(points, "points");
    return arrayFrom(unlocked([&] { return orx::applyPoseToPoints(poseOf(pose), places); }));
}

Pair posePoint(const PoseNumbers& pose, const Argument& point) {
    return pairOf(orx::applyPose(poseOf(pose), placeOf(point, "point")));
}

double poseAngle(const PoseNumbers& pose, double angle) { return orx::applyPoseToAngle(poseOf(pose), angle); }

Box poseBox(const PoseNumbers& pose, const Box& box) {
    const auto& [centre, size, angle] = box;
    const auto single = [](double number) { return static_cast<float>(number); };
    const cv::RotatedRect moved = orx::applyPoseToBox(
        poseOf(pose), cv::RotatedRect(cv::Point2f(single(centre.first), single(centre.second)),
                                      cv::Size2f(single(size.first), single(size.second)), single(angle)));
    return {pairOf(moved.center), Pair(moved.size.width, moved.size.height), moved.angle};
}

std::pair<Pair, double> poseCircle(const PoseNumbers& pose, const Argument& centre, double radius) {
    orx::TCircle circle;
    const cv::Point2d place = placeOf(centre, "centre");
    circle.x = place.x;
    circle.y = place.y;
    circle.r = radius;
    circle = orx::applyPoseToCircle(poseOf(pose), circle);
    return {Pair(circle.x, circle.y), circle.r};
}

std::pair<Pair, Pair> poseSegment(const PoseNumbers& pose, const Argument& start, const Argument& end) {
    const orx::TLineSegment moved =
        orx::applyPoseToSegment(poseOf(pose), {placeOf(start, "start"), placeOf(end, "end")});
    return {pairOf(moved.from), pairOf(moved.to)};
}

std::tuple<double, double, double> poseCalipers(const PoseNumbers& pose, double startAngle,
                                                double searchLength, double width) {
    orx::TCircleCaliperOptions options;
    options.startAngle = startAngle;
    options.searchLength = searchLength;
    options.width = width;
    options = orx::applyPoseToCalipers(poseOf(pose), options);
    return {options.startAngle, options.searchLength, options.width};
}

ArrayOf<double> poseCovariance(const PoseNumbers& pose, const Argument& covariance, const Argument& point) {
    cv::Mat matrix;
    matrixOf(covariance, "covariance").convertTo(matrix, CV_64F);
    if (matrix.rows != 4 || matrix.cols != 4) {
        throw py::type_error("covariance: expected a matrix: array of numbers of shape (4, 4), got " +
                             describe(covariance));
    }
    return arrayFrom(orx::mappedCovariance(poseOf(pose), cv::Matx44d(matrix), placeOf(point, "point")));
}

PoseNumbers composePoses(const PoseNumbers& outer, const PoseNumbers& inner) {
    return numbersOf(orx::composePoses(poseOf(outer), poseOf(inner)));
}

PoseNumbers invertPose(const PoseNumbers& pose) {
    const double scale = std::get<3>(pose);
    if (!std::isfinite(scale) || scale == 0.0)
        throw py::value_error("scale: expected a finite number other than 0");
    return numbersOf(orx::invertPose(poseOf(pose)));
}

}  // namespace

void bindPartPoses(py::module_& core) {
    core.def("pose_points", &posePoints, py::arg("pose"), py::arg("points"));
    core.def("pose_point", &posePoint, py::arg("pose"), py::arg("point"));
    core.def("pose_angle", &poseAngle, py::arg("pose"), py::arg("angle"));
    core.def("pose_box", &poseBox, py::arg("pose"), py::arg("box"));
    core.def("pose_circle", &poseCircle, py::arg("pose"), py::arg("centre"), py::arg("radius"));
    core.def("pose_segment", &poseSegment, py::arg("pose"), py::arg("start"), py::arg("end"));
    core.def("pose_calipers", &poseCalipers, py::arg("pose"), py::arg("start_angle"),
             py::arg("search_length"), py::arg("width"));
    core.def("pose_covariance", &poseCovariance, py::arg("pose"), py::arg("covariance"), py::arg("point"));
    core.def("compose_poses", &composePoses, py::arg("outer"), py::arg("inner"));
    core.def("invert_pose", &invertPose, py::arg("pose"));
}

}  // namespace orxpy
