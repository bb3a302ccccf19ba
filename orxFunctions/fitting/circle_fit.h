// Estimators of one circle among integer pixel points, behind one interface.
//
//   TCircleFit_Ransac                random samples vote, then a least-squares refit; for many outliers
//   TCircleFit_Robust                gradient descent on a Huber or Tukey loss; for few outliers
//   TCircleFit_WeightedLeastSquares  least squares, reweighted by residuals; the fastest, for clean points
//
// orxFit::TCircleFitFactory (fit_factories.h) makes and configures them. All work in doubles. A fitter keeps
// its points and parameters, and fits as often as asked. One thread at a time.
#ifndef ORXFUNCTIONS_FITTING_CIRCLE_FIT_H
#define ORXFUNCTIONS_FITTING_CIRCLE_FIT_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/foundation/records.h"

class ORX_API TCircleFit {
  public:
    // The circle with its inlier ratio and mean residual in pixels; `pointCount` stays 0. Where nothing is
    // found `valid` is false.
    virtual orx::TCircle fit() = 0;

    // The estimator's parameters in the order that its class states, integers truncated. With another number
    // of values nothing changes and the result is false (rcSizesDiffer).
    virtual bool setParams(std::vector<double> values) = 0;

    // The points to fit, copied. Always true.
    virtual bool setPoints(std::vector<cv::Point> points);

    virtual ~TCircleFit();

  protected:
    TCircleFit() = default;
    TCircleFit(const TCircleFit&) = default;
    TCircleFit& operator=(const TCircleFit&) = default;

    std::vector<cv::Point> points_;
};

// Random sample consensus: circles through three random points, the one with most points near it, refitted to
// those by least squares. M. A. Fischler, R. C. Bolles, "Random sample consensus", Communications of the ACM
// 24 (1981).
//
// Parameters: maximum radius, minimum radius (whole pixels, both excluded), inlier distance (pixels,
// excluded), number of trials, cap of stored consensus sets. The search ends early with a set of more than
// 0.8 of the points or with more sets than the cap.
//
// The circles through the samples are those of orx::threePoints2circle, exact for coordinates up to about a
// thousand pixels. The inlier ratio counts all points within the inlier distance of the refitted circle, the
// mean residual weighs those beyond it by 0.2. Invalid, all fields 0: fewer than 3 points (rcTooFew), no
// trials (rcOption), no sample gave a radius within the bounds or the best set has fewer than 3 points
// (rcNoResult).
//
// Each trial draws what rand() gives after srand() with the number of trials left, from a generator of the
// fit's own: equal points give equal results on any number of threads and beside any use of rand(). Then the
// runtime's generator is left as the last trial would leave it, so other users of rand() are disturbed; with
// fewer than 3 points or no trials it is not touched.
class ORX_API TCircleFit_Ransac : public TCircleFit {
  public:
    orx::TCircle fit() override;
    bool setParams(std::vector<double> values) override;

  private:
    std::vector<cv::Point> largestConsensus() const;

    std::vector<double> residuals_;  // of the last fit; kept for its memory
    int iterationCount_ = 0;
    int maximumRadius_ = 0;
    int minimumRadius_ = 0;
    int setCap_ = 0;
    double inlierDistance_ = 0;
};

// Gradient descent from the least-squares circle on the mean loss of the residuals, at most 1000 steps.
//
// Parameters: loss constant c (pixels), step size, loss type. Type 4 takes Huber's influence with Tukey's
// loss, type 0 Tukey's influence with Huber's loss, any other type Tukey's for both; this pairing is
// intended. A step that raises the loss halves the step size, and the halved size stays for later calls of
// fit(); the step itself is not undone.
//
// The inlier ratio counts residuals below c, the mean residual is that of all points. When a step drives the
// radius to 0 or below, the result is the least-squares circle with the flag false (rcNoResult). Points that
// determine no circle (fewer than 3, or all on one line) may give not-a-number with the flag true.
class ORX_API TCircleFit_Robust : public TCircleFit {
  public:
    orx::TCircle fit() override;
    bool setParams(std::vector<double> values) override;

  private:
    double lossConstant_ = 0;
    int budget_ = 0;
    double stepSize_ = 0;
    int lossType_ = 0;
};

// The least-squares circle, refitted with weights by residual while the mean residual is 1 pixel or more, at
// most 30 times; the circle with the smallest mean residual wins. The first circle stands when its mean
// residual is below 2 pixels; its inlier ratio is then stated as 1.
//
// Parameters: weight type (0 L1-L2, 1 L1, 2 Fair, 3 Welsch, 4 Huber, 5 Tukey's biweight; any other number
// weighs all points alike), weight parameter (pixels, single precision; 0
// selects 1.3998, 2.9846, 1.345, 1.345 for types 2 to 5). The inlier ratio counts residuals below the weight
// parameter as given.
//
// The flag is always true: points that determine no circle (fewer than 3, or all on one line) may give
// not-a-number. I. Kasa, "A circle fitting procedure and its error analysis", IEEE Trans. Instrum. Meas. 25
// (1976).
class ORX_API TCircleFit_WeightedLeastSquares : public TCircleFit {
  public:
    orx::TCircle fit() override;
    bool setParams(std::vector<double> values) override;

  private:
    orx::TCircle reweightedCircle(orx::TCircle circle, double mean) const;

    int weightType_ = 0;
    float weightParameter_ = 0;
};

#endif
