#include "orxFunctions/fitting/spline_curve.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "orxFunctions/fitting/curve_sampling_internal.h"
#include "orxFunctions/fitting/curve_trace_internal.h"
#include "orxFunctions/fitting/polynomial_solve_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

using Segments = std::vector<TSplineSegment>;

// The average of the covering segments' values among [first, last), which holds all of them.
double averageAt(double x, const TSplineSegment* first, const TSplineSegment* last) {
    double sum = 0;
    double covering = 0;
    for (; first != last; ++first) {
        if (!(first->startX <= x && x <= first->endX)) continue;
        sum += evaluatePolynomial(first->paraList.data(), first->paraList.size(), x);
        covering += 1;
    }
    return sum / covering;
}

// Evaluates at ascending x: the segments of the next x are found from those of the last one.
class AscendingEvaluator {
  public:
    explicit AscendingEvaluator(const Segments& segments)
        : first_(segments.data()), last_(first_), end_(first_ + segments.size()) {}

    double valueAt(double x) {
        while (first_ != end_ && first_->endX < x) ++first_;
        while (last_ != end_ && last_->startX <= x) ++last_;
        return averageAt(x, first_, std::max(first_, last_));
    }

  private:
    const TSplineSegment* first_;
    const TSplineSegment* last_;
    const TSplineSegment* end_;
};

// Whether a chain of that order through so many samples can be built, and soon. Keeps the refusal.
bool takesSamples(std::size_t count, int n) {
    constexpr double kMostSteps = 2e9;
    const auto run = static_cast<std::size_t>(n);
    if (count <= run) return refuse(rcTooFew, "fit", "%zu samples; more than %d are taken", count, n);
    const double steps = static_cast<double>(count - run) * std::pow(n + 1, 3);
    if (steps <= kMostSteps) return true;
    return refuse(rcTooMany, "fit", "%zu samples at order %d take %g steps; at most %g are taken", count, n,
                  steps, kMostSteps);
}

// How many terms the values at low, low + step, ... high are summed from, and one for each value.
double termsBetween(const Segments& segments, double low, double high, double step) {
    double covered = high - low;
    for (const TSplineSegment& segment : segments) {
        if (!(segment.startX <= high && segment.endX >= low)) continue;
        const double overlap = std::min(high, segment.endX) - std::max(low, segment.startX);
        covered += overlap * static_cast<double>(segment.paraList.size());
    }
    return covered / step;
}

bool ascendingX(const cv::Point2d& l, const cv::Point2d& r) {
    return l.x < r.x || (std::isnan(r.x) && !std::isnan(l.x));
}

}  // namespace

void TSplineCurve::fit(std::vector<cv::Point2d> points, int n) {
    segments.clear();
    if (!takesOrder(n, "fit") || !takesSamples(points.size(), n)) return;
    const auto run = static_cast<std::size_t>(n);
    std::stable_sort(points.begin(), points.end(), ascendingX);
    segments.resize(points.size() - run);
    for (std::size_t i = 0; i < segments.size(); ++i) {
        TSplineSegment& segment = segments[i];
        segment.startX = points[i].x;
        segment.endX = points[i + run].x;
        solvePolynomial(&points[i], run + 1, n, segment.paraMat);
        segment.paraList.assign(segment.paraMat.begin<double>(), segment.paraMat.end<double>());
    }
}

void TSplineCurve::fit(std::vector<double> x, std::vector<double> y, int n) {
    if (x.size() != y.size()) {
        refuse(rcSizesDiffer, "fit", "%zu x and %zu y; as many of both are taken", x.size(), y.size());
        return;
    }
    std::vector<cv::Point2d> points(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) points[i] = {x[i], y[i]};
    fit(std::move(points), n);
}

double TSplineCurve::getY(double x) const {
    const auto first = std::partition_point(segments.begin(), segments.end(),
                                            [x](const TSplineSegment& s) { return s.endX < x; });
    const auto last =
        std::partition_point(first, segments.end(), [x](const TSplineSegment& s) { return s.startX <= x; });
    const TSplineSegment* const data = segments.data();
    const double y = averageAt(x, data + (first - segments.begin()), data + (last - segments.begin()));
    if (segments.empty())
        refuse(rcNotReady, "getY", "there are no segments");
    else if (first >= last)
        refuse(rcOutside, "getY", "no segment holds %g; they reach from %g to %g", x, segments.front().startX,
               segments.back().endX);
    return y;
}

cv::Point2d TSplineCurve::getExtremeValue(int mode) const {
    if (segments.empty()) {
        refuse(rcNotReady, "getExtremeValue", "there are no segments");
        return {0, 0};
    }
    return getExtremeValue(segments.front().startX, segments.back().endX, mode);
}

cv::Point2d TSplineCurve::getExtremeValue(double minX, double maxX, int mode) const {
    constexpr const char* kName = "getExtremeValue";
    constexpr double kStep = 0.01;
    if (!orderedBounds(minX, maxX, kName)) return {0, 0};
    if (!std::isfinite(minX) || !std::isfinite(maxX)) {
        refuse(rcNotFinite, kName, "the bounds are %g and %g", minX, maxX);
        return {0, 0};
    }
    const double terms = termsBetween(segments, minX, maxX, kStep);
    if (!(terms <= kMostTerms)) {
        refuse(rcTooMany, kName, "%g terms to sum up from %g to %g; at most %g are taken", terms, minX, maxX,
               kMostTerms);
        return {0, 0};
    }
    AscendingEvaluator evaluator(segments);
    ExtremeSearch search(mode == 1);
    forEachSample(minX, maxX, kStep, kMostTerms, [&](double x) { search.offer(x, evaluator.valueAt(x)); });
    return search.best();
}

void TSplineCurve::getSplineList(std::vector<cv::Point2d>& list, int digits) const {
    if (segments.empty()) {
        outPutDebugString(zul::toAnsi("paraList.size() == 0，强制返回"));
        refuse(rcNotReady, "getSplineList", "there are no segments");
        return;
    }
    const double low = segments.front().startX;
    const double high = segments.back().endX;
    const double step = tracedListStep(digits);
    AscendingEvaluator evaluator(segments);
    list.clear();
    const double termsEach = termsBetween(segments, low, high, step) / std::max(1.0, (high - low) / step);
    if (!takesList(low, high, step, termsEach, "getSplineList")) return;
    list.reserve(sampleCount(low, high, step, kMostListedSamples));
    forEachSample(low, high, step, kMostListedSamples,
                  [&](double x) { list.emplace_back(x, evaluator.valueAt(x)); });
}

}  // namespace orx
