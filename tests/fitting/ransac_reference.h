// Both consensus searches written out literally, with every candidate's indices stored: what the fast ones
// are compared with.
#ifndef TESTS_FITTING_RANSAC_REFERENCE_H
#define TESTS_FITTING_RANSAC_REFERENCE_H

#include <cmath>
#include <cstdlib>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace reference {

struct Search {
    std::vector<cv::Point> points;
    int iterations;
    int cap;
    double threshold;
    double minAngle = 0;
    double maxAngle = 0;
    int angleType = 3;
    int minRadius = 5;
    int maxRadius = 1000;
};

inline double footDistance(cv::Point p, cv::Point a, cv::Point b) {
    if (a.x == b.x) return std::fabs(double(p.x) - a.x);
    if (a.y == b.y) return std::fabs(double(p.y) - a.y);
    const double k = (double(a.y) - b.y) / (double(a.x) - b.x);
    const double kp = -1 / k;
    const double c = p.y - p.x * kp;
    const double xf = (c - (a.y - a.x * k)) / (k - kp);
    const double yf = xf * kp + c;
    return std::sqrt((p.x - xf) * (p.x - xf) + (p.y - yf) * (p.y - yf));
}

inline double angle(cv::Point p, cv::Point q, int type) {
    if (p.x == q.x) return 90.0;
    if (p.y == q.y) return 0.0;
    const double s = (double(p.y) - q.y) / (double(p.x) - q.x);
    const double a = std::atan(type == 0 ? std::fabs(s) : s) * 180 / 3.141592653589793;
    return type == 1 && a < 0 ? a + 180 : a;
}

// Empty when there is no candidate.
inline std::vector<int> line(const Search& s) {
    std::vector<std::vector<int>> candidates;
    const int n = int(s.points.size());
    for (int t = 1; t <= s.iterations; ++t) {
        if (long(candidates.size()) > s.cap) break;
        const int i = std::rand() % n;
        const int j = std::rand() % n;
        if (i == j) continue;
        const cv::Point p = s.points[size_t(i)];
        const cv::Point q = s.points[size_t(j)];
        if (s.angleType != 3) {
            const double a = angle(p, q, s.angleType);
            if (!(s.minAngle <= a && a <= s.maxAngle)) continue;
        }
        std::vector<int> candidate{i, j};
        for (int k = 0; k < n; ++k) {
            if (footDistance(s.points[size_t(k)], p, q) <= s.threshold) candidate.push_back(k);
        }
        candidates.push_back(candidate);
    }
    std::vector<int> winner;
    for (const auto& candidate : candidates) {
        if (candidate.size() > winner.size()) winner = candidate;
    }
    return winner;
}

inline int wrapped(std::int64_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

// Each value is reduced to 32 bits before it is used: 64 bits hold a product of two such values.
inline cv::Point3d integerCircle(cv::Point p1, cv::Point p2, cv::Point p3) {
    using Wide = std::int64_t;
    const Wide x1 = p1.x, y1 = p1.y, x2 = p2.x, y2 = p2.y, x3 = p3.x, y3 = p3.y;
    const auto times = [](Wide a, Wide b) { return Wide(wrapped(Wide(wrapped(a)) * wrapped(b))); };
    const Wide a = times(x1, x1) - times(x2, x2) - times(y2, y2) + times(y1, y1);
    const Wide b = times(x1, x1) - times(x3, x3) - times(y3, y3) + times(y1, y1);
    const double cx = double(wrapped(times(y1 - y3, a) - times(y1 - y2, b))) /
                      wrapped(2 * (times(x2 - x1, y3) + times(x3 - x2, y1) + times(x1 - x3, y2)));
    const double cy = double(wrapped(times(x1 - x3, a) - times(x1 - x2, b))) /
                      wrapped(2 * (times(y3 - y1, x1 - x2) + times(x1 - x3, y1 - y2)));
    return {cx, cy, std::sqrt((cy - p1.y) * (cy - p1.y) + (cx - p1.x) * (cx - p1.x))};
}

struct Circle {
    bool found = false;
    cv::Point3d circle;
    std::vector<int> indices;
};

inline Circle circle(const Search& s) {
    const int n = int(s.points.size());
    if (n < 3) return {};
    std::vector<cv::Point3d> candidates;
    for (int t = 1; t <= s.iterations; ++t) {
        const int a = std::rand() % n;
        const int b = std::rand() % n;
        const int c = std::rand() % n;
        if (a == b || a == c || b == c) continue;
        const cv::Point p1 = s.points[size_t(a)], p2 = s.points[size_t(b)], p3 = s.points[size_t(c)];
        const auto product = [](int u1, int u0, int v1, int v0) {
            return wrapped(std::int64_t(wrapped(std::int64_t(u1) - u0)) * wrapped(std::int64_t(v1) - v0));
        };
        if (product(p2.y, p1.y, p3.x, p1.x) == product(p3.y, p1.y, p2.x, p1.x)) continue;
        const cv::Point3d candidate = integerCircle(p1, p2, p3);
        if (s.minRadius <= candidate.z && candidate.z <= s.maxRadius) candidates.push_back(candidate);
        if (long(candidates.size()) > s.cap) break;
    }
    Circle winner;
    size_t reference = 0;
    for (size_t m = 0; m < candidates.size(); ++m) {
        const cv::Point3d& candidate = candidates[m];
        std::vector<int> inliers;
        for (int k = 0; k < n; ++k) {
            const cv::Point p = s.points[size_t(k)];
            const double dx = candidate.x - p.x;
            const double dy = candidate.y - p.y;
            if (std::fabs(std::sqrt(dx * dx + dy * dy) - candidate.z) <= s.threshold) inliers.push_back(k);
        }
        if (m == 0) reference = inliers.size();
        if (m == 0 || inliers.size() > reference) winner = {true, candidate, inliers};
    }
    return winner;
}

}  // namespace reference

#endif
