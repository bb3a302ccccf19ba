#include "orxFunctions/platform/worker_thread_internal.h"

#include <exception>
#include <thread>

namespace orx::platform {

struct WorkerThread::Thread {
    std::thread thread;
};

WorkerThread::WorkerThread() : thread_(std::make_unique<Thread>()) {}
WorkerThread::~WorkerThread() { join(); }

bool WorkerThread::start(void (*body)(void*), void* context) {
    join();
    try {
        thread_->thread = std::thread(body, context);
        return true;
    } catch (const std::exception&) {  // no thread, or no memory for what it begins with
        return false;
    }
}

// What runs on the thread may end the process, whose destructors then come here on the thread itself.
void WorkerThread::join() {
    if (!thread_->thread.joinable()) return;
    if (thread_->thread.get_id() == std::this_thread::get_id()) {
        thread_->thread.detach();
    } else {
        thread_->thread.join();
    }
}

}  // namespace orx::platform
