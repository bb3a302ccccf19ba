#include "orxFunctions/analysis/caliper_profile_internal.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/analysis/profiles/kernels.h"

namespace orx {
namespace {

constexpr double kSqrt2Pi = 2.5066282746310002;
// Beyond, a Gaussian carries less than a millionth.
constexpr double kReach = 5.0;
// The filter is moved by less than half a sample from an extremum of the samples, also with some noise.
constexpr int kRefinements = 4;
constexpr double kSettled = 1e-5;  // samples
// In sigmas; beyond, a rise is shading rather than an edge.
constexpr double kWidest = 4.0;

// The cubic through four levels a pixel apart, at a share of the way from the second to the third.
// R. Keys, "Cubic convolution interpolation for digital image processing", IEEE Trans. ASSP 29 (1981).
struct Cubic {
    explicit Cubic(double t)
        : weights{t * (-0.5 + t * (1 - 0.5 * t)), 1 + t * t * (-2.5 + 1.5 * t), t * (0.5 + t * (2 - 1.5 * t)),
                  t * t * (-0.5 + 0.5 * t)} {}
    template <class Level>
    double operator()(Level a, Level b, Level c, Level d) const {
        return weights[0] * a + weights[1] * b + weights[2] * c + weights[3] * d;
    }
    double weights[4];
};

// The grey level between pixels; at whole pixels it is theirs exactly. Cubic, since linear interpolation
// blurs an edge by how it lies between the pixels, and that shows in the position when few rays are averaged.
template <class Pixel>
class Sampler {
  public:
    explicit Sampler(const cv::Mat& grey)
        : data_(grey.ptr<Pixel>()), stride_(grey.step1()), last_(grey.cols - 1, grey.rows - 1) {}

    // Whether all that is read for a point lies in the image.
    bool isDeepInside(cv::Point2d p) const {
        return p.x >= 1 && p.y >= 1 && p.x < last_.x - 1 && p.y < last_.y - 1;
    }

    // Of points that are all deep inside.
    void addDeepInside(const profile_kernels::PointRow& points, std::vector<double>& sums) const {
        const auto stride = static_cast<std::ptrdiff_t>(stride_);
        const profile_kernels::Kernels& kernels = profile_kernels::chosen();
        if constexpr (sizeof(Pixel) == 1) {
            kernels.addBytes(data_, stride, points, sums.size(), sums.data());
        } else {
            kernels.addWords(data_, stride, points, sums.size(), sums.data());
        }
    }

    // Wherever the point lies: beyond the border the border is repeated.
    double anywhere(cv::Point2d p) const {
        const double x = std::clamp<double>(p.x, 0, last_.x);
        const double y = std::clamp<double>(p.y, 0, last_.y);
        const int column = static_cast<int>(x);
        const int row = static_cast<int>(y);
        const Cubic across(x - column);
        const auto level = [&](int r) {
            const Pixel* line = rowOf(std::clamp(r, 0, last_.y));
            const auto at = [&](int c) { return line[std::clamp(c, 0, last_.x)]; };
            return across(at(column - 1), at(column), at(column + 1), at(column + 2));
        };
        return Cubic(y - row)(level(row - 1), level(row), level(row + 1), level(row + 2));
    }

  private:
    const Pixel* rowOf(int row) const { return data_ + static_cast<std::size_t>(row) * stride_; }

    const Pixel* data_;
    std::size_t stride_;
    cv::Point last_;
};

template <class Pixel>
void addRay(const Sampler<Pixel>& sampler, const Ray& ray, int lead, std::vector<double>& sums) {
    const auto at = [&](std::size_t i) { return ray.start + ray.step * (static_cast<double>(i) - lead); };
    if (sampler.isDeepInside(at(0)) && sampler.isDeepInside(at(sums.size() - 1))) {
        sampler.addDeepInside({ray.start.x, ray.start.y, ray.step.x, ray.step.y, static_cast<double>(lead)},
                              sums);
    } else {
        for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += sampler.anywhere(at(i));
    }
}

template <class Pixel>
std::vector<double> meanOfRays(const cv::Mat& grey, const std::vector<Ray>& rays, int lead, int count) {
    const Sampler<Pixel> sampler(grey);
    std::vector<double> profile(static_cast<std::size_t>(count) + 2 * static_cast<std::size_t>(lead));
    for (const Ray& ray : rays) addRay(sampler, ray, lead, profile);
    const double scale = 1.0 / (static_cast<double>(rays.size()) * levelUnit(grey));
    for (double& level : profile) level *= scale;
    return profile;
}

// The smoothed profile's slope at a place, and the slope's own first two derivatives.
struct Slope {
    double value = 0.0;
    double first = 0.0;
    double second = 0.0;

    // A level's share: `weight` is the level times the Gaussian at t, in sigmas from the place.
    void add(double t, double weight) {
        value -= weight * t;
        first += weight * (t * t - 1);
        second -= weight * t * (t * t - 3);
    }

    void scale(double height, double sigma) {
        value *= height / sigma;
        first *= height / (sigma * sigma);
        second *= height / (sigma * sigma * sigma);
    }
};

class GaussianSlope {
  public:
    GaussianSlope(const std::vector<double>& profile, double sigma)
        : profile_(profile), sigma_(sigma), lead_(leadOf(sigma)), bell_(size(lead_) + 1) {
        for (int k = 0; k <= lead_; ++k) {
            const double t = k / sigma;
            bell_[size(k)] = std::exp(-t * t / 2);
        }
    }

    int count() const { return static_cast<int>(profile_.size()) - 2 * lead_; }

    // At every sample.
    std::vector<double> values() const {
        const double area = kSqrt2Pi * std::pow(sigma_, 3);
        std::vector<double> slopes(size(count()));
        // All samples with one pair of levels after the other, so that compilers make vectors of it.
        const double* const middle = profile_.data() + lead_;
        for (int k = 1; k <= lead_; ++k) {
            const double weight = k * bell_[size(k)] / area;
            const double* const after = middle + k;
            const double* const before = middle - k;
            for (std::size_t i = 0; i < slopes.size(); ++i) slopes[i] += weight * (after[i] - before[i]);
        }
        return slopes;
    }

    // At a place between samples. Levels are taken relative to the one there: what the cut-off kernel leaves
    // of a constant is gone. With f the place and k a sample, both counted from the nearest sample,
    // exp(-(f - k)^2 / 2s^2) is exp(-f^2 / 2s^2) exp(-k^2 / 2s^2) exp(f / s^2)^k.
    Slope around(double place) const {
        const int centre = static_cast<int>(std::lround(place));
        const double fraction = place - centre;
        const double* middle = profile_.data() + centre + lead_;
        // Each extremum begins at a sample, where both bells are 1.
        const bool isSample = fraction == 0;
        const double ratio = isSample ? 1.0 : std::exp(fraction / (sigma_ * sigma_));
        Slope slope;
        double power = 1;
        for (int k = 1; k <= lead_; ++k) {
            power *= ratio;
            slope.add((fraction - k) / sigma_, (middle[k] - middle[0]) * bell_[size(k)] * power);
            slope.add((fraction + k) / sigma_, (middle[-k] - middle[0]) * bell_[size(k)] / power);
        }
        const double t = fraction / sigma_;
        slope.scale((isSample ? 1.0 : std::exp(-t * t / 2)) / (kSqrt2Pi * sigma_), sigma_);
        return slope;
    }

  private:
    static std::size_t size(int i) { return static_cast<std::size_t>(i); }

    const std::vector<double>& profile_;
    double sigma_;
    int lead_;
    std::vector<double> bell_;
};

// The vertex of the parabola through an extremum at sample i with its neighbours; the filter is then taken at
// the vertex, whose own parabola has the next vertex.
ProfileEdge refined(const GaussianSlope& filter, int i, double sigma) {
    const double highest = filter.count() - 1.0;
    double place = i;
    double moved = 1;
    Slope slope = filter.around(place);
    for (int pass = 0; pass < kRefinements && moved > kSettled && slope.value * slope.second < 0; ++pass) {
        const double vertex = place - slope.first / slope.second;
        const double next = std::clamp(std::clamp(vertex, i - 1.0, i + 1.0), 0.0, highest);
        moved = std::fabs(next - place);
        place = next;
        slope = filter.around(place);
    }
    // Where a Gaussian is steepest it falls off with slope.value / spread^2; the height of a step is the area
    // under its slope.
    const bool peaked = slope.value * slope.second < 0;
    const double spread = peaked ? std::sqrt(-slope.value / slope.second) : sigma;
    const double total = std::clamp(spread, sigma, kWidest * sigma);
    return {place, slope.value * kSqrt2Pi * total, std::sqrt(total * total - sigma * sigma)};
}

bool counts(const ProfileEdge& edge, const TCaliperOptions& options) {
    if (options.polarity == epDarkToBright && edge.contrast < 0) return false;
    if (options.polarity == epBrightToDark && edge.contrast > 0) return false;
    return std::fabs(edge.contrast) >= options.minContrast;
}

// Ordered by place; the first of equals.
void select(std::vector<ProfileEdge>& edges, TEdgeSelection selection) {
    if (edges.empty() || selection == esAll) return;
    ProfileEdge chosen = edges.front();
    if (selection == esLast) chosen = edges.back();
    if (selection == esStrongest) {
        const auto weaker = [](const ProfileEdge& a, const ProfileEdge& b) {
            return std::fabs(a.contrast) < std::fabs(b.contrast);
        };
        chosen = *std::max_element(edges.begin(), edges.end(), weaker);
    }
    edges.assign(1, chosen);
}

}  // namespace

std::vector<double> sampleProfile(const cv::Mat& grey, const std::vector<Ray>& rays, int lead, int count) {
    if (grey.depth() == CV_8U) return meanOfRays<uchar>(grey, rays, lead, count);
    return meanOfRays<ushort>(grey, rays, lead, count);
}

// A little less than what refined() cuts off at.
double widestBlur(double sigma) { return 0.999 * sigma * std::sqrt(kWidest * kWidest - 1); }

int leadOf(double sigma) { return static_cast<int>(std::ceil(kReach * sigma)); }

std::vector<ProfileEdge> edgesOfProfile(const std::vector<double>& profile, double sigma,
                                        const TCaliperOptions& options) {
    const GaussianSlope filter(profile, sigma);
    const std::vector<double> slopes = filter.values();
    // Less than this cannot become the contrast wanted: the slope gains far less than a quarter between two
    // samples, and the widest edge counts with kWidest sigmas. Rounding makes extrema of its own on flat
    // profiles; they are below any level.
    const double flattest = std::max(1e-9, options.minContrast / (1.25 * kSqrt2Pi * kWidest * sigma));
    std::vector<ProfileEdge> edges;
    for (std::size_t i = 1; i + 1 < slopes.size(); ++i) {
        const double sign = slopes[i] < 0 ? -1.0 : 1.0;
        const double height = sign * slopes[i];
        if (height < flattest || height <= sign * slopes[i - 1] || height < sign * slopes[i + 1]) continue;
        const ProfileEdge edge = refined(filter, static_cast<int>(i), sigma);
        if (counts(edge, options)) edges.push_back(edge);
    }
    select(edges, options.selection);
    return edges;
}

}  // namespace orx
