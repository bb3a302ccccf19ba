#include <io.h>
#include <stdio.h>

#include "inspection/terminal.h"

namespace inspection {

bool isOnTerminal() { return _isatty(_fileno(stdout)) != 0 && _isatty(_fileno(stderr)) != 0; }

}  // namespace inspection
