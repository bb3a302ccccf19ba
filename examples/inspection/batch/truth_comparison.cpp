#include "inspection/batch/truth_comparison.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "inspection/batch/run_summary.h"
#include "inspection/report/utf8.h"

namespace inspection {
namespace {

double over(double sum, std::int64_t count) {
    return count > 0 ? sum / static_cast<double>(count) : std::numeric_limits<double>::quiet_NaN();
}

bool conforms(double value, const orx::TTolerance& tolerance) {
    return value >= tolerance.lower && value <= tolerance.upper;
}

void count(VerdictCheck& check, orx::TVerdict verdict, bool isGood) {
    if (verdict == orx::vdPass)
        ++(isGood ? check.right : check.wronglyPassed);
    else if (verdict == orx::vdFail)
        ++(isGood ? check.wronglyFailed : check.right);
    else if (verdict == orx::vdUndecided)
        ++check.undecided;
    else if (verdict == orx::vdNotMeasured)
        ++check.notMeasured;
}

bool isWrong(orx::TVerdict verdict, bool isGood) {
    return isGood ? verdict == orx::vdFail : verdict == orx::vdPass;
}

}  // namespace

void ValueCheck::add(double error, double deviation) {
    ++count_;
    sum_ += error;
    squares_ += error * error;
    largest_ = std::max(largest_, std::abs(error));
    if (!(deviation > 0.0) || !std::isfinite(deviation)) return;
    ++stated_;
    shares_ += (error / deviation) * (error / deviation);
}

double ValueCheck::mean() const { return over(sum_, count_); }
double ValueCheck::rms() const { return std::sqrt(over(squares_, count_)); }
double ValueCheck::largest() const { return count_ > 0 ? largest_ : over(0.0, 0); }
double ValueCheck::rmsOverStated() const { return std::sqrt(over(shares_, stated_)); }

TruthComparison::TruthComparison(const orx::TRecipe& recipe, TruthTable table)
    : targets_(recipe.targets()), table_(std::move(table)), values_(recipe.targets().size()) {}

void TruthComparison::add(const PictureRecord& record) {
    const std::vector<double>* truth = table_.of(record.name);
    if (truth == nullptr) {
        ++unknown_;
        return;
    }
    ++pictures_;
    for (std::size_t i = 0; i < values_.size() && i < record.result.values.size(); ++i) {
        const double isTrue = (*truth)[i];
        if (!std::isfinite(isTrue)) continue;
        const orx::TRecipeValue& value = record.result.values[i];
        if (value.measured) values_[i].add(value.value - isTrue, value.deviation);
        count(values_[i].verdicts, value.verdict, conforms(isTrue, targets_[i].tolerance));
    }
    addPart(record, *truth);
}

void TruthComparison::addPart(const PictureRecord& record, const std::vector<double>& truth) {
    bool isGood = true;
    bool isKnown = true;
    bool isLimited = false;
    std::string why = "all true values lie within their limits";
    for (std::size_t i = 0; i < targets_.size(); ++i) {
        const orx::TTolerance& tolerance = targets_[i].tolerance;
        if (!tolerance.limited()) continue;
        isLimited = true;
        isKnown = isKnown && std::isfinite(truth[i]);
        if (!std::isfinite(truth[i]) || conforms(truth[i], tolerance)) continue;
        if (isGood)
            why = cleanUtf8(targets_[i].name) + " is " + shortNumber(truth[i]) + " " + targets_[i].unit;
        isGood = false;
    }
    // One value beyond its limits makes a bad part; a good one wants all of them.
    if (!isLimited || (isGood && !isKnown)) return;
    ++(isGood ? goodParts_ : badParts_);
    count(parts_, record.result.verdict, isGood);
    if (isWrong(record.result.verdict, isGood) && wrong_.size() < kMostWrong)
        wrong_.push_back(cleanUtf8(record.name) + ": " + orx::verdictText(record.result.verdict) + ", but " +
                         why);
}

}  // namespace inspection
