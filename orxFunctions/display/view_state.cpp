#include "orxFunctions/display/view_state_internal.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace orx::display {

// Never waits for long: the end of a Windows process may have ended the thread that holds the lock.
void ViewState::releaseImages() {
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

OwnViewStates::~OwnViewStates() {
    const zul::LockGuard lock(mutex_);
    for (ViewState* state : states_) state->releaseImages();
}

void OwnViewStates::add(ViewState* state) {
    const zul::LockGuard lock(mutex_);
    states_.push_back(state);
}

void OwnViewStates::remove(ViewState* state) {
    const zul::LockGuard lock(mutex_);
    states_.erase(std::remove(states_.begin(), states_.end(), state), states_.end());
}

}  // namespace orx::display
