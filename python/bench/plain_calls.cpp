// The same calls as those of the Python package, in loops of C++ on the same arrays: what python_bench.py
// measures the package's own overhead against. Each function answers with the processor time of a call in
// seconds, that of the calling thread.
#include <pybind11/pybind11.h>

#include <ctime>
#include <opencv2/core.hpp>
#include <vector>

#include "arrays.h"
#include "orxFunctions/analysis/caliper.h"
#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "orxFunctions/analysis/threshold.h"
#include "orxFunctions/fitting/consensus_fit.h"
#include "orxFunctions/fitting/geometric_fit.h"

namespace {

namespace py = pybind11;
using orxpy::Argument;

double secondsNow() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

template <typename Call>
double secondsOf(int rounds, Call&& call) {
    const py::gil_scoped_release released;
    const double start = secondsNow();
    for (int i = 0; i < rounds; ++i) call();
    return (secondsNow() - start) / rounds;
}

double threshold(const Argument& image, int rounds) {
    const orxpy::Image grey = orxpy::imageOf(image, "image", orxpy::ikGrey);
    return secondsOf(rounds, [&] { orx::getThresholdValue(grey.mat, orx::tmOtsu); });
}

double edges(const Argument& image, int rounds) {
    const orxpy::Image grey = orxpy::imageOf(image, "image", orxpy::ikGrey);
    return secondsOf(rounds, [&] {
        std::vector<ORXEdge::TMetricContour> contours;
        ORXEdge::edgesSubPixMetric(grey.mat, contours);
    });
}

double caliper(const Argument& image, const Argument& start, const Argument& end, double width, int rounds) {
    const orxpy::Image grey = orxpy::imageOf(image, "image", orxpy::ikAny);
    const cv::Point2d from = orxpy::placeOf(start, "start"), to = orxpy::placeOf(end, "end");
    return secondsOf(rounds, [&] { orx::getContrastEdges(grey.mat, from, to, width); });
}

double fitCircle(const Argument& points, int rounds) {
    const std::vector<cv::Point2d> all = orxpy::precisePointsOf(points, "points");
    return secondsOf(rounds, [&] { orx::fitCircleGeometric(all); });
}

double findCircle(const Argument& points, int rounds) {
    const std::vector<cv::Point2d> all = orxpy::precisePointsOf(points, "points");
    return secondsOf(rounds, [&] { orx::findCircle(all); });
}

}  // namespace

PYBIND11_MODULE(_plain_calls, calls) {
    calls.def("threshold", &threshold);
    calls.def("edges", &edges);
    calls.def("caliper", &caliper);
    calls.def("fit_circle", &fitCircle);
    calls.def("find_circle", &findCircle);
}
