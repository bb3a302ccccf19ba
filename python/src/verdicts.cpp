// Verdicts and the statistics of a run: measuring/verdict.h, measuring/statistics.h.
#include <pybind11/pybind11.h>

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/measuring/statistics.h"
#include "orxFunctions/measuring/verdict.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using orx::TGaugeStudy;
using orx::TRunStatistics;
using orx::TTolerance;

using Number = std::optional<double>;

// What is not told is no number in the library.
Number told(double value) { return std::isnan(value) ? std::nullopt : Number(value); }

TTolerance toleranceOf(double lower, double upper) {
    const TTolerance tolerance{lower, upper};
    if (!tolerance.valid()) {
        throw py::value_error("lower, upper: expected lower <= upper, got " +
                              std::string(py::str(py::float_(lower))) + " and " +
                              std::string(py::str(py::float_(upper))));
    }
    return tolerance;
}

std::tuple<int, double, double> judge(double value, double deviation, double degreesOfFreedom, double lower,
                                      double upper, double confidence) {
    orx::clearLastRefusal();
    const orx::TJudgement judgement =
        orx::judge(value, deviation, degreesOfFreedom, {lower, upper}, confidence);
    if (judgement.verdict == orx::vdNotMeasured) raiseRefusal();
    return {judgement.verdict, judgement.conformity, judgement.guard};
}

int worseVerdict(int a, int b) {
    return orx::worseVerdict(static_cast<orx::TVerdict>(a), static_cast<orx::TVerdict>(b));
}

// The studies belong to one thread at a time: Python's lock is held all the while.
void addToRun(TRunStatistics& run, const Argument& values, const std::vector<int>& verdicts) {
    const std::vector<double> numbers = numbersOf(values, "values");
    if (verdicts.size() != numbers.size() && verdicts.size() != 1) {
        throw py::value_error("verdicts: expected one, or one for each of " + std::to_string(numbers.size()) +
                              " values, got " + std::to_string(verdicts.size()));
    }
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const int verdict = verdicts[verdicts.size() == 1 ? 0 : i];
        run.add(numbers[i], static_cast<orx::TVerdict>(verdict));
    }
}

// parts, count; of each verdict; mean, deviation, least, largest, range, cp, cpk
using Summary = std::tuple<std::int64_t, std::int64_t, std::vector<std::int64_t>, Number, Number, Number,
                           Number, Number, Number, Number>;

Summary summaryOf(const TRunStatistics& run) {
    std::vector<std::int64_t> verdicts;
    for (int i = orx::vdPass; i <= orx::vdNoLimits; ++i)
        verdicts.push_back(run.countOf(static_cast<orx::TVerdict>(i)));
    return {
        run.parts(),       run.count(),         verdicts,          told(run.mean()), told(run.deviation()),
        told(run.least()), told(run.largest()), told(run.range()), told(run.cp()),   told(run.cpk())};
}

// start, width, counts, below, above
using Histogram = std::tuple<double, double, std::vector<std::int64_t>, std::int64_t, std::int64_t>;

Histogram histogramOf(const TRunStatistics& run) {
    const orx::TRunHistogram told = run.histogram();
    return {told.start, told.width, told.counts, told.below, told.above};
}

// first, count, least, mean, largest
using ChartPoint = std::tuple<std::int64_t, std::int64_t, double, double, double>;

std::vector<ChartPoint> chartOf(const TRunStatistics& run) {
    std::vector<ChartPoint> points;
    for (const orx::TRunChartPoint& point : run.chart())
        points.emplace_back(point.first, point.count, point.least, point.mean, point.largest);
    return points;
}

void addToStudy(TGaugeStudy& study, int part, double value) {
    orx::clearLastRefusal();
    if (!study.add(part, value)) raiseRefusal();
}

// parts, values, degrees of freedom, repeatability, deviation of the parts, both shares
using Gauge = std::tuple<int, std::int64_t, double, Number, Number, Number, Number>;

Gauge gaugeOf(const TGaugeStudy& study) {
    const orx::TGaugeResult result = study.result();
    return {result.parts,
            result.values,
            result.degreesOfFreedom,
            told(result.repeatability),
            told(result.partDeviation),
            told(result.toleranceShare),
            told(result.variationShare)};
}

// count, mean, deviation, least, largest; None for a part without values
using GaugePart = std::tuple<std::int64_t, double, Number, double, double>;

std::vector<std::optional<GaugePart>> gaugePartsOf(const TGaugeStudy& study) {
    std::vector<std::optional<GaugePart>> parts;
    for (const orx::TGaugePart& part : study.parts()) {
        if (part.count > 0) {
            parts.emplace_back(
                GaugePart(part.count, part.mean, told(part.deviation()), part.least, part.largest));
        } else {
            parts.emplace_back(std::nullopt);
        }
    }
    return parts;
}

}  // namespace

void bindVerdicts(py::module_& core) {
    core.def("judge", &judge, py::arg("value"), py::arg("deviation"), py::arg("degrees_of_freedom"),
             py::arg("lower"), py::arg("upper"), py::arg("confidence"));
    core.def("worse_verdict", &worseVerdict, py::arg("a"), py::arg("b"));
    py::class_<TRunStatistics>(core, "RunStatistics")
        .def(py::init([](double lower, double upper) { return TRunStatistics(toleranceOf(lower, upper)); }),
             py::arg("lower"), py::arg("upper"))
        .def(
            "add",
            [](TRunStatistics& run, double value, int verdict) {
                run.add(value, static_cast<orx::TVerdict>(verdict));
            },
            py::arg("value"), py::arg("verdict"))
        .def("extend", &addToRun, py::arg("values"), py::arg("verdicts"))
        .def("summary", &summaryOf)
        .def("histogram", &histogramOf)
        .def("chart", &chartOf);
    py::class_<TGaugeStudy>(core, "GaugeStudy")
        .def(py::init([](double lower, double upper) { return TGaugeStudy(toleranceOf(lower, upper)); }),
             py::arg("lower"), py::arg("upper"))
        .def("add", &addToStudy, py::arg("part"), py::arg("value"))
        .def("result", &gaugeOf)
        .def("parts", &gaugePartsOf);
}

}  // namespace orxpy
