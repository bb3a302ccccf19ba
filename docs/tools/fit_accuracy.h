// How far the estimators are from the truth: bias and spread over random scenes with known circles and lines.
// The program accuracy_fits prints the table; a test holds it to bounds.
#ifndef DOCS_TOOLS_FIT_ACCURACY_H
#define DOCS_TOOLS_FIT_ACCURACY_H

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/fit_scenes.h"

namespace fit_accuracy {

constexpr int kScenes = 40;   // of each kind
constexpr int kPoints = 400;  // in a scene
inline const std::vector<double> kNoise = {0.0, 0.5, 2.0};
inline const std::vector<double> kOutliers = {0.0, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6};

// Mean of the errors, and their root mean square distance from that mean, over the valid results.
struct Accuracy {
    double bias = 0;
    double spread = 0;
    int invalid = 0;
};

inline Accuracy accuracyOf(const std::vector<double>& errors) {
    Accuracy result;
    result.invalid = kScenes - static_cast<int>(errors.size());
    if (errors.empty()) return result;
    const auto count = static_cast<double>(errors.size());
    for (const double e : errors) result.bias += e / count;
    for (const double e : errors) result.spread += (e - result.bias) * (e - result.bias) / count;
    result.spread = std::sqrt(result.spread);
    return result;
}

// A row of the table: two quantities of one estimator at one level of noise, for each share of outliers.
struct Row {
    std::string estimator;
    double noise;
    std::vector<Accuracy> first;   // circle: centre column; line: angle in degrees
    std::vector<Accuracy> second;  // circle: radius; line: distance at the middle of the points
};

template <class Factory>
struct Estimator {
    std::string name;
    void (*make)(Factory& factory, const std::vector<cv::Point>& points);
};

inline const std::vector<Estimator<orxFit::TCircleFitFactory>> kCircleEstimators = {
    {"ransac, 2 px, 500 trials",
     [](auto& f, const auto& points) { f.createFitType_ransacCircle(points, 300, 20, 2.0, 500, 500); }},
    {"robust, type 4, c 5",
     [](auto& f, const auto& points) { f.createFitType_robustCircle(points, 5, 1, 4); }},
    {"robust, Tukey, c 40",
     [](auto& f, const auto& points) { f.createFitType_robustCircle(points, 40, 1, 1); }},
    {"weighted, L1", [](auto& f, const auto& points) { f.createFitType_weightedLeastSquares(points, 1, 0); }},
    {"weighted, Welsch, 10 px",
     [](auto& f, const auto& points) { f.createFitType_weightedLeastSquares(points, 3, 10); }},
    {"weighted, Huber",
     [](auto& f, const auto& points) { f.createFitType_weightedLeastSquares(points, 4, 0); }},
    {"weighted, biweight, 40 px",
     [](auto& f, const auto& points) { f.createFitType_weightedLeastSquares(points, 5, 40); }},
};

inline const std::vector<Estimator<orxFit::TLineFitFactory>> kLineEstimators = {
    {"ransac, 2 px", [](auto& f, const auto& points) { f.createFitType_ransacLine(points, 0, 2.0, 2, 60); }},
    {"robust, equal weights", [](auto& f, const auto& points) { f.createFitType_robustLine(points, -1, 0); }},
    {"robust, L1-L2", [](auto& f, const auto& points) { f.createFitType_robustLine(points, 0, 0); }},
    {"robust, L1", [](auto& f, const auto& points) { f.createFitType_robustLine(points, 1, 0); }},
    {"robust, Fair", [](auto& f, const auto& points) { f.createFitType_robustLine(points, 2, 0); }},
    {"robust, Welsch", [](auto& f, const auto& points) { f.createFitType_robustLine(points, 3, 0); }},
    {"robust, Huber", [](auto& f, const auto& points) { f.createFitType_robustLine(points, 4, 0); }},
    {"robust, biweight, 5 px", [](auto& f, const auto& points) { f.createFitType_robustLine(points, 5, 5); }},
};

// Calls one(random, disturbance, first, second) for each scene; it appends its errors when its fit is valid.
template <class OneScene>
Row row(const std::string& estimator, double noise, OneScene one) {
    Row result{estimator, noise, {}, {}};
    for (const double outliers : kOutliers) {
        std::vector<double> first;
        std::vector<double> second;
        fit_scenes::Random random(2024);
        for (int scene = 0; scene < kScenes; ++scene) {
            one(random, fit_scenes::Disturbance{noise, outliers, {640, 480}}, first, second);
        }
        result.first.push_back(accuracyOf(first));
        result.second.push_back(accuracyOf(second));
    }
    return result;
}

// Circles of 60 to 150 pixels in an image of 640 x 480.
inline Row circleRow(const Estimator<orxFit::TCircleFitFactory>& estimator, double noise) {
    return row(estimator.name, noise, [&](auto& random, auto disturbance, auto& first, auto& second) {
        const cv::Point3d truth(random.uniform(200, 440), random.uniform(180, 300), random.uniform(60, 150));
        orxFit::TCircleFitFactory factory;
        estimator.make(factory, fit_scenes::circlePoints(truth, kPoints, disturbance, random));
        const orx::TCircle found = factory.fitter->fit();
        if (!found.valid) return;
        first.push_back(found.x - truth.x);
        second.push_back(found.r - truth.z);
    });
}

// Lines of up to 30 degrees through the middle of the image.
inline Row lineRow(const Estimator<orxFit::TLineFitFactory>& estimator, double noise) {
    return row(estimator.name, noise, [&](auto& random, auto disturbance, auto& first, auto& second) {
        const double angle = random.uniform(-30, 30) * fit_scenes::kPi / 180;
        const double k = std::tan(angle);
        const double b = random.uniform(200, 280) - k * 320;
        orxFit::TLineFitFactory factory;
        estimator.make(factory, fit_scenes::linePoints(k, b, kPoints, disturbance, random));
        const orx::TLine found = factory.fitter->fit();
        if (!found.valid) return;
        first.push_back((std::atan(found.k) - angle) * 180 / fit_scenes::kPi);
        second.push_back((found.k * 320 + found.b - k * 320 - b) * std::cos(angle));
    });
}

}  // namespace fit_accuracy

#endif
