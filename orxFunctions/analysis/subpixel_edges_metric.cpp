#include "orxFunctions/analysis/subpixel_edges_metric.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "orxFunctions/analysis/edges/aliasing.h"
#include "orxFunctions/analysis/edges/blocks.h"
#include "orxFunctions/analysis/edges/gradient.h"
#include "orxFunctions/analysis/edges/image_noise.h"
#include "orxFunctions/analysis/edges/kernels.h"
#include "orxFunctions/analysis/edges/pieces.h"
#include "orxFunctions/analysis/edges/suppression.h"
#include "orxFunctions/analysis/edges/threshold.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace ORXEdge {
namespace {

using namespace orx::edges;
using orx::edge_kernels::GaussTap;
using orx::edge_kernels::MetricBlock;

// An edge farther from its pixel than this belongs to something else.
constexpr double kLargestOffset = 1.0;
// Nearer points are the same crossing of the pixel grid; neighbouring crossings are at least 0.707 apart.
constexpr double kSmallestSpacing = 0.6;
// Points on each side from which the curvature of a contour is fitted.
constexpr std::size_t kCurvatureReach = 6;

bool isAcceptable(const cv::Mat& gray, const TMetricOptions& options) {
    if (!orx::takesBytes(gray, "edgesSubPixMetric")) return false;
    if (!(options.sigma >= 0.5 && options.sigma <= 20))
        return orx::refuse(orx::rcOption, "edgesSubPixMetric", "sigma is %g; 0.5 to 20 are taken",
                           options.sigma);
    if (options.mode < cv::RETR_EXTERNAL || options.mode > cv::RETR_TREE)
        return orx::refuse(orx::rcOption, "edgesSubPixMetric", "the mode is %d; 0 to 3 are taken",
                           options.mode);
    if (options.low >= 0 && options.high >= 0 && options.noise >= 0) return true;
    return orx::refuse(orx::rcOption, "edgesSubPixMetric",
                       "the thresholds are %g and %g, the noise %g; 0 and more are taken", options.low,
                       options.high, options.noise);
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
    float direction;     // of the normal, radians
    float contrast;
    float deviation;
};

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

// Neighbouring elements of an array that belong to somebody else.
struct Crossings {
    Crossing* data;
    std::size_t size;

    const Crossing& operator[](std::size_t i) const { return data[i]; }
};

// Drops what is no edge, and of two points at one place the one whose pixel is farther away. What is left
// moves to the front.
Crossings keepDistinct(Crossings crossings, double sigma, bool closed) {
    Crossing* const all = crossings.data;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < crossings.size; ++i) {
        if (!isEdge(all[i], sigma)) continue;
        if (kept == 0 || !isSameCrossing(all[kept - 1], all[i])) {
            all[kept++] = all[i];
        } else if (std::abs(all[i].offset) < std::abs(all[kept - 1].offset)) {
            all[kept - 1] = all[i];
        }
    }
    if (closed && kept > 1 && isSameCrossing(all[0], all[kept - 1])) --kept;
    return {all, kept};
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
    // Remembers the crossings' sums only.
    void observe(Crossings crossings, bool closed) {
        count_ = crossings.size;
        closed_ = closed && count_ > 2 * kCurvatureReach;
        sums_.resize(count_ + 1);
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
    std::size_t count_ = 0;
    bool closed_ = false;
    std::vector<ContourSums> sums_ = std::vector<ContourSums>(1);  // the first stays 0
};

// What all pieces of an image share.
struct Measurement {
    const GradientImage& gradient;
    const PixelPieces& pieces;
    double sigma;
    std::size_t shortest;
    double inverseRamp;
    double deviationScale;
};

// Measures one piece of edge after the other, with memory of its own.
class PieceMeter {
  public:
    explicit PieceMeter(const Measurement& all) : all_(all), aliasing_(all.sigma) {
        block_.inverseRamp = all.inverseRamp;
        block_.deviationScale = all.deviationScale;
    }

    // Pieces [from, to) become contours of the same numbers; those that are too short become empty ones.
    void measure(std::size_t from, std::size_t to, std::vector<TMetricContour>& contours) {
        const std::vector<std::size_t>& starts = all_.pieces.starts;
        refine(starts[from], starts[to]);
        for (std::size_t i = from; i < to; ++i) {
            const bool closed = all_.pieces.isClosed(i);
            const Crossings all{crossings_.data() + (starts[i] - starts[from]), starts[i + 1] - starts[i]};
            const Crossings kept = keepDistinct(all, all_.sigma, closed);
            removeAliasing(kept);
            if (kept.size >= all_.shortest) {
                write(kept, closed, contours[i]);
            } else {
                contours[i].points.clear();
            }
        }
    }

  private:
    void refine(std::size_t from, std::size_t to) {
        const orx::edge_kernels::Kernels& kernels = orx::edge_kernels::chosen();
        crossings_.resize(to - from);
        for (std::size_t start = from; start < to; start += kBlock) {
            const cv::Point* pixels = all_.pieces.pixels.data() + start;
            aimAt(block_, all_.gradient, pixels, std::min(to - start, kBlock));
            kernels.refineMetric(block_);
            Crossing* out = crossings_.data() + (start - from);
            for (std::size_t i = 0; i < block_.count; ++i) {
                const cv::Point2d normal(block_.normalX[i], block_.normalY[i]);
                const cv::Point2d pixel = pixels[i];
                out[i] = {pixel + block_.offset[i] * normal,
                          normal,
                          block_.offset[i],
                          block_.curvature[i],
                          block_.direction[i],
                          block_.contrast[i],
                          block_.deviation[i]};
            }
        }
    }

    void removeAliasing(Crossings crossings) const {
        for (std::size_t i = 0; i < crossings.size; ++i) {
            Crossing& crossing = crossings.data[i];
            if (!aliasing_.matters(crossing.normal, crossing.bend)) continue;
            const double offset = aliasing_.corrected(crossing.normal, crossing.offset, crossing.bend);
            crossing.position += (offset - crossing.offset) * crossing.normal;
        }
    }

    void write(Crossings crossings, bool closed, TMetricContour& contour) {
        rates_.observe(crossings, closed);
        contour.closed = closed;
        contour.points.resize(crossings.size);
        contour.direction.resize(crossings.size);
        contour.contrast.resize(crossings.size);
        contour.deviation.resize(crossings.size);
        for (std::size_t i = 0; i < crossings.size; ++i) {
            const Crossing& crossing = crossings[i];
            contour.points[i] = crossing.position + compensation(crossing, rates_.at(i));
            contour.direction[i] = crossing.direction;
            contour.contrast[i] = crossing.contrast;
            contour.deviation[i] = crossing.deviation;
        }
    }

    cv::Point2d compensation(const Crossing& crossing, double rate) const {
        // The blur as the facet sees it, kept to what is plausible where neighbouring edges disturb it.
        const double blurSquared =
            std::clamp(1 / crossing.bend, all_.sigma * all_.sigma, 9 * all_.sigma * all_.sigma + 4);
        // The bent ridge also tilts the 3 x 3 facet: its cubic term, rate * along^2 * across / blur^2, leaks
        // into the slope by the mean of along^2 * across^2 over the nine places.
        const double cs = crossing.normal.x * crossing.normal.y;
        const double leak = (1 - 3 * cs * cs) * 2 / 3;
        const double bounded = std::clamp(rate, -0.25 / all_.sigma, 0.25 / all_.sigma);
        const double shift = (blurSquared + leak) * bounded / 2;
        // The gradient of a blurred disk has its maximum where r = R I1'(z) / I1(z), z = r R / blur^2: seen
        // from there R lies blur^2 / (2 r) - 3 blur^4 / (8 r^3) farther out.
        return crossing.normal * (shift * (1 - 1.5 * shift * bounded));
    }

    const Measurement& all_;
    AliasingCorrection aliasing_;
    MetricBlock block_{};
    std::vector<Crossing> crossings_;
    TurningRates rates_;
};

// Only what a border follower finds to be no hole and in no hole.
PixelPieces outerPieces(cv::Mat& map, std::size_t shortest) {
    std::vector<PixelChain> borders;
    cv::findContours(map, borders, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
    return visitOnce(borders, map, shortest);
}

// Cuts the pieces into stripes of about equally many pixels: the numbers of their first pieces, and the end.
std::vector<std::size_t> stripesOf(const PixelPieces& pieces) {
    constexpr std::size_t kPixelsOfAStripe = 1024;
    std::vector<std::size_t> firsts = {0};
    for (std::size_t i = 1; i <= pieces.count(); ++i) {
        const bool full = pieces.starts[i] - pieces.starts[firsts.back()] >= kPixelsOfAStripe;
        if (full || i == pieces.count()) firsts.push_back(i);
    }
    return firsts;
}

void measurePieces(const Measurement& all, std::vector<TMetricContour>& contours) {
    contours.resize(all.pieces.count());
    const std::vector<std::size_t> firsts = stripesOf(all.pieces);
    // A few stripes share a meter.
    constexpr int kStripesOfAMeter = 8;
    const int stripes = static_cast<int>(firsts.size()) - 1;
    const int meters = (stripes + kStripesOfAMeter - 1) / kStripesOfAMeter;
    orx::platform::parallelFor(meters, [&](int m) {
        PieceMeter meter(all);
        const int end = std::min(stripes, (m + 1) * kStripesOfAMeter);
        for (int i = m * kStripesOfAMeter; i < end; ++i) {
            const auto stripe = static_cast<std::size_t>(i);
            meter.measure(firsts[stripe], firsts[stripe + 1], contours);
        }
    });
}

// Swaps, so that the memory of contours is kept for the next image.
void removeEmpty(std::vector<TMetricContour>& contours) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < contours.size(); ++i) {
        if (contours[i].points.empty()) continue;
        if (kept != i) std::swap(contours[kept], contours[i]);
        ++kept;
    }
    contours.resize(kept);
}

}  // namespace

bool edgesSubPixMetric(const cv::Mat& gray, std::vector<TMetricContour>& contours,
                       const TMetricOptions& options) {
    if (!isAcceptable(gray, options)) return false;
    const std::vector<GaussTap> taps = gaussianTaps(options.sigma);
    const GradientImage gradient = gaussianGradient(gray, taps);
    EdgePixels edges = findEdgePixels(gradient, thresholdsFor(gradient, options));
    removeCornerPixels(edges);
    const auto shortest = static_cast<std::size_t>(std::max(options.minPoints, 1));
    const PixelPieces pieces =
        options.mode == cv::RETR_EXTERNAL ? outerPieces(edges.map, shortest) : linkPixels(edges, shortest);

    const double noise = options.noise > 0 ? options.noise : imageNoise(gray);
    const FilterGains gains = gainsOf(taps);
    measurePieces({gradient, pieces, options.sigma, shortest, 1 / gains.ramp, noise * gains.noise}, contours);
    removeEmpty(contours);
    return true;
}

}  // namespace ORXEdge
