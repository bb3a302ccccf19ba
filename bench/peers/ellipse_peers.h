// Ellipses of this library and of OpenCV, on equal scenes.
#ifndef BENCH_PEERS_ELLIPSE_PEERS_H
#define BENCH_PEERS_ELLIPSE_PEERS_H

#include <opencv2/imgproc.hpp>

#include "bench/peers/peer_scenes.h"

namespace accuracy_peers {

// Half axes in any order; the angle is that of `a`, degrees.
inline orx::TMeasuredEllipse ellipseOf(cv::Point2d center, double a, double b, double angle) {
    orx::TMeasuredEllipse ellipse;
    const bool finite = std::isfinite(center.x + center.y + a + b + angle);
    ellipse.status = finite ? orx::fsOk : orx::fsNotConverged;
    ellipse.center = center;
    ellipse.semiMajor = std::max(a, b);
    ellipse.semiMinor = std::min(a, b);
    ellipse.angle = a >= b ? angle : angle + 90;
    return ellipse;
}

inline orx::TMeasuredEllipse ellipseOf(const cv::RotatedRect& box) {
    return ellipseOf(box.center, static_cast<double>(box.size.width) / 2,
                     static_cast<double>(box.size.height) / 2, static_cast<double>(box.angle));
}

inline const std::vector<Peer<orx::TMeasuredEllipse>> kEllipsePeers = {
    {"this library, least squares", [](const Points& p) { return orx::fitEllipseGeometric(p); }},
    {"this library, Tukey", [](const Points& p) { return orx::fitEllipseGeometric(p, tukey()); }},
    {"this library, consensus", [](const Points& p) { return orx::findEllipse(p, tolerating()); }},
    {"OpenCV, fitEllipse", [](const Points& p) { return ellipseOf(cv::fitEllipse(floats(p))); }},
    {"OpenCV, fitEllipseAMS", [](const Points& p) { return ellipseOf(cv::fitEllipseAMS(floats(p))); }},
    {"OpenCV, fitEllipseDirect", [](const Points& p) { return ellipseOf(cv::fitEllipseDirect(floats(p))); }},
};

// Half of the outline, from one end of the longer axis to the other.
inline EllipseTask halfOf(EllipseTask task) {
    task.truth.from = 0;
    task.scene.extent = 180;
    return task;
}

inline const std::vector<Column<EllipseTask>> kEllipses = {
    {"1:2", 21, ellipseTask(2, kPoints, kNoise)},
    {"1:5", 22, ellipseTask(5, kPoints, kNoise)},
    {"half of 1:2", 23, halfOf(ellipseTask(2, kPoints, kNoise))},
    {"1:2, 40 % outliers", 24, ellipseTask(2, kPoints, kNoise, 0.4)},
    {"1:5, 40 % outliers", 25, ellipseTask(5, kPoints, kNoise, 0.4)},
};

}  // namespace accuracy_peers

#endif
