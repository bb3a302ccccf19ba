#include "orxFunctions/matching/model/teach_edges.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orxFunctions/analysis/image_noise.h"
#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "orxFunctions/matching/model/bounds.h"
#include "orxFunctions/matching/model/pyramid.h"

namespace orx::matching {
namespace {

// Share of the strong edges' contrast that an edge of the part must have.
constexpr double kContrastShare = 0.3;
// Edges are followed down to this share of what begins one: not along the texture that they cross.
constexpr double kFollowed = 0.8;
// What the optics blurs as much as the finder reads 0.7 of its contrast.
constexpr double kReadContrast = 0.7;
// Below it steps are shading.
constexpr double kLeastStep = 5;
// As much of the edges may be too weak before they are found anew.
constexpr double kTolerated = 0.02;
// Chains shorter than a share of the outline's size, within these lengths in pixels, are stray.
constexpr double kStrayShare = 0.2;
constexpr double kShortestStray = 6;
constexpr double kLongestStray = 12;
// Of weak edges, below a share of the strong ones' contrast, there is texture where those shorter than a
// share of the outline's size are this much longer in all than the others.
constexpr double kWeakShare = 0.7;
constexpr double kTextureShare = 0.6;
constexpr double kTexturedShare = 0.25;

// Standard deviations of the noise above which hardly a pixel of a picture comes by chance.
constexpr double kNoiseDistance = 5;

// The least contrast that does not come from noise: of a sharp step, grey levels. Derivatives of a Gaussian
// see noise n like a step of n / (2 sigma).
double noiseFloor(double noise, double sigma) {
    return std::max(kLeastStep, kNoiseDistance * noise / (2 * sigma));
}

std::vector<OutlinePoint> edgesOf(const TeachPyramid& pyramid, int level, double sigma, double high,
                                  double noise) {
    ORXEdge::TMetricOptions find;
    find.noise = noise;
    find.sigma = sigma;
    find.high = high;
    find.low = kFollowed * high;
    std::vector<ORXEdge::TMetricContour> contours;
    std::vector<OutlinePoint> points;
    if (pyramid.view(level).empty()) return points;
    ORXEdge::edgesSubPixMetric(pyramid.view(level), contours, find);
    const cv::Point2d corner = pyramid.corner(level);
    int chain = 0;
    for (const ORXEdge::TMetricContour& contour : contours) {
        for (std::size_t i = 0; i < contour.points.size(); ++i) {
            const double direction = contour.direction[i];
            points.push_back({fromLevel(cv::Point2d(contour.points[i]) + corner, level),
                              {std::cos(direction), std::sin(direction)},
                              contour.deviation[i],
                              contour.contrast[i],
                              chain});
        }
        ++chain;
    }
    return points;
}

// Keeps the points that `counts` accepts. A chain of which something in between falls away is two.
template <typename Counts>
void keep(std::vector<OutlinePoint>& points, const Counts& counts) {
    std::size_t kept = 0;
    int chain = -1;
    int previousChain = -1;
    bool wasKept = false;
    for (const OutlinePoint& point : points) {
        const bool isKept = counts(point);
        if (isKept) {
            if (!wasKept || point.chain != previousChain) ++chain;
            previousChain = point.chain;
            points[kept] = point;
            points[kept++].chain = chain;
        }
        wasKept = isKept;
    }
    points.resize(kept);
}

void keepInside(std::vector<OutlinePoint>& points, const TeachRegion& region) {
    keep(points, [&region](const OutlinePoint& point) { return region.contains(point.position); });
}

void dropWeak(std::vector<OutlinePoint>& points, double contrast) {
    keep(points, [contrast](const OutlinePoint& point) { return point.contrast >= contrast; });
}

double squared(double value) { return value * value; }
double toTheFourth(double value) { return squared(squared(value)); }

// The contrast of the strong edges: half of all, each counted by a power of its contrast, are stronger. The
// higher the power, the less does weak texture count, and the more a few glints.
template <typename Power>
double strongContrast(const std::vector<OutlinePoint>& points, const Power& power) {
    std::vector<double> contrasts;
    contrasts.reserve(points.size());
    double total = 0;
    for (const OutlinePoint& point : points) {
        contrasts.push_back(point.contrast);
        total += power(point.contrast);
    }
    std::sort(contrasts.begin(), contrasts.end());
    double sum = 0;
    for (const double contrast : contrasts) {
        sum += power(contrast);
        if (sum >= total / 2) return contrast;
    }
    return 0;
}

// Points that follow each other along an edge.
struct Chain {
    std::size_t from = 0;
    std::size_t to = 0;  // behind the last one
    double length = 0;   // pixels
    double mean = 0;     // of the contrast
    double highest = 0;
};

std::vector<Chain> chainsOf(const std::vector<OutlinePoint>& points) {
    std::vector<Chain> chains;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const bool begins = i == 0 || points[i].chain != points[i - 1].chain;
        if (begins) chains.push_back({i, i, 0, 0, 0});
        Chain& chain = chains.back();
        chain.to = i + 1;
        chain.mean += points[i].contrast;
        chain.highest = std::max(chain.highest, points[i].contrast);
        if (begins) continue;
        const cv::Point2d step = points[i].position - points[i - 1].position;
        chain.length += std::sqrt(step.dot(step));
    }
    for (Chain& chain : chains) chain.mean /= static_cast<double>(chain.to - chain.from);
    return chains;
}

// Which chains belong to the part. In texture those that are weak must be long: a part's edges are, the
// texture's are not.
class ChainFilter {
  public:
    ChainFilter(const std::vector<OutlinePoint>& points, const std::vector<Chain>& chains, double least)
        : least_(least), strong_(strongContrast(points, toTheFourth)) {
        const double extent = boundsOf(points).extent();
        shortest_ = std::clamp(kStrayShare * extent / 2, kShortestStray, kLongestStray);
        shortestWeak_ = std::max(kTextureShare * extent, shortest_);
        double weak = 0;
        double rest = 0;
        for (const Chain& chain : chains) (isWeak(chain) ? weak : rest) += chain.length;
        isTextured_ = weak > kTexturedShare * rest;
    }

    bool accepts(const Chain& chain) const {
        if (chain.highest < least_ || chain.length < shortest_) return false;
        return !isTextured_ || !isWeak(chain);
    }

  private:
    bool isWeak(const Chain& chain) const {
        return chain.mean < kWeakShare * strong_ && chain.length < shortestWeak_;
    }

    double least_;
    double strong_;
    double shortest_ = 0;
    double shortestWeak_ = 0;
    bool isTextured_ = false;
};

// Keeps the chains that belong to the part; numbers them anew.
void dropStrays(std::vector<OutlinePoint>& points, double least) {
    const std::vector<Chain> chains = chainsOf(points);
    const ChainFilter filter(points, chains, least);
    std::size_t kept = 0;
    int number = 0;
    for (const Chain& chain : chains) {
        if (!filter.accepts(chain)) continue;
        for (std::size_t i = chain.from; i < chain.to; ++i) {
            points[kept] = points[i];
            points[kept++].chain = number;
        }
        ++number;
    }
    points.resize(kept);
}

}  // namespace

int marginFor(double sigma) { return static_cast<int>(std::ceil(5 * sigma)) + 3; }

std::vector<OutlinePoint> findOutline(const TeachPyramid& pyramid, const TeachRegion& region, double sigma,
                                      double minContrast) {
    const double noise = getImageNoise(pyramid.view(0));
    double least = minContrast;
    std::vector<OutlinePoint> points;
    bool again = true;
    if (minContrast <= 0) {
        const double floor = noiseFloor(noise, sigma);
        points = edgesOf(pyramid, 0, sigma, floor, noise);
        keepInside(points, region);
        least = std::max(floor, kContrastShare * strongContrast(points, squared));
        const auto weak = std::count_if(points.begin(), points.end(), [least](const OutlinePoint& p) {
            return p.contrast < kFollowed * least;
        });
        again = static_cast<double>(weak) > kTolerated * static_cast<double>(points.size());
    }
    if (again) {
        points = edgesOf(pyramid, 0, sigma, kReadContrast * least, noise);
        keepInside(points, region);
    }
    dropWeak(points, kFollowed * least);
    dropStrays(points, least);
    return points;
}

double leastContrastFor(const std::vector<OutlinePoint>& outline, double minContrast) {
    return minContrast > 0 ? minContrast
                           : std::max(kLeastStep, kContrastShare * strongContrast(outline, squared));
}

std::vector<OutlinePoint> findEdges(const TeachPyramid& pyramid, int level, double sigma,
                                    double minContrast) {
    // Their deviations are of no use: any noise will do, and none need be measured.
    return edgesOf(pyramid, level, sigma, kReadContrast * minContrast, 1);
}

double contrastQuantile(const std::vector<OutlinePoint>& points, double share) {
    if (points.empty()) return 0;
    std::vector<double> contrasts;
    contrasts.reserve(points.size());
    for (const OutlinePoint& point : points) contrasts.push_back(point.contrast);
    const auto rank = static_cast<std::ptrdiff_t>(share * static_cast<double>(contrasts.size() - 1));
    std::nth_element(contrasts.begin(), contrasts.begin() + rank, contrasts.end());
    return contrasts[static_cast<std::size_t>(rank)];
}

}  // namespace orx::matching
