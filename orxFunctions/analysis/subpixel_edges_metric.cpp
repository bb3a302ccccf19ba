#include "orxFunctions/analysis/subpixel_edges_metric.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "orxFunctions/analysis/edge_gradient_internal.h"
#include "orxFunctions/analysis/edge_pieces_internal.h"
#include "orxFunctions/analysis/edge_suppression_internal.h"
#include "orxFunctions/analysis/image_noise_internal.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace ORXEdge {
namespace {

using namespace orx::edges;

constexpr double kTwoPi = 6.283185307179586;
// An edge farther from its pixel than this belongs to something else.
constexpr double kLargestOffset = 1.0;
// Nearer points are the same crossing of the pixel grid; neighbouring crossings are at least 0.707 apart.
constexpr double kSmallestSpacing = 0.6;
// Points on each side from which the curvature of a contour is fitted.
constexpr std::size_t kCurvatureReach = 6;

bool isAcceptable(const cv::Mat& gray, const TMetricOptions& options) {
    return !gray.empty() && gray.dims == 2 && gray.type() == CV_8UC1 && options.sigma >= 0.5 &&
           options.sigma <= 20 && options.mode >= cv::RETR_EXTERNAL && options.mode <= cv::RETR_TREE &&
           options.low >= 0 && options.high >= 0 && options.noise >= 0;
}

std::int64_t squared(double threshold) {
    const double scaled = std::min(threshold * kGradientScale, 65536.0);
    return std::llrint(scaled * scaled);
}

SquaredThresholds thresholdsFor(const GradientImage& gradient, const TMetricOptions& options) {
    if (!options.automaticThresholds) return {squared(options.low), squared(options.high)};
    const double high = std::max(automaticThreshold(gradient), 0.0);
    return {squared(0.4 * high), squared(high)};
}

// What the Gaussian gradient of a sigma does to slopes and to noise.
struct FilterGains {
    double ramp;   // gradient units for a slope of one grey level a pixel
    double noise;  // of the facet's slope along x, for unit noise, in grey levels a pixel squared
};

// The facet's slope along x is a sixth of the right column less the left; with the gradient's kernels that is
// one linear filter of the image, and the noise gain is its norm.
FilterGains gainsOf(const std::vector<GaussTap>& taps) {
    constexpr double kOne = 16384;
    const int radius = static_cast<int>(taps.size()) - 1;
    const auto smooth = [&](int i) {
        const int distance = std::abs(i);
        if (distance > radius) return 0.0;
        return taps[static_cast<std::size_t>(distance)].smooth * (i == 0 ? 2 : 1) / kOne;
    };
    double ramp = 0;
    for (int i = 1; i <= radius; ++i) ramp += 2.0 * i * taps[static_cast<std::size_t>(i)].derive / kOne;
    const auto derive = [&](int i) {
        const int distance = std::abs(i);
        if (distance > radius) return 0.0;
        return taps[static_cast<std::size_t>(distance)].derive * (i < 0 ? -1 : 1) / (kOne * ramp);
    };
    double across = 0;
    double along = 0;
    for (int i = -radius - 1; i <= radius + 1; ++i) {
        across += std::pow((derive(i - 1) - derive(i + 1)) / 6, 2);
        along += std::pow(smooth(i - 1) + smooth(i) + smooth(i + 1), 2);
    }
    return {ramp * kGradientScale, std::sqrt(across * along)};
}

// One edge point, before the contour's curvature is known.
struct Crossing {
    cv::Point2d position;
    cv::Point2d normal;  // unit, from dark to bright
    double offset;       // from the pixel's centre; not a number where there is no edge
    double bend;         // 1 / total blur squared
    double magnitude;    // in gradient units
    double direction;    // of the normal, radians
};

std::vector<std::vector<Crossing>> refine(const GradientImage& gradient,
                                          const std::vector<PixelChain>& chains) {
    std::vector<std::vector<Crossing>> crossings(chains.size());
    for (std::size_t i = 0; i < chains.size(); ++i) crossings[i].resize(chains[i].size());
    const EdgeKernels& kernels = edgeKernels();
    forBlocks<MetricBlock>(gradient, chains, [&](MetricBlock& block, const ChainBlock& piece) {
        kernels.refineMetric(block);
        for (std::size_t i = 0; i < block.count; ++i) {
            const cv::Point2d normal(block.normalX[i], block.normalY[i]);
            const cv::Point2d pixel = chains[piece.chain][piece.from + i];
            crossings[piece.chain][piece.from + i] = {pixel + block.offset[i] * normal,
                                                      normal,
                                                      block.offset[i],
                                                      block.curvature[i],
                                                      block.magnitude[i],
                                                      block.direction[i]};
        }
    });
    return crossings;
}

// A ridge of the gradient near the pixel, not wider than edges of this sigma can be told from shading.
bool isEdge(const Crossing& crossing, double sigma) {
    constexpr double kWidest = 8;
    return crossing.bend * (kWidest * sigma * kWidest * sigma) > 1 &&
           std::abs(crossing.offset) <= kLargestOffset;
}

bool isSameCrossing(const Crossing& a, const Crossing& b) {
    const cv::Point2d d = a.position - b.position;
    return d.dot(d) < kSmallestSpacing * kSmallestSpacing;
}

// Drops what is no edge, and of two points at one place the one whose pixel is farther away.
void keepDistinct(std::vector<Crossing>& crossings, double sigma, bool closed) {
    std::size_t kept = 0;
    for (const Crossing& crossing : crossings) {
        if (!isEdge(crossing, sigma)) continue;
        if (kept == 0 || !isSameCrossing(crossings[kept - 1], crossing)) {
            crossings[kept++] = crossing;
        } else if (std::abs(crossing.offset) < std::abs(crossings[kept - 1].offset)) {
            crossings[kept - 1] = crossing;
        }
    }
    if (closed && kept > 1 && isSameCrossing(crossings[0], crossings[kept - 1])) --kept;
    crossings.resize(kept);
}

bool isLongEnough(const std::vector<Crossing>& crossings, const TMetricOptions& options) {
    return !crossings.empty() && static_cast<std::int64_t>(crossings.size()) >= options.minPoints;
}

// Sums over the first points of a contour, so that any stretch of it is a difference of two.
struct ContourSums {
    cv::Point2d position;
    cv::Point2d normal;
    double squares = 0;   // of the position
    double products = 0;  // position . normal

    ContourSums operator+(const ContourSums& b) const {
        return {position + b.position, normal + b.normal, squares + b.squares, products + b.products};
    }
    ContourSums operator-(const ContourSums& b) const {
        return {position - b.position, normal - b.normal, squares - b.squares, products - b.products};
    }
};

// The rate at which normals turn along a contour: on a circle of radius R normal = rate * position +
// constant, with rate 1 / R where they point outwards and -1 / R where they point to its centre. Least
// squares over the points around each.
class TurningRates {
  public:
    TurningRates(const std::vector<Crossing>& crossings, bool closed)
        : count_(crossings.size()), closed_(closed && count_ > 2 * kCurvatureReach), sums_(count_ + 1) {
        for (std::size_t i = 0; i < count_; ++i) {
            const cv::Point2d p = crossings[i].position - crossings[0].position;
            const cv::Point2d n = crossings[i].normal;
            sums_[i + 1] = sums_[i] + ContourSums{p, n, p.dot(p), p.dot(n)};
        }
    }

    double at(std::size_t i) const {
        std::size_t points = 2 * kCurvatureReach + 1;
        ContourSums sum;
        if (closed_) {
            const std::size_t from = (i + count_ - kCurvatureReach) % count_;
            const std::size_t to = from + points;
            sum = to <= count_ ? sums_[to] - sums_[from] : sums_[count_] - sums_[from] + sums_[to - count_];
        } else {
            const std::size_t from = i - std::min(i, kCurvatureReach);
            const std::size_t to = std::min(count_, i + kCurvatureReach + 1);
            points = to - from;
            sum = sums_[to] - sums_[from];
        }
        const auto n = static_cast<double>(points);
        const double spread = sum.squares - sum.position.dot(sum.position) / n;
        return spread > 0 ? (sum.products - sum.position.dot(sum.normal) / n) / spread : 0;
    }

  private:
    std::size_t count_;
    bool closed_;
    std::vector<ContourSums> sums_;
};

// Turns crossings into the points that callers see.
class ContourWriter {
  public:
    ContourWriter(double sigma, double noise, const FilterGains& gains)
        : sigma_(sigma), noise_(noise), gains_(gains) {}

    TMetricContour write(const std::vector<Crossing>& crossings, bool closed) const {
        const TurningRates rates(crossings, closed);
        TMetricContour contour;
        contour.closed = closed;
        contour.points.reserve(crossings.size());
        contour.direction.reserve(crossings.size());
        contour.contrast.reserve(crossings.size());
        contour.deviation.reserve(crossings.size());
        for (std::size_t i = 0; i < crossings.size(); ++i) {
            const Crossing& crossing = crossings[i];
            contour.points.emplace_back(crossing.position + compensation(crossing, rates.at(i)));
            contour.direction.push_back(static_cast<float>(crossing.direction));
            contour.contrast.push_back(
                static_cast<float>(slope(crossing) * std::sqrt(kTwoPi / crossing.bend)));
            contour.deviation.push_back(static_cast<float>(deviation(crossing)));
        }
        return contour;
    }

  private:
    double slope(const Crossing& crossing) const { return crossing.magnitude / gains_.ramp; }

    cv::Point2d compensation(const Crossing& crossing, double rate) const {
        // The blur as the facet sees it, kept to what is plausible where neighbouring edges disturb it.
        const double blurSquared = std::clamp(1 / crossing.bend, sigma_ * sigma_, 9 * sigma_ * sigma_ + 4);
        // The bent ridge also tilts the 3 x 3 facet: its cubic term, rate * along^2 * across / blur^2, leaks
        // into the slope by the mean of along^2 * across^2 over the nine places.
        const double cs = crossing.normal.x * crossing.normal.y;
        const double leak = (1 - 3 * cs * cs) * 2 / 3;
        const double bounded = std::clamp(rate, -0.25 / sigma_, 0.25 / sigma_);
        return crossing.normal * ((blurSquared + leak) * bounded / 2);
    }

    // Noise of the facet's slope, relative to the magnitudes one pixel off the edge, over its second
    // derivative.
    double deviation(const Crossing& crossing) const {
        return noise_ * gains_.noise * std::exp(std::min(crossing.bend / 2, 4.0)) /
               (slope(crossing) * crossing.bend);
    }

    double sigma_;
    double noise_;
    FilterGains gains_;
};

}  // namespace

bool edgesSubPixMetric(const cv::Mat& gray, std::vector<TMetricContour>& contours,
                       const TMetricOptions& options) {
    if (!isAcceptable(gray, options)) return false;
    const std::vector<GaussTap> taps = gaussianTaps(options.sigma);
    const GradientImage gradient = gaussianGradient(gray, taps);
    EdgePixels edges = findEdgePixels(gradient, thresholdsFor(gradient, options));
    removeCornerPixels(edges);
    std::vector<PixelChain> borders;
    cv::findContours(edges.map, borders, options.mode, cv::CHAIN_APPROX_NONE);
    const std::vector<PixelChain> chains = visitOnce(borders, edges.map);
    std::vector<std::vector<Crossing>> crossings = refine(gradient, chains);

    const double noise = options.noise > 0 ? options.noise : imageNoise(gray);
    const ContourWriter writer(options.sigma, noise, gainsOf(taps));
    std::vector<TMetricContour> written(chains.size());
    constexpr int kChainsOfAStripe = 64;
    const int stripes = static_cast<int>((chains.size() + kChainsOfAStripe - 1) / kChainsOfAStripe);
    orx::platform::parallelFor(stripes, [&](int stripe) {
        const std::size_t from = static_cast<std::size_t>(stripe) * kChainsOfAStripe;
        const std::size_t to = std::min(chains.size(), from + kChainsOfAStripe);
        for (std::size_t i = from; i < to; ++i) {
            const bool closed = chains[i].size() >= 8 && areNeighbours(chains[i].front(), chains[i].back());
            keepDistinct(crossings[i], options.sigma, closed);
            if (isLongEnough(crossings[i], options)) written[i] = writer.write(crossings[i], closed);
        }
    });
    written.erase(std::remove_if(written.begin(), written.end(),
                                 [](const TMetricContour& contour) { return contour.points.empty(); }),
                  written.end());
    contours = std::move(written);
    return true;
}

}  // namespace ORXEdge
