// One run: measures all sources and writes what came out.
#ifndef EXAMPLES_INSPECTION_RUN_H
#define EXAMPLES_INSPECTION_RUN_H

#include <ostream>

#include "inspection/run/options.h"

namespace inspection {

// Exit code: 0 when all pictures were measured, 1 when some were not, true shapes were missed or an output
// could not be written.
// Tables go to `out`, progress and errors to `log`. One thread at a time.
int run(const Options& options, std::ostream& out, std::ostream& log);

}  // namespace inspection

#endif
