// The command line's part on batches.
#ifndef EXAMPLES_INSPECTION_BATCH_BATCH_COMMAND_LINE_H
#define EXAMPLES_INSPECTION_BATCH_BATCH_COMMAND_LINE_H

#include <string>

#include "inspection/batch/batch_options.h"

namespace CLI {
class App;
}

namespace inspection {

// Words as they are typed go to `annotate`, which annotateFrom takes once they are known to be valid.
void addBatchOptions(CLI::App& app, BatchOptions& batch, std::string& annotate);

Annotate annotateFrom(const std::string& word);

}  // namespace inspection

#endif
