// Prints the accuracy of the circle and line estimators as Markdown: docs/accuracy-fits.md is its output.
#include <cstdio>

#include "docs/tools/fit_accuracy.h"

namespace {

using fit_accuracy::Accuracy;
using fit_accuracy::Row;

void printCell(const Accuracy& accuracy) {
    if (accuracy.invalid == fit_accuracy::kScenes) {
        std::printf(" none |");
        return;
    }
    // A bias that rounds to nothing has no sign.
    const double bias = std::abs(accuracy.bias) < 0.0005 ? 0.0 : accuracy.bias;
    std::printf(" %+.3f / %.3f", bias, accuracy.spread);
    if (accuracy.invalid > 0) std::printf(" (%d lost)", accuracy.invalid);
    std::printf(" |");
}

void printTable(const char* title, const std::vector<Row>& rows, std::vector<Accuracy> Row::*quantity) {
    std::printf("\n## %s\n\n| estimator | noise |", title);
    for (const double share : fit_accuracy::kOutliers) std::printf(" %.0f %% |", 100 * share);
    std::printf("\n|---|---|");
    for (std::size_t i = 0; i < fit_accuracy::kOutliers.size(); ++i) std::printf("---|");
    std::printf("\n");
    for (const Row& row : rows) {
        std::printf("| %s | %.1f |", row.estimator.c_str(), row.noise);
        for (const Accuracy& accuracy : row.*quantity) printCell(accuracy);
        std::printf("\n");
    }
}

}  // namespace

int main() {
    std::vector<Row> circles;
    std::vector<Row> lines;
    for (const auto& estimator : fit_accuracy::kCircleEstimators) {
        for (const double noise : fit_accuracy::kNoise) circles.push_back(circleRow(estimator, noise));
    }
    for (const auto& estimator : fit_accuracy::kLineEstimators) {
        for (const double noise : fit_accuracy::kNoise) lines.push_back(lineRow(estimator, noise));
    }
    std::printf(
        "# Accuracy of the circle and line estimators\n\n"
        "Made by `accuracy_fits` (docs/tools). Each cell is bias / spread over %d random scenes of %d "
        "points:\n"
        "the mean error and the root mean square about it, in pixels (angles in degrees). Columns are shares "
        "of\n"
        "outliers, strewn evenly over an image of 640 x 480; noise is the standard deviation of the points "
        "in\n"
        "pixels before they are rounded to whole pixels. Circles are seen whole, radius 60 to 150; lines "
        "cross\n"
        "the image at up to 30 degrees. Lost scenes had no valid result and do not count.\n",
        fit_accuracy::kScenes, fit_accuracy::kPoints);
    printTable("Circles: centre column", circles, &Row::first);
    printTable("Circles: radius", circles, &Row::second);
    printTable("Lines: angle", lines, &Row::first);
    printTable("Lines: distance at the middle", lines, &Row::second);
    return 0;
}
