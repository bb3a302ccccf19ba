// Loops over stripes of an image on several threads.
#ifndef ORXFUNCTIONS_PLATFORM_PARALLEL_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_PARALLEL_INTERNAL_H

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <opencv2/core.hpp>
#include <opencv2/core/utility.hpp>
#include <utility>
#include <vector>

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

// How many pixels make a stripe, by what they cost: some 50 microseconds.
constexpr std::int64_t kLightStripe = 1 << 18;  // 0.2 ns a pixel: levels counted
constexpr std::int64_t kStripe = 1 << 16;       // 0.7 ns and more

// An image cut into stripes of whole rows. The cuts depend on the image's size alone, so that what is summed
// by stripes, and then in their order, is the same on any number of threads. Fewer than kFewest stripes are
// one: a thread that sleeps takes up to 100 microseconds to wake on a busy machine.
class RowStripes {
  public:
    static constexpr std::int64_t kFewest = 8;

    RowStripes(cv::Size size, std::int64_t pixelsOfAStripe) : rows_(size.height) {
        const std::int64_t pixels = std::int64_t{size.width} * size.height;
        if (pixels < kFewest * pixelsOfAStripe) return;
        rowsOfAStripe_ =
            static_cast<int>(std::max<std::int64_t>(1, pixelsOfAStripe / std::max(1, size.width)));
        count_ = (rows_ + rowsOfAStripe_ - 1) / rowsOfAStripe_;
    }

    int count() const { return count_; }
    int stripeOf(int row) const { return count_ == 1 ? 0 : row / rowsOfAStripe_; }
    cv::Range rows(int stripe) const {
        if (count_ == 1) return {0, rows_};
        return {stripe * rowsOfAStripe_, std::min(rows_, (stripe + 1) * rowsOfAStripe_)};
    }

  private:
    int rows_;
    int rowsOfAStripe_ = 0;
    int count_ = 1;
};

// Calls body(stripe, rows) for each stripe, on several threads; a single stripe is worked on at once.
template <typename Body>
void forStripes(const RowStripes& stripes, const Body& body) {
    if (stripes.count() == 1) {
        body(0, stripes.rows(0));
    } else {
        parallelFor(stripes.count(), [&](int stripe) { body(stripe, stripes.rows(stripe)); });
    }
}

// What partOf(rows) gives for each stripe, added up in their order by add(sum, part), which begins with the
// first one's part.
template <typename PartOf, typename Add>
auto sumOfStripes(const RowStripes& stripes, const PartOf& partOf, const Add& add) {
    if (stripes.count() == 1) return partOf(stripes.rows(0));
    std::vector<decltype(partOf(stripes.rows(0)))> parts(static_cast<std::size_t>(stripes.count()));
    forStripes(stripes, [&](int stripe, const cv::Range& rows) {
        parts[static_cast<std::size_t>(stripe)] = partOf(rows);
    });
    auto sum = std::move(parts.front());
    for (std::size_t i = 1; i < parts.size(); ++i) add(sum, parts[i]);
    return sum;
}

// Ways to add: numbers, and containers of as many numbers each.
constexpr auto addNumbers = [](auto& sum, const auto& part) { sum += part; };
constexpr auto addEach = [](auto& sum, const auto& part) {
    std::transform(sum.begin(), sum.end(), part.begin(), sum.begin(), std::plus<>());
};

}  // namespace orx::platform

#endif
