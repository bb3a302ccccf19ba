#include "orxFunctions/matching/model/freedom.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::matching {
namespace {

// Mean square of what a motion of unit length does across the outline.
constexpr double kSuspicious = 4e-3;
// Share of a motion that may show across the outline.
constexpr double kHidden = 0.03;
// Parts of the free motions that are a turn or a scale, a shift: cosines squared.
constexpr double kHasTurn = 0.1;
constexpr double kIsShift = 0.9;

// Shift x, y, turn and scale about the centroid, all counted as pixels at the outline's rms radius.
using Direction = cv::Vec4d;

cv::Matx44d normalMatrix(const MatchedOutline& outline) {
    cv::Matx44d sum = cv::Matx44d::zeros();
    const double r = outline.rmsRadius();
    for (std::size_t i = 0; i < outline.points().size(); ++i) {
        const OutlinePoint& point = outline.points()[i];
        const cv::Point2d p = (point.position - outline.centroid()) * (1 / r);
        const cv::Point2d n = point.normal;
        const Direction row(n.x, n.y, n.y * p.x - n.x * p.y, n.dot(p));
        sum += outline.lengthAt(i) / outline.length() * (row * row.t());
    }
    return sum;
}

// The motion along a direction, followed for `distance` pixels of its rms.
Motion motionAlong(const Direction& v, const MatchedOutline& outline, double distance) {
    const std::complex<double> rate = std::complex<double>(v[3], v[2]) / outline.rmsRadius();
    const std::complex<double> grown = rate * distance;
    const std::complex<double> shift(v[0], v[1]);
    const std::complex<double> centroid(outline.centroid().x, outline.centroid().y);
    Motion motion;
    motion.factor = std::exp(grown);
    const std::complex<double> travelled = std::abs(grown) > 1e-6 ? shift * (motion.factor - 1.0) / rate
                                                                  : shift * distance * (1.0 + grown / 2.0);
    motion.shift = centroid - motion.factor * centroid + travelled;
    return motion;
}

bool staysOnItself(const MatchedOutline& outline, const Direction& v) {
    const double distance = 2 * outline.cell();
    MatchTolerance tolerance;
    tolerance.across = std::max(0.5, 5 * outline.noise());
    tolerance.along = distance + 3;
    const double limit = 2 * outline.noise() * outline.noise() + std::pow(kHidden * distance, 2);
    for (const double way : {distance, -distance}) {
        const SelfMatch match = outline.match(motionAlong(v, outline, way), tolerance);
        if (match.share < 0.98 || match.longestGap >= 6 || match.meanSquare > limit) return false;
    }
    return true;
}

std::vector<Direction> freeDirections(const MatchedOutline& outline) {
    cv::Vec4d values;
    cv::Matx44d vectors;  // rows
    cv::eigen(normalMatrix(outline), values, vectors);
    std::vector<Direction> free;
    for (int i = 0; i < 4; ++i) {
        const Direction v(vectors(i, 0), vectors(i, 1), vectors(i, 2), vectors(i, 3));
        if (values[i] < kSuspicious && staysOnItself(outline, v)) free.push_back(v);
    }
    return free;
}

// Where the motion with the largest turn among the free ones leaves the plane in place.
cv::Point2d centreOf(const cv::Matx44d& projector, const MatchedOutline& outline) {
    const Direction v(projector(0, 2), projector(1, 2), projector(2, 2), projector(3, 2));
    const std::complex<double> rate = std::complex<double>(v[3], v[2]) / outline.rmsRadius();
    const std::complex<double> centre = -std::complex<double>(v[0], v[1]) / rate;
    return outline.centroid() + cv::Point2d(centre.real(), centre.imag());
}

}  // namespace

Freedom findFreedom(const MatchedOutline& outline) {
    Freedom freedom;
    if (outline.rmsRadius() <= 0) return freedom;
    cv::Matx44d projector = cv::Matx44d::zeros();
    for (const Direction& v : freeDirections(outline)) projector += v * v.t();
    freedom.turn = projector(2, 2) > kHasTurn;
    if (freedom.turn) freedom.centre = centreOf(projector, outline);
    freedom.scale = projector(3, 3) > kHasTurn;
    // The larger eigenvalue of the part that shifts, and its direction.
    const double mean = (projector(0, 0) + projector(1, 1)) / 2;
    const double difference = (projector(0, 0) - projector(1, 1)) / 2;
    freedom.shift = mean + std::hypot(difference, projector(0, 1)) > kIsShift;
    if (freedom.shift) {
        const double angle = degrees(std::atan2(projector(0, 1), difference)) / 2;
        freedom.direction = angle < 0 ? angle + 180 : angle;
    }
    return freedom;
}

}  // namespace orx::matching
