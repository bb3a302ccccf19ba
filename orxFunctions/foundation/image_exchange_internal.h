// The two ways an image travels from a producer to the host. Both copy inside their lock, so that pixels are
// never shared with a caller.
#ifndef ORXFUNCTIONS_FOUNDATION_IMAGE_EXCHANGE_INTERNAL_H
#define ORXFUNCTIONS_FOUNDATION_IMAGE_EXCHANGE_INTERNAL_H

#include <cstddef>
#include <deque>
#include <opencv2/core.hpp>

#include "ZULLib/sync_internal.h"

namespace orx {

// First in, first out; thread-safe.
class ImageQueue {
  public:
    void push(const cv::Mat& image) {
        const zul::LockGuard lock(mutex_);
        images_.push_back(image.clone());
        if (images_.size() > kMaxCount) images_.pop_front();
    }

    bool takeOldest(cv::Mat& out) {
        const zul::LockGuard lock(mutex_);
        if (images_.empty()) return false;
        // The queue's copy is nobody else's once it has left the queue, so that it can be handed over as it
        // is. An `out` that shares pixels with other headers is released, not overwritten, as with any deep
        // copy.
        out = images_.front();
        images_.pop_front();
        return true;
    }

    bool copyNewest(cv::Mat& out) {
        const zul::LockGuard lock(mutex_);
        if (images_.empty()) return false;
        out = images_.back().clone();
        return true;
    }

  private:
    static constexpr std::size_t kMaxCount = 6;

    zul::Mutex mutex_;
    std::deque<cv::Mat> images_ ZUL_GUARDED_BY(mutex_);
};

// The newest image; thread-safe.
class LatestImageSlot {
  public:
    void store(const cv::Mat& image) {
        const zul::LockGuard lock(mutex_);
        image_ = image.clone();
    }

    bool copy(cv::Mat& out) {
        const zul::LockGuard lock(mutex_);
        if (image_.empty()) return false;
        out = image_.clone();
        return true;
    }

  private:
    zul::Mutex mutex_;
    cv::Mat image_ ZUL_GUARDED_BY(mutex_);
};

// Defined in orxfunctions.cpp.
extern LatestImageSlot latestImage;
extern ImageQueue imageQueue;

}  // namespace orx

#endif
