// How well targets are found and planes calibrated, on rendered pictures of known cameras: what
// accuracy_calibration prints, and a test holds it to.
#ifndef ORX_DOCS_TOOLS_CALIBRATION_ACCURACY_H
#define ORX_DOCS_TOOLS_CALIBRATION_ACCURACY_H

#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "support/plane_scene.h"

namespace calibration_accuracy {

// 640 x 480 pixels, 620 pixels of focal length, a barrel of 4 % at the corners.
inline scenes::PlaneCamera lensOfTheScenes() {
    scenes::PlaneCamera camera;
    camera.size = {640, 480};
    camera.fx = 620;
    camera.fy = 618;
    camera.cx = 326;
    camera.cy = 235;
    camera.k1 = -0.18;
    camera.k2 = 0.09;
    camera.p1 = 4e-4;
    camera.p2 = -6e-4;
    return camera;
}

inline orx::TTarget targetOf(orx::TTargetKind kind, double pitch = 10) {
    orx::TTarget target;
    target.kind = kind;
    target.columns = 11;
    target.rows = 8;
    target.pitch = pitch;
    target.diameter = pitch / 2;
    return target;
}

inline scenes::PlaneShape shapeOf(const orx::TTarget& target) {
    return target.kind == orx::tkChessboard
               ? scenes::chessboardShape(target.columns, target.rows, target.pitch)
               : scenes::dotGridShape(target.columns, target.rows, target.pitch, target.diameter);
}

// Where a view should have its points: corners, or the centres of the areas of the dots' pictures.
inline cv::Point2d trueImage(const scenes::PlaneCamera& camera, cv::Point2d place, double diameter) {
    const cv::Point2d origin = camera.project(place);
    if (diameter <= 0) return origin;
    constexpr int kCorners = 200;
    double area = 0;
    cv::Point2d moment;
    const auto outline = [&](int k) {
        const double t = 2 * CV_PI * k / kCorners;
        return camera.project(place + diameter / 2 * cv::Point2d(std::cos(t), std::sin(t))) - origin;
    };
    for (int k = 0; k < kCorners; ++k) {
        const cv::Point2d a = outline(k);
        const cv::Point2d b = outline(k + 1);
        area += a.cross(b);
        moment += a.cross(b) * (a + b);
    }
    return origin + moment * (1 / (3 * area));
}

struct Found {
    int lost = 0;       // pictures whose target was not found
    double rms = 0;     // error of x or y, pixels
    double stated = 0;  // what the views say of it
};

// A tilted target whose pitch is about `pixels`, under `draws` draws of noise.
inline Found findTargets(orx::TTargetKind kind, double pixels, double blur, double noise, int draws) {
    const double pitch = pixels * 120 / 620;
    const orx::TTarget target = targetOf(kind, pitch);
    const scenes::PlaneCamera camera =
        scenes::tilted(lensOfTheScenes(), {5 * pitch, 3.5 * pitch}, 120, 25, 40, 8);
    scenes::PlaneExposure exposure;
    exposure.blurSigma = blur;
    const cv::Mat levels = scenes::renderPlaneLevels(camera, shapeOf(target), exposure);
    Found result;
    double points = 0;
    for (int draw = 0; draw < draws; ++draw) {
        const auto seed = static_cast<std::uint64_t>(draw) + 1;
        const orx::TTargetView view = orx::findTarget(scenes::withNoise(levels, noise, seed), target);
        if (!view.found) ++result.lost;
        for (std::size_t i = 0; i < view.pixels.size(); ++i) {
            const cv::Point2d off = view.pixels[i] - trueImage(camera, view.plane[i], view.dotDiameter);
            result.rms += off.dot(off) / 2;
            result.stated += view.deviations[i] * view.deviations[i];
            points += 1;
        }
    }
    if (points > 0) result = {result.lost, std::sqrt(result.rms / points), std::sqrt(result.stated / points)};
    return result;
}

// The plane's view first, then seven that are tilted to all sides.
inline std::vector<scenes::PlaneCamera> eightPoses() {
    std::vector<scenes::PlaneCamera> poses{scenes::tilted(lensOfTheScenes(), {50, 35}, 125, 10, 20, 3)};
    for (int i = 0; i < 7; ++i) {
        const cv::Point2d middle(50 + 5 * std::cos(2.2 * i), 35 + 4 * std::sin(2.2 * i));
        poses.push_back(
            scenes::tilted(lensOfTheScenes(), middle, 140 + 2 * i, 22 + 2 * i, 51 * i, 4 * i - 12));
    }
    return poses;
}

// How a calibration is made from the views.
enum class Way { lens, knownLens, raised };

struct Mapped {
    int lost = 0;
    double statedOverTrue = 0;  // of the places of nine points in the target's field
    double place = 0;           // error of x or y of those, micrometres, root mean square
    double length = 0;          // error of the target's diagonal, micrometres, root mean square
    double lengthStated = 0;    // what is stated of it
};

// Nine places all over the target of the plane's view.
inline std::vector<cv::Point2d> ninePlaces() {
    std::vector<cv::Point2d> places;
    for (const double y : {0.0, 35.0, 70.0}) {
        for (const double x : {0.0, 50.0, 100.0}) places.emplace_back(x, y);
    }
    return places;
}

// Adds up what calibrations are off, over their repetitions.
class Judge {
  public:
    explicit Judge(const scenes::PlaneCamera& plane) {
        for (const cv::Point2d& p : ninePlaces()) {
            truth_.push_back(p);
            pixels_.push_back(plane.project(p));
        }
    }

    void add(const orx::TPlaneCalibration& calibration) {
        const cv::Mat covariance = orx::planeCovariance(calibration, pixels_);
        if (covariance.empty()) {
            ++result_.lost;
            return;
        }
        const std::vector<cv::Point2d> places = orx::imageToPlane(calibration, pixels_);
        for (std::size_t i = 0; i < places.size(); ++i) {
            const cv::Point2d off = places[i] - truth_[i];
            const int k = 2 * static_cast<int>(i);
            scaled_ += off.x * off.x / covariance.at<double>(k, k) +
                       off.y * off.y / covariance.at<double>(k + 1, k + 1);
            squares_ += off.dot(off);
        }
        const cv::Point2d apart = truth_.back() - truth_.front();
        const cv::Point2d along = apart * (1 / cv::norm(apart));
        cv::Mat direction = cv::Mat::zeros(1, covariance.cols, CV_64F);
        direction.at<double>(0) = -along.x;
        direction.at<double>(1) = -along.y;
        direction.at<double>(covariance.cols - 2) = along.x;
        direction.at<double>(covariance.cols - 1) = along.y;
        const double error = cv::norm(places.back() - places.front()) - cv::norm(apart);
        lengths_ += error * error;
        lengthVariances_ += cv::Mat(direction * covariance * direction.t()).at<double>(0);
        ++count_;
    }

    Mapped result() const {
        Mapped result = result_;
        if (count_ == 0) return result;
        const double coordinates = 2.0 * static_cast<double>(truth_.size()) * count_;
        result.statedOverTrue = 1 / std::sqrt(scaled_ / coordinates);
        result.place = 1000 * std::sqrt(squares_ / coordinates);
        result.length = 1000 * std::sqrt(lengths_ / count_);
        result.lengthStated = 1000 * std::sqrt(lengthVariances_ / count_);
        return result;
    }

  private:
    std::vector<cv::Point2d> truth_;
    std::vector<cv::Point2d> pixels_;
    Mapped result_;
    double scaled_ = 0;
    double squares_ = 0;
    double lengths_ = 0;
    double lengthVariances_ = 0;
    int count_ = 0;
};

// Calibrations from rendered pictures, under fresh noise each time. Way::raised measures on a plane 8 mm
// nearer to the camera; Way::knownLens finds the lens from all views but the first, and the plane from that.
inline Mapped calibrateRendered(orx::TTargetKind kind, Way way, double noise, int draws) {
    const orx::TTarget target = targetOf(kind);
    const std::vector<scenes::PlaneCamera> poses = eightPoses();
    std::vector<cv::Mat> levels;
    for (const scenes::PlaneCamera& pose : poses)
        levels.push_back(scenes::renderPlaneLevels(pose, shapeOf(target), {}));
    scenes::PlaneCamera plane = poses.front();
    orx::TPlaneOptions options;
    if (way == Way::raised) {
        options.height = 8;
        plane.translation -= 8 * cv::Vec3d(plane.rotation(0, 2), plane.rotation(1, 2), plane.rotation(2, 2));
    }
    Judge judge(plane);
    for (int draw = 0; draw < draws; ++draw) {
        std::vector<orx::TTargetView> views;
        for (std::size_t v = 0; v < levels.size(); ++v) {
            const auto seed = static_cast<std::uint64_t>(draw) * 100 + v + 1;
            views.push_back(orx::findTarget(scenes::withNoise(levels[v], noise, seed), target));
        }
        if (way == Way::knownLens) {
            const orx::TTargetView first = views.front();
            views.erase(views.begin());
            judge.add(orx::relocatePlane(orx::calibratePlane(views, options), first, options));
        } else {
            judge.add(orx::calibratePlane(views, options));
        }
    }
    return judge.result();
}

// A homography of one view of a lens without distortion.
inline Mapped calibrateFlat(orx::TTargetKind kind, double noise, int draws) {
    const orx::TTarget target = targetOf(kind);
    scenes::PlaneCamera straight = lensOfTheScenes();
    straight.k1 = straight.k2 = straight.p1 = straight.p2 = 0;
    const scenes::PlaneCamera plane = scenes::tilted(straight, {50, 35}, 135, 20, 20, 3);
    const cv::Mat levels = scenes::renderPlaneLevels(plane, shapeOf(target), {});
    orx::TPlaneOptions options;
    options.lens = false;
    Judge judge(plane);
    for (int draw = 0; draw < draws; ++draw) {
        const auto seed = static_cast<std::uint64_t>(draw) + 1;
        judge.add(
            orx::calibratePlane({orx::findTarget(scenes::withNoise(levels, noise, seed), target)}, options));
    }
    return judge.result();
}

}  // namespace calibration_accuracy

#endif
