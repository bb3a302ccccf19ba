#include "orxFunctions/fitting/spline_curve.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "orxFunctions/fitting/curve_sampling_internal.h"
#include "orxFunctions/fitting/curve_trace_internal.h"
#include "orxFunctions/fitting/polynomial_solve_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/simd/vectors.h"

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

// Evaluates at ascending x: the segments of the next x are found from those of the last one, and x between
// two ends of segments, which the same ones cover, are evaluated side by side.
class AscendingEvaluator {
  public:
    explicit AscendingEvaluator(const Segments& segments)
        : first_(segments.data()), last_(first_), end_(first_ + segments.size()) {}

    // y[i] = averageAt(x[i]) of all segments, to the last bit; not below the x of earlier calls.
    void valuesAt(const double* x, std::size_t count, double* y) {
        for (std::size_t i = 0; i < count;) {
            Stretch stretch = stretchFrom(x[i]);
            if (count - i < kLeast || !stretch.holds(x[i + kLeast - 1])) {
                y[i] = averageAt(x[i], first_, std::max(first_, last_));
                ++i;
                continue;
            }
            takeCovering(x[i], stretch);
            std::size_t next = i + 1;
            while (next < count && stretch.holds(x[next])) ++next;
            sumSideBySide(x + i, next - i, y + i);
            i = next;
        }
    }

  private:
    using VecD = ORX_SIMD::VecD;
    static constexpr std::size_t kLanes = VecD::kLanes;
    // So many vectors side by side hide the latency of each.
    static constexpr std::size_t kSide = 4 / kLanes;
    static constexpr std::size_t kGroup = kSide * kLanes;
    // Fewer values are not worth it.
    static constexpr std::size_t kLeast = 3;

    // The x from some x on that the same segments cover.
    struct Stretch {
        double lastCovered;
        double firstBeyond;

        bool holds(double x) const { return x <= lastCovered && x < firstBeyond; }
    };

    // Finds the segments among which those that cover `x` are, and where others begin to be.
    Stretch stretchFrom(double x) {
        while (first_ != end_ && first_->endX < x) ++first_;
        while (last_ != end_ && last_->startX <= x) ++last_;
        constexpr double kNever = std::numeric_limits<double>::infinity();
        return {first_ != end_ ? first_->endX : kNever, last_ != end_ ? last_->startX : kNever};
    }

    // Takes those that cover `x`, and ends the stretch where others do.
    void takeCovering(double x, Stretch& stretch) {
        covering_.clear();
        for (const TSplineSegment* s = first_; s < last_; ++s) {
            if (!(s->startX <= x)) stretch.firstBeyond = std::min(stretch.firstBeyond, s->startX);
            if (!(s->startX <= x && x <= s->endX)) continue;
            covering_.push_back(s);
            stretch.lastCovered = std::min(stretch.lastCovered, s->endX);
        }
    }

    // As averageAt does it for each x. Reads and writes nothing beyond `count`.
    void sumSideBySide(const double* x, std::size_t count, double* y) const {
        std::size_t i = 0;
        for (; i + kGroup <= count; i += kGroup) sumGroup(x + i, y + i);
        if (i == count) return;
        double rest[kGroup] = {};
        double values[kGroup];
        std::copy(x + i, x + count, rest);
        sumGroup(rest, values);
        std::copy(values, values + (count - i), y + i);
    }

    void sumGroup(const double* x, double* y) const {
        VecD at[kSide];
        VecD square[kSide];
        VecD cube[kSide];
        VecD sum[kSide];
        for (std::size_t k = 0; k < kSide; ++k) {
            at[k] = VecD::load(x + k * kLanes);
            square[k] = at[k] * at[k];
            cube[k] = square[k] * at[k];
            sum[k] = VecD::all(0);
        }
        for (const TSplineSegment* const s : covering_) {
            const double* const c = s->paraList.data();
            if (s->paraList.size() == 4) {  // the powers are the same for all segments
                for (std::size_t k = 0; k < kSide; ++k) {
                    sum[k] = sum[k] + (VecD::all(0 + c[0]) + VecD::all(c[1]) * at[k] +
                                       VecD::all(c[2]) * square[k] + VecD::all(c[3]) * cube[k]);
                }
                continue;
            }
            for (std::size_t k = 0; k < kSide; ++k) sum[k] = sum[k] + polynomialAt(s->paraList, at[k]);
        }
        const VecD covering = VecD::all(static_cast<double>(covering_.size()));
        for (std::size_t k = 0; k < kSide; ++k) (sum[k] / covering).store(y + k * kLanes);
    }

    // As evaluatePolynomial does it for each x.
    static VecD polynomialAt(const std::vector<double>& coefficients, VecD x) {
        VecD sum = VecD::all(0);
        VecD power = VecD::all(1);
        for (const double coefficient : coefficients) {
            sum = sum + VecD::all(coefficient) * power;
            power = power * x;
        }
        return sum;
    }

    const TSplineSegment* first_;
    const TSplineSegment* last_;
    const TSplineSegment* end_;
    std::vector<const TSplineSegment*> covering_;
};

// Calls visit(x, values of the chain there, how many) for the x that forEachSample visits, some at a time.
template <class Visit>
void forEachValues(const Segments& segments, double low, double high, double step, double most, Visit visit) {
    AscendingEvaluator evaluator(segments);
    double y[kSamplesAtOnce];
    forEachSamples(low, high, step, most, [&](const double* x, std::size_t count) {
        evaluator.valuesAt(x, count, y);
        visit(x, y, count);
    });
}

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
    ExtremeSearch search(mode == 1);
    forEachValues(segments, minX, maxX, kStep, kMostTerms,
                  [&](const double* x, const double* y, std::size_t count) {
                      for (std::size_t i = 0; i < count; ++i) search.offer(x[i], y[i]);
                  });
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
    list.clear();
    const double termsEach = termsBetween(segments, low, high, step) / std::max(1.0, (high - low) / step);
    if (!takesList(low, high, step, termsEach, "getSplineList")) return;
    list.reserve(sampleCount(low, high, step, kMostListedSamples));
    forEachValues(segments, low, high, step, kMostListedSamples,
                  [&](const double* x, const double* y, std::size_t count) {
                      cv::Point2d points[kSamplesAtOnce];
                      for (std::size_t i = 0; i < count; ++i) points[i] = {x[i], y[i]};
                      list.insert(list.end(), points, points + count);
                  });
}

}  // namespace orx
