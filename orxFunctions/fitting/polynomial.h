// A profile y = f(x) as one least-squares polynomial.
//
// Fits solve the normal equations of the plain powers of x: x is not centred or scaled, so orders above about
// 5 over hundreds of pixels lose digits. Subtract the middle of the range first where that matters, or use
// TSplineCurve (fitting/spline_curve.h) for profiles that a low order can't follow. Without coefficients,
// where a function answers with 0 or false for that: rcNotReady. Reentrant; one thread at a time on the same
// object.
#ifndef ORXFUNCTIONS_FITTING_POLYNOMIAL_H
#define ORXFUNCTIONS_FITTING_POLYNOMIAL_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"

namespace orx {

class ORX_API TPolynomial {
  public:
    // The coefficient matrix decides the degree: it may be replaced, by any one-channel CV_64F matrix, whose
    // elements count in row order. Copies of a model share it until either is fitted again or given others;
    // nothing here writes into it. Other types count as no coefficients.
    cv::Mat coefficients;             // (order + 1) x 1, CV_64F; element i multiplies x^i
    int order = 0;                    // requested at the last fit
    std::vector<cv::Point2d> points;  // the samples of the last fit

    TPolynomial() = default;
    TPolynomial(std::vector<cv::Point2d>& points, int order);
    TPolynomial(const std::vector<cv::Point2d>& points, int order);
    TPolynomial(std::vector<double> x, std::vector<double> y, int order);

    // Least squares. False for a singular system, such as fewer different x than coefficients (rcDegenerate;
    // the coefficients are then 0, where rounding does not hide it), and for an order outside 0 .. 200
    // (rcOption; there are then none).
    bool fit(std::vector<cv::Point2d>& points, int order);
    bool fit(const std::vector<cv::Point2d>& points, int order);
    // False for lists of different length (rcSizesDiffer); the model is then unchanged.
    bool fit(std::vector<double> x, std::vector<double> y, int order);

    // The value at x; 0 without coefficients.
    double getY(double x) const;
    // Replace the coefficients for good, then evaluate. A list sets `order` too; a matrix is copied, and
    // converted if it is of another depth.
    double getY(double x, std::vector<double> paraList);
    double getY(double x, cv::Mat paras);
    // The derivative at x; 0 with fewer than two coefficients.
    double getSlope(double x) const;

    // Sum of squared errors, root of their mean, and coefficient of determination over the samples. Not
    // numbers without samples (rcNotReady); r2 not finite when all y are equal.
    void getError(double& sse, double& rmse, double& r2) const;

    // The maximum (mode 1) or minimum (any other) in [minX, maxX] as (x, y). Searched in steps of 1, then
    // within 10 steps of the best in steps of 0.1, 0.01 and 0.001; the best of the last level is the result,
    // the smallest x among equals. A peak narrower than a step can be missed. Stretches that can't hold the
    // extreme are passed over, so that all of an int's range takes milliseconds where few values are nearly
    // as extreme. Swapped bounds are exchanged, with a trace line; equal bounds give (0, 0), with another
    // (rcOption); so do, without one, more than 250 million terms, each a power times its coefficient,
    // that would have to be summed (rcTooMany).
    cv::Point2d getExtremeValue(int minX, int maxX, int mode) const;

    // False without coefficients, the argument untouched.
    bool getFitParas(std::vector<double>& paraList) const;
    bool getFitParas(cv::Mat& paras) const;

    // (x, value) and (x, slope) for x from the smallest to the largest sample x in steps of 10^-digits. Fewer
    // than two samples change nothing, with a trace line (rcTooFew). A range of ten million steps or more, or
    // one that takes more than 10^9 terms (both rcTooMany), and samples without an x that is a number
    // (rcNotFinite) give an empty list; a step too small to change x ends it.
    void getPloyList(std::vector<cv::Point2d>& list, int digits) const;
    void getPloySlopeList(std::vector<cv::Point2d>& list, int digits) const;

    // The curve over the columns of the image, as an open polyline through rounded rows. What is not drawn on
    // and which styles are not taken is as in drawing.h (rcEmptyImage, rcImageDimensions, rcImageType,
    // rcOption), but that a thickness of 0 is.
    void draw(cv::Mat& image, const cv::Scalar& colour, int thickness, int lineType, int shift) const;

  private:
    bool fit();
};

}  // namespace orx

#endif
