// Statistics of one value over a run of parts: how it spreads, and how that fits its tolerance.
//
// Mean and standard deviation after Welford (Technometrics 4 (1962) 419-420), which loses no digits where the
// spread is small beside the value. Indices after ISO 22514-2, for a value that is distributed normally:
//     Cp  = (U - L) / (6 s)            Cpk = min((U - mean) / (3 s), (mean - L) / (3 s))
// with the limits L and U and the standard deviation s of all values of the run. Where a process is not
// proven to be stable the standard calls them performance indices, Pp and Ppk. Cp wants both limits, Cpk at
// least one. All take the same memory however long the run is.
#ifndef ORXFUNCTIONS_MEASURING_STATISTICS_H
#define ORXFUNCTIONS_MEASURING_STATISTICS_H

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/measuring/verdict.h"

namespace orx {

// Counts of values in bins of equal width. The width adapts to what is added, by factors of 2: the least at
// which all values fit in, so that it does not depend on their order. Values further outside of a tolerance
// with two limits than it is wide are counted at the ends, so that one wild value leaves the others apart.
struct TRunHistogram {
    double start = 0.0;                // lower end of the first bin
    double width = 0.0;                // of a bin; 0 where nothing was added
    std::vector<std::int64_t> counts;  // from the first bin that is not empty to the last one, at most 64
    std::int64_t below = 0;            // values beyond the ends
    std::int64_t above = 0;
};

// Values that follow one another, as one point of a run chart.
struct TRunChartPoint {
    std::int64_t first = 0;  // number of the first part, from 0, those without a value included
    std::int64_t count = 0;  // values
    double least = 0.0;
    double mean = 0.0;
    double largest = 0.0;
};

// Constant memory. One thread at a time.
class ORX_API TRunStatistics {
  public:
    // Without limits there are no indices. A tolerance that is not valid() counts as one without limits.
    explicit TRunStatistics(const TTolerance& tolerance = {});

    // A part: its value and the verdict on it. One that is not measured, or no number, counts among the
    // verdicts (as vdNotMeasured) and nowhere else.
    void add(double value, TVerdict verdict);

    std::int64_t parts() const { return parts_; }  // all that were added
    std::int64_t count() const { return count_; }  // those with a value
    std::int64_t countOf(TVerdict verdict) const;  // 0 for no verdict

    // Not-a-number without values; the deviation (of a sample: n - 1) and the indices with fewer than two.
    double mean() const;
    double deviation() const;
    double least() const;
    double largest() const;
    double range() const;
    // Not-a-number where limits are missing; infinite where all values are the same (minus infinity for a Cpk
    // beyond a limit, 0 at it).
    double cp() const;
    double cpk() const;

    const TTolerance& tolerance() const { return tolerance_; }
    TRunHistogram histogram() const;
    // All parts in order, at most 400 points of as many parts each (the last one may have fewer); parts
    // without a value make no point where they are alone in it.
    std::vector<TRunChartPoint> chart() const;

  private:
    static constexpr int kBins = 64;
    static constexpr int kChartPoints = 400;

    bool hasTwoLimits() const;
    void addToHistogram(double value);
    double binsTo(double value) const;
    void coarsen();
    void addToChart(double value, bool measured);

    TTolerance tolerance_;
    std::array<std::int64_t, 5> verdicts_{};
    std::int64_t parts_ = 0;
    std::int64_t count_ = 0;
    double mean_ = 0.0;
    double squares_ = 0.0;  // sum of squared deviations from the mean
    double least_ = 0.0;
    double largest_ = 0.0;

    double anchor_ = 0.0;  // bin 0 begins here
    double binWidth_ = 0.0;
    std::int64_t lowestBin_ = 0;
    std::int64_t highestBin_ = -1;
    std::array<std::int64_t, kBins> bins_{};  // from lowestBin_ on
    std::int64_t below_ = 0;
    std::int64_t above_ = 0;

    std::int64_t partsOfPoint_ = 1;
    std::vector<TRunChartPoint> chart_;
};

// A gauge study: the same parts measured several times each tell how well the measurement repeats itself.
// Repeatability is the standard deviation pooled over the parts; its share of the tolerance is 6 s over the
// width of the tolerance, in percent (AIAG MSA, 4th edition, %P/T; below 10 is good, above 30 not fit for
// use; ISO 22514-7 judges measuring systems likewise). What is told here is the equipment's variation in one
// setup alone: that of operators and of time is not in it.
struct TGaugeResult {
    int parts = 0;                  // with at least one value
    std::int64_t values = 0;        // of all of them
    double degreesOfFreedom = 0.0;  // of the repeatability: values less the parts
    // Not-a-number where no part was measured twice.
    double repeatability = std::numeric_limits<double>::quiet_NaN();
    // Standard deviation of the parts themselves: that of their means less the repeatability's share of it, 0
    // where nothing is left. Not-a-number with fewer than two parts.
    double partDeviation = std::numeric_limits<double>::quiet_NaN();
    // Percent: 6 times the repeatability over the tolerance's width, not-a-number without two limits; and the
    // repeatability over the standard deviation of parts and repeatability together.
    double toleranceShare = std::numeric_limits<double>::quiet_NaN();
    double variationShare = std::numeric_limits<double>::quiet_NaN();
};

// One of the parts. A plain value: its const members are reentrant.
struct TGaugePart {
    std::int64_t count = 0;
    double mean = 0.0;
    double squares = 0.0;  // sum of squared deviations from the mean
    double least = 0.0;
    double largest = 0.0;

    // Of a sample; not-a-number with fewer than two values.
    ORX_API double deviation() const;
};

// Of one value. Memory grows with the parts, not with the times that each is measured. One thread at a time.
class ORX_API TGaugeStudy {
  public:
    static constexpr int kMostParts = 100000;

    explicit TGaugeStudy(const TTolerance& tolerance = {});

    // False, and nothing is added, for a part outside of [0, kMostParts) (rcOption) and for what is no number
    // (rcNotFinite).
    bool add(int part, double value);

    TGaugeResult result() const;
    const std::vector<TGaugePart>& parts() const { return parts_; }  // by number, those without values too

  private:
    TTolerance tolerance_;
    std::vector<TGaugePart> parts_;
};

}  // namespace orx

#endif
