// Loops over stripes of an image on several threads.
#ifndef ORXFUNCTIONS_PLATFORM_PARALLEL_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_PARALLEL_INTERNAL_H

#include <atomic>
#include <opencv2/core/utility.hpp>

namespace orx::platform {

// The body of a loop as OpenCV wants it. cv::parallel_for_ orders what happens before, in and after its
// bodies, but does so inside a library that ThreadSanitizer can't see into; the two atomics say it again in
// this code, so that a race between bodies is found and the hand-over is not mistaken for one.
template <typename Body>
class ParallelBody : public cv::ParallelLoopBody {
  public:
    explicit ParallelBody(const Body& body) : body_(body) { begun_.store(true, std::memory_order_release); }

    void operator()(const cv::Range& range) const override {
        if (!begun_.load(std::memory_order_acquire)) return;  // never: it orders what follows
        for (int i = range.start; i < range.end; ++i) body_(i);
        ended_.fetch_add(1, std::memory_order_release);
    }

    void meet() const { (void)ended_.load(std::memory_order_acquire); }

  private:
    const Body& body_;
    std::atomic<bool> begun_{false};
    mutable std::atomic<int> ended_{0};
};

// Calls body(i) for every i in [0, count), on the threads that cv::setNumThreads allows. Bodies must not
// depend on one another. Whatever was written before the call is visible to them, and what they wrote is
// visible after it.
template <typename Body>
void parallelFor(int count, const Body& body) {
    const ParallelBody<Body> loop(body);
    cv::parallel_for_(cv::Range(0, count), loop);
    loop.meet();
}

}  // namespace orx::platform

#endif
