// Trace lines of the module, through ZULLib, so that they reach the sink of the host like those of the
// library.
#ifndef DRIVERS_TQVISIONDRIVER_TRACE_H
#define DRIVERS_TQVISIONDRIVER_TRACE_H

#include <string>

namespace vision {

// `utf8` is one line without an end; it is prefixed by the name of the module. Thread-safe.
void trace(const std::string& utf8);

}  // namespace vision

#endif
