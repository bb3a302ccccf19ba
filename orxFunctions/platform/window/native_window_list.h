// The windows that the library opened in this process.
#ifndef ORXFUNCTIONS_PLATFORM_NATIVE_WINDOW_LIST_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_NATIVE_WINDOW_LIST_INTERNAL_H

#include <algorithm>
#include <vector>

#include "ZULLib/sync_internal.h"
#include "orxFunctions/platform/window/native_window.h"

namespace orx::platform {

// Thread-safe. A window takes itself off the list before it begins to go.
class NativeWindowList {
  public:
    void add(NativeWindow* window) {
        const zul::LockGuard lock(mutex_);
        windows_.push_back(window);
    }
    void remove(NativeWindow* window) {
        const zul::LockGuard lock(mutex_);
        windows_.erase(std::remove(windows_.begin(), windows_.end(), window), windows_.end());
    }
    // Calls visit(window) for each; none goes meanwhile, so it must not wait for a thread that makes or
    // destroys windows.
    template <typename Visit>
    void forEach(const Visit& visit) {
        const zul::LockGuard lock(mutex_);
        for (NativeWindow* window : windows_) visit(*window);
    }

  private:
    zul::Mutex mutex_;
    std::vector<NativeWindow*> windows_ ZUL_GUARDED_BY(mutex_);
};

extern NativeWindowList nativeWindows;  // defined in orxfunctions.cpp

}  // namespace orx::platform

#endif
