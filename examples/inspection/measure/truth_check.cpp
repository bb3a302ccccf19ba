#include "inspection/measure/truth_check.h"

#include <cmath>

#include "support/angles.h"

namespace inspection {
namespace {

using scenes::kDegree;

int nearestFeature(const std::vector<Feature>& features, Shape shape, cv::Point2d center, double within) {
    int nearest = -1;
    double least = within;
    for (std::size_t i = 0; i < features.size(); ++i) {
        const cv::Point2d way = features[i].center - center;
        const double distance = std::hypot(way.x, way.y);
        if (features[i].isRound() != (shape == Shape::kCircle) || distance > least) continue;
        least = distance;
        nearest = static_cast<int>(i);
    }
    return nearest;
}

// Lines have no direction: the difference of their angles is taken modulo 180 degrees.
double angleDifference(double measured, double truth) {
    return std::fmod(measured - truth + 90.0 + 360.0, 180.0) - 90.0;
}

TruthError checkDisk(const std::vector<Feature>& features, const scenes::Disk& disk) {
    TruthError error;
    error.center = disk.center;
    error.feature = nearestFeature(features, Shape::kCircle, disk.center, disk.radius);
    if (error.feature < 0) return error;
    const Feature& feature = features[static_cast<std::size_t>(error.feature)];
    error.centerError = cv::norm(feature.center - disk.center);
    error.radiusError = feature.radius - disk.radius;
    return error;
}

TruthError checkBar(const std::vector<Feature>& features, const scenes::Bar& bar) {
    TruthError error;
    error.shape = Shape::kLine;
    error.center = bar.center;
    error.feature = nearestFeature(features, Shape::kLine, bar.center, 0.5 * bar.length);
    if (error.feature < 0) return error;
    const Feature& feature = features[static_cast<std::size_t>(error.feature)];
    const cv::Point2d across(-std::sin(feature.angle * kDegree), std::cos(feature.angle * kDegree));
    error.angleError = angleDifference(feature.angle, bar.angle);
    error.offsetError = std::abs(across.dot(bar.center - feature.center));
    error.widthError = feature.width - bar.width;
    return error;
}

}  // namespace

std::vector<TruthError> compareWithTruth(const std::vector<Feature>& features, const scenes::Scene& scene) {
    std::vector<TruthError> errors;
    for (const scenes::Disk& disk : scene.disks) errors.push_back(checkDisk(features, disk));
    for (const scenes::Bar& bar : scene.bars) errors.push_back(checkBar(features, bar));
    return errors;
}

}  // namespace inspection
