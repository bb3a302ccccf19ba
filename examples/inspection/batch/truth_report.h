// How a batch compares with the truth, for the screen, statistics.json and the report.
#ifndef EXAMPLES_INSPECTION_BATCH_TRUTH_REPORT_H
#define EXAMPLES_INSPECTION_BATCH_TRUTH_REPORT_H

#include <json/value.h>

#include <ostream>

#include "inspection/batch/truth_comparison.h"

namespace inspection {

void printTruth(std::ostream& out, const orx::TRecipe& recipe, const TruthComparison& truth);

// A section of the report.
void writeTruthHtml(std::ostream& out, const orx::TRecipe& recipe, const TruthComparison& truth);

// The members "truth" of statistics.json (of the run) and of one of its values.
Json::Value truthJson(const TruthComparison& truth);
Json::Value truthJson(const ValueCheck& check);

}  // namespace inspection

#endif
