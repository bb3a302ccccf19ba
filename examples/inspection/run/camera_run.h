// A run on live cameras.
#ifndef EXAMPLES_INSPECTION_CAMERA_RUN_H
#define EXAMPLES_INSPECTION_CAMERA_RUN_H

#include <ostream>

#include "inspection/run/options.h"

namespace inspection {

// Grabs from the cameras that the options name, measures each picture as it comes (the newest where measuring
// is slower than the camera), and writes the last measured picture of each camera. Ends after the time of the
// options or at Ctrl-C.
//
// Exit code: 0 when every camera delivered, 1 when one did not or an output could not be written. The table
// goes to `out`, errors to `log`. One thread at a time.
int runCameras(const Options& options, std::ostream& out, std::ostream& log);

}  // namespace inspection

#endif
