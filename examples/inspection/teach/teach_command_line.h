// The command line's part on teaching.
#ifndef EXAMPLES_INSPECTION_TEACH_TEACH_COMMAND_LINE_H
#define EXAMPLES_INSPECTION_TEACH_TEACH_COMMAND_LINE_H

#include <string>

#include "inspection/teach/teach_options.h"

namespace CLI {
class App;
}

namespace inspection {

// The region as it is typed goes to `region`.
void addTeachOptions(CLI::App& app, TeachOptions& teach, std::string& region);

}  // namespace inspection

#endif
