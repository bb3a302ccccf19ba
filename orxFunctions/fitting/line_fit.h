// Estimators of one line y = k x + b among integer pixel points, behind one interface.
//
//   TLineFit_Ransac  random samples near a wanted angle vote, then a Huber refit; for many outliers
//   TLineFit_Robust  iteratively reweighted least squares of the distances; for few outliers
//
// orxFit::TLineFitFactory (fit_factories.h) makes and configures them. A fitter keeps its points and
// parameters, and fits as often as asked. Vertical lines get a slope of up to 1e5. One thread at a time.
#ifndef ORXFUNCTIONS_FITTING_LINE_FIT_H
#define ORXFUNCTIONS_FITTING_LINE_FIT_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/foundation/records.h"

class ORX_API TLineFit {
  public:
    // The line; where nothing is found `valid` is false.
    virtual orx::TLine fit() = 0;

    // The estimator's parameters in the order that its class states, integers truncated. With another number
    // of values nothing changes and the result is false (rcSizesDiffer).
    virtual bool setParams(std::vector<double> values) = 0;

    // The points to fit, copied. Always true.
    virtual bool setPoints(std::vector<cv::Point> points);

    virtual ~TLineFit();

  protected:
    TLineFit() = default;
    TLineFit(const TLineFit&) = default;
    TLineFit& operator=(const TLineFit&) = default;

    std::vector<cv::Point> points_;
};

// Random sample consensus: lines through two random points, or three that lie exactly on one line; of those
// near the wanted angle the one with most points near it, refitted to those with Huber's weights. M. A.
// Fischler, R. C. Bolles, "Random sample consensus", Communications of the ACM 24 (1981).
//
// Parameters: target angle (degrees), inlier distance (pixels, excluded), sample size (2 or 3), angle
// tolerance (degrees, excluded). Angles that differ by 180 degrees are the same. The search ends early with a
// set of more than 0.8 of the points or with more sets than the cap (setSearchLimits).
//
// Invalid, all fields 0: fewer than 4 points (rcTooFew), another sample size or no trials (rcOption), or no
// sample with the wanted angle and more than 3 points near it (rcNoResult). When the refitted line leaves the
// wanted angle it is returned with the flag false (rcNoResult).
//
// Each trial draws what rand() gives after srand() with the number of trials left, from a generator of the
// fit's own: equal points give equal results on any number of threads and beside any use of rand(). Then the
// runtime's generator is left as the last trial would leave it, so other users of rand() are disturbed; with
// fewer than 4 points or no trials it is not touched.
class ORX_API TLineFit_Ransac : public TLineFit {
  public:
    orx::TLine fit() override;
    bool setParams(std::vector<double> values) override;

    // Number of trials and cap of stored consensus sets; 0 and 0 in a new fitter.
    void setSearchLimits(int iterationCount, int setCap);

  private:
    bool hasWantedAngle(const orx::TLine& line) const;
    std::vector<cv::Point> largestConsensus() const;

    double targetAngle_ = 0;
    double angleTolerance_ = 0;
    int sampleSize_ = 0;
    int iterationCount_ = 0;
    int setCap_ = 0;
    double inlierDistance_ = 0;
};

// The line of cv::fitLine (20 random starts, up to 30 reweighting passes each, accuracies 0.01) with the
// weight functions of TCircleFit_WeightedLeastSquares.
//
// Parameters: weight type and weight parameter, as there. The random starts come from a generator of its own:
// results are repeatable.
//
// Valid whenever there is a point (rcTooFew); a single point gives a horizontal line.
class ORX_API TLineFit_Robust : public TLineFit {
  public:
    orx::TLine fit() override;
    bool setParams(std::vector<double> values) override;

  private:
    int weightType_ = 0;
    float weightParameter_ = 0;
};

#endif
