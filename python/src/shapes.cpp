#include "shapes.h"

#include <algorithm>
#include <string>

namespace orxpy {

namespace {

// The fields of one argument, by their names in Python.
class Fields {
  public:
    Fields(const Argument& object, std::string name, const char* kind)
        : object_(object), name_(std::move(name)), kind_(kind) {}

    void read(const char* field, double& value) const {
        const py::object given = of(field);
        value = PyFloat_AsDouble(given.ptr());
        if (value == -1.0 && PyErr_Occurred() != nullptr) {
            PyErr_Clear();
            refuse(field, "a number", given);
        }
    }

    void read(const char* field, int& value) const {
        double number = 0.0;
        read(field, number);
        constexpr double kMost = 2147483647.0;
        if (!(number >= 0.0 && number <= kMost)) refuse(field, "a count", of(field));
        value = static_cast<int>(number);
    }

    void read(const char* field, bool& value) const {
        const int truth = PyObject_IsTrue(of(field).ptr());
        if (truth < 0) throw py::error_already_set();
        value = truth == 1;
    }

    void read(const char* field, cv::Point2d& value) const {
        value = placeOf(of(field), (name_ + "." + field).c_str());
    }

    template <int Size>
    void read(const char* field, cv::Matx<double, Size, Size>& value) const {
        value = squareOf<Size>(of(field), name_ + "." + field);
    }

    void readReport(orx::TFitReport& report) const {
        const Fields fields(of("report"), name_ + ".report", "a FitReport");
        fields.read("points", report.points);
        fields.read("used_points", report.usedPoints);
        fields.read("effective_points", report.effectivePoints);
        fields.read("degrees_of_freedom", report.degreesOfFreedom);
        fields.read("noise", report.noise);
        fields.read("rms", report.rms);
        fields.read("peak_to_valley", report.peakToValley);
        fields.read("iterations", report.iterations);
        const py::object used = fields.of("used");
        const auto truths = py::array_t<bool, py::array::c_style | py::array::forcecast>::ensure(used);
        if (!truths) PyErr_Clear();
        if (!truths || truths.ndim() != 1) fields.refuse("used", "a bool array of shape (n,)", used);
        report.used.assign(truths.data(), truths.data() + truths.size());
        report.status = orx::fsOk;
    }

  private:
    py::object of(const char* field) const {
        const py::object value = py::getattr(object_, field, py::none());
        if (value.is_none()) refuseType(name_, kind_, object_);
        return value;
    }

    [[noreturn]] void refuse(const char* field, const std::string& expected, const py::object& got) const {
        refuseType(name_ + "." + field, expected, got);
    }

    py::object object_;
    std::string name_;
    const char* kind_;
};

void readCircle(const Fields& fields, orx::TMeasuredCircle& circle) {
    fields.readReport(circle);
    fields.read("center", circle.center);
    fields.read("radius", circle.radius);
    fields.read("start_angle", circle.startAngle);
    fields.read("sweep", circle.sweep);
    fields.read("covariance", circle.covariance);
    fields.read("x_deviation", circle.xDeviation);
    fields.read("y_deviation", circle.yDeviation);
    fields.read("radius_deviation", circle.radiusDeviation);
}

}  // namespace

ReportTuple reportTuple(orx::TFitReport&& report) {
    return {report.points,           report.usedPoints, report.effectivePoints,
            report.degreesOfFreedom, report.noise,      report.rms,
            report.peakToValley,     report.iterations, truthsFrom(std::move(report.used))};
}

LineTuple shapeTuple(const orx::TMeasuredLine& line) {
    return {pairOf(line.point),         pairOf(line.direction), line.angle,         line.from, line.to,
            arrayFrom(line.covariance), line.offsetDeviation,   line.angleDeviation};
}

CircleTuple shapeTuple(const orx::TMeasuredCircle& circle) {
    return {pairOf(circle.center),        circle.radius,     circle.startAngle, circle.sweep,
            arrayFrom(circle.covariance), circle.xDeviation, circle.yDeviation, circle.radiusDeviation};
}

ArcTuple shapeTuple(const orx::TMeasuredArc& arc) {
    const orx::TMeasuredCircle& circle = arc;
    return std::tuple_cat(shapeTuple(circle), std::make_tuple(pairOf(arc.start), pairOf(arc.middle),
                                                              pairOf(arc.end), arc.length));
}

EllipseTuple shapeTuple(const orx::TMeasuredEllipse& ellipse) {
    return {pairOf(ellipse.center),
            ellipse.semiMajor,
            ellipse.semiMinor,
            ellipse.angle,
            ellipse.angleTold,
            ellipse.startAngle,
            ellipse.sweep,
            arrayFrom(ellipse.covariance),
            ellipse.xDeviation,
            ellipse.yDeviation,
            ellipse.semiMajorDeviation,
            ellipse.semiMinorDeviation,
            ellipse.angleDeviation};
}

orx::TMeasuredLine measuredLineOf(const Argument& argument, const char* name) {
    const Fields fields(argument, name, "a MeasuredLine");
    orx::TMeasuredLine line;
    fields.readReport(line);
    fields.read("point", line.point);
    fields.read("direction", line.direction);
    fields.read("angle", line.angle);
    fields.read("from_", line.from);
    fields.read("to", line.to);
    fields.read("covariance", line.covariance);
    fields.read("offset_deviation", line.offsetDeviation);
    fields.read("angle_deviation", line.angleDeviation);
    return line;
}

orx::TMeasuredCircle measuredCircleOf(const Argument& argument, const char* name) {
    orx::TMeasuredCircle circle;
    readCircle(Fields(argument, name, "a MeasuredCircle"), circle);
    return circle;
}

orx::TMeasuredArc measuredArcOf(const Argument& argument, const char* name) {
    const Fields fields(argument, name, "a MeasuredArc");
    orx::TMeasuredArc arc;
    readCircle(fields, arc);
    fields.read("start", arc.start);
    fields.read("middle", arc.middle);
    fields.read("end", arc.end);
    fields.read("length", arc.length);
    return arc;
}

orx::TMeasuredEllipse measuredEllipseOf(const Argument& argument, const char* name) {
    const Fields fields(argument, name, "a MeasuredEllipse");
    orx::TMeasuredEllipse ellipse;
    fields.readReport(ellipse);
    fields.read("center", ellipse.center);
    fields.read("semi_major", ellipse.semiMajor);
    fields.read("semi_minor", ellipse.semiMinor);
    fields.read("angle", ellipse.angle);
    fields.read("angle_told", ellipse.angleTold);
    fields.read("start_angle", ellipse.startAngle);
    fields.read("sweep", ellipse.sweep);
    fields.read("covariance", ellipse.covariance);
    fields.read("x_deviation", ellipse.xDeviation);
    fields.read("y_deviation", ellipse.yDeviation);
    fields.read("semi_major_deviation", ellipse.semiMajorDeviation);
    fields.read("semi_minor_deviation", ellipse.semiMinorDeviation);
    fields.read("angle_deviation", ellipse.angleDeviation);
    return ellipse;
}

}  // namespace orxpy
