// Loops over stripes of an image on several threads.
#ifndef ORXFUNCTIONS_PLATFORM_PARALLEL_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_PARALLEL_INTERNAL_H

#include <atomic>
#include <opencv2/core/utility.hpp>

namespace orx::platform {

// Calls body(i) for every i in [0, count), on the threads that cv::setNumThreads allows. Bodies must not
// depend on one another. Whatever was written before the call is visible to them, and what they wrote is
// visible after it.
//
// cv::parallel_for_ promises the same, but keeps it inside a library that ThreadSanitizer can't see into; the
// two atomics say it again in this code, so that a race between bodies is found and the hand-over is not
// mistaken for one.
template <typename Body>
void parallelFor(int count, const Body& body) {
    std::atomic<int> begun{0};
    std::atomic<int> ended{0};
    begun.store(1, std::memory_order_release);
    cv::parallel_for_(cv::Range(0, count), [&](const cv::Range& range) {
        if (begun.load(std::memory_order_acquire) == 0) return;  // never: it orders what follows
        for (int i = range.start; i < range.end; ++i) body(i);
        ended.fetch_add(1, std::memory_order_release);
    });
    (void)ended.load(std::memory_order_acquire);
}

}  // namespace orx::platform

#endif
