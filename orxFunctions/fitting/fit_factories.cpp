#include "orxFunctions/fitting/fit_factories.h"

#include <utility>

namespace orxFit {
namespace {

template <class Fitter>
Fitter* configured(Fitter* fitter, std::vector<cv::Point> points, std::vector<double> values) {
    fitter->setPoints(std::move(points));
    fitter->setParams(std::move(values));
    return fitter;
}

}  // namespace

TCircleFitFactory::~TCircleFitFactory() {
    delete fitter;
    fitter = nullptr;
}

bool TCircleFitFactory::createFitType_ransacCircle(std::vector<cv::Point> points, double maximumRadius,
                                                   double minimumRadius, double inlierDistance,
                                                   int iterationCount, int setCap) {
    fitter = configured(new TCircleFit_Ransac, std::move(points),
                        {maximumRadius, minimumRadius, inlierDistance, static_cast<double>(iterationCount),
                         static_cast<double>(setCap)});
    return true;
}

bool TCircleFitFactory::createFitType_robustCircle(std::vector<cv::Point> points, double lossConstant,
                                                   double stepSize, int lossType) {
    fitter = configured(new TCircleFit_Robust, std::move(points),
                        {lossConstant, stepSize, static_cast<double>(lossType)});
    return true;
}

bool TCircleFitFactory::createFitType_weightedLeastSquares(std::vector<cv::Point> points, int weightType,
                                                           double weightParameter) {
    fitter = configured(new TCircleFit_WeightedLeastSquares, std::move(points),
                        {static_cast<double>(weightType), weightParameter});
    return true;
}

TLineFitFactory::~TLineFitFactory() {
    delete fitter;
    fitter = nullptr;
}

bool TLineFitFactory::createFitType_ransacLine(std::vector<cv::Point> points, double targetAngle,
                                               double inlierDistance, double sampleSize,
                                               double angleTolerance) {
    auto* const ransac = new TLineFit_Ransac;
    ransac->setSearchLimits(1000, 100);
    fitter = configured(ransac, std::move(points), {targetAngle, inlierDistance, sampleSize, angleTolerance});
    return true;
}

bool TLineFitFactory::createFitType_robustLine(std::vector<cv::Point> points, int weightType,
                                               double weightParameter) {
    fitter = configured(new TLineFit_Robust, std::move(points),
                        {static_cast<double>(weightType), weightParameter});
    return true;
}

}  // namespace orxFit
