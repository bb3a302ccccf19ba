#include "orxFunctions/platform/worker_thread_internal.h"

#include <windows.h>

#include <new>

namespace orx::platform {
namespace {

struct Task {
    void (*body)(void*);
    void* context;
    HMODULE library;
};

DWORD WINAPI runTask(void* argument) {
    const Task task = *static_cast<Task*>(argument);
    delete static_cast<Task*>(argument);  // here: nothing is destroyed on the way out below
    task.body(task.context);
    FreeLibraryAndExitThread(task.library, 0);
}

// A reference of its own to the library that this code lies in.
HMODULE acquireLibrary() {
    HMODULE library = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&runTask), &library);
    return library;
}

}  // namespace

struct WorkerThread::Thread {
    HANDLE handle = nullptr;
};

WorkerThread::WorkerThread() : thread_(std::make_unique<Thread>()) {}
WorkerThread::~WorkerThread() { join(); }

bool WorkerThread::start(void (*body)(void*), void* context) {
    join();
    std::unique_ptr<Task> task(new (std::nothrow) Task{body, context, nullptr});
    if (task == nullptr) return false;
    task->library = acquireLibrary();
    if (task->library == nullptr) return false;
    // Not _beginthreadex: Visual C++'s takes a reference of its own, which leaving as runTask does keeps.
    thread_->handle = CreateThread(nullptr, 0, &runTask, task.get(), 0, nullptr);
    if (thread_->handle == nullptr) {
        FreeLibrary(task->library);
        return false;
    }
    task.release();  // the thread's now
    return true;
}

void WorkerThread::join() {
    if (thread_->handle != nullptr) CloseHandle(thread_->handle);
    thread_->handle = nullptr;
}

}  // namespace orx::platform
