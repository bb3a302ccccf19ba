// Factories that make and configure the circle and line estimators from plain arguments.
//
//   orxFit::TCircleFitFactory factory;
//   factory.createFitType_ransacCircle(points, 60, 20, 1.5, 500, 200);
//   const orx::TCircle circle = factory.fitter->fit();
//
// Ownership. A factory deletes the fitter that it holds when it is destroyed. Two things leave that duty to
// the caller, and are meant to stay so: making another fitter overwrites the pointer without deleting the old
// fitter (keep or delete it first), and copying a factory copies the pointer, so that two factories hold one
// fitter (set `fitter` of one of them to nullptr before both are destroyed).
//
// Every create function returns true. One thread at a time.
#ifndef ORXFUNCTIONS_FITTING_FIT_FACTORIES_H
#define ORXFUNCTIONS_FITTING_FIT_FACTORIES_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/fitting/circle_fit.h"
#include "orxFunctions/fitting/line_fit.h"

namespace orxFit {

class ORX_API TCircleFitFactory {
  public:
    TCircleFitFactory() = default;
    TCircleFitFactory(const TCircleFitFactory&) = default;
    TCircleFitFactory& operator=(const TCircleFitFactory&) = default;
    ~TCircleFitFactory();

    // A TCircleFit_Ransac. Radii and distance in pixels; the radii are truncated (5.9 means 5).
    bool createFitType_ransacCircle(std::vector<cv::Point> points, double maximumRadius, double minimumRadius,
                                    double inlierDistance, int iterationCount, int setCap);

    // A TCircleFit_Robust.
    bool createFitType_robustCircle(std::vector<cv::Point> points, double lossConstant, double stepSize,
                                    int lossType);

    // A TCircleFit_WeightedLeastSquares.
    bool createFitType_weightedLeastSquares(std::vector<cv::Point> points, int weightType,
                                            double weightParameter);

    TCircleFit* fitter = nullptr;
};

class ORX_API TLineFitFactory {
  public:
    TLineFitFactory() = default;
    TLineFitFactory(const TLineFitFactory&) = default;
    TLineFitFactory& operator=(const TLineFitFactory&) = default;
    ~TLineFitFactory();

    // A TLineFit_Ransac with 1000 trials and a cap of 100 sets. Angles in degrees; the sample size is
    // truncated.
    bool createFitType_ransacLine(std::vector<cv::Point> points, double targetAngle, double inlierDistance,
                                  double sampleSize, double angleTolerance);

    // A TLineFit_Robust.
    bool createFitType_robustLine(std::vector<cv::Point> points, int weightType, double weightParameter);

    TLineFit* fitter = nullptr;
};

}  // namespace orxFit

#endif
