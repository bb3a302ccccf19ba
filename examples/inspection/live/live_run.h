// A recipe on live cameras.
#ifndef EXAMPLES_INSPECTION_LIVE_LIVE_RUN_H
#define EXAMPLES_INSPECTION_LIVE_LIVE_RUN_H

#include <ostream>

#include "inspection/run/options.h"

namespace inspection {

// Measures the newest picture of each camera by the recipe, until the time of the options is over, Ctrl-C, a
// request to terminate or the window is closed; then writes what a batch writes (docs/batches.md).
//
// Exit code: 0 when every camera delivered, whatever the verdicts; 1 when one did not or an output could not
// be written; 2 for a recipe that is not valid. The table goes to `out`, problems and the status line to
// `log`. One thread at a time.
int runLive(const Options& options, std::ostream& out, std::ostream& log);

}  // namespace inspection

#endif
