#include "tests/faults/thread_faults_posix.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace {

std::atomic<bool> isShort{false};
std::atomic<int> threadsLeft{0};
std::atomic<int> threadsRefused{0};

std::atomic<long> secondsOff{0};
std::atomic<int> clockLooks{0};

}  // namespace

namespace test {

NoThreads::NoThreads(int first) {
    threadsLeft = first;
    threadsRefused = 0;
    isShort = true;
}
NoThreads::~NoThreads() { isShort = false; }
int NoThreads::refused() { return threadsRefused; }

JumpingClock::JumpingClock(std::chrono::hours by) {
    clockLooks = 0;
    secondsOff = std::chrono::duration_cast<std::chrono::seconds>(by).count();
}
JumpingClock::~JumpingClock() { secondsOff = 0; }
int JumpingClock::looks() { return clockLooks; }

}  // namespace test

// The project hides what it does not export.
#pragma GCC visibility push(default)

extern "C" {

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) {
    using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto kNext = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
    if (isShort && threadsLeft.fetch_sub(1) <= 0) {
        ++threadsRefused;
        return EAGAIN;
    }
    return kNext(thread, attributes, body, argument);
}

int clock_gettime(clockid_t clock, timespec* now) noexcept {
    using Get = int (*)(clockid_t, timespec*);
    static const auto kNext = reinterpret_cast<Get>(dlsym(RTLD_NEXT, "clock_gettime"));
    const int answer = kNext(clock, now);
    const long off = secondsOff;
    if (clock == CLOCK_REALTIME && off != 0) now->tv_sec += clockLooks.fetch_add(1) % 2 == 0 ? off : -off;
    return answer;
}

}  // extern "C"

#pragma GCC visibility pop
