// Work that must not hold up the host, such as giving up a camera that no longer answers.
#ifndef DRIVERS_TQVISIONDRIVER_RELEASER_H
#define DRIVERS_TQVISIONDRIVER_RELEASER_H

#include <functional>

namespace vision {

// Runs `work` on a thread of its own; here and now when there is none to be had. `work` must not throw, and
// may call this again. Thread-safe.
void releaseLater(const std::function<void()>& work);

// Waits for all that was begun, also for what that begins. Thread-safe.
void finishReleases();

}  // namespace vision

#endif
