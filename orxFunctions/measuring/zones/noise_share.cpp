#include "orxFunctions/measuring/zones/noise_share.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "orxFunctions/measuring/zones/linear_zone.h"
#include "orxFunctions/measuring/zones/outline_form.h"

namespace orx::zones {
namespace {

constexpr std::size_t kOutlines = 200;
// Of larger outlines, stretches are simulated instead of points.
constexpr std::size_t kMostPoints = 4096;
constexpr std::size_t kStretches = 1024;
constexpr std::size_t kSectors = 64;

// G. L. Steele, D. Lea and C. H. Flood, "Fast splittable pseudorandom number generators" (2014), and G. E. P.
// Box and M. E. Muller's Gaussian numbers.
class GaussianNumbers {
  public:
    explicit GaussianNumbers(std::uint64_t seed) : state_(seed) {}

    std::uint64_t bits() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15U);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31);
    }
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(bits() % count); }
    void fill(std::vector<double>& numbers) {
        for (std::size_t i = 0; i < numbers.size(); i += 2) {
            const double radius = std::sqrt(-2.0 * std::log(1.0 - unit()));
            const double angle = 2.0 * CV_PI * unit();
            numbers[i] = radius * std::cos(angle);
            if (i + 1 < numbers.size()) numbers[i + 1] = radius * std::sin(angle);
        }
    }

  private:
    double unit() { return static_cast<double>(bits() >> 11) * 0x1p-53; }

    std::uint64_t state_;
};

// Noise of points along an outline, of deviation 1.
class NoiseMaker {
  public:
    NoiseMaker(const Correlation& correlation, std::uint64_t seed)
        : taps_(correlation.taps()), numbers_(seed) {}

    void make(std::vector<double>& noise) {
        const std::size_t reach = taps_.size() - 1;
        if (reach == 0) return numbers_.fill(noise);
        raw_.resize(noise.size() + 2 * reach);
        numbers_.fill(raw_);
        for (std::size_t i = 0; i < noise.size(); ++i) {
            const double* middle = raw_.data() + i + reach;
            double sum = taps_[reach] * *middle;
            for (std::size_t k = 1; k <= reach; ++k) sum += taps_[reach - k] * (middle[k] + *(middle - k));
            noise[i] = sum;
        }
    }
    std::size_t below(std::size_t count) { return numbers_.below(count); }

  private:
    std::vector<double> taps_;
    GaussianNumbers numbers_;
    std::vector<double> raw_;
};

// A point, or a stretch of points: the largest and the smallest departure.
struct Element {
    double most;
    double least;
    cv::Point2d shift;
};

struct Zone {
    double inner;
    double outer;
};

using Shift = cv::Vec2d;

// The extreme elements of each sector, seen from a shifted shape.
struct Extremes {
    std::vector<const Element*> outer;
    std::vector<const Element*> inner;

    Extremes(const std::vector<Element>& elements, const Shift& shift) {
        const std::size_t sectors = std::min(kSectors, elements.size());
        for (std::size_t s = 0; s < sectors; ++s) {
            const Element* most = nullptr;
            const Element* least = nullptr;
            double high = 0.0;
            double low = 0.0;
            const std::size_t end = (s + 1) * elements.size() / sectors;
            for (std::size_t i = s * elements.size() / sectors; i < end; ++i) {
                const Element& e = elements[i];
                const double moved = e.shift.x * shift[0] + e.shift.y * shift[1];
                if (most == nullptr || e.most - moved > high) {
                    most = &e;
                    high = e.most - moved;
                }
                if (least == nullptr || e.least - moved < low) {
                    least = &e;
                    low = e.least - moved;
                }
            }
            outer.push_back(most);
            inner.push_back(least);
        }
    }

    Zone zoneAt(const Shift& shift) const {
        const auto moved = [&](const Element* e) { return e->shift.x * shift[0] + e->shift.y * shift[1]; };
        Zone zone{inner[0]->least - moved(inner[0]), outer[0]->most - moved(outer[0])};
        for (const Element* e : outer) zone.outer = std::max(zone.outer, e->most - moved(e));
        for (const Element* e : inner) zone.inner = std::min(zone.inner, e->least - moved(e));
        return zone;
    }
};

// Least outer - inner with outer >= most - shift, inner <= least - shift.
Shift leastWidth(const Extremes& extremes, double size) {
    std::vector<Condition<4>> conditions;
    for (const Element* e : extremes.outer) {
        conditions.push_back({{e->shift.x, e->shift.y, 1.0, 0.0}, e->most});
    }
    for (const Element* e : extremes.inner) {
        conditions.push_back({{-e->shift.x, -e->shift.y, 0.0, -1.0}, -e->least});
    }
    const Element& one = *extremes.outer[0];
    const double far = 1e3 * size;
    Condition<4> basis[4] = {{{one.shift.x, one.shift.y, 1.0, 0.0}, one.most},
                             {{-one.shift.x, -one.shift.y, 0.0, -1.0}, -one.most},
                             {{1.0, 0.0, 0.0, 0.0}, -far},
                             {{0.0, 1.0, 0.0, 0.0}, -far}};
    cv::Vec4d x;
    if (!minimise<4>(conditions, {0.0, 0.0, 1.0, -1.0}, basis, 1e-9 * size, x)) return {};
    return {x[0], x[1]};
}

// Least outer (sign 1), or largest inner (sign -1).
Shift tightest(const std::vector<const Element*>& extremes, double sign, double size) {
    std::vector<Condition<3>> conditions;
    for (const Element* e : extremes) {
        const double departure = sign > 0.0 ? e->most : -e->least;
        conditions.push_back({{sign * e->shift.x, sign * e->shift.y, 1.0}, departure});
    }
    const Condition<3> one = conditions.front();
    const double far = 1e3 * size;
    Condition<3> basis[3] = {one,
                             {{one.row[0] > 0.0 ? -1.0 : 1.0, 0.0, 0.0}, -far},
                             {{0.0, one.row[1] > 0.0 ? -1.0 : 1.0, 0.0}, -far}};
    cv::Vec3d x;
    if (!minimise<3>(conditions, {0.0, 0.0, 1.0}, basis, 1e-9 * size, x)) return {};
    return {x[0], x[1]};
}

Zone zoneOf(const std::vector<Element>& elements, ZoneKind kind, double size) {
    Shift shift;
    constexpr int kPasses = 2;  // the second sees the sectors from where the first has moved the shape
    for (int pass = 0; pass < kPasses; ++pass) {
        const Extremes extremes(elements, shift);
        if (kind == zkLeastWidth) shift = leastWidth(extremes, size);
        if (kind == zkAround) shift = tightest(extremes.outer, 1.0, size);
        if (kind == zkWithin) shift = tightest(extremes.inner, -1.0, size);
    }
    return Extremes(elements, shift).zoneAt(shift);
}

// Makes elements of a form without noise, and of one with it.
class Simulation {
  public:
    Simulation(const std::vector<FormPoint>& form, double noise, NoiseMaker& maker)
        : noise_(noise), maker_(maker) {
        if (form.size() <= kMostPoints) {
            for (const FormPoint& p : form) plain_.push_back({p.form, p.form, p.shift});
        } else {
            join(form);
        }
    }

    const std::vector<Element>& plain() const { return plain_; }

    const std::vector<Element>& noisy() {
        noisy_ = plain_;
        numbers_.resize(plain_.size());
        maker_.make(numbers_);
        for (std::size_t i = 0; i < plain_.size(); ++i) {
            double most = numbers_[i];
            double least = most;
            if (!ranges_.empty() && !isAlone_[i]) {
                const cv::Vec2d& range = ranges_[maker_.below(ranges_.size())];
                least = range[0];
                most = range[1];
            }
            noisy_[i].most += noise_ * most;
            noisy_[i].least += noise_ * least;
        }
        return noisy_;
    }

  private:
    // Stretches take over the form of their middle point; points that stand out stay alone.
    void join(const std::vector<FormPoint>& form) {
        for (std::size_t s = 0; s < kStretches; ++s) {
            const std::size_t from = s * form.size() / kStretches;
            const std::size_t to = (s + 1) * form.size() / kStretches;
            std::size_t middle = (from + to) / 2;
            for (std::size_t i = from; i < to; ++i) {
                if (form[i].alone) add(form[i], true);
            }
            while (middle + 1 < to && form[middle].alone) ++middle;
            if (!form[middle].alone) add(form[middle], false);
        }
        constexpr std::size_t kRanges = 400;
        std::vector<double> stretch(form.size() / kStretches);
        for (std::size_t i = 0; i < kRanges; ++i) {
            maker_.make(stretch);
            const auto ends = std::minmax_element(stretch.begin(), stretch.end());
            ranges_.emplace_back(*ends.first, *ends.second);
        }
    }

    void add(const FormPoint& p, bool alone) {
        plain_.push_back({p.form, p.form, p.shift});
        isAlone_.push_back(alone);
    }

    double noise_;
    NoiseMaker& maker_;
    std::vector<Element> plain_;
    std::vector<bool> isAlone_;
    std::vector<cv::Vec2d> ranges_;  // least and most of a stretch
    std::vector<Element> noisy_;
    std::vector<double> numbers_;
};

class Sample {
  public:
    void add(double value) {
        sum_ += value;
        squares_ += value * value;
        count_ += 1.0;
    }
    double mean() const { return sum_ / count_; }
    // Of one more value about the mean of these.
    double deviation() const {
        const double variance = (squares_ - sum_ * sum_ / count_) / (count_ - 1.0);
        return std::sqrt(std::max(0.0, variance) * (1.0 + 1.0 / count_));
    }

  private:
    double sum_ = 0.0;
    double squares_ = 0.0;
    double count_ = 0.0;
};

}  // namespace

NoiseShare noiseShare(const Outline& outline, ZoneKind kind, const TFormOptions& options) {
    const std::vector<FormPoint> form = formOf(outline, options);
    NoiseMaker maker(Correlation(outline, options), options.seed);
    Simulation simulation(form, options.noise, maker);
    double size = options.noise;
    for (const FormPoint& p : form) size = std::max(size, std::abs(p.form));
    const Zone own = zoneOf(simulation.plain(), kind, size);
    Sample width;
    Sample inner;
    Sample outer;
    for (std::size_t i = 0; i < kOutlines; ++i) {
        const Zone zone = zoneOf(simulation.noisy(), kind, size);
        width.add(zone.outer - zone.inner - (own.outer - own.inner));
        inner.add(zone.inner - own.inner);
        outer.add(zone.outer - own.outer);
    }
    return {width.mean(),      inner.mean(),      outer.mean(),
            width.deviation(), inner.deviation(), outer.deviation()};
}

}  // namespace orx::zones
