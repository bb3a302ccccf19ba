// Mutexes that Clang's thread-safety analysis understands (the standard ones carry no annotations in
// libstdc++). Built with GCC or MSVC the annotations vanish and these are plain standard mutexes.
#ifndef ZULLIB_SYNC_INTERNAL_H
#define ZULLIB_SYNC_INTERNAL_H

#include <mutex>

#if defined(__clang__)
#define ZUL_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define ZUL_THREAD_ANNOTATION(x)
#endif
#define ZUL_CAPABILITY(name) ZUL_THREAD_ANNOTATION(capability(name))
#define ZUL_SCOPED_CAPABILITY ZUL_THREAD_ANNOTATION(scoped_lockable)
#define ZUL_GUARDED_BY(mutex) ZUL_THREAD_ANNOTATION(guarded_by(mutex))
#define ZUL_REQUIRES(...) ZUL_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define ZUL_ACQUIRE(...) ZUL_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ZUL_RELEASE(...) ZUL_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define ZUL_NO_ANALYSIS ZUL_THREAD_ANNOTATION(no_thread_safety_analysis)

namespace zul {

class ZUL_CAPABILITY("mutex") Mutex {
  public:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() ZUL_ACQUIRE() { mutex_.lock(); }
    void unlock() ZUL_RELEASE() { mutex_.unlock(); }

    // The standard mutex beneath, for a condition variable; the caller holds this lock.
    std::mutex& native() { return mutex_; }

  private:
    std::mutex mutex_;
};

class ZUL_SCOPED_CAPABILITY LockGuard {
  public:
    explicit LockGuard(Mutex& mutex) ZUL_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~LockGuard() ZUL_RELEASE() { mutex_.unlock(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

  private:
    Mutex& mutex_;
};

}  // namespace zul

#endif
