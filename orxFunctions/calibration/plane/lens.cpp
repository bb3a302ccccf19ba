#include "orxFunctions/calibration/plane/lens.h"

#include <algorithm>
#include <cmath>

namespace orx::plane {
namespace {

constexpr int kMostSteps = 60;
constexpr int kMostHalvings = 12;
constexpr double kSettled = 1e-13;  // a ten thousand millionth of a pixel at a focal length of 1000 pixels

constexpr double kShortestStride = 1.0 / 256.0;

// Newton's steps from a ray that is near, halved as long as they lead away.
bool settle(const Lens& lens, cv::Point2d seen, cv::Point2d& ray) {
    cv::Matx22d derivative;
    cv::Point2d off = seen - distorted(lens, ray, &derivative);
    double distance = cv::norm(off);
    for (int i = 0; i < kMostSteps && distance > 0.0; ++i) {
        const double determinant = derivative(0, 0) * derivative(1, 1) - derivative(0, 1) * derivative(1, 0);
        if (!(std::abs(determinant) > 1e-12)) break;
        cv::Point2d step((derivative(1, 1) * off.x - derivative(0, 1) * off.y) / determinant,
                         (derivative(0, 0) * off.y - derivative(1, 0) * off.x) / determinant);
        bool nearer = false;
        for (int half = 0; half < kMostHalvings && !nearer; ++half, step *= 0.5) {
            cv::Matx22d there;
            const cv::Point2d left = seen - distorted(lens, ray + step, &there);
            nearer = cv::norm(left) < distance;
            if (!nearer) continue;
            ray += step;
            off = left;
            distance = cv::norm(left);
            derivative = there;
        }
        if (!nearer) break;
    }
    return distance <= kSettled * (1.0 + cv::norm(seen));
}

}  // namespace

cv::Point2d distorted(const Lens& lens, cv::Point2d ray, cv::Matx22d* derivative) {
    const double x = ray.x;
    const double y = ray.y;
    const double square = x * x + y * y;
    const double radial = 1.0 + square * (lens.k1 + square * (lens.k2 + square * lens.k3));
    if (derivative != nullptr) {
        const double growth = 2.0 * (lens.k1 + square * (2.0 * lens.k2 + square * 3.0 * lens.k3));
        const double mixed = x * y * growth + 2.0 * (lens.p1 * x + lens.p2 * y);
        *derivative = cv::Matx22d(radial + x * x * growth + 2.0 * lens.p1 * y + 6.0 * lens.p2 * x, mixed,
                                  mixed, radial + y * y * growth + 6.0 * lens.p1 * y + 2.0 * lens.p2 * x);
    }
    return {x * radial + 2.0 * lens.p1 * x * y + lens.p2 * (square + 2.0 * x * x),
            y * radial + lens.p1 * (square + 2.0 * y * y) + 2.0 * lens.p2 * x * y};
}

bool isUnfolded(const Lens& lens, cv::Point2d ray) {
    // The slope of r (1 + k1 r^2 + k2 r^4 + k3 r^6) as a polynomial in u = r^2: its least value up to the ray
    // is at an end or where its own slope is zero.
    const auto slope = [&](double u) {
        return 1.0 + u * (3.0 * lens.k1 + u * (5.0 * lens.k2 + u * 7.0 * lens.k3));
    };
    const double end = ray.dot(ray);
    double least = slope(end);
    const double a = 21.0 * lens.k3;
    const double b = 10.0 * lens.k2;
    const double c = 3.0 * lens.k1;
    const double discriminant = b * b - 4.0 * a * c;
    if (discriminant >= 0.0) {
        const double q = -0.5 * (b + std::copysign(std::sqrt(discriminant), b));
        for (const double u : {q / a, c / q}) {
            if (u > 0.0 && u < end) least = std::min(least, slope(u));
        }
    }
    cv::Matx22d derivative;
    distorted(lens, ray, &derivative);
    return least > 0.0 && derivative(0, 0) * derivative(1, 1) - derivative(0, 1) * derivative(1, 0) > 0.0;
}

bool undistorted(const Lens& lens, cv::Point2d seen, cv::Point2d& ray) {
    // Along the line from the middle, in one stride where Newton's steps bear it, else in shorter ones: they
    // stay on the branch that begins in the middle.
    cv::Point2d reached;
    double share = 0.0;
    double stride = 1.0;
    while (share < 1.0) {
        const double next = std::min(1.0, share + stride);
        cv::Point2d there = reached;
        if (settle(lens, next * seen, there) && isUnfolded(lens, there)) {
            reached = there;
            share = next;
        } else {
            stride *= 0.5;
            if (stride < kShortestStride) return false;
        }
    }
    ray = reached;
    return true;
}

}  // namespace orx::plane
