#include "inspection/run/terminal.h"

#include <unistd.h>

namespace inspection {

bool isOnTerminal() { return isatty(STDOUT_FILENO) != 0 && isatty(STDERR_FILENO) != 0; }

}  // namespace inspection
