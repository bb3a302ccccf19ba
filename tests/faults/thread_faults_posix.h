// Threads that can't be made, and a clock of the day that jumps. The test program's own pthread_create and
// clock_gettime stand before those of the C library, in every library of the process.
#ifndef ORX_TESTS_FAULTS_THREAD_FAULTS_POSIX_H
#define ORX_TESTS_FAULTS_THREAD_FAULTS_POSIX_H

#include <chrono>

namespace test {

// While it lives, the system makes `first` more threads, and then none.
class NoThreads {
  public:
    explicit NoThreads(int first = 0);
    ~NoThreads();
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

    static int refused();  // of the last one that lived
};

// While it lives, the clock that tells the time of day is wrong, at each look by another amount: `by` ahead,
// then as much behind. The steady clock is right. A wait for a time of day takes the wrong one for right.
class JumpingClock {
  public:
    explicit JumpingClock(std::chrono::hours by);
    ~JumpingClock();
    JumpingClock(const JumpingClock&) = delete;
    JumpingClock& operator=(const JumpingClock&) = delete;

    static int looks();  // of the last one that lived
};

}  // namespace test

#endif
