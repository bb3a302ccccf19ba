#include "orxFunctions/display/view_state_internal.h"

#include <chrono>
#include <thread>

namespace orx::display {

// Never waits for long: the end of a Windows process may have ended the thread that holds the lock.
ViewState::~ViewState() {
    for (int attempt = 0; attempt < 200; ++attempt) {
        if (imageLock.try_lock()) {
            image.release();
            lastShown.release();
            imageLock.unlock();
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

}  // namespace orx::display
