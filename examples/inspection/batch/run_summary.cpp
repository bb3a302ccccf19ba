#include "inspection/batch/run_summary.h"

#include <json/json.h>

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>

#include "inspection/batch/truth_report.h"
#include "inspection/report/utf8.h"

namespace inspection {
namespace {

constexpr int kShortDigits = 6;

// Fails before what was not measured, before what is undecided.
int rankOf(orx::TVerdict verdict) {
    switch (verdict) {
        case orx::vdFail:
            return 4;
        case orx::vdNotMeasured:
            return 3;
        case orx::vdUndecided:
            return 2;
        case orx::vdPass:
            return 1;
        default:
            return 0;
    }
}

// How far a value has gone from the middle of its tolerance to a limit: 1 is at it. With one limit there is
// no middle: beyond it, 1 and how many deviations; within, what is left of the conformity.
double usedShare(const orx::TRecipeValue& value) {
    const orx::TTolerance& tolerance = value.tolerance;
    if (!value.measured || !tolerance.limited()) return 0.0;
    const double width = tolerance.upper - tolerance.lower;
    if (std::isfinite(width) && width > 0.0)
        return std::abs(value.value - 0.5 * (tolerance.lower + tolerance.upper)) / (0.5 * width);
    const double beyond = std::max(value.value - tolerance.upper, tolerance.lower - value.value);
    if (beyond > 0.0) return 1.0 + beyond / std::max(value.deviation, 1e-12);
    return std::isfinite(value.conformity) ? 1.0 - value.conformity : 0.0;
}

bool lessBad(const WorstPart& a, const WorstPart& b) {
    const int rankA = rankOf(a.verdict);
    const int rankB = rankOf(b.verdict);
    if (rankA != rankB) return rankA < rankB;
    if (a.badness != b.badness) return a.badness < b.badness;
    return a.number > b.number;  // the first of equals is the worst
}

bool worse(const WorstPart& a, const WorstPart& b) { return lessBad(b, a); }

WorstPart worstOf(const PictureRecord& record) {
    WorstPart part;
    part.name = record.name;
    part.annotated = record.annotated;
    part.verdict = record.result.verdict;
    part.why = cleanUtf8(record.result.problem);
    int rank = -1;
    const orx::TRecipeValue* worst = nullptr;
    for (const orx::TRecipeValue& value : record.result.values) {
        const double share = usedShare(value);
        const int valueRank = rankOf(value.verdict);
        if (valueRank < rank || (valueRank == rank && share <= part.badness)) continue;
        rank = valueRank;
        part.badness = share;
        worst = &value;
    }
    if (worst != nullptr && record.result.problem.empty())
        part.why = cleanUtf8(worst->name) + ": " + valueText(*worst);
    return part;
}

Json::Value numberOrNull(double value) { return std::isfinite(value) ? Json::Value(value) : Json::Value(); }

Json::Value verdictsOf(const orx::TRunStatistics& statistics) {
    Json::Value counts;
    for (int i = orx::vdPass; i <= orx::vdNoLimits; ++i) {
        const auto verdict = static_cast<orx::TVerdict>(i);
        counts[orx::verdictText(verdict)] = static_cast<Json::Int64>(statistics.countOf(verdict));
    }
    return counts;
}

Json::Value jsonOf(const orx::TRecipeTarget& target, const orx::TRunStatistics& statistics) {
    Json::Value value;
    value["name"] = target.name;
    value["unit"] = target.unit;
    value["count"] = static_cast<Json::Int64>(statistics.count());
    value["verdicts"] = verdictsOf(statistics);
    value["mean"] = numberOrNull(statistics.mean());
    value["deviation"] = numberOrNull(statistics.deviation());
    value["least"] = numberOrNull(statistics.least());
    value["largest"] = numberOrNull(statistics.largest());
    value["range"] = numberOrNull(statistics.range());
    value["cp"] = numberOrNull(statistics.cp());
    value["cpk"] = numberOrNull(statistics.cpk());
    return value;
}

Json::Value jsonOf(const orx::TGaugeResult& result) {
    Json::Value value;
    value["parts"] = result.parts;
    value["values"] = static_cast<Json::Int64>(result.values);
    value["degreesOfFreedom"] = result.degreesOfFreedom;
    value["repeatability"] = numberOrNull(result.repeatability);
    value["partDeviation"] = numberOrNull(result.partDeviation);
    value["toleranceShare"] = numberOrNull(result.toleranceShare);
    value["variationShare"] = numberOrNull(result.variationShare);
    return value;
}

}  // namespace

RunSummary::RunSummary(const orx::TRecipe& recipe, int gauge) : gauge_(gauge) {
    for (const orx::TRecipeTarget& target : recipe.targets()) {
        statistics_.emplace_back(target.tolerance);
        if (gauge > 0) studies_.emplace_back(target.tolerance);
    }
}

void RunSummary::add(const PictureRecord& record, std::int64_t place) {
    ++verdicts_[static_cast<std::size_t>(record.result.verdict)];
    for (std::size_t i = 0; i < statistics_.size() && i < record.result.values.size(); ++i) {
        const orx::TRecipeValue& value = record.result.values[i];
        statistics_[i].add(value.value, value.verdict);
        const bool studied = gauge_ > 0 && place >= 0 && value.measured;
        if (studied && place / gauge_ < orx::TGaugeStudy::kMostParts)
            studies_[i].add(static_cast<int>(place / gauge_), value.value);
    }
    if (truth_) truth_->add(record);
    WorstPart part = worstOf(record);
    part.number = pictures_++;
    if (worst_.size() >= kMostWorst) {
        if (!worse(part, worst_.front())) return;
        std::pop_heap(worst_.begin(), worst_.end(), worse);
        worst_.pop_back();
    }
    worst_.push_back(std::move(part));
    std::push_heap(worst_.begin(), worst_.end(), worse);
}

std::vector<WorstPart> RunSummary::worst() const {
    std::vector<WorstPart> sorted = worst_;
    std::sort(sorted.begin(), sorted.end(), worse);
    return sorted;
}

std::string RunSummary::text() const {
    std::string text = std::to_string(pictures_) + (pictures_ == 1 ? " picture" : " pictures");
    const char* before = ": ";
    for (int i = orx::vdPass; i <= orx::vdNoLimits; ++i) {
        const auto verdict = static_cast<orx::TVerdict>(i);
        if (countOf(verdict) == 0) continue;
        text += before + std::to_string(countOf(verdict)) + " " + orx::verdictText(verdict);
        before = ", ";
    }
    return text;
}

std::string valueText(const orx::TRecipeValue& value) {
    const std::string verdict = orx::verdictText(value.verdict);
    if (!value.measured) return verdict + (value.problem.empty() ? "" : ", " + cleanUtf8(value.problem));
    std::string text = orx::measuredText(value);
    const std::string lower = shortNumber(value.tolerance.lower);
    const std::string upper = shortNumber(value.tolerance.upper);
    if (value.tolerance.limited())
        text += " (" +
                (lower.empty()   ? "up to " + upper
                 : upper.empty() ? lower + " or more"
                                 : lower + " to " + upper) +
                ")";
    return text + ": " + verdict;
}

std::string shortNumber(double value) {
    if (!std::isfinite(value)) return "";
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(kShortDigits);
    text << value;
    return text.str();
}

std::string summaryJson(const orx::TRecipe& recipe, const RunSummary& summary) {
    Json::Value root;
    root["recipe"] = recipe.name();
    root["pictures"] = static_cast<Json::Int64>(summary.pictures());
    for (int i = orx::vdPass; i <= orx::vdNoLimits; ++i) {
        const auto verdict = static_cast<orx::TVerdict>(i);
        root["verdicts"][orx::verdictText(verdict)] = static_cast<Json::Int64>(summary.countOf(verdict));
    }
    root["values"] = Json::arrayValue;
    for (std::size_t i = 0; i < summary.statistics().size(); ++i) {
        Json::Value value = jsonOf(recipe.targets()[i], summary.statistics()[i]);
        if (summary.gauge() > 0) value["gauge"] = jsonOf(summary.studies()[i].result());
        if (summary.truth() != nullptr) value["truth"] = truthJson(summary.truth()->values()[i]);
        root["values"].append(value);
    }
    if (summary.truth() != nullptr) root["truth"] = truthJson(*summary.truth());
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    builder["emitUTF8"] = true;
    builder["precision"] = 10;
    return Json::writeString(builder, root) + "\n";
}

}  // namespace inspection
