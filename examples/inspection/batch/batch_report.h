// The report of a batch: one HTML file whose size does not grow with the run.
#ifndef EXAMPLES_INSPECTION_BATCH_BATCH_REPORT_H
#define EXAMPLES_INSPECTION_BATCH_BATCH_REPORT_H

#include <filesystem>
#include <string>
#include <vector>

#include "inspection/batch/run_summary.h"

namespace inspection {

struct ReportNotes {
    std::vector<std::string> lines;  // above all else: how the run ended
    std::string rate;                // "41 pictures a second"; empty: unknown
};

// Summary, tables and charts of the values, and the worst parts with thumbnails that link to their annotated
// pictures in `folder`. Charts for 200 values at the most, thumbnails of 8 MB at the most.
std::string batchReportHtml(const orx::TRecipe& recipe, const RunSummary& summary, const ReportNotes& notes,
                            const std::filesystem::path& folder);

}  // namespace inspection

#endif
