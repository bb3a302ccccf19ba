// Circles, lines and ellipses from points whose shape is known.
#include "docs/tools/measuring_tables.h"

namespace measuring_tables {
namespace {

constexpr int kPoints[] = {20, 200, 2000};
constexpr double kNoise[] = {0.01, 0.1, 1};

template <class RowOf>
void forEachScene(RowOf rowOf) {
    for (const int points : kPoints) {
        for (const double noise : kNoise) rowOf(points, noise);
    }
}

void circles(const Settings& settings, const Goals& goals, double outliers, const char* how,
             const std::function<orx::TMeasuredCircle(const std::vector<cv::Point2d>&, double)>& fit) {
    for (const double arc : {360.0, 90.0, 30.0}) {
        forEachScene([&](int points, double noise) {
            row(settings, arcName(arc) + how, circleTask(arc, points, noise, outliers), goals,
                [&](const auto& p) { return fit(p, noise); });
        });
    }
}

void lines(const Settings& settings, const Goals& goals, double outliers, const char* how,
           const std::function<orx::TMeasuredLine(const std::vector<cv::Point2d>&, double)>& fit) {
    forEachScene([&](int points, double noise) {
        row(settings, std::string("line") + how, lineTask(points, noise, outliers), goals,
            [&](const auto& p) { return fit(p, noise); });
    });
}

using EllipseFit = std::function<orx::TMeasuredEllipse(const std::vector<cv::Point2d>&, double)>;

void ellipses(const Settings& settings, const Goals& goals, double outliers, const char* how,
              const EllipseFit& fit) {
    for (const int ratio : {1, 2, 5}) {
        forEachScene([&](int points, double noise) {
            row(settings, "1:" + std::to_string(ratio) + how, ellipseTask(ratio, points, noise, outliers),
                goals, [&](const auto& p) { return fit(p, noise); });
        });
    }
}

// Half of the outline, from one end of the longer axis to the other.
void halfEllipses(const Settings& settings, const Goals& goals, double outliers, const char* how,
                  const EllipseFit& fit) {
    for (const int points : {200, 2000}) {
        for (const double noise : kNoise) {
            EllipseTask task = ellipseTask(2, points, noise, outliers);
            task.truth.from = 0;
            task.scene.extent = 180;
            row(settings, std::string("half of 1:2") + how, task, goals,
                [&](const auto& p) { return fit(p, noise); });
        }
    }
}

// Three to four times the noise, as TConsensusOptions has it.
orx::TConsensusOptions tolerating(double noise) {
    orx::TConsensusOptions options;
    options.tolerance = 3.5 * noise;
    return options;
}

}  // namespace

void ellipseTable(const Settings& settings) {
    printHead("Ellipses",
              "`fitEllipseGeometric`, least squares; longer half axis 100, no outliers. Of circles (1:1) the "
              "mean of "
              "the axes is judged, and no angle.");
    const auto fit = [](const auto& points, double) { return orx::fitEllipseGeometric(points); };
    ellipses(settings, kWithoutOutliers, 0, "", fit);
    halfEllipses(settings, kWithoutOutliers, 0, "", fit);
}

void ellipseOutlierTable(const Settings& settings) {
    printHead("Ellipses among 40 % outliers, Tukey's loss", "`fitEllipseGeometric` with `flTukey`.");
    const auto fit = [](const auto& points, double) {
        return orx::fitEllipseGeometric(points, withLoss(orx::flTukey));
    };
    ellipses(settings, kWithOutliers, 0.4, ", Tukey", fit);
    halfEllipses(settings, kWithOutliers, 0.4, ", Tukey", fit);
}

void circleTable(const Settings& settings) {
    printHead("Circles and arcs", "`fitCircleGeometric`, least squares; radius 100, no outliers.");
    circles(settings, kWithoutOutliers, 0, "",
            [](const auto& points, double) { return orx::fitCircleGeometric(points); });
}

void lineTable(const Settings& settings) {
    printHead("Lines", "`fitLineGeometric`, least squares; a stretch of 200 pixels, no outliers.");
    lines(settings, kWithoutOutliers, 0, "",
          [](const auto& points, double) { return orx::fitLineGeometric(points); });
}

void circleOutlierTable(const Settings& settings) {
    printHead("Circles and arcs among 40 % outliers, Tukey's loss",
              "`fitCircleGeometric` with `flTukey`; the bound is that of the inliers (60 % of the points).");
    circles(settings, kWithOutliers, 0.4, ", Tukey", [](const auto& points, double) {
        return orx::fitCircleGeometric(points, withLoss(orx::flTukey));
    });
}

void lineOutlierTable(const Settings& settings) {
    printHead("Lines among 40 % outliers, Tukey's loss",
              "`fitLineGeometric` with `flTukey`; the bound is that of the inliers (60 % of the points).");
    lines(settings, kWithOutliers, 0.4, ", Tukey",
          [](const auto& points, double) { return orx::fitLineGeometric(points, withLoss(orx::flTukey)); });
}

void circleConsensusTable(const Settings& settings) {
    printHead("Circles and arcs among 40 % outliers, consensus search",
              "`findCircle` with a tolerance of 3.5 times the noise, all else as it is by default.");
    circles(settings, kWithOutliers, 0.4, ", consensus",
            [](const auto& points, double noise) { return orx::findCircle(points, tolerating(noise)); });
}

void lineConsensusTable(const Settings& settings) {
    printHead("Lines among 40 % outliers, consensus search",
              "`findLine` with a tolerance of 3.5 times the noise, all else as it is by default.");
    lines(settings, kWithOutliers, 0.4, ", consensus",
          [](const auto& points, double noise) { return orx::findLine(points, tolerating(noise)); });
}

void ellipseConsensusTable(const Settings& settings) {
    printHead("Ellipses among 40 % outliers, consensus search",
              "`findEllipse` with a tolerance of 3.5 times the noise, all else as it is by default.");
    const auto fit = [](const auto& points, double noise) {
        return orx::findEllipse(points, tolerating(noise));
    };
    ellipses(settings, kWithOutliers, 0.4, ", consensus", fit);
    halfEllipses(settings, kWithOutliers, 0.4, ", consensus", fit);
}

}  // namespace measuring_tables
