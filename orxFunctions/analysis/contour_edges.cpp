#include "orxFunctions/analysis/contour_edges.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/analysis/image_noise.h"
#include "orxFunctions/foundation/option_range_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr double kLargestStep = 0.5;  // between the samples of a profile, pixels
// The profile is moved onto the edge that it shows, so that both its ends lie equally far from it: a few
// moves are enough, and one of less than this changes nothing that counts.
constexpr int kMoves = 3;
constexpr double kSettled = 0.02;
// The rise over so many pixels, half to each side of the edge, tells the blur.
constexpr double kRise = 1.5;
constexpr double kSqrt2Pi = 2.5066282746310002;
// What the pixels' grid leaves of an edge of blur 1, and how fast that falls off with the blur (measured on
// straight edges at 24 angles, blur 0.3 to 1.2 pixels).
constexpr double kAliasing = 0.0075;
constexpr double kAliasingPower = -3.3;
// Of the reach: beyond, the ends of the profile lie on the edge themselves.
constexpr double kWidest = 0.5;

bool isUsable(const cv::Mat& img, const TContourEdgeOptions& options) {
    constexpr double kFinite = std::numeric_limits<double>::max();
    return takesPicture(img, "edgesAcross") &&
           takesOptions("edgesAcross",
                        {{"reach", options.reach, 1.5, 50},
                         {"minContrast", options.minContrast, 0, kNoHighEnd},
                         {"noise", options.noise, 0, kFinite},
                         {"polarity", static_cast<double>(options.polarity), epAny, epBrightToDark}});
}

bool isUsable(const TEdgeProbe& probe) {
    const double length = std::hypot(probe.normal.x, probe.normal.y);
    return std::isfinite(probe.point.x) && std::isfinite(probe.point.y) && isBetween(length, 0.999, 1.001) &&
           std::isfinite(probe.curvature);
}

// The shares of three neighbouring pixels at a place that lies t from the middle one: a quadratic B-spline.
// It smooths by sqrt(1/4) pixel wherever the place lies between the pixels, where linear interpolation
// smooths now more, now less, which shifts edges to and fro. M. Unser, "Splines: a perfect fit for signal and
// image processing", IEEE Signal Processing Magazine 16 (1999).
struct Spline {
    explicit Spline(double t)
        : before(0.5 * (0.5 - t) * (0.5 - t)), middle(0.75 - t * t), after(0.5 * (0.5 + t) * (0.5 + t)) {}
    double squares() const { return before * before + middle * middle + after * after; }
    double before, middle, after;
};

// What is left of the variance of a pixel at a place between pixels.
double interpolatedVariance(cv::Point2d p) {
    return Spline(p.x - std::round(p.x)).squares() * Spline(p.y - std::round(p.y)).squares();
}

// The same of the mean of the two ends of a profile, each a third of the reach long.
double levelVariance(double reach) { return 0.275 / (reach / 3 + 1.4); }

struct Crossing {
    double place = 0.0;     // along the normal
    double contrast = 0.0;  // between the ends of the profile, levels of the image
    double rise = 0.0;      // part of it that lies within kRise pixels around the place
};

// Reads profiles of one image and finds the crossing in them.
template <class Pixel>
class Profiler {
  public:
    Profiler(const cv::Mat& grey, const TContourEdgeOptions& options)
        : data_(grey.ptr<Pixel>()),
          stride_(grey.step1()),
          last_(grey.cols - 1, grey.rows - 1),
          half_(static_cast<int>(std::ceil(options.reach / kLargestStep))),
          step_(options.reach / half_),
          end_(half_ * 2 / 5),
          minContrast_(options.minContrast * levelUnit(grey)),
          polarity_(options.polarity),
          levels_(2 * static_cast<std::size_t>(half_) + 1) {}

    // Nothing where there is no edge.
    std::optional<Crossing> find(const TEdgeProbe& probe) {
        Crossing found;
        for (int move = 0; move < kMoves; ++move) {
            const auto crossing = crossingNear(probe.point + found.place * probe.normal, probe.normal);
            if (!crossing) return std::nullopt;
            found = {found.place + crossing->place, crossing->contrast, 0.0};
            if (std::fabs(found.place) > half_ * step_) return std::nullopt;
            if (std::fabs(crossing->place) < kSettled) break;
        }
        found.rise = riseAround(probe.point + found.place * probe.normal, probe.normal) / found.contrast;
        return found;
    }

  private:
    bool isInside(cv::Point2d p) const { return p.x >= 0 && p.y >= 0 && p.x <= last_.x && p.y <= last_.y; }

    double level(cv::Point2d p) const {
        const int column = std::clamp(static_cast<int>(p.x + 0.5), 1, last_.x - 1);
        const int row = std::clamp(static_cast<int>(p.y + 0.5), 1, last_.y - 1);
        const Spline across(p.x - column);
        const Spline down(p.y - row);
        const Pixel* q = data_ + static_cast<std::size_t>(row) * stride_ + column;
        const auto along = [&](const Pixel* r) {
            return across.before * r[-1] + across.middle * r[0] + across.after * r[1];
        };
        return down.before * along(q - stride_) + down.middle * along(q) + down.after * along(q + stride_);
    }

    void read(cv::Point2d middle, cv::Point2d normal) {
        for (int i = -half_; i <= half_; ++i) levels_[at(i)] = level(middle + (i * step_) * normal);
    }

    // The crossing of the middle level that is nearest to `middle`.
    std::optional<Crossing> crossingNear(cv::Point2d middle, cv::Point2d normal) {
        const double reach = half_ * step_;
        if (!isInside(middle - reach * normal) || !isInside(middle + reach * normal)) return std::nullopt;
        read(middle, normal);
        double before = 0;
        double after = 0;
        for (int i = 0; i <= end_; ++i) {
            before += levels_[at(i - half_)];
            after += levels_[at(half_ - i)];
        }
        const double contrast = (after - before) / (end_ + 1);
        if (!counts(contrast)) return std::nullopt;
        const double middleLevel = 0.5 * (before + after) / (end_ + 1);
        const auto place = nearest(middleLevel, contrast < 0 ? -1.0 : 1.0);
        if (!place) return std::nullopt;
        return Crossing{*place * step_, contrast, 0.0};
    }

    bool counts(double contrast) const {
        if (polarity_ == epDarkToBright && contrast < 0) return false;
        if (polarity_ == epBrightToDark && contrast > 0) return false;
        return contrast != 0 && std::fabs(contrast) >= minContrast_;
    }

    // In samples from the middle. Rising ones where the sign is 1, falling ones where it is -1.
    std::optional<double> nearest(double middleLevel, double sign) const {
        for (int k = 0; k < half_; ++k) {
            const auto right = crossingAt(k, middleLevel, sign);
            const auto left = crossingAt(-k - 1, middleLevel, sign);
            if (right && (!left || *right <= -*left)) return right;
            if (left) return left;
        }
        return std::nullopt;
    }

    std::optional<double> crossingAt(int i, double middleLevel, double sign) const {
        const double from = sign * (levels_[at(i)] - middleLevel);
        const double to = sign * (levels_[at(i + 1)] - middleLevel);
        if (!(from < 0 && to >= 0)) return std::nullopt;
        return i + from / (from - to);
    }

    // Of the levels themselves: between samples of the profile, which are bent most there, straight lines
    // would show a tenth too much of the blur's square.
    double riseAround(cv::Point2d place, cv::Point2d normal) const {
        return level(place + 0.5 * kRise * normal) - level(place - 0.5 * kRise * normal);
    }

    std::size_t at(int i) const { return static_cast<std::size_t>(i + half_); }

    const Pixel* data_;
    std::size_t stride_;
    cv::Point last_;
    int half_;     // samples to each side of the middle
    double step_;  // between them, pixels
    int end_;      // samples at each end that make up a level, less one
    double minContrast_;
    TEdgePolarity polarity_;
    std::vector<double> levels_;
};

template <class Pixel>
std::vector<std::optional<Crossing>> crossingsOf(const cv::Mat& grey, const std::vector<TEdgeProbe>& probes,
                                                 const TContourEdgeOptions& options) {
    std::vector<std::optional<Crossing>> crossings(probes.size());
    if (grey.cols < 3 || grey.rows < 3) return crossings;
    Profiler<Pixel> profiler(grey, options);
    for (std::size_t i = 0; i < probes.size(); ++i)
        if (isUsable(probes[i])) crossings[i] = profiler.find(probes[i]);
    return crossings;
}

// What a Gaussian edge of a given blur shows in a profile: its ends still lie on the edge a little.
struct BlurredEdge {
    BlurredEdge(double width, double reach) : blur(width) {
        const double near = reach * 2 / 3;
        const auto part = [&](double distance) { return std::erf(distance / (std::sqrt(2.0) * blur)); };
        const auto density = [&](double x) { return std::exp(-x * x / (2 * blur * blur)); };
        // The mean of part() from near to reach: its integral is x part(x) + sqrt(2 / pi) blur density(x).
        const auto integral = [&](double x) { return x * part(x) + 2 / kSqrt2Pi * blur * density(x); };
        contrast = (integral(reach) - integral(near)) / (reach - near);
        rise = part(kRise / 2) / contrast;
        // When the profile moves with the edge, so do its ends: the slope that counts is the one less theirs.
        const double slopeOfEnds = (part(reach) - part(near)) / (2 * (reach - near));
        slope = (1 / (kSqrt2Pi * blur) - slopeOfEnds) / contrast;
    }
    double blur;
    double contrast;  // that the profile shows, for a step of 1
    double rise;      // as in Crossing
    double slope;     // at the edge, for a contrast of 1 that the profile shows, 1 / pixels
};

// The blur that most profiles show, with what interpolation adds.
BlurredEdge commonBlur(const std::vector<std::optional<Crossing>>& crossings, double reach) {
    double sharp = 0.05;
    double blurred = kWidest * reach;
    std::vector<double> rises;
    rises.reserve(crossings.size());
    for (const auto& crossing : crossings)
        if (crossing) rises.push_back(crossing->rise);
    if (rises.empty()) return {sharp, reach};
    const auto median = rises.begin() + static_cast<std::ptrdiff_t>(rises.size() / 2);
    std::nth_element(rises.begin(), median, rises.end());
    for (int step = 0; step < 30; ++step) {
        const double middle = 0.5 * (sharp + blurred);
        (BlurredEdge(middle, reach).rise > *median ? sharp : blurred) = middle;
    }
    return {sharp, reach};
}

// What all edges of a call share.
struct Circumstances {
    BlurredEdge blurred;
    double reach;
    double noise;
    double unit;  // levels of the image for one of an 8-bit image
};

TContourEdge edgeOf(const TEdgeProbe& probe, const std::optional<Crossing>& crossing,
                    const Circumstances& all) {
    TContourEdge edge;
    edge.position = probe.point;
    edge.normal = probe.normal;
    if (!crossing) return edge;
    const double offset = crossing->place + 0.5 * all.blurred.blur * all.blurred.blur * probe.curvature;
    if (!(std::fabs(offset) <= all.reach)) return edge;
    edge.found = true;
    edge.offset = offset;
    const double shown = crossing->contrast / all.unit;
    const double variance =
        interpolatedVariance(probe.point + crossing->place * probe.normal) + levelVariance(all.reach);
    edge.position += edge.offset * probe.normal;
    edge.contrast = shown / all.blurred.contrast;
    edge.deviation = std::hypot(all.noise * std::sqrt(variance) / (std::fabs(shown) * all.blurred.slope),
                                kAliasing * std::pow(all.blurred.blur, kAliasingPower));
    return edge;
}

}  // namespace

std::vector<TContourEdge> edgesAcross(const cv::Mat& img, const std::vector<TEdgeProbe>& probes,
                                      const TContourEdgeOptions& options) {
    if (!isUsable(img, options)) return {};
    if (probes.empty()) {
        refuse(rcTooFew, "edgesAcross", "there are no probes");
        return {};
    }
    const cv::Mat grey = greyOf(img);
    const auto crossings = grey.depth() == CV_8U ? crossingsOf<std::uint8_t>(grey, probes, options)
                                                 : crossingsOf<std::uint16_t>(grey, probes, options);
    const Circumstances all{commonBlur(crossings, options.reach), options.reach,
                            options.noise > 0 ? options.noise : getImageNoise(grey), levelUnit(grey)};
    std::vector<TContourEdge> edges;
    edges.reserve(probes.size());
    for (std::size_t i = 0; i < probes.size(); ++i) edges.push_back(edgeOf(probes[i], crossings[i], all));
    return edges;
}

std::vector<cv::Point2d> pointsOf(const std::vector<TContourEdge>& edges) {
    std::vector<cv::Point2d> points;
    points.reserve(edges.size());
    for (const TContourEdge& edge : edges)
        if (edge.found) points.push_back(edge.position);
    return points;
}

std::vector<double> deviationsOf(const std::vector<TContourEdge>& edges) {
    std::vector<double> deviations;
    deviations.reserve(edges.size());
    for (const TContourEdge& edge : edges)
        if (edge.found) deviations.push_back(edge.deviation);
    return deviations;
}

}  // namespace orx
