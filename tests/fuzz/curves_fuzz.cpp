// Polynomials and chains of local ones, against sums of powers and plain loops.
#include <algorithm>
#include <cmath>

#include "orxFunctions/fitting/polynomial.h"
#include "orxFunctions/fitting/spline_curve.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;

double sumOfPowers(const std::vector<double>& coefficients, double x) {
    double sum = 0;
    for (std::size_t i = 0; i < coefficients.size(); ++i)
        sum += coefficients[i] * std::pow(x, static_cast<double>(i));
    return sum;
}

double largestTerm(const std::vector<double>& coefficients, double x) {
    double most = 0;
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
        const double term = std::abs(coefficients[i] * std::pow(x, static_cast<double>(i)));
        if (std::isnan(term)) return term;
        most = std::max(most, term);
    }
    return most;
}

// To within the rounding of the terms; where these overflow, anything.
bool agrees(double value, const std::vector<double>& coefficients, double x) {
    const double terms = largestTerm(coefficients, x);
    if (!std::isfinite(terms) || terms > 1e300) return true;
    return std::abs(value - sumOfPowers(coefficients, x)) <= 1e-9 * terms + 1e-12;
}

std::vector<cv::Point2d> samples(fuzz::Input& input) {
    std::vector<cv::Point2d> list = input.points(40);
    if (input.flag()) return list;
    for (std::size_t i = 0; i < list.size(); ++i) list[i].x = static_cast<double>(i);
    return list;
}

bool allFinite(const std::vector<cv::Point2d>& list) {
    return std::all_of(list.begin(), list.end(),
                       [](const cv::Point2d& p) { return std::abs(p.x) < 1e6 && std::abs(p.y) < 1e6; });
}

void checkPolynomial(fuzz::Input& input) {
    std::vector<cv::Point2d> list = samples(input);
    const bool wild = input.byte() % 8U == 0;
    const int order = wild ? input.integer() : input.between(-1, 12);
    const double x = input.number();
    const int from = wild ? input.integer() : input.between(-300, 300);
    const int to = wild ? input.integer() : input.between(-300, 300);
    const int digits = input.between(-2, 2);
    orx::TPolynomial model;
    const bool fitted = model.fit(list, order);
    std::vector<double> coefficients;
    require(model.getFitParas(coefficients) == !coefficients.empty(), "coefficients where there are some");
    require(!fitted || static_cast<int>(coefficients.size()) == order + 1, "one more than the order");
    std::vector<double> xs;
    std::vector<double> ys;
    for (const cv::Point2d& p : list) {
        xs.push_back(p.x);
        ys.push_back(p.y);
    }
    orx::TPolynomial other;
    require(other.fit(xs, ys, order) == fitted && fuzz::same(other.coefficients, model.coefficients),
            "lists of x and y give the same");
    xs.push_back(1);
    require(!other.fit(xs, ys, order), "lists of different length are refused");
    require(agrees(model.getY(x), coefficients, x), "the sum of powers");
    std::vector<double> slopes;
    for (std::size_t i = 1; i < coefficients.size(); ++i)
        slopes.push_back(static_cast<double>(i) * coefficients[i]);
    require(agrees(model.getSlope(x), slopes, x), "the derivative's sum of powers");
    double sse = 0;
    double rmse = 0;
    double r2 = 0;
    model.getError(sse, rmse, r2);
    if (fitted && allFinite(list)) {
        double squares = 0;
        for (const cv::Point2d& p : list) squares += std::pow(model.getY(p.x) - p.y, 2);
        require(fuzz::nearly(sse, squares, 1e-6), "the sum of squares by a plain loop");
        require(fuzz::nearly(rmse, std::sqrt(squares / static_cast<double>(list.size())), 1e-6),
                "its root mean");
    }
    for (const int mode : {0, 1}) {
        const cv::Point2d extreme = model.getExtremeValue(from, to, mode);
        if (from == to) require(extreme == cv::Point2d(), "equal bounds give (0, 0)");
    }
    std::vector<cv::Point2d> curve;
    if (allFinite(list)) model.getPloyList(curve, digits);
    for (const cv::Point2d& p : curve) require(agrees(p.y, coefficients, p.x), "the curve's points");
    if (allFinite(list)) model.getPloySlopeList(curve, digits);
    cv::Mat image = input.picture();
    model.draw(image, cv::Scalar(1, 2, 3), 1, 8, input.between(0, 3));
}

void checkCoefficients(fuzz::Input& input) {
    const double x = input.option(-9, 9);
    std::vector<double> own;
    for (int i = input.between(0, 20); i > 0; --i) own.push_back(input.number());
    orx::TPolynomial model;
    const bool finite = std::all_of(own.begin(), own.end(), [](double v) { return std::isfinite(v); });
    const double y = model.getY(x, own);
    require(!finite || agrees(y, own, x), "coefficients given as a list");
    orx::TPolynomial other;
    require(fuzz::nearly(other.getY(x, cv::Mat(own, true)), y), "and as a matrix");
    model.coefficients = input.matrix();
    model.getY(x);
    model.getSlope(x);
    model.getFitParas(own);
    model.getExtremeValue(-9, 9, 1);
}

void checkSpline(fuzz::Input& input) {
    const std::vector<cv::Point2d> list = samples(input);
    const int order = input.byte() % 8U == 0 ? input.integer() : input.between(-1, 6);
    orx::TSplineCurve curve;
    curve.fit(list, order);
    const std::size_t expected = order < 0 || order > 200 || static_cast<int>(list.size()) <= order
                                     ? 0
                                     : list.size() - static_cast<std::size_t>(order);
    require(curve.segments.size() == expected, "one for each neighbourhood");
    for (int i = 0; i < 8; ++i) {
        const double x = input.number();
        double sum = 0;
        double terms = 0;
        int count = 0;
        for (const orx::TSplineSegment& s : curve.segments) {
            if (!(s.startX <= x && x <= s.endX)) continue;
            sum += sumOfPowers(s.paraList, x);
            terms += largestTerm(s.paraList, x);
            ++count;
        }
        const double y = curve.getY(x);
        if (!allFinite(list) || terms > 1e300) continue;
        require(std::isnan(y) == (count == 0 || std::isnan(sum)), "a number where there are segments");
        require(count == 0 || std::isnan(sum) || std::abs(y - sum / count) <= 1e-9 * terms + 1e-12,
                "the mean of the segments");
    }
    if (!allFinite(list)) return;
    double reach = 0;
    for (const cv::Point2d& p : list) reach = std::max(reach, std::abs(p.x));
    if (reach > 500) return;
    const cv::Point2d most = curve.getExtremeValue(1);
    const cv::Point2d least = curve.getExtremeValue(0);
    if (!curve.segments.empty() && std::isfinite(most.y) && std::isfinite(least.y))
        require(least.y <= most.y, "the least is not above the most");
    curve.getExtremeValue(input.option(-50, 50), 20, 1);
    std::vector<cv::Point2d> points;
    curve.getSplineList(points, input.between(-1, 1));
    for (const cv::Point2d& p : points) require(fuzz::nearly(p.y, curve.getY(p.x)), "the curve's points");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::runOneOf({checkPolynomial, checkCoefficients, checkSpline}, bytes, size);
    return 0;
}
