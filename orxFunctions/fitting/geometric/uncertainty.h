// What the distances that remain tell of the noise, and what the noise leaves open of the parameters. For
// every shape alike; all in the units of the columns.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_UNCERTAINTY_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_UNCERTAINTY_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/fitting/fit_report.h"
#include "orxFunctions/fitting/geometric/fit_points.h"
#include "orxFunctions/fitting/geometric/robust_loss.h"
#include "orxFunctions/fitting/kernels/distance.h"

namespace orx::geometric {

using namespace distance_kernels;

// The inverse of a symmetric positive definite matrix. False where it is singular to double precision.
template <int kSize>
bool invertPositive(const cv::Matx<double, kSize, kSize>& matrix, cv::Matx<double, kSize, kSize>& inverse) {
    using Square = cv::Matx<double, kSize, kSize>;
    // Cholesky's factor of the matrix with its diagonal scaled to 1.
    cv::Vec<double, kSize> roots;
    Square lower = Square::zeros();
    for (int i = 0; i < kSize; ++i) {
        if (!(matrix(i, i) > 0.0) || !std::isfinite(matrix(i, i))) return false;
        roots[i] = std::sqrt(matrix(i, i));
    }
    for (int i = 0; i < kSize; ++i) {
        for (int j = 0; j <= i; ++j) {
            double rest = matrix(i, j) / (roots[i] * roots[j]);
            for (int k = 0; k < j; ++k) rest -= lower(i, k) * lower(j, k);
            if (i != j) {
                lower(i, j) = rest / lower(j, j);
            } else {
                if (!(rest > 4.0 * std::numeric_limits<double>::epsilon())) return false;
                lower(i, i) = std::sqrt(rest);
            }
        }
    }
    Square half = Square::zeros();  // the factor's inverse
    for (int j = 0; j < kSize; ++j) {
        half(j, j) = 1.0 / lower(j, j);
        for (int i = j + 1; i < kSize; ++i) {
            double rest = 0.0;
            for (int k = j; k < i; ++k) rest -= lower(i, k) * half(k, j);
            half(i, j) = rest / lower(i, i);
        }
    }
    inverse = half.t() * half;
    for (int i = 0; i < kSize; ++i) {
        for (int j = 0; j < kSize; ++j) inverse(i, j) /= roots[i] * roots[j];
    }
    return true;
}

struct NoiseFigures {
    double noise = 0.0;     // standard deviation of a point of weight 1
    double variance = 0.0;  // of the parameters: this times the inverse normal matrix
    double degreesOfFreedom = 0.0;
    double effectivePoints = 0.0;
};

// For independent points. `sums` are those of the last pass with `loss`; `scale` is the inliers' noise by
// which a robust loss judged. P. J. Huber, "Robust Statistics" (1981), section 7.6.
NoiseFigures independentNoise(const DistanceSums& sums, const Loss& loss, double scale, int parameters);

// What is taken back of the parameters since the noise adds to them on average, as far as it moves the
// outline away from its points by no more than their noise, both as root mean squares: beyond, the expansion
// that it comes from has ended, and a shape would miss all of its points. `normal` is the normal matrix of so
// many used points.
template <int kParameters>
cv::Vec<double, kParameters> withinNoise(const cv::Vec<double, kParameters>& taken,
                                         const cv::Matx<double, kParameters, kParameters>& normal,
                                         double used, double noise) {
    const double moved = std::sqrt(std::max(0.0, taken.dot(normal * taken)) / used);
    return moved > noise ? noise / moved * taken : taken;
}

// What neighbours share along an edge chain: sums over all pairs of points, each weighted by the correlation
// exp(-t^2 / (4 smoothing^2)) of the noise of two points at the distance t.
template <int kParameters>
struct ChainSums {
    using Square = cv::Matx<double, kParameters, kParameters>;
    Square crossed = Square::zeros();  // of rows' products
    Square twice = Square::zeros();    // the same with the correlations applied twice
    double count = 0.0;                // points with a say
    double squares = 0.0;              // of the squared correlations
    double weight = 0.0;               // of the points' weights
    double constant = 0.0;  // of the roots' products: `crossed` of a parameter that moves all alike
};

// Neighbours of a chain, close together: their place in columns, the sums of their distances' derivatives,
// each times the root of its weight, and of these roots.
template <int kParameters>
struct ChainLink {
    cv::Point2d at;
    cv::Vec<double, kParameters> row;
    double root = 0.0;
    double weight = 0.0;
    double count = 0.0;
};

// exp(-t^2 / (4 smoothing^2)) for t up to 6 smoothings, to 1e-8: a table with Taylor's series between its
// entries, a third of std::exp's time.
class ChainCorrelation {
  public:
    explicit ChainCorrelation(double smoothing);
    double at(double squaredDistance) const {
        const double x = std::min(squaredDistance * factor_, kLast);
        const auto entry = static_cast<std::size_t>(x * kPerUnit);
        const double h = (static_cast<double>(entry) + 0.5) / kPerUnit - x;
        return table_[entry] * (1.0 + h * (1.0 + h * (0.5 + h / 6.0)));
    }

  private:
    static constexpr double kPerUnit = 32.0;
    static constexpr double kLast = 9.5;
    double factor_;
    std::array<double, 306> table_;  // in the middle of each interval
};

// Links in order along the chain, `smoothing` in columns.
template <int kParameters>
ChainSums<kParameters> chainSums(const std::vector<ChainLink<kParameters>>& links, double smoothing) {
    // Points farther apart share nothing: a correlation of 1e-4.
    const double reach = 6.0 * smoothing;
    const ChainCorrelation correlation(smoothing);
    const std::size_t count = links.size();
    if (count == 0) return {};         // no point has a say
    std::vector<double> steps(count);  // from each link to the next, from the last to the first
    for (std::size_t i = 0; i < count; ++i) steps[i] = cv::norm(links[(i + 1) % count].at - links[i].at);
    const double length = std::accumulate(steps.begin(), steps.end() - 1, 0.0);
    const bool closed = count > 2 && steps.back() * static_cast<double>(count - 1) < 3.0 * length;

    ChainSums<kParameters> sums;
    std::vector<cv::Vec<double, kParameters>> shared(count);
    const auto pair = [&](std::size_t i, std::size_t j, double c) {
        const double both = i == j ? 1.0 : 2.0;
        shared[i] += c * links[j].row;
        if (i != j) shared[j] += c * links[i].row;
        sums.constant += both * c * links[i].root * links[j].root;
        sums.squares += both * c * c * links[i].count * links[j].count;
    };
    for (std::size_t i = 0; i < count; ++i) {
        pair(i, i, 1.0);
        // Round a closed chain each pair is met once, on its shorter side.
        const std::size_t last = closed ? (count - 1) / 2 : count - 1 - i;
        double path = 0.0;
        std::size_t before = i;
        for (std::size_t k = 1; k <= last; ++k) {
            path += steps[before];
            if (path > reach) break;
            const std::size_t j = before + 1 == count ? 0 : before + 1;
            const cv::Point2d apart = links[j].at - links[i].at;
            pair(i, j, correlation.at(apart.dot(apart)));
            before = j;
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        sums.crossed += links[i].row * shared[i].t();
        sums.twice += links[i].count * (shared[i] * shared[i].t());
        sums.count += links[i].count;
        sums.weight += links[i].weight;
    }
    return sums;
}

// Points with a say as links, as many in one as lie within an eighth of the smoothing: `derivatives(p, row)`
// gives the signed distance of p and its derivatives.
template <int kParameters, class Derivatives>
std::vector<ChainLink<kParameters>> chainLinks(const FitPoints& points, const Loss& loss, double smoothing,
                                               Derivatives derivatives) {
    std::vector<ChainLink<kParameters>> links;
    links.reserve(points.size());
    cv::Point2d first;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (points.weight(i) == 0.0) continue;
        const cv::Point2d p = points.at(i);
        cv::Vec<double, kParameters> row;
        const double d = derivatives(p, row);
        const double q = points.weight(i) * d * d;
        if (q > loss.reach2) continue;
        const double root = std::sqrt(points.weight(i) * omega(loss, q));
        if (links.empty() || cv::norm(p - first) > smoothing / 8.0) {
            links.push_back({});
            first = p;
        }
        ChainLink<kParameters>& link = links.back();
        link.at += p;
        link.row += root * row;
        link.root += root;
        link.weight += root * root;
        link.count += 1.0;
    }
    for (ChainLink<kParameters>& link : links) link.at /= link.count;
    return links;
}

// Makes the figures fit a chain with these sums, and gives the covariance; `inverse` is that of the normal
// matrix. False where the chain is so short that its points are as good as one.
template <int kParameters>
bool chainCovariance(const ChainSums<kParameters>& sums,
                     const cv::Matx<double, kParameters, kParameters>& inverse, NoiseFigures& figures,
                     cv::Matx<double, kParameters, kParameters>& covariance) {
    const auto taken = inverse * sums.crossed;  // what the parameters take out of the noise
    const double left = sums.count - cv::trace(taken);
    if (!(left > 1e-6 * sums.count)) return false;
    const double squares = sums.squares - 2.0 * cv::trace(inverse * sums.twice) + cv::trace(taken * taken);
    const double growth = (sums.count - kParameters) / left;
    figures.noise *= std::sqrt(growth);
    figures.variance *= growth;
    // F. E. Satterthwaite's degrees of freedom (Biometrics Bulletin 2 (1946)).
    figures.degreesOfFreedom = std::max(1.0, left * left / squares);
    figures.effectivePoints *= sums.weight / sums.constant;
    const auto product = taken * inverse;  // whose rounding is not that of its transposition
    covariance = 0.5 * figures.variance * (product + product.t());
    return true;
}

template <int kParameters>
struct Judgement {
    NoiseFigures figures;
    cv::Matx<double, kParameters, kParameters> inverse;  // of the normal matrix
    cv::Matx<double, kParameters, kParameters> covariance;
};

// From the sums of the last pass with `loss` and the normal matrix; `scale` as for independentNoise,
// `derivatives` as for chainLinks. False where the points do not tell the parameters.
template <int kParameters, class Derivatives>
bool judge(const FitPoints& points, const TFitOptions& options, const DistanceSums& sums, const Loss& loss,
           double scale, const cv::Matx<double, kParameters, kParameters>& normal, Derivatives derivatives,
           Judgement<kParameters>& judgement) {
    NoiseFigures& figures = judgement.figures;
    if (!invertPositive(normal, judgement.inverse)) return false;
    figures = independentNoise(sums, loss, scale, kParameters);
    if (!std::isfinite(figures.variance)) return false;
    judgement.covariance = figures.variance * judgement.inverse;
    if (options.noise == pnEdgeChain) {
        const double smoothing = options.smoothing / points.scale();
        const auto links = chainLinks<kParameters>(points, loss, smoothing, derivatives);
        if (!chainCovariance(chainSums(links, smoothing), judgement.inverse, figures, judgement.covariance)) {
            return false;
        }
    }
    if (options.absoluteDeviations) {
        const double known = points.unitDeviation() / points.scale();
        judgement.covariance *= known * known / (figures.noise * figures.noise);
        figures.noise = known;
        figures.degreesOfFreedom = std::numeric_limits<double>::infinity();
    }
    return true;
}

// What every report holds, in pixels.
void fillReport(const FitPoints& points, const DistanceSums& sums, const NoiseFigures& figures,
                TFitReport& report);

}  // namespace orx::geometric

#endif
