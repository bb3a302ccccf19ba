// How far the fits for measuring are from the best that can be had: scenes with known shapes, the errors of a
// fit beside those of the efficient estimate, and what the stated uncertainties are worth. The program
// accuracy_measuring prints the tables; a test holds them to bounds.
//
// The bound of Cramer and Rao follows from the true geometry. An estimate that knows the truth and errs only
// by the linear response to the noise attains it exactly, with no bias. Its errors are worked out for each
// scene too, and a spread is told over their spread in the same scenes, a bias as the mean difference from
// them: both say the same as errors over the bound, with far less chance in them.
#ifndef DOCS_TOOLS_MEASURING_ACCURACY_H
#define DOCS_TOOLS_MEASURING_ACCURACY_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "docs/tools/tool_support.h"
#include "orxFunctions/orxfunctions.h"
#include "tests/fitting/ellipse_scenes.h"
#include "tests/fitting/geometric_scenes.h"

namespace measuring_accuracy {

using geometric_scenes::Random;
using geometric_scenes::Scene;
using geometric_scenes::TrueCircle;
using geometric_scenes::TrueLine;

constexpr int kMost = 5;  // parameters of a shape
using Values = cv::Vec<double, kMost>;
using geometric_scenes::Matrix5;
using geometric_scenes::TrueEllipse;

// What a fit tells of a scene: the errors of its parameters, and its own word on them.
struct Told {
    bool valid = false;
    Values error;
    Values deviation;
    double degreesOfFreedom = 0;
};

// Points of a scene, and the errors of the efficient estimate from its inliers.
struct Task {
    std::vector<cv::Point2d> points;
    Values efficient;
};

// A kind of scene: a true shape, and how its points are disturbed. error() judges a fit of one of them.
struct CircleTask {
    TrueCircle truth;
    Scene scene;
    static int parameters() { return 3; }  // center along and across the middle of the arc, radius

    cv::Matx33d frame() const {
        const cv::Point2d axis = geometric_scenes::unit(truth.from + scene.extent / 2);
        return {axis.x, axis.y, 0, -axis.y, axis.x, 0, 0, 0, 1};
    }

    Values boundDeviation() const {
        const cv::Matx33d bound = frame() * truth.bound(scene) * frame().t();
        return {std::sqrt(bound(0, 0)), std::sqrt(bound(1, 1)), std::sqrt(bound(2, 2)), 0, 0};
    }

    Task make(Random& random) const {
        Task task{truth.points({scene.extent, scene.inliers(), scene.noise, 0, scene.independent}, random),
                  {}};
        cv::Vec3d sum(0, 0, 0);
        for (int i = 0; i < scene.inliers(); ++i) {
            const cv::Point2d normal = geometric_scenes::unit(truth.from + scene.place(i));
            const cv::Point2d arm = task.points[static_cast<std::size_t>(i)] - truth.center;
            sum += (arm.dot(normal) - truth.radius) * cv::Vec3d(normal.x, normal.y, 1);
        }
        const cv::Vec3d best = frame() * (truth.bound(scene) * sum) / (scene.noise * scene.noise);
        task.efficient = {best[0], best[1], best[2], 0, 0};
        strewOutliers(scene, truth.center, 2 * truth.radius, random, task.points);
        return task;
    }

    Told judge(const orx::TMeasuredCircle& fit) const {
        const cv::Point2d away = fit.center - truth.center;
        const cv::Vec3d error = frame() * cv::Vec3d(away.x, away.y, fit.radius - truth.radius);
        const cv::Matx33d covariance = frame() * fit.covariance * frame().t();
        return {fit.valid(),
                {error[0], error[1], error[2], 0, 0},
                {std::sqrt(covariance(0, 0)), std::sqrt(covariance(1, 1)), fit.radiusDeviation, 0, 0},
                fit.degreesOfFreedom};
    }
};

struct LineTask {
    TrueLine truth;
    Scene scene;
    static int parameters() { return 2; }  // place across the line at the true middle, angle in degrees

    Values boundDeviation() const {
        const cv::Vec2d bound = truth.bound(scene);
        return {std::sqrt(bound[0]), std::sqrt(bound[1]), 0, 0, 0};
    }

    Task make(Random& random) const {
        Task task{truth.points({scene.extent, scene.inliers(), scene.noise, 0, scene.independent}, random),
                  {}};
        double sum = 0;
        double moment = 0;
        double squares = 0;
        for (int i = 0; i < scene.inliers(); ++i) {
            const double along = scene.place(i) - scene.extent / 2;
            const double across =
                (task.points[static_cast<std::size_t>(i)] - truth.middle).dot(truth.normal());
            sum += across;
            moment += across * along;
            squares += along * along;
        }
        task.efficient = {sum / scene.inliers(), moment / squares * 180 / geometric_scenes::kPi, 0, 0, 0};
        strewOutliers(scene, truth.middle, scene.extent, random, task.points);
        return task;
    }

    Told judge(const orx::TMeasuredLine& fit) const {
        // Both senses of the line are one.
        const double turn = std::remainder(fit.angle - truth.angle, 180);
        const double flip = fit.direction.dot(truth.direction()) < 0 ? -1 : 1;
        const double along = (truth.middle - fit.point).dot(fit.direction);
        const cv::Point2d there = fit.point + along * fit.direction;
        return {fit.valid(),
                {(there - truth.middle).dot(flip * fit.normal()), turn, 0, 0, 0},
                {fit.deviationAt(along), fit.angleDeviation, 0, 0, 0},
                fit.degreesOfFreedom};
    }
};

// Of a circle, whose axes are told apart by noise alone and whose angle means nothing, the mean of the axes
// is judged in their place.
struct EllipseTask {
    TrueEllipse truth;
    Scene scene;

    bool round() const { return truth.major == truth.minor; }
    int parameters() const { return round() ? 3 : 5; }
    // From center, axes and angle to what is judged.
    Matrix5 judged() const {
        Matrix5 j = Matrix5::eye();
        if (round()) j(2, 2) = j(2, 3) = 0.5;
        return j;
    }
    Matrix5 bound() const {
        Matrix5 information = Matrix5::zeros();
        for (int i = 0; i < scene.inliers(); ++i) {
            const Values row = truth.row(truth.from + scene.place(i));
            information += row * row.t();
        }
        return scene.noise * scene.noise * information.inv(cv::DECOMP_SVD);
    }
    static Values roots(const Matrix5& covariance) {
        Values result;
        for (int p = 0; p < kMost; ++p) result[p] = std::sqrt(covariance(p, p));
        return result;
    }

    Values boundDeviation() const { return roots(judged() * bound() * judged().t()); }

    Task make(Random& random) const {
        Task task{truth.points({scene.extent, scene.inliers(), scene.noise, 0, scene.independent}, random),
                  {}};
        Values sum;
        for (int i = 0; i < scene.inliers(); ++i) {
            const double parameter = truth.from + scene.place(i);
            const cv::Point2d away = task.points[static_cast<std::size_t>(i)] - truth.at(parameter);
            sum += away.dot(truth.normal(parameter)) * truth.row(parameter);
        }
        task.efficient = judged() * (bound() * sum) * (1 / (scene.noise * scene.noise));
        strewOutliers(scene, truth.center, 1.5 * truth.major, random, task.points);
        return task;
    }

    Told judge(const orx::TMeasuredEllipse& fit) const {
        const Values error(fit.center.x - truth.center.x, fit.center.y - truth.center.y,
                           fit.semiMajor - truth.major, fit.semiMinor - truth.minor,
                           std::remainder(fit.angle - truth.angle, 180));
        return {fit.valid(), judged() * error, roots(judged() * fit.covariance * judged().t()),
                fit.degreesOfFreedom};
    }
};

// One scene of a row.
struct Trial {
    Told told;
    Values efficient;
};

// Errors of one parameter over all scenes that count.
struct Accuracy {
    double spread = 0;  // over that of the efficient estimate
    double bias = 0;    // over the spread
    double within68 = 0;
    double within95 = 0;   // percent of the scenes within the stated intervals of 68.3 and 95.4 %
    double stated = 0;     // root mean square of the stated deviations over the spread
    double deviation = 0;  // the spread itself, pixels or degrees
};

// A row of a table.
struct Result {
    int scenes = 0;
    int lost = 0;    // without a result
    int astray = 0;  // with another shape as the result: too many bounds off
    std::vector<Accuracy> parameters;

    template <class Least>
    double worst(Least least) const {
        double value = 0;
        for (const Accuracy& a : parameters) value = std::max(value, least(a));
        return value;
    }
    double spread() const {
        return worst([](const Accuracy& a) { return a.spread; });
    }
    double bias() const {
        return worst([](const Accuracy& a) { return std::abs(a.bias); });
    }
};

inline Accuracy accuracyOf(const std::vector<const Trial*>& trials, int parameter) {
    const auto count = static_cast<double>(trials.size());
    double mean = 0;
    double efficientMean = 0;
    for (const Trial* t : trials) {
        mean += t->told.error[parameter] / count;
        efficientMean += t->efficient[parameter] / count;
    }
    double squares = 0;
    double efficientSquares = 0;
    double stated = 0;
    Accuracy result;
    for (const Trial* t : trials) {
        squares += std::pow(t->told.error[parameter] - mean, 2);
        efficientSquares += std::pow(t->efficient[parameter] - efficientMean, 2);
        stated += std::pow(t->told.deviation[parameter], 2);
        const double size = std::abs(t->told.error[parameter]) / t->told.deviation[parameter];
        const double freedom = t->told.degreesOfFreedom;
        result.within68 += size <= orx::coverageFactor(0.6827, freedom) ? 100 / count : 0;
        result.within95 += size <= orx::coverageFactor(0.9545, freedom) ? 100 / count : 0;
    }
    result.spread = std::sqrt(squares / efficientSquares);
    result.bias = (mean - efficientMean) / std::sqrt(squares / count);
    result.stated = std::sqrt(stated / squares);
    result.deviation = std::sqrt(squares / count);
    return result;
}

// A result further off than `limit` bounds is astray.
inline Result resultOf(const std::vector<Trial>& trials, const Values& bound, int parameters,
                       double limit = 10) {
    Result result;
    result.scenes = static_cast<int>(trials.size());
    std::vector<const Trial*> counting;
    for (const Trial& trial : trials) {
        if (!trial.told.valid) {
            ++result.lost;
            continue;
        }
        bool astray = false;
        for (int p = 0; p < parameters; ++p) {
            astray = astray || !(std::abs(trial.told.error[p]) <= limit * bound[p]);
        }
        if (astray) {
            ++result.astray;
        } else {
            counting.push_back(&trial);
        }
    }
    if (counting.size() < 2) return result;
    for (int p = 0; p < parameters; ++p) result.parameters.push_back(accuracyOf(counting, p));
    return result;
}

// Neighbouring scenes and rows share no numbers.
inline unsigned seedOf(int row, int scene) {
    std::uint64_t z = (static_cast<std::uint64_t>(row) << 32U) + static_cast<std::uint64_t>(scene) + 1;
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return static_cast<unsigned>(z >> 32U);
}

// Fits `scenes` scenes of a kind with fit(points). `row` seeds them.
template <class Kind, class Fit>
Result measure(const Kind& kind, Fit fit, int row, int scenes, int threads) {
    const auto trials = tool_support::inParallel(scenes, threads, [&](int scene) {
        Random random(seedOf(row, scene));
        const Task task = kind.make(random);
        return Trial{kind.judge(fit(task.points)), task.efficient};
    });
    return resultOf(trials, kind.boundDeviation(), kind.parameters());
}

inline CircleTask circleTask(double arc, int points, double noise, double outliers = 0) {
    return {{{412.3, 287.8}, 100, 33}, {arc, points, noise, outliers}};
}

inline LineTask lineTask(int points, double noise, double outliers = 0) {
    return {{{412.3, 287.8}, 123.4}, {200, points, noise, outliers}};
}

// Axes of 100 and 100 / ratio.
inline EllipseTask ellipseTask(double ratio, int points, double noise, double outliers = 0) {
    return {{{412.3, 287.8}, 100, 100 / ratio, 33, 20}, {360, points, noise, outliers}};
}

}  // namespace measuring_accuracy

#endif
