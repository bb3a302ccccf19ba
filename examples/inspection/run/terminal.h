// The one thing that this program asks the platform for.
#ifndef EXAMPLES_INSPECTION_TERMINAL_H
#define EXAMPLES_INSPECTION_TERMINAL_H

namespace inspection {

// Whether both standard output and standard error are shown on a terminal, and the latter follows control
// sequences.
bool isOnTerminal();

}  // namespace inspection

#endif
