#include "orxFunctions/measuring/recipe/plane.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orxFunctions/calibration/plane/mapping.h"
#include "orxFunctions/calibration/plane_calibration.h"

namespace orx::recipes {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
// Of the largest eigenvalue of the correlations: what is smaller is rounding.
constexpr double kLeastShare = 1e-12;

// Columns are independent shifts of the parameters whose products add up to the covariance. By way of the
// correlations, since the parameters' units differ by many powers of ten.
cv::Mat shiftsOfParameters(const TPlaneCalibration& calibration) {
    const cv::Mat covariance(calibration.covariance);
    cv::Mat roots(kPlaneParameters, 1, CV_64F);
    cv::Mat correlation = covariance.clone();
    for (int i = 0; i < kPlaneParameters; ++i) {
        const double variance = covariance.at<double>(i, i);
        roots.at<double>(i) = variance > 0.0 ? std::sqrt(variance) : 0.0;
    }
    for (int i = 0; i < kPlaneParameters; ++i) {
        for (int j = 0; j < kPlaneParameters; ++j) {
            const double scale = roots.at<double>(i) * roots.at<double>(j);
            correlation.at<double>(i, j) = scale > 0.0 ? covariance.at<double>(i, j) / scale : 0.0;
        }
    }
    cv::Mat values;
    cv::Mat vectors;
    cv::eigen(correlation, values, vectors);
    cv::Mat shifts;
    for (int k = 0; k < kPlaneParameters; ++k) {
        if (!(values.at<double>(k) > kLeastShare * values.at<double>(0))) break;
        const cv::Mat shift = std::sqrt(values.at<double>(k)) * vectors.row(k).t();
        const cv::Mat column = shift.mul(roots);
        if (shifts.empty()) {
            shifts = column.clone();
        } else {
            cv::hconcat(shifts, column, shifts);
        }
    }
    return shifts;
}

class CalibratedPlane : public Plane {
  public:
    explicit CalibratedPlane(TPlaneCalibration calibration)
        : calibration_(std::move(calibration)),
          mapping_(calibration_),
          parameters_(shiftsOfParameters(calibration_)) {}

    cv::Size size() const override { return calibration_.imageSize; }

    cv::Point2d toPlane(cv::Point2d pixel) const override {
        cv::Point2d millimetres;
        return mapping_.toPlane(pixel, millimetres) ? millimetres : cv::Point2d(kNone, kNone);
    }

    cv::Point2d toImage(cv::Point2d millimetres) const override {
        cv::Point2d pixel;
        return mapping_.toImage(millimetres, pixel) ? pixel : cv::Point2d(kNone, kNone);
    }

    cv::Matx22d jacobian(cv::Point2d pixel) const override {
        cv::Point2d millimetres;
        cv::Matx22d derivative;
        return mapping_.toPlane(pixel, millimetres, &derivative) ? derivative : cv::Matx22d::all(kNone);
    }

    cv::Mat shiftsOf(const std::vector<cv::Point2d>& pixels) const override {
        if (parameters_.empty() || pixels.empty()) return {};
        const cv::Mat sensitivity = planeSensitivity(calibration_, pixels);
        return sensitivity.empty() ? cv::Mat() : cv::Mat(sensitivity * parameters_);
    }

    int shifts() const override { return parameters_.cols; }

    double degreesOfFreedom() const override {
        return calibration_.degreesOfFreedom > 0.0 ? calibration_.degreesOfFreedom : 1.0;
    }

  private:
    TPlaneCalibration calibration_;
    plane::Mapping mapping_;
    cv::Mat parameters_;
};

}  // namespace

double Plane::pixelSize(cv::Point2d pixel) const {
    return std::sqrt(std::abs(cv::determinant(jacobian(pixel))));
}

std::shared_ptr<const Plane> readPlane(const std::string& fileName, std::string& problem) {
    TPlaneCalibration calibration = readPlaneCalibration(fileName);
    if (calibration.valid()) return std::make_shared<CalibratedPlane>(std::move(calibration));
    problem = planeStatusText(calibration.status);
    if (!calibration.problem.empty()) problem += ": " + calibration.problem;
    return nullptr;
}

}  // namespace orx::recipes
