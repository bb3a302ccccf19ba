// What a batch measured beside what is true: errors, and whether verdicts were right.
#ifndef EXAMPLES_INSPECTION_BATCH_TRUTH_COMPARISON_H
#define EXAMPLES_INSPECTION_BATCH_TRUTH_COMPARISON_H

#include <cstdint>
#include <string>
#include <vector>

#include "inspection/batch/picture_record.h"
#include "inspection/batch/truth_table.h"

namespace inspection {

// Verdicts against truth. Neither the undecided nor what was not measured is right or wrong.
struct VerdictCheck {
    std::int64_t right = 0;
    std::int64_t wronglyPassed = 0;
    std::int64_t wronglyFailed = 0;
    std::int64_t undecided = 0;
    std::int64_t notMeasured = 0;
};

// Errors of one value, measured minus true, in its unit.
class ValueCheck {
  public:
    void add(double error, double deviation);

    std::int64_t count() const { return count_; }
    // Not-a-number without values.
    double mean() const;
    double rms() const;
    double largest() const;  // the largest amount
    // Root mean square of the errors over their stated standard uncertainties: 1 where those are right.
    double rmsOverStated() const;

    VerdictCheck verdicts;

  private:
    std::int64_t count_ = 0;
    std::int64_t stated_ = 0;
    double sum_ = 0.0;
    double squares_ = 0.0;
    double shares_ = 0.0;
    double largest_ = 0.0;
};

class TruthComparison {
  public:
    static constexpr std::size_t kMostWrong = 20;

    TruthComparison(const orx::TRecipe& recipe, TruthTable table);

    void add(const PictureRecord& record);

    const TruthTable& table() const { return table_; }
    std::int64_t pictures() const { return pictures_; }    // that the table knows
    std::int64_t unknown() const { return unknown_; }      // that it does not
    std::int64_t goodParts() const { return goodParts_; }  // by the recipe's limits and the true values
    std::int64_t badParts() const { return badParts_; }
    const std::vector<ValueCheck>& values() const { return values_; }  // as the targets
    const VerdictCheck& parts() const { return parts_; }
    const std::vector<std::string>& wrong() const { return wrong_; }  // the first ones, a sentence each

  private:
    void addPart(const PictureRecord& record, const std::vector<double>& truth);

    std::vector<orx::TRecipeTarget> targets_;
    TruthTable table_;
    std::int64_t pictures_ = 0;
    std::int64_t unknown_ = 0;
    std::int64_t goodParts_ = 0;
    std::int64_t badParts_ = 0;
    std::vector<ValueCheck> values_;
    VerdictCheck parts_;
    std::vector<std::string> wrong_;
};

}  // namespace inspection

#endif
