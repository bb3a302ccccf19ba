#include "inspection/measure/fit_estimators.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/fitting/fit_factories.h"

namespace inspection {
namespace {

constexpr double kSmallestRadius = 3.0;
constexpr double kLargest = 1e6;
// Beyond this part of the object's extent a point has no weight in the robust and the weighted circle. Both
// start from the least-squares circle, which a fault draws aside: a narrower bound would lose good points.
constexpr double kReach = 0.2;
// Tukey's biweight, as the library numbers the weights of the weighted circle and the robust line, and the
// loss of the robust circle that has Tukey's influence too.
constexpr int kBiweight = 5;
constexpr int kTukeyLoss = 1;
constexpr double kStepSize = 1.0;
// The ransac line looks this far around the rectangle's direction, degrees.
constexpr double kAngleTolerance = 10.0;
constexpr double kPairs = 2.0;
// A blurred corner rounds the end of a side over this many pixels.
constexpr double kCorner = 5.0;

std::vector<cv::Point> movedBy(std::vector<cv::Point> points, cv::Point shift) {
    for (cv::Point& p : points) p += shift;
    return points;
}

std::unique_ptr<TCircleFit> makeCircleFit(const std::vector<cv::Point>& points, double extent,
                                          const Settings& settings) {
    const double reach = std::max(2.0 * settings.tolerance, kReach * extent);
    orxFit::TCircleFitFactory factory;
    if (settings.circle == CircleEstimator::kRobust)
        factory.createFitType_robustCircle(points, reach, kStepSize, kTukeyLoss);
    else if (settings.circle == CircleEstimator::kWeighted)
        factory.createFitType_weightedLeastSquares(points, kBiweight, reach);
    else
        factory.createFitType_ransacCircle(points, std::ceil(extent) + 1.0, kSmallestRadius,
                                           settings.tolerance, settings.trials, settings.trials);
    std::unique_ptr<TCircleFit> fitter(factory.fitter);
    factory.fitter = nullptr;
    return fitter;
}

// The smallest rectangle around the points.
struct Frame {
    Line axis;  // through its centre, along its longer side
    double halfLength = 0.0;
    double halfWidth = 0.0;
};

Frame frameOf(const std::vector<cv::Point>& points) {
    const cv::RotatedRect box = cv::minAreaRect(points);
    cv::Point2f corners[4];
    box.points(corners);
    const cv::Point2d first = cv::Point2d(corners[1]) - cv::Point2d(corners[0]);
    const cv::Point2d second = cv::Point2d(corners[2]) - cv::Point2d(corners[1]);
    const bool firstIsLonger = cv::norm(first) >= cv::norm(second);
    const cv::Point2d longer = firstIsLonger ? first : second;
    const double length = cv::norm(longer);
    Frame frame;
    frame.axis = {box.center, length > 0.0 ? longer / length : cv::Point2d(1.0, 0.0)};
    frame.halfLength = 0.5 * length;
    frame.halfWidth = 0.5 * cv::norm(firstIsLonger ? second : first);
    return frame;
}

std::optional<Line> estimateLine(const std::vector<cv::Point>& points, const Line& near,
                                 const Settings& settings) {
    orxFit::TLineFitFactory factory;
    if (settings.line == LineEstimator::kRobust)
        factory.createFitType_robustLine(points, kBiweight, 2.5 * settings.tolerance);
    else
        factory.createFitType_ransacLine(points, near.angle(), settings.tolerance, kPairs, kAngleTolerance);
    const orx::TLine line = factory.fitter->fit();
    if (!line.valid || !std::isfinite(line.k) || !std::isfinite(line.b)) return std::nullopt;
    const double length = std::hypot(1.0, line.k);
    cv::Point2d direction(1.0 / length, line.k / length);
    if (direction.dot(near.direction) < 0.0) direction = -direction;
    // The foot of the origin: on a steep line the point (0, b) would lie far away.
    const double scale = line.b / (1.0 + line.k * line.k);
    return Line{{-line.k * scale, scale}, direction};
}

// The points of one long side, without its rounded ends.
std::vector<cv::Point> pointsOfSide(const std::vector<cv::Point>& points, const Frame& frame, bool positive) {
    const bool isLong = frame.halfLength > 2.0 * kCorner;
    const double reach = frame.halfLength - (isLong ? std::max(kCorner, frame.halfWidth * 0.5) : 0.0);
    std::vector<cv::Point> side;
    for (const cv::Point& p : points) {
        const double along = frame.axis.direction.dot(cv::Point2d(p) - frame.axis.point);
        if (std::abs(along) <= reach && (frame.axis.signedDistance(p) > 0.0) == positive) side.push_back(p);
    }
    return side;
}

// The point of `line` that is nearest to p.
cv::Point2d footOn(const Line& line, cv::Point2d p) { return p - line.signedDistance(p) * line.normal(); }

}  // namespace

const char* nameOf(CircleEstimator estimator) {
    switch (estimator) {
        case CircleEstimator::kRansac:
            return "ransac";
        case CircleEstimator::kRobust:
            return "robust";
        case CircleEstimator::kWeighted:
            return "wls";
        case CircleEstimator::kSearch:
            break;
    }
    return "search";
}

const char* nameOf(LineEstimator estimator) {
    return estimator == LineEstimator::kRansac   ? "ransac"
           : estimator == LineEstimator::kRobust ? "robust"
                                                 : "search";
}

const char* nameOf(EllipseEstimator estimator) {
    return estimator == EllipseEstimator::kNorm     ? "norm"
           : estimator == EllipseEstimator::kRansac ? "ransac"
                                                    : "none";
}

std::optional<Circle> estimateCircle(const std::vector<cv::Point>& points, const Settings& settings) {
    // Near the origin the circles through samples are exact.
    const cv::Rect box = cv::boundingRect(points);
    const auto fitter = makeCircleFit(movedBy(points, -box.tl()), std::max(box.width, box.height), settings);
    const orx::TCircle found = fitter->fit();
    const bool isSound = found.valid && std::isfinite(found.x) && std::isfinite(found.y) && found.r > 0.0 &&
                         found.r < kLargest;
    if (!isSound) return std::nullopt;
    return Circle{cv::Point2d(found.x, found.y) + cv::Point2d(box.tl()), found.r};
}

std::optional<ParallelLines> estimateSides(const std::vector<cv::Point>& points, const Settings& settings) {
    const cv::Point corner = cv::boundingRect(points).tl();
    const std::vector<cv::Point> local = movedBy(points, -corner);
    const Frame frame = frameOf(local);
    const auto inPicture = [&](cv::Point2d p) { return p + cv::Point2d(corner); };
    if (frame.halfWidth <= settings.tolerance) {
        const auto line = estimateLine(local, frame.axis, settings);
        if (!line) return std::nullopt;
        return ParallelLines{{inPicture(footOn(*line, frame.axis.point)), line->direction}, 0.0};
    }
    const auto first = estimateLine(pointsOfSide(local, frame, true), frame.axis, settings);
    const auto second = estimateLine(pointsOfSide(local, frame, false), frame.axis, settings);
    if (!first || !second) return std::nullopt;
    const cv::Point2d sum = first->direction + second->direction;
    const cv::Point2d a = footOn(*first, frame.axis.point);
    const cv::Point2d b = footOn(*second, frame.axis.point);
    const Line axis{inPicture(0.5 * (a + b)), sum / cv::norm(sum)};
    return ParallelLines{axis, std::abs(axis.normal().dot(a - b))};
}

}  // namespace inspection
