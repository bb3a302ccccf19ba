// What few points among outliers tell at all: the shape of the least loss of all, the true noise given.
#include "docs/tools/measuring_tables.h"

namespace measuring_tables {
namespace {

using Points = std::vector<cv::Point2d>;

// Steps with Tukey's weights, by least squares with deviations. False where they lead nowhere.
template <class Shape, class Fit>
bool reweigh(const Points& points, double noise, int steps, Fit fit, Shape& shape) {
    constexpr double kBend = 4.685;
    for (int k = 0; k < steps; ++k) {
        orx::TFitOptions options;
        for (const cv::Point2d& p : points) {
            const double t = std::pow(shape.signedDistance(p) / (kBend * noise), 2);
            options.deviations.push_back(t < 0.9999 ? noise / (1 - t) : 0);
        }
        shape = fit(points, options);
        if (!shape.valid()) return false;
    }
    return true;
}

// Tukey's loss of the points, at most 1 each.
template <class Shape>
double lossOf(const Points& points, const Shape& shape, double bend) {
    double sum = 0;
    for (const cv::Point2d& p : points) {
        const double t = std::min(1.0, std::pow(shape.signedDistance(p) / bend, 2));
        sum += 1 - std::pow(1 - t, 3);
    }
    return sum;
}

// From so many samples of one point more than the shape has parameters.
template <class Shape, class Fit>
Shape leastLoss(const Points& points, double noise, std::size_t sample, int samples, Fit fit) {
    Random random(1);
    Shape best;
    double least = 1e9;
    for (int k = 0; k < samples; ++k) {
        Points chosen = points;
        for (std::size_t i = 0; i < sample; ++i) {
            const int last = static_cast<int>(points.size()) - 1;
            std::swap(chosen[i], chosen[static_cast<std::size_t>(random.integer(static_cast<int>(i), last))]);
        }
        chosen.resize(sample);
        Shape shape = fit(chosen, {});
        if (!shape.valid() || lossOf(points, shape, 9.4 * noise) > 0.75 * static_cast<double>(points.size()))
            continue;
        if (!reweigh(points, 1.5 * noise, 3, fit, shape) || !reweigh(points, noise, 6, fit, shape)) continue;
        const double loss = lossOf(points, shape, 4.685 * noise);
        if (loss >= least) continue;
        least = loss;
        best = shape;
    }
    if (best.valid()) reweigh(points, noise, 30, fit, best);
    return best;
}

}  // namespace

void oracleTable(const Settings& all) {
    Settings settings = all;
    settings.scenes = std::max(10, all.scenes / 50);
    printHead("Twenty points among 40 % outliers, what they tell",
              "The shape of the least loss of Tukey of all (from thousands of samples), with the true noise "
              "given: hardly\nmore can be had without leave to distrust points that stand alone.");
    for (const double arc : {360.0, 90.0, 30.0}) {
        for (const double noise : {0.1, 1.0}) {
            const auto fit = [](const Points& p, const orx::TFitOptions& o) {
                return orx::fitCircleGeometric(p, o);
            };
            row(settings, arcName(arc) + ", least loss", circleTask(arc, 20, noise, 0.4), kWithOutliers,
                [&](const Points& p) { return leastLoss<orx::TMeasuredCircle>(p, noise, 4, 1500, fit); });
        }
    }
    const auto fitLine = [](const Points& p, const orx::TFitOptions& o) {
        return orx::fitLineGeometric(p, o);
    };
    row(settings, "line, least loss", lineTask(20, 1, 0.4), kWithOutliers,
        [&](const Points& p) { return leastLoss<orx::TMeasuredLine>(p, 1, 3, 400, fitLine); });
    const auto fitEllipse = [](const Points& p, const orx::TFitOptions& o) {
        return orx::fitEllipseGeometric(p, o);
    };
    for (const int ratio : {1, 2, 5}) {
        row(settings, "1:" + std::to_string(ratio) + ", least loss", ellipseTask(ratio, 20, 1, 0.4),
            kWithOutliers,
            [&](const Points& p) { return leastLoss<orx::TMeasuredEllipse>(p, 1, 6, 3000, fitEllipse); });
    }
}

}  // namespace measuring_tables
