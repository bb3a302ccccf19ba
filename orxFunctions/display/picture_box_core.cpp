// The display thread and the window of a picture box.
#include <chrono>

#include "orxFunctions/display/picture_box_core_internal.h"
#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/platform/fine_pauses_internal.h"

using orx::display::viewState;

TPictureBox::Core::Core(TPictureBox& box)
    : box_(box), window_(orx::platform::createNativeWindow(box.winName)) {
    takeHandles();
}

void TPictureBox::Core::start() {
    thread_ = std::thread([this] { run(); });
}

void TPictureBox::Core::wakeUp() {
    const zul::LockGuard lock(sleepLock_);
    wake_.notify_all();
}

void TPictureBox::Core::join() {
    // A box that was never started has nothing to wait for.
    if (thread_.joinable()) thread_.join();
}

// The thread object is the thread's own for as long as it runs: nothing empties it before join.
void TPictureBox::Core::run() {
    const orx::platform::FinePauses finePauses;
    while (!box_.killFlag) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(box_.sleepMs);
        {
            const zul::LockGuard lock(sleepLock_);
            wake_.wait_until(sleepLock_, end, [this] { return box_.killFlag.load(); });
        }
        // An image that comes in from here on is for the next turn.
        if (!box_.redraw.exchange(false)) continue;
        showImage();
        box_.calShowFrame();
    }
    orx::outPutDebugString(zul::toAnsi("图片显示线程已经关闭"));
}

void TPictureBox::Core::moveInto(void* newHost) {
    const bool wasHeadless = isHeadless();
    isPlaced_ = (!wasHeadless && window_->parent() == newHost) || window_->moveInto(newHost);
    takeHandles();
    // A new window is empty until the image is shown again.
    if (!wasHeadless || isHeadless()) return;
    const zul::LockGuard lock(viewState.imageLock);
    if (!viewState.image.empty()) box_.redraw = true;
}

void TPictureBox::Core::takeHandles() {
    box_.cvWindow = window_->handle();
    box_.cvFrame = window_->frame();
}
