#include "orxFunctions/calibration/plane_calibration.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/calib3d.hpp>
#include <utility>

#include "orxFunctions/calibration/plane/adjustment.h"
#include "orxFunctions/calibration/plane/plane_refusal.h"
#include "orxFunctions/calibration/plane/start.h"
#include "orxFunctions/foundation/option_range_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

using plane::Adjusted;
using plane::Camera;
using plane::Observation;
using plane::Pose;

constexpr std::size_t kFewestLensViews = 3;
constexpr std::size_t kMostViews = 1000;
constexpr std::size_t kMostPoints = 1000000;
constexpr double kMostFocalDeviation = 1.0 / 20.0;
constexpr int kOutlineRounds = 6;
constexpr double kSettledShift = 1e-4;  // pixels; what is left shrinks tenfold and more a round

TPlaneCalibration refused(TPlaneStatus status, const std::string& problem) {
    TPlaneCalibration calibration;
    calibration.status = status;
    calibration.problem = problem;
    return calibration;
}

bool areGood(const TPlaneOptions& options, const char* function) {
    const double farthest = options.lens ? 1e6 : 0.0;
    const bool areInRange = takesOptions(function, {{"radial", static_cast<double>(options.radial), 0, 3},
                                                    {"height", options.height, -farthest, farthest},
                                                    {"heightDeviation", options.heightDeviation, 0, farthest},
                                                    {"scaleDeviation", options.scaleDeviation, 0, 0.1}});
    if (!areInRange || options.mostRms > 0.0) return areInRange;
    return refuse(rcOption, function, "mostRms is %g; above 0 is taken", options.mostRms);
}

plane::FreeLens freeLens(const TPlaneOptions& options) {
    const bool bent = options.tangential;
    return {true, true, true, true, options.radial > 0, options.radial > 1, bent, bent, options.radial > 2};
}

// The views that show the target, and which of them tells the plane.
struct Gathered {
    std::vector<Observation> observations;
    cv::Size imageSize;
    int planeView = -1;
};

// plOk, or why they are of no use.
TPlaneStatus gather(const std::vector<TTargetView>& views, const TPlaneOptions& options, Gathered& gathered,
                    std::string& problem) {
    std::size_t points = 0;
    for (std::size_t i = 0; i < views.size(); ++i) {
        const bool isPlane = static_cast<int>(i) == options.planeView;
        if (!views[i].found || (!options.lens && !isPlane)) continue;
        Observation observation;
        if (!plane::observe(views[i], observation, problem)) return plBadViews;
        if (gathered.observations.empty()) gathered.imageSize = views[i].imageSize;
        if (views[i].imageSize != gathered.imageSize) {
            problem = "view " + std::to_string(i) + " is of another size than the first";
            return plMixedSizes;
        }
        if (isPlane) gathered.planeView = static_cast<int>(gathered.observations.size());
        points += observation.plane.size();
        gathered.observations.push_back(std::move(observation));
        if (gathered.observations.size() > kMostViews || points > kMostPoints) {
            problem = "there are too many views or points";
            return plBadViews;
        }
    }
    if (gathered.observations.empty()) return plNoTarget;
    if (gathered.planeView < 0) {
        problem = "the view that tells the plane does not show the target";
        return plNoTarget;
    }
    return plOk;
}

double pointsOf(const std::vector<Observation>& observations) {
    double points = 0.0;
    for (const Observation& observation : observations)
        points += static_cast<double>(observation.plane.size());
    return points;
}

// What the distances tell, for the view or views that were adjusted.
void report(const Adjusted& adjusted, const std::vector<Observation>& observations,
            TPlaneCalibration& calibration) {
    const double points = pointsOf(observations);
    const double variance = adjusted.squares / adjusted.freedom;
    calibration.covariance = adjusted.cofactor * variance;
    calibration.degreesOfFreedom = adjusted.freedom;
    calibration.rms = std::sqrt(adjusted.distances / points);
    calibration.noise = std::sqrt(adjusted.distances / adjusted.freedom);
    calibration.views = static_cast<int>(observations.size());
    calibration.coverage = plane::coverageOf(observations, calibration.imageSize);
}

// Takes the outlines' shifts off and adjusts again until they rest. `adjust` returns the calibration for the
// observations as they are then, and how each view lies for it.
template <class Adjust, class CalibrationOf>
Adjusted adjustOutlines(const std::vector<Observation>& found, const Adjust& adjust,
                        const CalibrationOf& calibrationOf) {
    std::vector<Observation> taken = found;
    Adjusted adjusted;
    for (int round = 0; round < kOutlineRounds; ++round) {
        adjusted = adjust(taken);
        if (!adjusted.settled) return adjusted;
        double largest = 0.0;
        for (std::size_t v = 0; v < found.size(); ++v) {
            const std::vector<cv::Point2d> shifts = plane::outlineShifts(calibrationOf(v), found[v]);
            for (std::size_t i = 0; i < shifts.size(); ++i) {
                const cv::Point2d corrected = found[v].pixels[i] - shifts[i];
                largest = std::max(largest, cv::norm(corrected - taken[v].pixels[i]));
                taken[v].pixels[i] = corrected;
            }
        }
        if (largest < kSettledShift) break;
    }
    return adjusted;
}

// A matrix that takes small changes of the parameters to those after the plane is moved.
using Transfer = cv::Matx<double, kPlaneParameters, kPlaneParameters>;

// Moves the plane towards the camera, and adds what is not known about scale and height.
void raise(const TPlaneOptions& options, TPlaneCalibration& calibration) {
    constexpr int kRotation = plane::kLensParameters;
    constexpr int kTranslation = kRotation + 3;
    const cv::Vec3d target = calibration.translation;
    cv::Mat derivative;  // 3 x 9: of the matrix' elements, row by row, by the vector's
    cv::Matx33d rotation;
    cv::Rodrigues(calibration.rotation, rotation, derivative);
    const cv::Vec3d normal(rotation(0, 2), rotation(1, 2), rotation(2, 2));
    const double towards = normal.dot(target) > 0.0 ? -1.0 : 1.0;
    const double height = towards * options.height;
    calibration.translation += height * normal;
    Transfer transfer = Transfer::eye();
    for (int row = 0; row < 3; ++row) {
        for (int k = 0; k < 3; ++k)
            transfer(kTranslation + row, kRotation + k) = height * derivative.at<double>(k, 3 * row + 2);
    }
    calibration.covariance = transfer * calibration.covariance * transfer.t();
    const double scale = options.scaleDeviation * options.scaleDeviation;
    const double lift = options.heightDeviation * options.heightDeviation;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            calibration.covariance(kTranslation + i, kTranslation + j) +=
                scale * target[i] * target[j] + lift * normal[i] * normal[j];
        }
    }
}

// Without a lens: a pitch larger by a share makes all but the last column smaller by it.
void addScale(double deviation, TPlaneCalibration& calibration) {
    cv::Vec<double, kPlaneParameters> share;
    for (int k = 0; k < plane::kHomographyParameters; ++k) {
        if (k % 3 != 2) share[k] = deviation * calibration.homography.val[k];
    }
    calibration.covariance += share * share.t();
}

std::string roughness(double rms) {
    return "the points lie " + std::to_string(rms) + " pixels off (root mean square)";
}

bool isTooRough(const TPlaneCalibration& calibration, const TPlaneOptions& options, std::string& problem) {
    if (calibration.rms <= options.mostRms) return false;
    problem = roughness(calibration.rms);
    return true;
}

TPlaneCalibration withLens(const Gathered& gathered, const TPlaneOptions& options) {
    const std::vector<Observation>& found = gathered.observations;
    if (found.size() < kFewestLensViews)
        return refused(plTooFewViews, "a lens is found from 3 pictures or more");
    const plane::FreeLens isFree = freeLens(options);
    Camera camera;
    std::vector<Pose> poses;
    const double startRms = plane::startCamera(found, gathered.imageSize, isFree, camera, poses);
    if (!std::isfinite(startRms)) return refused(plNotConverged, "");
    const Adjusted adjusted = adjustOutlines(
        found,
        [&](const std::vector<Observation>& taken) {
            return plane::adjustCamera(taken, isFree, gathered.planeView, camera, poses);
        },
        [&](std::size_t v) { return plane::asCalibration(camera, poses[v]); });
    if (!adjusted.settled) {
        return startRms > options.mostRms ? refused(plNotConverged, roughness(startRms))
                                          : refused(plTooFewViews, "the views leave the lens open");
    }
    TPlaneCalibration calibration =
        plane::asCalibration(camera, poses[static_cast<std::size_t>(gathered.planeView)]);
    calibration.imageSize = gathered.imageSize;
    report(adjusted, found, calibration);
    std::string problem;
    if (isTooRough(calibration, options, problem)) return refused(plNotConverged, problem);
    const double focal = std::sqrt(calibration.covariance(0, 0)) / std::abs(camera.matrix(0, 0));
    if (!(focal < kMostFocalDeviation) || !(camera.matrix(0, 0) > 0.0) || !(camera.matrix(1, 1) > 0.0)) {
        return refused(plTooFewViews, "the focal length is uncertain by " + std::to_string(100.0 * focal) +
                                          " %: tilt the target more");
    }
    raise(options, calibration);
    return calibration;
}

TPlaneCalibration withoutLens(const Gathered& gathered, const TPlaneOptions& options) {
    const std::vector<Observation>& found = gathered.observations;
    cv::Matx33d homography;
    if (!plane::startHomography(found.front(), homography)) return refused(plNotConverged, "");
    const Adjusted adjusted = adjustOutlines(
        found,
        [&](const std::vector<Observation>& taken) {
            return plane::adjustHomography(taken.front(), homography);
        },
        [&](std::size_t) { return plane::asCalibration(homography); });
    if (!adjusted.settled) return refused(plNotConverged, "the points leave the plane open");
    TPlaneCalibration calibration = plane::asCalibration(homography);
    calibration.imageSize = gathered.imageSize;
    report(adjusted, found, calibration);
    std::string problem;
    if (isTooRough(calibration, options, problem)) return refused(plNotConverged, problem);
    addScale(options.scaleDeviation, calibration);
    return calibration;
}

// A view's pose under a lens that is known.
struct Relocated {
    Adjusted adjusted;
    Camera camera;
    Pose pose;
    TPlaneCalibration calibration;  // without a covariance
};

Relocated relocate(const TPlaneCalibration& lens, const Observation& observation) {
    Relocated result;
    result.camera = Camera{lens.camera, lens.distortion};
    std::vector<Pose> poses(1);
    if (!plane::startPose(observation, result.camera, poses.front())) return result;
    result.adjusted = adjustOutlines(
        {observation},
        [&](const std::vector<Observation>& taken) {
            return plane::adjustCamera(taken, plane::FreeLens{}, 0, result.camera, poses);
        },
        [&](std::size_t) { return plane::asCalibration(result.camera, poses.front()); });
    result.pose = poses.front();
    result.calibration = plane::asCalibration(result.camera, result.pose);
    result.calibration.imageSize = lens.imageSize;
    return result;
}

// The lens' covariance, and what the pose takes over from it beside its own.
void addLensShare(const TPlaneCalibration& lens, const Relocated& found, const Observation& observation,
                  TPlaneCalibration& calibration) {
    const auto follows = plane::poseByLens(observation, found.camera, found.pose);
    Transfer transfer = Transfer::zeros();
    for (int k = 0; k < plane::kLensParameters; ++k) {
        transfer(k, k) = 1.0;
        for (int row = 0; row < plane::kPoseParameters; ++row)
            transfer(plane::kLensParameters + row, k) = follows(row, k);
    }
    calibration.covariance += transfer * lens.covariance * transfer.t();
}

// The calibration with the target where a view shows it.
TPlaneCalibration laidAt(const TPlaneCalibration& calibration, const Observation& observation) {
    if (calibration.lens) {
        const Relocated found = relocate(calibration, observation);
        return found.adjusted.settled ? found.calibration : TPlaneCalibration();
    }
    TPlaneOptions options;
    options.lens = false;
    options.mostRms = 1e9;
    Gathered gathered;
    gathered.observations = {observation};
    gathered.imageSize = calibration.imageSize;
    return withoutLens(gathered, options);
}

TPlaneCalibration relocateLens(const TPlaneCalibration& lens, const TTargetView& view,
                               const TPlaneOptions& options) {
    if (!lens.lens) return refused(plBadOptions, "the calibration has no lens");
    if (!view.found) return refused(plNoTarget, view.problem);
    std::string problem;
    Observation observation;
    if (!plane::observe(view, observation, problem)) return refused(plBadViews, problem);
    if (view.imageSize != lens.imageSize) return refused(plMixedSizes, "");
    const Relocated found = relocate(lens, observation);
    if (!found.adjusted.settled) return refused(plNotConverged, "");
    TPlaneCalibration calibration = found.calibration;
    calibration.description = lens.description;
    report(found.adjusted, {observation}, calibration);
    if (isTooRough(calibration, options, problem)) return refused(plNotConverged, problem);
    addLensShare(lens, found, observation, calibration);
    raise(options, calibration);
    return calibration;
}

}  // namespace

TPlaneCalibration calibratePlane(const std::vector<TTargetView>& views, const TPlaneOptions& options) {
    if (!areGood(options, "calibratePlane")) return refused(plBadOptions, "");
    Gathered gathered;
    std::string problem;
    const TPlaneStatus status = gather(views, options, gathered, problem);
    TPlaneCalibration result = status != plOk ? refused(status, problem)
                               : options.lens ? withLens(gathered, options)
                                              : withoutLens(gathered, options);
    plane::tellResult(result, "calibratePlane");
    return result;
}

TPlaneCalibration relocatePlane(const TPlaneCalibration& lens, const TTargetView& view,
                                const TPlaneOptions& options) {
    constexpr const char* kFunction = "relocatePlane";
    if (!areGood(options, kFunction)) return refused(plBadOptions, "");
    if (!options.lens) {
        refuse(rcOption, "relocatePlane", "lens is false; a lens is taken over");
        return refused(plBadOptions, "");
    }
    if (!plane::takesCalibration(lens, kFunction)) return refused(lens.status, lens.problem);
    TPlaneCalibration result = relocateLens(lens, view, options);
    plane::tellResult(result, kFunction);
    return result;
}

std::vector<cv::Point2d> planeResiduals(const TPlaneCalibration& calibration, const TTargetView& view) {
    Observation observation;
    std::string problem;
    constexpr const char* kFunction = "planeResiduals";
    if (!plane::takesCalibration(calibration, kFunction)) return {};
    if (!view.found || !plane::observe(view, observation, problem)) {
        plane::refuseStatus(view.found ? plBadViews : plNoTarget, view.found ? problem : view.problem,
                            kFunction);
        return {};
    }
    const TPlaneCalibration laid = laidAt(calibration, observation);
    if (!laid.valid()) {
        plane::refuseStatus(plNotConverged, laid.problem, kFunction);
        return {};
    }
    const std::vector<cv::Point2d> shifts = plane::outlineShifts(laid, observation);
    std::vector<cv::Point2d> residuals = planeToImage(laid, observation.plane);
    for (std::size_t i = 0; i < residuals.size(); ++i)
        residuals[i] = observation.pixels[i] - shifts[i] - residuals[i];
    return residuals;
}

}  // namespace orx
