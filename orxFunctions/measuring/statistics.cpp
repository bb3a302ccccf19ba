#include "orxFunctions/measuring/statistics.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();

// The first width of a bin is so small a part of the tolerance, or of the first value.
constexpr double kFinestOfTolerance = 1.0 / 4096.0;
constexpr int kFinestDigits = 30;
constexpr double kLargestIndex = 1e15;

std::int64_t half(std::int64_t index) { return index >= 0 ? index / 2 : -((1 - index) / 2); }

// How many deviations' worth of room there is to a limit.
double indexOf(double room, double spread) {
    if (spread > 0.0) return room / spread;
    return room > 0.0 ? kInfinite : room < 0.0 ? -kInfinite : 0.0;
}

}  // namespace

TRunStatistics::TRunStatistics(const TTolerance& tolerance)
    : tolerance_(tolerance.valid() ? tolerance : TTolerance()) {}

bool TRunStatistics::hasTwoLimits() const {
    return std::isfinite(tolerance_.lower) && std::isfinite(tolerance_.upper);
}

void TRunStatistics::add(double value, TVerdict verdict) {
    const bool known = verdict >= vdPass && verdict <= vdNoLimits;
    const bool measured = known && verdict != vdNotMeasured && std::isfinite(value);
    ++verdicts_[static_cast<std::size_t>(measured ? verdict : vdNotMeasured)];
    addToChart(value, measured);
    ++parts_;
    if (!measured) return;
    least_ = count_ == 0 ? value : std::min(least_, value);
    largest_ = count_ == 0 ? value : std::max(largest_, value);
    ++count_;
    const double difference = value - mean_;
    mean_ += difference / static_cast<double>(count_);
    squares_ += difference * (value - mean_);
    addToHistogram(value);
}

std::int64_t TRunStatistics::countOf(TVerdict verdict) const {
    const bool known = verdict >= vdPass && verdict <= vdNoLimits;
    return known ? verdicts_[static_cast<std::size_t>(verdict)] : 0;
}

double TRunStatistics::mean() const { return count_ > 0 ? mean_ : kNone; }
double TRunStatistics::least() const { return count_ > 0 ? least_ : kNone; }
double TRunStatistics::largest() const { return count_ > 0 ? largest_ : kNone; }
double TRunStatistics::range() const { return count_ > 0 ? largest_ - least_ : kNone; }

double TRunStatistics::deviation() const {
    return count_ > 1 ? std::sqrt(std::max(0.0, squares_) / static_cast<double>(count_ - 1)) : kNone;
}

double TRunStatistics::cp() const {
    if (count_ < 2 || !hasTwoLimits()) return kNone;
    return indexOf(tolerance_.upper - tolerance_.lower, 6.0 * deviation());
}

double TRunStatistics::cpk() const {
    if (count_ < 2 || !tolerance_.limited()) return kNone;
    return indexOf(std::min(tolerance_.upper - mean_, mean_ - tolerance_.lower), 3.0 * deviation());
}

// From the anchor to the value, in bins. Their difference may exceed what a double holds.
double TRunStatistics::binsTo(double value) const {
    const double difference = value - anchor_;
    return std::isfinite(difference) ? difference / binWidth_ : value / binWidth_ - anchor_ / binWidth_;
}

void TRunStatistics::coarsen() {
    std::array<std::int64_t, kBins> merged{};
    const std::int64_t lowest = half(lowestBin_);
    for (std::int64_t i = lowestBin_; i <= highestBin_; ++i)
        merged[static_cast<std::size_t>(half(i) - lowest)] += bins_[static_cast<std::size_t>(i - lowestBin_)];
    bins_ = merged;
    if (lowestBin_ <= highestBin_) highestBin_ = half(highestBin_);
    lowestBin_ = lowest;
    binWidth_ *= 2.0;
}

void TRunStatistics::addToHistogram(double value) {
    const double tolerated = tolerance_.upper - tolerance_.lower;
    const bool bounded = hasTwoLimits() && tolerated > 0.0 && std::isfinite(tolerated);
    if (bounded && (value < tolerance_.lower - tolerated || value > tolerance_.upper + tolerated)) {
        ++(value < tolerance_.lower ? below_ : above_);
        return;
    }
    if (binWidth_ <= 0.0) {
        // A limit lies at the edge of a bin; without one bins begin at whole multiples of their width.
        anchor_ = std::isfinite(tolerance_.lower)   ? tolerance_.lower
                  : std::isfinite(tolerance_.upper) ? tolerance_.upper
                                                    : 0.0;
        const int digits = value == 0.0 ? 0 : std::ilogb(value);
        binWidth_ = bounded ? tolerated * kFinestOfTolerance
                            : std::ldexp(1.0, std::clamp(digits - kFinestDigits, -900, 900));
    }
    const auto distance = [&] { return std::abs(binsTo(value)); };
    while (distance() > kLargestIndex && std::isfinite(binWidth_ * 2.0)) coarsen();
    const bool isFirst = lowestBin_ > highestBin_;
    const auto index = [&] {
        return static_cast<std::int64_t>(
            std::clamp(std::floor(binsTo(value)), -kLargestIndex - 1.0, kLargestIndex));
    };
    if (isFirst) lowestBin_ = highestBin_ = index();
    std::int64_t bin = index();
    while (std::max(bin, highestBin_) - std::min(bin, lowestBin_) >= kBins) {
        coarsen();
        bin = index();
    }
    if (bin < lowestBin_) {
        const auto shift = static_cast<std::ptrdiff_t>(lowestBin_ - bin);
        std::rotate(bins_.begin(), bins_.end() - shift, bins_.end());
        lowestBin_ = bin;
    }
    highestBin_ = std::max(highestBin_, bin);
    ++bins_[static_cast<std::size_t>(bin - lowestBin_)];
}

TRunHistogram TRunStatistics::histogram() const {
    TRunHistogram histogram;
    histogram.below = below_;
    histogram.above = above_;
    histogram.width = binWidth_;
    const auto lowest = static_cast<double>(lowestBin_);
    histogram.start = anchor_ + lowest * binWidth_;
    if (!std::isfinite(histogram.start)) histogram.start = (anchor_ / binWidth_ + lowest) * binWidth_;
    for (std::int64_t i = lowestBin_; i <= highestBin_; ++i)
        histogram.counts.push_back(bins_[static_cast<std::size_t>(i - lowestBin_)]);
    return histogram;
}

void TRunStatistics::addToChart(double value, bool measured) {
    const std::int64_t point = parts_ / partsOfPoint_;
    if (point >= kChartPoints) {
        // Two points become one.
        for (std::size_t i = 0; i + 1 < chart_.size(); i += 2) {
            const TRunChartPoint& a = chart_[i];
            const TRunChartPoint& b = chart_[i + 1];
            TRunChartPoint both = a.count > 0 ? a : b;
            both.first = a.first;
            both.count = a.count + b.count;
            if (a.count > 0 && b.count > 0) {
                both.least = std::min(a.least, b.least);
                both.largest = std::max(a.largest, b.largest);
                both.mean = a.mean + (b.mean - a.mean) * static_cast<double>(b.count) /
                                         static_cast<double>(both.count);
            }
            chart_[i / 2] = both;
        }
        chart_.resize(chart_.size() / 2);
        partsOfPoint_ *= 2;
        addToChart(value, measured);
        return;
    }
    if (static_cast<std::size_t>(point) >= chart_.size()) {
        chart_.emplace_back();
        chart_.back().first = parts_;
    }
    if (!measured) return;
    TRunChartPoint& last = chart_.back();
    last.least = last.count == 0 ? value : std::min(last.least, value);
    last.largest = last.count == 0 ? value : std::max(last.largest, value);
    ++last.count;
    last.mean += (value - last.mean) / static_cast<double>(last.count);
}

std::vector<TRunChartPoint> TRunStatistics::chart() const {
    std::vector<TRunChartPoint> points;
    std::copy_if(chart_.begin(), chart_.end(), std::back_inserter(points),
                 [](const TRunChartPoint& point) { return point.count > 0; });
    return points;
}

double TGaugePart::deviation() const {
    return count > 1 ? std::sqrt(squares / static_cast<double>(count - 1)) : kNone;
}

TGaugeStudy::TGaugeStudy(const TTolerance& tolerance)
    : tolerance_(tolerance.valid() ? tolerance : TTolerance()) {}

bool TGaugeStudy::add(int part, double value) {
    if (!std::isfinite(value)) return refuse(rcNotFinite, "add", "part %d has the value %g", part, value);
    if (part < 0 || part >= kMostParts)
        return refuse(rcOption, "add", "part %d; 0 to %d is taken", part, kMostParts - 1);
    const auto number = static_cast<std::size_t>(part);
    if (parts_.size() <= number) parts_.resize(number + 1);
    TGaugePart& of = parts_[number];
    of.least = of.count == 0 ? value : std::min(of.least, value);
    of.largest = of.count == 0 ? value : std::max(of.largest, value);
    ++of.count;
    const double difference = value - of.mean;
    of.mean += difference / static_cast<double>(of.count);
    of.squares += difference * (value - of.mean);
    return true;
}

TGaugeResult TGaugeStudy::result() const {
    TGaugeResult result;
    double squares = 0.0;
    double times = 0.0;  // the harmonic mean of how often each was measured, its reciprocal summed up
    TRunStatistics means;
    for (const TGaugePart& part : parts_) {
        if (part.count == 0) continue;
        ++result.parts;
        result.values += part.count;
        squares += part.squares;
        times += 1.0 / static_cast<double>(part.count);
        means.add(part.mean, vdNoLimits);
    }
    result.degreesOfFreedom = static_cast<double>(result.values - result.parts);
    if (result.degreesOfFreedom <= 0.0) return result;
    const double variance = squares / result.degreesOfFreedom;
    result.repeatability = std::sqrt(variance);
    const double tolerated = tolerance_.upper - tolerance_.lower;
    if (std::isfinite(tolerated) && tolerated > 0.0)
        result.toleranceShare = 100.0 * 6.0 * result.repeatability / tolerated;
    if (result.parts < 2) return result;
    const double ofMeans = means.deviation() * means.deviation();
    const double ofParts = std::max(0.0, ofMeans - variance * times / result.parts);
    result.partDeviation = std::sqrt(ofParts);
    if (variance + ofParts > 0.0)
        result.variationShare = 100.0 * result.repeatability / std::sqrt(variance + ofParts);
    return result;
}

}  // namespace orx
