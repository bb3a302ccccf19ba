// Whether results are the same on any number of threads.
#ifndef ORXFUNCTIONS_TESTS_SUPPORT_THREAD_COUNTS_H
#define ORXFUNCTIONS_TESTS_SUPPORT_THREAD_COUNTS_H

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <opencv2/core/utility.hpp>

namespace orx::test {

// As many threads as a test says, until it ends.
class ThreadCount {
  public:
    explicit ThreadCount(int count) { cv::setNumThreads(count); }
    ~ThreadCount() { cv::setNumThreads(-1); }
    ThreadCount(const ThreadCount&) = delete;
    ThreadCount& operator=(const ThreadCount&) = delete;
};

// Every bit of every pixel.
inline bool sameBits(const cv::Mat& a, const cv::Mat& b) {
    if (a.size() != b.size() || a.type() != b.type()) return false;
    return a.empty() || cv::norm(a, b, cv::NORM_INF) == 0;
}

// Makes it on 1, 2, 3, 4 and 7 threads; all must be the same as the one given.
template <class Result, class Make, class Same>
testing::AssertionResult madeAlike(const Result& expected, Make make, Same same) {
    for (const int count : {1, 2, 3, 4, 7}) {
        const ThreadCount threads(count);
        if (!same(expected, make()))
            return testing::AssertionFailure() << "not so on " << count << " threads";
    }
    return testing::AssertionSuccess();
}

template <class Make>
testing::AssertionResult madeAlike(const cv::Mat& expected, Make make) {
    return madeAlike(expected, make, sameBits);
}

}  // namespace orx::test

#endif
