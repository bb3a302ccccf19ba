// A recipe on many pictures.
#ifndef EXAMPLES_INSPECTION_BATCH_BATCH_RUN_H
#define EXAMPLES_INSPECTION_BATCH_BATCH_RUN_H

#include <ostream>

#include "inspection/run/options.h"

namespace inspection {

// Measures the pictures that the options name and writes results.jsonl, results.csv, statistics.json,
// report.html and annotated pictures into the output folder (docs/batches.md).
//
// Exit code: 0 when all pictures were measured, whatever their verdicts; 1 when some were not or an output
// could not be written; 2 for a recipe or a truth that is not valid; 130 and 143 after Ctrl-C and a request
// to terminate, which end the measuring, not the report. Results go to `out`, problems and progress to `log`.
// One thread at a time.
int runBatch(const Options& options, std::ostream& out, std::ostream& log);

}  // namespace inspection

#endif
