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
#define ZUL_TRY_ACQUIRE(...) ZUL_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))

namespace zul {

// A condition variable waits on it as it is (std::condition_variable_any), in a plain loop: to the analysis a
// predicate is a function of its own, which holds nothing.
template <typename Standard>
class ZUL_CAPABILITY("mutex") BasicMutex {
  public:
    BasicMutex() = default;
    BasicMutex(const BasicMutex&) = delete;
    BasicMutex& operator=(const BasicMutex&) = delete;

    void lock() ZUL_ACQUIRE() { mutex_.lock(); }
    bool try_lock() ZUL_TRY_ACQUIRE(true) { return mutex_.try_lock(); }
    void unlock() ZUL_RELEASE() { mutex_.unlock(); }

  private:
    Standard mutex_;
};

using Mutex = BasicMutex<std::mutex>;
// For a callback that may come back to its caller.
using RecursiveMutex = BasicMutex<std::recursive_mutex>;

template <typename AnyMutex>
class ZUL_SCOPED_CAPABILITY LockGuard {
  public:
    explicit LockGuard(AnyMutex& mutex) ZUL_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~LockGuard() ZUL_RELEASE() { mutex_.unlock(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

  private:
    AnyMutex& mutex_;
};

}  // namespace zul

#endif
