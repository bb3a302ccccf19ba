#include "orxFunctions/calibration/plane/adjustment.h"

#include <cmath>
#include <cstddef>

#include "orxFunctions/calibration/plane/sensitivity.h"

namespace orx::plane {
namespace {

constexpr int kMostSteps = 60;
constexpr double kSettledStep = 1e-7;  // of a parameter's own uncertainty
constexpr int kMostHalvings = 10;

// Distances and derivatives of one view, each row times the root of its weight.
struct Rows {
    cv::Mat derivatives;  // 2n x 15
    cv::Mat distances;    // 2n x 1, seen less projected
};

Rows rowsOf(const TPlaneCalibration& calibration, const Observation& observation) {
    Rows rows;
    std::vector<cv::Point2d> projected;
    rows.derivatives = imageSensitivity(calibration, observation.plane, &projected);
    rows.distances.create(rows.derivatives.rows, 1, CV_64F);
    for (int i = 0; i < static_cast<int>(projected.size()); ++i) {
        const auto at = static_cast<std::size_t>(i);
        const double root = std::sqrt(observation.weights[at]);
        const cv::Point2d off = observation.pixels[at] - projected[at];
        rows.distances.at<double>(2 * i) = root * off.x;
        rows.distances.at<double>(2 * i + 1) = root * off.y;
        rows.derivatives.rowRange(2 * i, 2 * i + 2) *= root;
    }
    return rows;
}

double squaresOf(const TPlaneCalibration& calibration, const Observation& observation, bool weighted) {
    std::vector<cv::Point2d> projected;
    imageSensitivity(calibration, observation.plane, &projected);
    double squares = 0.0;
    for (std::size_t i = 0; i < projected.size(); ++i) {
        const cv::Point2d off = observation.pixels[i] - projected[i];
        squares += (weighted ? observation.weights[i] : 1.0) * off.dot(off);
    }
    return squares;
}

// The inverse of a matrix of normal equations, whose columns may be of quite different sizes. Empty where it
// is singular as far as numbers tell. Rows and columns that are zero stay zero.
cv::Mat inverseOfNormal(const cv::Mat& normal) {
    const int n = normal.rows;
    std::vector<double> scale(static_cast<std::size_t>(n), 0.0);
    cv::Mat scaled = cv::Mat::eye(n, n, CV_64F);
    const auto scaleOf = [&](int i) { return scale[static_cast<std::size_t>(i)]; };
    for (int i = 0; i < n; ++i) {
        const double diagonal = normal.at<double>(i, i);
        if (!std::isfinite(diagonal)) return {};
        if (diagonal > 0.0) scale[static_cast<std::size_t>(i)] = 1.0 / std::sqrt(diagonal);
    }
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            if (i != j) scaled.at<double>(i, j) = normal.at<double>(i, j) * scaleOf(i) * scaleOf(j);
        }
    }
    cv::Mat inverse;
    if (cv::invert(scaled, inverse, cv::DECOMP_CHOLESKY) == 0.0) return {};
    for (int i = 0; i < n; ++i) {
        // The part of a parameter's variance that is left once the others are known; below the rounding of
        // the sums nothing is told about it.
        if (!(inverse.at<double>(i, i) < 1e13)) return {};
        for (int j = 0; j < n; ++j) inverse.at<double>(i, j) *= scaleOf(i) * scaleOf(j);
    }
    return inverse;
}

// The normal equations, the poses eliminated: each view's pose touches the lens and nothing else.
struct Elimination {
    cv::Mat lensNormal = cv::Mat::zeros(kLensParameters, kLensParameters, CV_64F);
    cv::Mat lensRight = cv::Mat::zeros(kLensParameters, 1, CV_64F);
    std::vector<cv::Mat> poseInverse;  // 6 x 6
    std::vector<cv::Mat> poseRight;    // 6 x 1
    std::vector<cv::Mat> mixed;        // 6 x 9
    double squares = 0.0;
};

bool eliminate(const std::vector<Observation>& observations, const FreeLens& isFree, const Camera& camera,
               const std::vector<Pose>& poses, Elimination& result) {
    for (std::size_t v = 0; v < observations.size(); ++v) {
        const Rows rows = rowsOf(asCalibration(camera, poses[v]), observations[v]);
        cv::Mat lens = rows.derivatives.colRange(0, kLensParameters);
        for (int k = 0; k < kLensParameters; ++k) {
            if (!isFree[static_cast<std::size_t>(k)]) lens.col(k).setTo(0.0);
        }
        const cv::Mat pose = rows.derivatives.colRange(kLensParameters, kPlaneParameters);
        const cv::Mat inverse = inverseOfNormal(pose.t() * pose);
        if (inverse.empty()) return false;
        const cv::Mat mixed = pose.t() * lens;
        const cv::Mat right = pose.t() * rows.distances;
        result.lensNormal += lens.t() * lens - mixed.t() * inverse * mixed;
        result.lensRight += lens.t() * rows.distances - mixed.t() * inverse * right;
        result.squares += rows.distances.dot(rows.distances);
        result.poseInverse.push_back(inverse);
        result.poseRight.push_back(right);
        result.mixed.push_back(mixed);
    }
    return std::isfinite(result.squares);
}

void move(Camera& camera, const cv::Mat& step) {
    camera.matrix(0, 0) += step.at<double>(0);
    camera.matrix(1, 1) += step.at<double>(1);
    camera.matrix(0, 2) += step.at<double>(2);
    camera.matrix(1, 2) += step.at<double>(3);
    for (int k = 0; k < 5; ++k) camera.distortion[k] += step.at<double>(4 + k);
}

void move(Pose& pose, const cv::Mat& step) {
    for (int k = 0; k < 3; ++k) {
        pose.rotation[k] += step.at<double>(k);
        pose.translation[k] += step.at<double>(3 + k);
    }
}

double squaresOf(const std::vector<Observation>& observations, const Camera& camera,
                 const std::vector<Pose>& poses, bool weighted) {
    double squares = 0.0;
    for (std::size_t v = 0; v < observations.size(); ++v)
        squares += squaresOf(asCalibration(camera, poses[v]), observations[v], weighted);
    return squares;
}

// How far a step leads, in the uncertainty of what it moves: the decrease that it promises, over the
// variance.
bool isNegligible(double promised, double squares, double freedom) {
    return promised <= kSettledStep * kSettledStep * squares / freedom + 1e-20 * freedom;
}

double freedomOf(const std::vector<Observation>& observations, const FreeLens& isFree) {
    double freedom = 0.0;
    for (const Observation& observation : observations)
        freedom += 2.0 * static_cast<double>(observation.plane.size()) - kPoseParameters;
    for (const bool parameter : isFree) freedom -= parameter ? 1.0 : 0.0;
    return freedom;
}

// One step, shortened until it leads nearer. False where none does.
bool stepCamera(const std::vector<Observation>& observations, const Elimination& normal,
                const cv::Mat& lensStep, Camera& camera, std::vector<Pose>& poses) {
    double length = 1.0;
    for (int i = 0; i < kMostHalvings; ++i, length *= 0.5) {
        Camera movedCamera = camera;
        std::vector<Pose> movedPoses = poses;
        move(movedCamera, length * lensStep);
        for (std::size_t v = 0; v < poses.size(); ++v) {
            const cv::Mat step = normal.poseInverse[v] * (normal.poseRight[v] - normal.mixed[v] * lensStep);
            move(movedPoses[v], length * step);
        }
        if (squaresOf(observations, movedCamera, movedPoses, true) >= normal.squares) continue;
        camera = movedCamera;
        poses = movedPoses;
        return true;
    }
    return false;
}

cv::Matx<double, kPlaneParameters, kPlaneParameters> cofactorOf(const Elimination& normal,
                                                                const cv::Mat& lensInverse,
                                                                std::size_t planeView) {
    const cv::Mat follows = -normal.poseInverse[planeView] * normal.mixed[planeView];
    cv::Mat cofactor(kPlaneParameters, kPlaneParameters, CV_64F);
    const cv::Range lens(0, kLensParameters);
    const cv::Range pose(kLensParameters, kPlaneParameters);
    const cv::Mat together = follows * lensInverse;
    lensInverse.copyTo(cofactor(lens, lens));
    together.copyTo(cofactor(pose, lens));
    cv::Mat(together.t()).copyTo(cofactor(lens, pose));
    cv::Mat(normal.poseInverse[planeView] + together * follows.t()).copyTo(cofactor(pose, pose));
    return cofactor;
}

}  // namespace

TPlaneCalibration asCalibration(const Camera& camera, const Pose& pose) {
    TPlaneCalibration calibration;
    calibration.status = plOk;
    calibration.camera = camera.matrix;
    calibration.distortion = camera.distortion;
    calibration.rotation = pose.rotation;
    calibration.translation = pose.translation;
    return calibration;
}

TPlaneCalibration asCalibration(const cv::Matx33d& homography) {
    TPlaneCalibration calibration;
    calibration.status = plOk;
    calibration.lens = false;
    calibration.homography = homography;
    return calibration;
}

Adjusted adjustCamera(const std::vector<Observation>& observations, const FreeLens& isFree, int planeView,
                      Camera& camera, std::vector<Pose>& poses) {
    Adjusted result;
    result.freedom = freedomOf(observations, isFree);
    if (result.freedom < 1.0) return result;
    for (int i = 0; i < kMostSteps; ++i) {
        Elimination normal;
        if (!eliminate(observations, isFree, camera, poses, normal)) return result;
        const cv::Mat lensInverse = inverseOfNormal(normal.lensNormal);
        if (lensInverse.empty()) return result;
        const cv::Mat lensStep = lensInverse * normal.lensRight;
        double promised = lensStep.dot(normal.lensRight);
        for (std::size_t v = 0; v < poses.size(); ++v)
            promised += normal.poseRight[v].dot(normal.poseInverse[v] * normal.poseRight[v]);
        // Where rounding alone is left, no step leads nearer.
        const bool done = isNegligible(promised, normal.squares, result.freedom) ||
                          !stepCamera(observations, normal, lensStep, camera, poses);
        if (!done) continue;
        result.settled = promised <= 1e-6 * normal.squares + 1e-12;
        result.squares = normal.squares;
        result.distances = squaresOf(observations, camera, poses, false);
        result.cofactor = cofactorOf(normal, lensInverse, static_cast<std::size_t>(planeView));
        return result;
    }
    return result;
}

cv::Matx<double, kPoseParameters, kLensParameters> poseByLens(const Observation& observation,
                                                              const Camera& camera, const Pose& pose) {
    const Rows rows = rowsOf(asCalibration(camera, pose), observation);
    const cv::Mat ofPose = rows.derivatives.colRange(kLensParameters, kPlaneParameters);
    const cv::Mat inverse = inverseOfNormal(ofPose.t() * ofPose);
    if (inverse.empty()) return {};
    return cv::Mat(-inverse * (ofPose.t() * rows.derivatives.colRange(0, kLensParameters)));
}

Adjusted adjustHomography(const Observation& observation, cv::Matx33d& homography) {
    Adjusted result;
    result.freedom = 2.0 * static_cast<double>(observation.plane.size()) - kHomographyParameters;
    if (result.freedom < 1.0) return result;
    for (int i = 0; i < kMostSteps; ++i) {
        const Rows rows = rowsOf(asCalibration(homography), observation);
        const cv::Mat inverse = inverseOfNormal(rows.derivatives.t() * rows.derivatives);
        if (inverse.empty()) return result;
        const cv::Mat right = rows.derivatives.t() * rows.distances;
        const cv::Mat step = inverse * right;
        const double promised = step.dot(right);
        const double squares = rows.distances.dot(rows.distances);
        bool nearer = false;
        double length = isNegligible(promised, squares, result.freedom) ? 0.0 : 1.0;
        for (int half = 0; half < kMostHalvings && length > 0.0 && !nearer; ++half, length *= 0.5) {
            cv::Matx33d moved = homography;
            for (int k = 0; k < kHomographyParameters; ++k) moved.val[k] += length * step.at<double>(k);
            nearer = squaresOf(asCalibration(moved), observation, true) < squares;
            if (nearer) homography = moved;
        }
        if (nearer) continue;
        result.settled = promised <= 1e-6 * squares + 1e-12;
        result.squares = squares;
        result.distances = squaresOf(asCalibration(homography), observation, false);
        result.cofactor = inverse;
        return result;
    }
    return result;
}

}  // namespace orx::plane
