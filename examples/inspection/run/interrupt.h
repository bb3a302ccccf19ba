// Ctrl-C.
#ifndef EXAMPLES_INSPECTION_INTERRUPT_H
#define EXAMPLES_INSPECTION_INTERRUPT_H

namespace inspection {

// From here on the first Ctrl-C (or request to terminate) is only remembered; the second one ends the program
// as usual.
void watchForInterrupt();
bool isInterrupted();
// The first one's number; 0: none yet.
int interruptSignal();

}  // namespace inspection

#endif
