#include "orxFunctions/fitting/polynomial.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "orxFunctions/fitting/curve_sampling_internal.h"
#include "orxFunctions/fitting/curve_trace_internal.h"
#include "orxFunctions/fitting/drawing_internal.h"
#include "orxFunctions/fitting/polynomial_solve_internal.h"
#include "orxFunctions/fitting/whole_extreme_internal.h"
#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

// The elements of a coefficient matrix, without a copy where it has no gaps.
class CoefficientList {
  public:
    explicit CoefficientList(const cv::Mat& matrix) {
        if (matrix.empty() || matrix.type() != CV_64FC1) return;
        if (!matrix.isContinuous()) packed_ = matrix.clone();
        const cv::Mat& source = packed_.empty() ? matrix : packed_;
        data_ = source.ptr<double>();
        size_ = source.total();
    }

    std::size_t size() const { return size_; }
    const double* begin() const { return data_; }
    const double* end() const { return data_ + size_; }
    double operator[](std::size_t i) const { return data_[i]; }

    double valueAt(double x) const { return evaluatePolynomial(data_, size_, x); }

    double slopeAt(double x) const {
        double sum = 0;
        double power = 1;
        for (std::size_t i = 1; i < size_; ++i) {
            sum += static_cast<double>(i) * data_[i] * power;
            power *= x;
        }
        return sum;
    }

  private:
    cv::Mat packed_;
    const double* data_ = nullptr;
    std::size_t size_ = 0;
};

// (x, valueAt(x)) over the range of the samples' x, those that are not numbers left out.
template <class ValueAt>
void listOverSamples(const std::vector<cv::Point2d>& samples, int digits, std::size_t terms,
                     const char* function, std::vector<cv::Point2d>& list, ValueAt valueAt) {
    if (samples.size() < 2) {
        outPutDebugString(zul::toAnsi("Points.size() < 2，强制返回"));
        refuse(rcTooFew, function, "%zu samples; at least 2 are taken", samples.size());
        return;
    }
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const cv::Point2d& p : samples) {
        low = std::min(low, p.x);
        high = std::max(high, p.x);
    }
    const double step = tracedListStep(digits);
    list.clear();
    if (!takesList(low, high, step, static_cast<double>(terms), function)) return;
    list.reserve(sampleCount(low, high, step, kMostListedSamples));
    forEachSample(low, high, step, kMostListedSamples, [&](double x) { list.emplace_back(x, valueAt(x)); });
}

// target = source. In pieces: one long copy may be left to the processor's string move, which takes several
// times as long as vectors do for some distances of the two.
void copySamples(const std::vector<cv::Point2d>& source, std::vector<cv::Point2d>& target) {
    constexpr std::size_t kPiece = 64;
    if (&source == &target) return;
    target.clear();
    target.reserve(source.size());
    for (std::size_t i = 0; i < source.size(); i += kPiece) {
        const cv::Point2d* const first = source.data() + i;
        target.insert(target.end(), first, first + std::min(kPiece, source.size() - i));
    }
}

constexpr const char* kNoCoefficients = "there are no coefficients";

int toRow(double y) { return static_cast<int>(std::lround(limitedCoordinate(y))); }

}  // namespace

TPolynomial::TPolynomial(std::vector<cv::Point2d>& samples, int degree) { fit(samples, degree); }

TPolynomial::TPolynomial(const std::vector<cv::Point2d>& samples, int degree) { fit(samples, degree); }

TPolynomial::TPolynomial(std::vector<double> x, std::vector<double> y, int degree) {
    fit(std::move(x), std::move(y), degree);
}

bool TPolynomial::fit(std::vector<cv::Point2d>& samples, int degree) {
    return fit(std::as_const(samples), degree);
}

bool TPolynomial::fit(const std::vector<cv::Point2d>& samples, int degree) {
    copySamples(samples, points);
    order = degree;
    return fit();
}

bool TPolynomial::fit(std::vector<double> x, std::vector<double> y, int degree) {
    if (x.size() != y.size())
        return refuse(rcSizesDiffer, "fit", "%zu x and %zu y; as many of both are taken", x.size(), y.size());
    points.resize(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) points[i] = {x[i], y[i]};
    order = degree;
    return fit();
}

bool TPolynomial::fit() {
    if (solvePolynomial(points.data(), points.size(), order, coefficients)) return true;
    if (!takesOrder(order, "fit")) return false;
    return refuse(rcDegenerate, "fit", "%zu samples do not determine a polynomial of order %d", points.size(),
                  order);
}

double TPolynomial::getY(double x) const {
    const CoefficientList list(coefficients);
    if (list.size() == 0) refuse(rcNotReady, "getY", "%s", kNoCoefficients);
    return list.valueAt(x);
}

double TPolynomial::getY(double x, std::vector<double> paraList) {
    coefficients = cv::Mat(paraList, true);
    order = static_cast<int>(paraList.size()) - 1;
    return getY(x);
}

double TPolynomial::getY(double x, cv::Mat paras) {
    cv::Mat copy;
    paras.convertTo(copy, CV_64F);
    coefficients = copy;
    return getY(x);
}

double TPolynomial::getSlope(double x) const {
    const CoefficientList list(coefficients);
    if (list.size() == 0) refuse(rcNotReady, "getSlope", "%s", kNoCoefficients);
    return list.slopeAt(x);
}

void TPolynomial::getError(double& sse, double& rmse, double& r2) const {
    const CoefficientList list(coefficients);
    if (points.empty()) refuse(rcNotReady, "getError", "there are no samples");
    const auto n = static_cast<double>(points.size());
    double sum = 0;
    for (const cv::Point2d& p : points) sum += p.y;
    const double mean = sum / n;
    double squares = 0;
    double sst = 0;
    for (const cv::Point2d& p : points) {
        const double error = list.valueAt(p.x) - p.y;
        squares += error * error;
        sst += (p.y - mean) * (p.y - mean);
    }
    sse = squares;
    rmse = std::sqrt(squares / n);
    r2 = (sst - squares) / sst;
}

cv::Point2d TPolynomial::getExtremeValue(int minX, int maxX, int mode) const {
    constexpr const char* kName = "getExtremeValue";
    if (!orderedBounds(minX, maxX, kName)) return {0, 0};
    constexpr int kRefinements = 3;
    constexpr double kFineSamples = kRefinements * 202;
    const CoefficientList list(coefficients);
    cv::Point2d best(0, 0);
    if (static_cast<double>(list.size()) * kFineSamples > kMostSearchedTerms ||
        !extremeOfWholeNumbers(list.begin(), list.size(), minX, maxX, mode == 1, best)) {
        refuse(rcTooMany, kName, "more than %g terms to sum up from %d to %d", kMostSearchedTerms, minX,
               maxX);
        return {0, 0};
    }
    const double first = minX;
    const double last = maxX;
    double coarser = 1;
    for (int level = 1; level <= kRefinements; ++level) {
        const double low = std::max(first, best.x - 10 * coarser);
        const double high = std::min(last, best.x + 10 * coarser);
        const double step = 1 / std::pow(10.0, level);
        ExtremeSearch search(mode == 1);
        forEachSample(low, high, step, kFineSamples, [&](double x) { search.offer(x, list.valueAt(x)); });
        best = search.best();
        coarser = step;
    }
    return best;
}

bool TPolynomial::getFitParas(std::vector<double>& paraList) const {
    const CoefficientList list(coefficients);
    if (list.size() == 0) return refuse(rcNotReady, "getFitParas", "%s", kNoCoefficients);
    paraList.assign(list.begin(), list.end());
    return true;
}

bool TPolynomial::getFitParas(cv::Mat& paras) const {
    if (CoefficientList(coefficients).size() == 0)
        return refuse(rcNotReady, "getFitParas", "%s", kNoCoefficients);
    paras = coefficients.clone();
    return true;
}

void TPolynomial::getPloyList(std::vector<cv::Point2d>& list, int digits) const {
    const CoefficientList model(coefficients);
    listOverSamples(points, digits, model.size(), "getPloyList", list,
                    [&](double x) { return model.valueAt(x); });
}

void TPolynomial::getPloySlopeList(std::vector<cv::Point2d>& list, int digits) const {
    const CoefficientList model(coefficients);
    listOverSamples(points, digits, model.size(), "getPloySlopeList", list,
                    [&](double x) { return model.slopeAt(x); });
}

void TPolynomial::draw(cv::Mat& image, const cv::Scalar& colour, int thickness, int lineType,
                       int shift) const {
    constexpr int kThinnest = 0;
    if (!takesDrawing(image, "draw") || !takesLines({thickness, lineType, shift}, kThinnest, "draw")) return;
    const CoefficientList list(coefficients);
    std::vector<cv::Point> curve;
    curve.reserve(static_cast<std::size_t>(image.cols));
    for (int x = 0; x < image.cols; ++x) curve.emplace_back(x, toRow(list.valueAt(x)));
    const bool reachesFar = std::any_of(curve.begin(), curve.end(),
                                        [](cv::Point p) { return p.y < -kFarRows || p.y > kFarRows; });
    if (thickness <= 1 || !reachesFar) {
        cv::polylines(image, curve, false, colour, thickness, lineType, shift);
        return;
    }
    for (std::size_t i = 1; i < curve.size(); ++i)
        drawLineIn(image, curve[i - 1], curve[i], colour, {thickness, lineType, shift});
}

}  // namespace orx
