// A thread that works until it has nothing left to do, inside a library that may be unloaded meanwhile.
//
// Unloading runs the library's destructors while the loader is locked. POSIX lets a thread end under that
// lock, so that a destructor can simply join it. On Windows a thread can't end while another holds the loader
// lock, and a join would never return; there the thread holds a reference to the library instead: the library
// stays loaded until the thread has finished, and the thread itself drops the last reference as it ends.
//
// What runs on such a thread must not load libraries, directly or not (a conversion of text may): on POSIX it
// would wait for the loader, and the loader's owner for it.
#ifndef ORXFUNCTIONS_PLATFORM_WORKER_THREAD_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_WORKER_THREAD_INTERNAL_H

#include <memory>

namespace orx::platform {

class WorkerThread {
  public:
    WorkerThread();
    ~WorkerThread();  // as join
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    // Runs body(context) on a new thread. An earlier body must have returned or be about to. False when the
    // system has no thread left, or no memory for one. Never throws.
    bool start(void (*body)(void*), void* context);

    // POSIX: waits until the thread has ended; called on the thread itself, as happens when a body ends the
    // process, it leaves the thread to itself. Windows: never waits; a body that still runs keeps the library
    // loaded, and at the end of the process, when the destructors run, all other threads are gone already.
    void join();

  private:
    struct Thread;
    std::unique_ptr<Thread> thread_;
};

}  // namespace orx::platform

#endif
