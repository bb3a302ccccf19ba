// What a batch came to, in memory that does not grow with it.
#ifndef EXAMPLES_INSPECTION_BATCH_RUN_SUMMARY_H
#define EXAMPLES_INSPECTION_BATCH_RUN_SUMMARY_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "inspection/batch/picture_record.h"
#include "inspection/batch/truth_comparison.h"

namespace inspection {

// A picture that deserves a look.
struct WorstPart {
    std::string name;
    std::string annotated;
    orx::TVerdict verdict = orx::vdNotMeasured;
    std::string why;       // the value that is worst, or the problem
    double badness = 0.0;  // orders them
    std::int64_t number = 0;
};

class RunSummary {
  public:
    static constexpr std::size_t kMostWorst = 200;

    // A study of so many pictures of each part; 0: none.
    RunSummary(const orx::TRecipe& recipe, int gauge);

    // What is added from here on is compared with the truth.
    void compareWith(TruthComparison truth) { truth_ = std::move(truth); }

    // `place` is that of the picture in the run's list, for the gauge study; -1: it is not in it.
    void add(const PictureRecord& record, std::int64_t place);

    std::int64_t pictures() const { return pictures_; }
    std::int64_t countOf(orx::TVerdict verdict) const { return verdicts_[static_cast<std::size_t>(verdict)]; }
    int gauge() const { return gauge_; }
    const std::vector<orx::TRunStatistics>& statistics() const { return statistics_; }  // as the targets
    const std::vector<orx::TGaugeStudy>& studies() const { return studies_; }
    const TruthComparison* truth() const { return truth_ ? &*truth_ : nullptr; }
    std::vector<WorstPart> worst() const;  // the worst first

    // "12 pictures: 9 pass, 2 fail, 1 not measured"
    std::string text() const;

  private:
    std::int64_t pictures_ = 0;
    std::array<std::int64_t, 5> verdicts_{};
    int gauge_ = 0;
    std::vector<orx::TRunStatistics> statistics_;
    std::vector<orx::TGaugeStudy> studies_;
    std::optional<TruthComparison> truth_;
    std::vector<WorstPart> worst_;  // a heap whose top is the least bad
};

// "40.012 +- 0.004 mm (39.95 to 40.05): fail"
std::string valueText(const orx::TRecipeValue& value);

// Six significant digits, "" for what is not finite.
std::string shortNumber(double value);

// statistics.json: what the report's tables say.
std::string summaryJson(const orx::TRecipe& recipe, const RunSummary& summary);

}  // namespace inspection

#endif
