#include "orxFunctions/platform/worker_thread_internal.h"

#include <system_error>
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
    } catch (const std::system_error&) {
        return false;
    }
}

void WorkerThread::join() {
    if (thread_->thread.joinable()) thread_->thread.join();
}

}  // namespace orx::platform
