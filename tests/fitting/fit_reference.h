// The estimators written down once more, plainly: every set stored, every distance calculated, no vectors.
// The library must give the same bits.
#ifndef TESTS_FITTING_FIT_REFERENCE_H
#define TESTS_FITTING_FIT_REFERENCE_H

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace fit_reference {

using Points = std::vector<cv::Point>;

inline orx::TCircle algebraic(const Points& points, const std::vector<double>& weights) {
    double n = 0, x = 0, y = 0, xx = 0, yy = 0, xxx = 0, yyy = 0, xy = 0, xyy = 0, xxy = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double px = points[i].x, py = points[i].y, w = weights.empty() ? 1.0 : weights[i];
        n += w;
        x += w * px;
        y += w * py;
        xx += w * (px * px);
        yy += w * (py * py);
        xxx += w * (px * px * px);
        yyy += w * (py * py * py);
        xy += w * (px * py);
        xyy += w * (px * (py * py));
        xxy += w * (px * px * py);
    }
    for (double* sum : {&x, &y, &xx, &yy, &xxx, &yyy, &xy, &xyy, &xxy}) *sum /= n;
    const double C = xx - x * x, D = xy - x * y, E = xxx + xyy - (xx + yy) * x;
    const double G = yy - y * y, H = yyy + xxy - (xx + yy) * y;
    const double a = (H * D - E * G) / (C * G - D * D), b = (H * C - E * D) / (D * D - G * C);
    const double c = -(a * x + b * y + xx + yy);
    orx::TCircle circle;
    circle.x = -a / 2;
    circle.y = -b / 2;
    circle.r = std::sqrt(a * a + b * b - 4 * c) / 2;
    return circle;
}

inline double signedDistance(const orx::TCircle& c, const cv::Point& p) {
    return std::sqrt((c.x - p.x) * (c.x - p.x) + (c.y - p.y) * (c.y - p.y)) - c.r;
}

inline std::vector<double> residuals(const Points& points, const orx::TCircle& circle) {
    std::vector<double> list;
    for (const auto& p : points) list.push_back(std::fabs(signedDistance(circle, p)));
    return list;
}

inline double sum(const std::vector<double>& values) {
    double total = 0;
    for (const double v : values) total += v;
    return total;
}

inline double share(const std::vector<double>& e, double threshold) {
    if (e.empty()) return 0;
    double inside = 0;
    for (const double v : e) inside += v < threshold ? 1 : 0;
    return inside / static_cast<double>(e.size());
}

inline double weightedMean(const std::vector<double>& e, const std::vector<double>& w) {
    double total = 0;
    for (std::size_t i = 0; i < e.size(); ++i) total += w[i] * e[i];
    return e.empty() ? 9999.0 : total / static_cast<double>(e.size());
}

struct RansacCircle {
    int maximumRadius, minimumRadius;
    double distance;
    int iterations, cap;
};

inline orx::TCircle fit(const Points& points, const RansacCircle& params) {
    std::vector<Points> sets;
    for (int remaining = params.iterations; remaining >= 1 && points.size() >= 3;) {
        std::srand(static_cast<unsigned>(--remaining));
        cv::Point s[3];
        bool found = false;
        for (int attempt = 0; attempt < 10 && !found; ++attempt) {
            for (auto& p : s) p = points[static_cast<std::size_t>(std::rand()) % points.size()];
            found = !orx::isCollinear(s[0], s[1], s[2]);
        }
        if (!found) continue;
        cv::Point3d three;
        orx::threePoints2circle(s[0], s[1], s[2], three);
        if (!(three.z > params.minimumRadius && three.z < params.maximumRadius)) continue;
        orx::TCircle circle;
        circle.x = three.x;
        circle.y = three.y;
        circle.r = three.z;
        Points set;
        for (const auto& p : points) {
            if (std::fabs(signedDistance(circle, p)) < params.distance) set.push_back(p);
        }
        sets.push_back(set);
        if (static_cast<double>(set.size()) > 0.8 * static_cast<double>(points.size())) break;
        if (static_cast<int>(sets.size()) > params.cap) break;
    }
    Points best;
    for (const auto& set : sets) {
        if (set.size() > best.size()) best = set;
    }
    if (best.size() < 3) return {};
    orx::TCircle circle = algebraic(best, {});
    const auto e = residuals(points, circle);
    std::vector<double> w;
    for (const double v : e) w.push_back(v <= params.distance ? 1.0 : 0.2);
    circle.inlierRatio = share(e, params.distance);
    circle.meanResidual = weightedMean(e, w);
    circle.valid = true;
    return circle;
}

// `lambda` is changed as the fitter changes its own.
struct RobustCircle {
    double c, lambda;
    int type;
};

inline double influence(double e, const RobustCircle& p) {
    if (p.type == 4) return std::fabs(e) <= p.c ? e : p.c * (e > 0 ? 1 : -1);
    if (!(std::fabs(e) < p.c)) return 0;
    const double u = 1 - (e / p.c) * (e / p.c);
    return e * (u * u);
}

inline double cost(double e, const RobustCircle& p) {
    const double ee = e * e, cc = p.c * p.c;
    if (p.type == 0) return std::fabs(e) <= p.c ? ee / 2 : p.c * std::fabs(e) - cc / 2;
    return std::fabs(e) <= p.c ? ee / 2 * (1 - ee / cc + ee * ee / (3 * (cc * cc))) : cc / 6;
}

inline orx::TCircle fit(const Points& points, RobustCircle& params) {
    const orx::TCircle start = algebraic(points, {});
    const auto n = static_cast<double>(points.size());
    orx::TCircle at = start;
    double sx = 0, sy = 0, sr = 0, previous = std::ldexp(1.0, 63);
    for (int budget = 1000; budget > 0; --budget) {
        at.x -= params.lambda * sx;
        at.y -= params.lambda * sy;
        at.r -= params.lambda * sr;
        if (at.r <= 0) return start;
        double gx = 0, gy = 0, gr = 0, loss = 0;
        for (const auto& p : points) {
            const double e = signedDistance(at, p), psi = influence(e, params);
            gx += (at.x - p.x) * psi / at.r;
            gy += (at.y - p.y) * psi / at.r;
            gr += -psi;
            loss += cost(e, params);
        }
        loss /= n;
        if (loss > previous) {
            params.lambda /= 2;
            sx = sy = sr = 0;
            previous = std::ldexp(1.0, 63);
        } else {
            sx = gx / n;
            sy = gy / n;
            sr = gr / n;
            if (std::fabs(loss - previous) < 0.001) break;
            previous = loss;
        }
    }
    const auto e = residuals(points, at);
    at.inlierRatio = share(e, params.c);
    at.meanResidual = sum(e) / n;
    at.valid = true;
    return at;
}

// The weight of one residual; steps in Real, constants in single precision.
template <class Real>
Real weight(Real d, int type, float p) {
    const float c = p > 0 ? p : 1.345F;
    switch (type) {
        case 0:
            return 1 / static_cast<Real>(std::sqrt(1 + d * d * 0.5));
        case 1:
            return static_cast<Real>(1.0 /
                                     (static_cast<double>(d) > 0.0001 ? static_cast<double>(d) : 0.0001));
        case 2:
            return 1 / (1 + d * (p == 0 ? 0.71438777F : 1 / p));
        case 3: {
            const Real s = p == 0 ? 0.33505327F : 1 / p;
            return std::exp(-d * d * s * s);
        }
        case 4:
            return d < c ? 1 : c / d;
        case 5:
            return d < c ? (1 - (d / c) * (d / c)) * (1 - (d / c) * (d / c)) : 0;
        default:
            return 1;
    }
}

struct WeightedCircle {
    int type;
    float parameter;
};

inline orx::TCircle fit(const Points& points, const WeightedCircle& params) {
    const auto n = static_cast<double>(points.size());
    orx::TCircle best = algebraic(points, {});
    auto e = residuals(points, best);
    double mean = sum(e) / n;
    best.valid = true;
    if (mean < 2.0) {
        best.inlierRatio = 1;
        best.meanResidual = mean;
        return best;
    }
    const auto weights = [&params](const std::vector<double>& list) {
        std::vector<double> w;
        for (const double v : list) w.push_back(weight(v, params.type, params.parameter));
        return w;
    };
    for (int pass = 0; pass < 30 && !(mean < 1.0) && !(std::fabs(mean - 99999.0) < 0.001); ++pass) {
        orx::TCircle circle = algebraic(points, weights(e));
        e = residuals(points, circle);
        if (sum(e) / n < mean) {
            mean = sum(e) / n;
            best = circle;
            best.valid = true;
        }
    }
    e = residuals(points, best);
    best.inlierRatio = share(e, static_cast<double>(params.parameter));
    best.meanResidual = weightedMean(e, weights(e));
    return best;
}

inline orx::TLine slopeForm(const cv::Vec4f& v) {
    orx::TLine line;
    line.k = static_cast<double>(v[1]) / orx::avoidFloatZero(static_cast<double>(v[0]));
    line.b = static_cast<double>(v[3]) - static_cast<double>(v[2]) * line.k;
    return line;
}

inline orx::TLine openCvLine(const Points& points, int type) {
    cv::Vec4f v;
    cv::fitLine(points, v, type, 0, 0.01, 0.01);
    return slopeForm(v);
}

struct RansacLine {
    double angle, distance;
    int sampleSize;
    double tolerance;
    int iterations, cap;
};

inline orx::TLine fit(const Points& points, const RansacLine& params) {
    const std::size_t n = points.size();
    if (n <= 3) return {};
    const auto inBand = [&params](double k) {
        double delta = std::fabs(std::atan(k) * 180 / 3.141592653589793 - params.angle);
        if (delta >= 90) delta = std::fabs(180 - delta);
        return delta < params.tolerance;
    };
    const auto draw = [n] { return static_cast<std::size_t>(std::rand()) % n; };
    std::vector<Points> sets;
    for (int remaining = params.iterations; remaining >= 1;) {
        std::srand(static_cast<unsigned>(--remaining));
        Points sample;
        for (int attempt = 0; attempt < 10 && sample.empty(); ++attempt) {
            const std::size_t i = draw(), j = draw();
            if (params.sampleSize == 2) {
                if (i != j) sample = {points[i], points[j]};
            } else {
                const std::size_t k = draw();
                if (i != j && i != k && orx::isCollinear(points[i], points[j], points[k])) {
                    sample = {points[i], points[j], points[k]};
                }
            }
        }
        if (sample.empty()) continue;
        const orx::TLine line = openCvLine(sample, cv::DIST_L1);
        if (!inBand(line.k)) continue;
        Points set;
        for (const auto& p : points) {
            if (std::fabs(line.k * p.x - p.y + line.b) / std::sqrt(line.k * line.k + 1) < params.distance) {
                set.push_back(p);
            }
        }
        if (set.size() > 3) sets.push_back(set);
        if (static_cast<double>(set.size()) > 0.8 * static_cast<double>(n)) break;
        if (static_cast<int>(sets.size()) > params.cap) break;
    }
    Points best;
    for (const auto& set : sets) {
        if (set.size() > best.size()) best = set;
    }
    if (best.empty()) return {};
    orx::TLine line = openCvLine(best, cv::DIST_HUBER);
    line.valid = inBand(line.k);
    return line;
}

}  // namespace fit_reference

#endif
