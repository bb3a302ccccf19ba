// Fits to points without noise.
#include <limits>

#include "docs/tools/measuring_tables.h"

namespace measuring_tables {
namespace {

// The largest error of circles without noise, over the largest coordinate, from arcs that begin anywhere.
double exactCircle(cv::Point2d center, double radius, double arc, const orx::TFitOptions& options) {
    double worst = 0;
    Random random(1);
    for (int i = 0; i < 20; ++i) {
        const TrueCircle truth{center, radius, random.uniform(0, 360)};
        const orx::TMeasuredCircle fit =
            orx::fitCircleGeometric(truth.points({arc, 300, 0}, random), options);
        if (!fit.valid()) return std::numeric_limits<double>::infinity();
        worst = std::max({worst, std::abs(fit.center.x - center.x), std::abs(fit.center.y - center.y),
                          std::abs(fit.radius - radius)});
    }
    return worst / (std::max(std::abs(center.x), std::abs(center.y)) + radius);
}

// What rounding the coordinates leaves open: three deviations of the bound for noise of their last place.
double rounding(cv::Point2d center, double radius, double arc) {
    const double largest = std::max(std::abs(center.x), std::abs(center.y)) + radius;
    const double place = std::pow(2, std::floor(std::log2(largest)) - 52);
    const Values bound = CircleTask{{center, radius, 0}, {arc, 300, place / std::sqrt(12)}}.boundDeviation();
    return 3 * std::max(bound[0], bound[2]) / largest;
}

double exactLine(cv::Point2d middle, double length, const orx::TFitOptions& options) {
    double worst = 0;
    Random random(1);
    for (int i = 0; i < 20; ++i) {
        const TrueLine truth{middle, random.uniform(-180, 180)};
        const orx::TMeasuredLine fit = orx::fitLineGeometric(truth.points({length, 300, 0}, random), options);
        if (!fit.valid()) return std::numeric_limits<double>::infinity();
        // At both ends.
        for (const double along : {-0.5, 0.5}) {
            worst =
                std::max(worst, std::abs(fit.signedDistance(middle + along * length * truth.direction())));
        }
    }
    return worst / (std::max(std::abs(middle.x), std::abs(middle.y)) + length / 2);
}

}  // namespace

void exactTable(const Settings& /*settings*/) {
    std::printf(
        "\n## Without noise\n\n"
        "The largest error of center and radius (lines: of the place at both ends) over the largest "
        "coordinate, of 20\n"
        "scenes of 300 points. Goals: 1e-9 is good, 1e-12 excellent. The last column is what the rounding of "
        "the\n"
        "points' coordinates to double leaves open (three deviations of the bound for noise of the last "
        "place).\n\n"
        "| shape | size | largest coordinate | least squares | Tukey | rounding "
        "|\n|---|---|---|---|---|---|\n");
    struct Place {
        cv::Point2d center;
        double size;
    };
    for (const Place& place :
         {Place{{412.3, 287.8}, 100}, Place{{1e6, -7e5}, 100}, Place{{6e5, -4e5}, 4e5}}) {
        const double largest = std::max(std::abs(place.center.x), std::abs(place.center.y)) + place.size;
        for (const double arc : {360.0, 90.0, 30.0, 5.0}) {
            std::printf("| %s | radius %g | %.3g | %.1e | %.1e | %.1e |\n", arcName(arc).c_str(), place.size,
                        largest, exactCircle(place.center, place.size, arc, {}),
                        exactCircle(place.center, place.size, arc, withLoss(orx::flTukey)),
                        rounding(place.center, place.size, arc));
        }
        std::printf("| line | length %g | %.3g | %.1e | %.1e | |\n", 2 * place.size, largest,
                    exactLine(place.center, 2 * place.size, {}),
                    exactLine(place.center, 2 * place.size, withLoss(orx::flTukey)));
    }
}

}  // namespace measuring_tables
