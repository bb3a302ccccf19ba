// The one place that knows a window system.
#ifndef ORXFUNCTIONS_PLATFORM_NATIVE_WINDOW_H
#define ORXFUNCTIONS_PLATFORM_NATIVE_WINDOW_H

namespace orx::platform {

// True when a window can be opened now. Every path to a window asks first: some toolkits end the process when
// no display can be opened. Thread-safe.
bool displayIsAvailable();

}  // namespace orx::platform

#endif
